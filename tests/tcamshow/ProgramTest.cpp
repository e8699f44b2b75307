// The program as a whole: its command line, its exit status, what it does with bad files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "Process.h"
#include "TemporaryFile.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* filter = "@1.2.3.4/32 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n";

#if defined(__SANITIZE_ADDRESS__)
constexpr bool memoryCanBeLimited = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool memoryCanBeLimited = false;
#else
constexpr bool memoryCanBeLimited = true;
#endif
#else
constexpr bool memoryCanBeLimited = true;
#endif

// What the program and its libraries map, with room for the buffers; far below the inputs.
constexpr std::size_t addressSpaceKib = 32 * 1024;

TEST(Program, TellsHelpAndVersion) {
  ProcessResult result = runTcamshow({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("import"));
  EXPECT_EQ(result.err, "");
  result = runTcamshow({"import", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("classbench"));
  result = runTcamshow({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, ::testing::MatchesRegex("tcamshow [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Program, EndsWithTwoWhenTheCommandLineIsWrong) {
  struct Row {
    std::vector<std::string> arguments;
    const char* error;
  };
  Row const rows[] = {
      {{}, "required"},
      {{"foo"}, "no such command: foo"},
      {{"--foo"}, "no such option: --foo"},
      {{"import"}, "required"},
      {{"import", "foo", "file"}, "no such command: foo"},
      {{"import", "classbench", "a", "b"}, "b"},
      {{"import", "classbench", "--foo"}, "--foo"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith("tcamshow: "));
    EXPECT_THAT(result.err, HasSubstr(row.error));
  }
}

TEST(Program, ReadsStandardInputOrAFile) {
  TemporaryFile const file(filter);
  ProcessResult const fromFile = runTcamshow({"import", "classbench", file.path()});
  EXPECT_EQ(fromFile.status, 0);
  EXPECT_THAT(fromFile.out, HasSubstr("\"shadowId\":1"));
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"import", "classbench"},
        std::vector<std::string>{"import", "classbench", "-"}}) {
    ProcessResult const result = runTcamshow(arguments, {.input = filter});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, fromFile.out);
  }
}

TEST(Program, TellsWhichFileCannotBeRead) {
  for (const char* const format : {"classbench", "openconfig"}) {
    SCOPED_TRACE(format);
    ProcessResult result = runTcamshow({"import", format, "/nonexistent"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: /nonexistent: cannot open: No such file or directory\n");
    result = runTcamshow({"import", format, "/"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: /: cannot read: Is a directory\n");
    // Root reads every file.
    ProcessOptions const nobody{.asNobody = ::geteuid() == 0};
    if (runTcamshow({"--version"}, nobody).status != 0) {
      GTEST_SKIP() << "only root reaches the program, and root reads every file";
    }
    TemporaryFile const secret(filter);
    ASSERT_EQ(::chmod(secret.path().c_str(), 0), 0);
    result = runTcamshow({"import", format, secret.path()}, nobody);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: " + secret.path() + ": cannot open: Permission denied\n");
  }
}

TEST(Program, EndsWithOneWhenTheDiskIsFull) {
  ProcessOptions options;
  options.input = filter;
  options.outPath = "/dev/full";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"import", "classbench"}, std::vector<std::string>{"--version"}}) {
    ProcessResult const result = runTcamshow(arguments, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: cannot write the output: No space left on device\n");
  }
  // A full disk does not hide that the input is bad too.
  options.input = "x";
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "tcamshow: cannot write the output: No space left on device\n"
            "tcamshow: <stdin>:1: a filter begins with '@', not \"x\"\n");
}

TEST(Program, EndsQuietlyWhenThePipeIsClosed) {
  ProcessOptions options;
  for (int i = 0; i < 20000; ++i) options.input += filter;
  options.outLimit = 1;
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
}

TEST(Program, DoesNotKeepAnEndlessLine) {
  for (const char* const format : {"classbench", "openconfig"}) {
    SCOPED_TRACE(format);
    ProcessOptions options;
    options.feed = [](int descriptor) {
      std::string const piece(1 << 20, 'x');
      for (int i = 0; i < 100; ++i) {
        if (::write(descriptor, piece.data(), piece.size()) < 0) return;
      }
    };
    if (memoryCanBeLimited) options.addressSpaceKib = addressSpaceKib;
    ProcessResult const result = runTcamshow({"import", format}, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, StartsWith("tcamshow: <stdin>:1: "));
    EXPECT_THAT(result.err,
                HasSubstr(std::string_view(format) == "classbench" ? "the line is longer than 1 MiB"
                                                                   : "not valid JSON"));
  }
}

TEST(Program, MemoryDoesNotGrowWithTheInput) {
  if (!memoryCanBeLimited) GTEST_SKIP() << "a sanitizer takes memory of its own";
  ProcessOptions options;
  options.outPath = "/dev/null";
  options.feed = [](int descriptor) {
    std::string piece;
    for (int i = 0; i < 1000; ++i) piece += filter;
    for (int i = 0; i < 600; ++i) {
      if (::write(descriptor, piece.data(), piece.size()) < 0) return;
    }
  };
  options.addressSpaceKib = addressSpaceKib;
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
