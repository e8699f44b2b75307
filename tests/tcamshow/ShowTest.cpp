// The commands that print tables, as a whole.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#include "Process.h"
#include "TemporaryFile.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* header = "{\"type\":\"snapshot\",\"version\":1}\n";

std::string golden(const std::string& name) { return TCAMSHOW_GOLDEN "/" + name; }

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(Show, PrintsTheTablesToTheByte) {
  for (const char* const command : {"ip", "tcam"}) {
    SCOPED_TRACE(command);
    ProcessResult const result = runTcamshow({command, golden("tables.jsonl")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, contentOf(golden(std::string(command) + ".txt")));
  }
}

TEST(Show, PrintsTheHeaderAloneOfAnEmptySnapshot) {
  ProcessResult const ip = runTcamshow({"ip"}, {.input = header});
  EXPECT_EQ(ip.status, 0);
  EXPECT_THAT(ip.out, StartsWith("Id        | Seq   |"));
  EXPECT_EQ(ip.out.size(), 186U);
  ProcessResult const tcam = runTcamshow({"tcam"}, {.input = header});
  EXPECT_EQ(tcam.status, 0);
  EXPECT_EQ(tcam.out, "");
}

TEST(Show, PrintsWhatPrecedesABadLine) {
  std::string const good =
      "{\"type\":\"entry\",\"table\":\"tcam\",\"shadowId\":1,\"description\":\"kept\"}\n";
  ProcessResult const result =
      runTcamshow({"tcam"}, {.input = header + good + "{\"type\":\"entry\",\"table\":\"tcam\"}\n"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "    0x00000001            0 hits - kept\n");
  EXPECT_THAT(result.err, StartsWith("tcamshow: <stdin>:3: "));
  EXPECT_THAT(result.err, HasSubstr("shadowId"));
}

TEST(Show, ChecksEntriesOfOtherTablesToo) {
  ProcessResult const result = runTcamshow(
      {"ip"},
      {.input = std::string(header) + "{\"type\":\"entry\",\"table\":\"mac\",\"shadowId\":-1}\n"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, StartsWith("tcamshow: <stdin>:2: "));
}

TEST(Show, TracesOnStandardError) {
  std::string const entry = "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":1}\n";
  ProcessResult const quiet = runTcamshow({"ip"}, {.input = header + entry});
  EXPECT_EQ(quiet.err, "");
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--trace", "ip"}, std::vector<std::string>{"ip", "--trace"}}) {
    ProcessResult const result = runTcamshow(arguments, {.input = header + entry});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, quiet.out);
    EXPECT_THAT(result.err,
                HasSubstr("VelmorTcamCliTypes/8 VelmorTcamManagerBase/VelmorTcamCliTypes:524 "
                          "handleInitialized: IpEntryRequestCliFormat::handleInitialized\n"));
    EXPECT_THAT(result.err,
                HasSubstr("VelmorTcamCliTypes/8 VelmorTcamManagerBase/VelmorTcamCliTypes:497 "
                          "formatEntryRequest: formatEntryRequest\n"));
  }
}

TEST(Show, EndsWithOneWhenTheDiskIsFullAndQuietlyWhenThePipeIsClosed) {
  std::string input = header;
  for (int i = 0; i < 5000; ++i) {
    input += "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":1}\n";
  }
  for (const char* const command : {"ip", "tcam"}) {
    SCOPED_TRACE(command);
    ProcessResult result = runTcamshow({command}, {.input = input, .outPath = "/dev/full"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: cannot write the output: No space left on device\n");
    result = runTcamshow({command}, {.input = input, .outLimit = 1});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
  }
}

TEST(Show, RefusesAnEndlessLineWithoutKeepingIt) {
  ProcessOptions options;
  options.feed = [](int descriptor) {
    std::string const text = std::string(header) + "{\"type\":\"";
    if (::write(descriptor, text.data(), text.size()) < 0) return;
    std::string const piece(1 << 20, 'x');
    for (int i = 0; i < 100; ++i) {
      if (::write(descriptor, piece.data(), piece.size()) < 0) return;
    }
  };
  ProcessResult const result = runTcamshow({"ip"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "tcamshow: <stdin>:2: the line is longer than 1 MiB\n");
}

TEST(Show, MemoryDoesNotGrowWithTheSnapshot) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer takes memory of its own";
#endif
  for (const char* const command : {"ip", "tcam"}) {
    SCOPED_TRACE(command);
    ProcessOptions options;
    options.outPath = "/dev/null";
    options.addressSpaceKib = 32 * 1024;  // less than the snapshot takes
    options.feed = [](int descriptor) {
      std::string const first = header;
      if (::write(descriptor, first.data(), first.size()) < 0) return;
      std::string piece;
      for (int i = 0; i < 1000; ++i) {
        piece +=
            "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":1,\"description\":\"one of many\","
            "\"qualifiers\":{\"qualifierSrcIp\":{\"value\":\"10.0.0.1\",\"mask\":\"255.0.0.0\"},"
            "\"qualifierIpProtocol\":{\"value\":6,\"mask\":255}}}\n";
      }
      for (int i = 0; i < 200; ++i) {
        if (::write(descriptor, piece.data(), piece.size()) < 0) return;
      }
    };
    ProcessResult const result = runTcamshow({command}, options);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
  }
}

}  // namespace
