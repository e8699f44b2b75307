#include "io/InputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <string>

#include "Process.h"
#include "TemporaryFile.h"
#include "io/InputError.h"
#include "snapshot/SnapshotReader.h"

namespace tcamshow {
namespace {

/// The text as one gzip member.
std::string packed(const std::string& text) {
  z_stream zlib{};
  EXPECT_EQ(deflateInit2(&zlib, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string result(deflateBound(&zlib, text.size()), '\0');
  zlib.next_in = reinterpret_cast<unsigned char*>(const_cast<char*>(text.data()));
  zlib.avail_in = static_cast<uInt>(text.size());
  zlib.next_out = reinterpret_cast<unsigned char*>(result.data());
  zlib.avail_out = static_cast<uInt>(result.size());
  EXPECT_EQ(deflate(&zlib, Z_FINISH), Z_STREAM_END);
  result.resize(zlib.total_out);
  deflateEnd(&zlib);
  return result;
}

/// All that the file holds, read in pieces of `size` bytes, or the message of the error.
std::string contentOf(const std::string& bytes, std::size_t size) {
  TemporaryFile const file(bytes);
  std::string content;
  try {
    InputFile input(file.path());
    std::string buffer(size, '\0');
    for (;;) {
      std::size_t const count = input.read(buffer.data(), size, 7);
      if (count == 0) return content;
      content.append(buffer, 0, count);
    }
  } catch (const InputError& error) {
    return error.message();
  }
}

TEST(InputFile, RefusesWhatCannotBeRead) {
  EXPECT_EQ(
      [] {
        try {
          InputFile file("/nonexistent/file");
        } catch (const InputError& error) {
          return std::string(error.what());
        }
        return std::string();
      }(),
      "/nonexistent/file: cannot open: No such file or directory");
  Complaints complaints;
  try {
    openSnapshot(InputFile("/"), complaints);
    FAIL();
  } catch (const InputError& error) {
    EXPECT_STREQ(error.what(), "/: cannot read: Is a directory");
  }
  if (::geteuid() == 0) return;  // root reads every file
  TemporaryFile const secret("x");
  ASSERT_EQ(::chmod(secret.path().c_str(), 0), 0);
  EXPECT_THROW(InputFile file(secret.path()), InputError);
}

TEST(InputFile, UnpacksGzip) {
  std::string random;
  std::uint32_t state = 1;
  for (int i = 0; i < 300'000; ++i) {
    state = state * 1664525U + 1013904223U;
    random += static_cast<char>(state >> 24);
  }
  std::string const long_(300'000, 'x');
  struct Row {
    std::string bytes;
    std::string content;
  };
  Row const rows[] = {
      {packed(""), ""},
      {packed("a"), "a"},
      {packed("a text\n"), "a text\n"},
      {packed(random), random},
      {packed(long_), long_},
      // Members one behind the other, and the zeros that fill a block.
      {packed("a") + packed("") + packed("bc"), "abc"},
      {packed("a") + std::string(700, '\0'), "a"},
      {packed("a") + std::string(3, '\0') + packed("b"), "ab"},
      // A byte order mark inside is skipped as outside.
      {packed("\xEF\xBB\xBFx"), "x"},
      {"\xEF\xBB\xBFx", "x"},
      // What is packed twice is unpacked once.
      {packed(packed("a")), packed("a")},
      // Not gzip.
      {"\x1F", "\x1F"},
      {"\x1Fz", "\x1Fz"},
      {"", ""},
  };
  for (const Row& row : rows) {
    for (std::size_t const size : {std::size_t{1}, std::size_t{7}, std::size_t{100'000}}) {
      if (size == 1 && row.content.size() > 1000) continue;
      EXPECT_TRUE(contentOf(row.bytes, size) == row.content) << row.content.substr(0, 20);
    }
  }
}

TEST(InputFile, TellsWhatIsWrongWithGzip) {
  std::string const whole = packed("a text that is long enough to be cut");
  for (std::size_t size = 2; size < whole.size(); ++size) {
    EXPECT_EQ(contentOf(whole.substr(0, size), 100), "the compressed data ends early") << size;
  }
  std::string wrongSum = whole;
  wrongSum[whole.size() - 6] ^= 1;
  std::string wrongMethod = whole;
  wrongMethod[2] = 9;
  for (const std::string& bytes : {wrongSum, wrongMethod, whole + "x", whole + "\x1F\x8B\x09x",
                                   std::string("\x1F\x8Bxxxxx")}) {
    EXPECT_EQ(contentOf(bytes, 100), "the compressed data is damaged");
  }
}

TEST(InputFile, GivesItsStartWithoutLosingIt) {
  for (const std::string& bytes : {std::string("abc"), packed("abc")}) {
    TemporaryFile const file(bytes);
    InputFile input(file.path());
    EXPECT_EQ(input.start(), "abc");
    EXPECT_FALSE(input.startMore());
    EXPECT_EQ(input.start(), "abc");
    char buffer[8];
    ASSERT_EQ(input.read(buffer, 2, 1), 2u);
    ASSERT_EQ(input.read(buffer + 2, 6, 1), 1u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    EXPECT_EQ(input.read(buffer, 8, 1), 0u);
  }
  TemporaryFile const file(std::string(100'000, 'x'));
  InputFile input(file.path());
  while (input.startMore()) {
  }
  EXPECT_EQ(input.start(), std::string(4096, 'x'));
}

TEST(InputFile, EveryCommandReadsGzip) {
  std::string const snapshot =
      "{\"type\":\"snapshot\",\"version\":1}\n"
      "{\"type\":\"entry\",\"table\":\"tcam\",\"shadowId\":1}\n";
  for (const char* const command : {"ip", "tcam", "usage", "summary", "inspect", "import"}) {
    SCOPED_TRACE(command);
    ProcessResult const plain = runTcamshow({command}, {.input = snapshot});
    ProcessResult const unpacked = runTcamshow({command}, {.input = packed(snapshot)});
    EXPECT_EQ(unpacked.out, plain.out);
    EXPECT_EQ(unpacked.err, "");
    EXPECT_EQ(unpacked.status, 0);
  }
  ProcessResult const cut =
      runTcamshow({"tcam"}, {.input = packed(snapshot).substr(0, packed(snapshot).size() - 1)});
  EXPECT_EQ(cut.status, 1);
  EXPECT_NE(cut.err.find("the compressed data ends early"), std::string::npos) << cut.err;
}

}  // namespace
}  // namespace tcamshow
