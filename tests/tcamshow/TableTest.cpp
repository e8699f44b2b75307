// The tables as a whole: what the commands print for a snapshot, to the byte.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include "Process.h"
#include "TemporaryFile.h"

namespace tcamshow {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::filesystem::path sharedData(const char* directory) {
  return std::filesystem::path(TCAMSHOW_SHARED_DATA) / directory;
}

TEST(Table, IsPrintedToTheByte) {
  for (std::string const table : {"ip6", "mac"}) {
    SCOPED_TRACE(table);
    std::filesystem::path const golden = std::filesystem::path(TCAMSHOW_GOLDEN) / table;
    std::string const expected = contentOf(golden.string() + ".txt");
    ASSERT_NE(expected, "");
    ProcessResult const result = runTcamshow({table, golden.string() + ".jsonl"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, expected);
  }
}

TEST(Table, IsTheHeaderAloneWithoutEntries) {
  std::string const snapshot =
      "{\"type\":\"snapshot\",\"version\":1}\n"
      "{\"type\":\"entry\",\"table\":\"tcam\",\"shadowId\":1}\n";
  struct Row {
    const char* table;
    std::ptrdiff_t lines;
    const char* start;
  };
  Row const rows[] = {{"ip", 2, "Id        | Seq   |"},
                      {"ip6", 3, "Id   | Seq     |"},
                      {"mac", 1, "Id   | Seq | Src Mac         |"}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.table);
    ProcessResult const result = runTcamshow({row.table}, {.input = snapshot});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith(row.start));
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), row.lines);
  }
}

// The rows before the bad line are printed.
TEST(Table, EndsAtABadLine) {
  std::string const snapshot =
      "{\"type\":\"snapshot\",\"version\":1}\n"
      "{\"type\":\"entry\",\"table\":\"mac\",\"shadowId\":1,\"sequence\":10,\"action\":\"permit\"}"
      "\n"
      "{\"type\":\"entry\",\"table\":\"mac\",\"shadowId\":2,\"qualifiers\":{\"qualifierSrcMac\":"
      "{\"value\":\"00:00:5e:00:53\",\"mask\":\"ff:ff:ff:ff:ff:ff\"}}}\n";
  ProcessResult const result = runTcamshow({"mac"}, {.input = snapshot});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("\n1    |10   |"));
  EXPECT_EQ(result.err,
            "tcamshow: <stdin>:3: entry: member \"qualifiers.qualifierSrcMac.value\": "
            "\"00:00:5e:00:53\" is not a MAC address\n");
}

// --- real data

std::string quad(const unsigned (&octets)[4]) {
  char text[16];
  std::snprintf(text, sizeof text, "%u.%u.%u.%u", octets[0], octets[1], octets[2], octets[3]);
  return text;
}

/// The cells of an address with a prefix's length.
std::string addressCells(const unsigned (&octets)[4], unsigned length) {
  unsigned mask[4];
  for (unsigned i = 0; i < 4; ++i) {
    unsigned const bits = std::min(8u, length - std::min(length, 8 * i));
    mask[i] = 0xFF00 >> bits & 0xFF;
  }
  char text[40];
  std::snprintf(text, sizeof text, "%15s|%15s|", length == 0 ? "*" : quad(octets).c_str(),
                length == 0 || length == 32 ? "*" : quad(mask).c_str());
  return text;
}

std::string portCell(unsigned low, unsigned high) {
  char ports[16] = "*";
  if (low == high) {
    std::snprintf(ports, sizeof ports, "%u", low);
  } else if (low != 0 || high != 65535) {
    std::snprintf(ports, sizeof ports, "%u-%u", low, high);
  }
  char text[24];
  std::snprintf(text, sizeof text, "%11s|", ports);
  return text;
}

/// The row of filter `number`, straight from its line; nothing where the line has what no filter
/// set here has.
std::optional<std::string> rowOfFilter(const std::string& line, unsigned number) {
  unsigned source[4];
  unsigned destination[4];
  unsigned sourceLength = 0;
  unsigned destinationLength = 0;
  unsigned sourceLow = 0;
  unsigned sourceHigh = 0;
  unsigned destinationLow = 0;
  unsigned destinationHigh = 0;
  int protocol = 0;
  int protocolMask = 0;
  int flags = 0;
  int flagsMask = 0;
  // NOLINTNEXTLINE(cert-err34-c): the number of fields read tells
  int const fields = std::sscanf(
      line.c_str(), "@%u.%u.%u.%u/%u %u.%u.%u.%u/%u %u : %u %u : %u %i/%i %i/%i", &source[0],
      &source[1], &source[2], &source[3], &sourceLength, &destination[0], &destination[1],
      &destination[2], &destination[3], &destinationLength, &sourceLow, &sourceHigh,
      &destinationLow, &destinationHigh, &protocol, &protocolMask, &flags, &flagsMask);
  if (fields != 16 && fields != 18) return std::nullopt;
  if (protocolMask != 0 && protocolMask != 255) return std::nullopt;

  std::string protocolText = "*";
  if (protocolMask != 0 && protocol != 0) {
    char hexadecimal[16];
    std::snprintf(hexadecimal, sizeof hexadecimal, "0x%02x", static_cast<unsigned>(protocol));
    protocolText = protocol == 6    ? "TCP"
                   : protocol == 17 ? "UDP"
                   : protocol == 1  ? "ICMP"
                                    : hexadecimal;
  }
  std::string sourcePort = portCell(sourceLow, sourceHigh);
  std::string destinationPort = portCell(destinationLow, destinationHigh);
  std::string flagsText;
  if (flagsMask != 0 && protocol == 6 && (flagsMask >> 8 & 63) != 0) {
    int const set = flags & flagsMask;
    for (int bit = 0; bit < 6; ++bit)
      flagsText += (set >> (8 + bit) & 1) != 0 ? "FSRPAU"[bit] : ' ';
  } else if (protocol == 1) {
    if (sourcePort.find('*') == std::string::npos || destinationPort.find('*') == std::string::npos)
      return std::nullopt;
    // A type, perhaps with its code; a code alone no filter has.
    if ((flagsMask & 0xFF) != 0 && (flagsMask & 0xFF00) == 0) return std::nullopt;
    auto const type = static_cast<unsigned>(flags >> 8 & 0xFF);
    auto const code = static_cast<unsigned>(flags & 0xFF);
    if ((flagsMask & 0xFF00) != 0) sourcePort = portCell(type, type);
    if ((flagsMask & 0xFF) != 0) destinationPort = portCell(code, code);
  } else if (flagsMask != 0) {
    return std::nullopt;
  }

  char row[512];
  int const size = std::snprintf(
      row, sizeof row,
      "%-10u|%-7u| %-6s|%s%s          *|          *|\n"
      "          |   *   | %-6s|%s%s          *|permit\n",
      number, 10 * number, protocolText.c_str(), addressCells(source, sourceLength).c_str(),
      sourcePort.c_str(), flagsText.c_str(), addressCells(destination, destinationLength).c_str(),
      destinationPort.c_str());
  return std::string(row, static_cast<std::size_t>(size));
}

/// The filter's text as the entry's description has it.
std::string descriptionOf(const std::string& line) {
  std::istringstream fields(line.substr(1));
  std::string text;
  for (std::string field; fields >> field;) (text += text.empty() ? "" : " ") += field;
  return text;
}

TEST(Table, ShowsEveryFilterOfRealFilterSets) {
  std::filesystem::path const directory = sharedData("classbench");
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << "no filter sets";
  std::size_t files = 0;
  for (auto const& file : std::filesystem::directory_iterator(directory)) {
    SCOPED_TRACE(file.path().filename());
    ++files;
    std::string rows;
    std::string tcam;
    std::ifstream lines(file.path());
    unsigned number = 0;
    for (std::string line; std::getline(lines, line);) {
      if (line.empty() || line.front() == '#') continue;
      auto const row = rowOfFilter(line, ++number);
      ASSERT_TRUE(row.has_value()) << line;
      rows += *row;
      char start[64];
      std::snprintf(start, sizeof start, "    0x%08x %12u hits - ", number, 0u);
      tcam += start + descriptionOf(line) + "\n";
    }
    TemporaryFile const snapshot(runTcamshow({"import", "classbench", file.path()}).out);
    ProcessResult const ip = runTcamshow({"ip", snapshot.path()});
    EXPECT_EQ(ip.err, "");
    std::size_t const headerSize = ip.out.find('\n', ip.out.find('\n') + 1) + 1;
    // Not EXPECT_EQ: a difference of megabytes is no help.
    ASSERT_EQ(ip.out.size() - headerSize, rows.size());
    auto const differs = std::mismatch(rows.begin(), rows.end(),
                                       ip.out.begin() + static_cast<std::ptrdiff_t>(headerSize));
    ASSERT_TRUE(differs.first == rows.end())
        << "from: " << std::string(differs.first, std::min(differs.first + 200, rows.end()));
    EXPECT_TRUE(runTcamshow({"tcam", snapshot.path()}).out == tcam);
  }
  EXPECT_GE(files, 10u);
}

std::string sha256Of(const std::string& text) {
  ProcessResult const result = runProcess({"/usr/bin/sha256sum"}, {.input = text});
  return result.out.substr(0, 64);
}

// The rows were compared once, cell by cell, with a second implementation; the files may not be
// copied, so their tables are known here by what identifies them.
TEST(Table, ShowsRealDocuments) {
  std::filesystem::path const directory = sharedData("openconfig");
  if (!std::filesystem::exists(directory)) GTEST_SKIP() << "no documents";
  struct Row {
    const char* file;
    const char* table;
    std::ptrdiff_t lines;
    const char* sha256;
    const char* part;
  };
  constexpr const char* noIp = "8b19fecae8f37746d3ce0acc15117c12c98232578b43802f73092b9044c95b95";
  constexpr const char* noIp6 = "912c85f04417078f3987dd2ceb232d2ec3b0f93503e195431520cbab3519a6ec";
  constexpr const char* noMac = "627bd143a29768e2ec3e0d44bdca28bd9cf5e2a3ea03451133cc8c9d755f827a";
  Row const rows[] = {
      {"acl1.json", "ip", 22, "e71ecf1f0435eb8dd66f8731616927aa8c862d9d88b59e177a1bbcc9978137eb",
       "\n6         |1      | ICMP  |       20.0.0.2|              *|          3|          *|"
       "          *|\n          |   *   |       |       30.0.0.3|              *|          0|"
       "          *|permit\n"},
      {"acl1.json", "ip6", 24, "bb73f1fea62cd99b2f311261408560559cf75b54c445801b355b21370b819728",
       "\n10   |100      | ICMPv6|                                    ::1|            *|        "
       "128|"
       "          *|          *|\n"},
      {"acl1.json", "mac", 2, "6359a79c24fe000fbc8899bd0f0989dbe179067c809848d7599879011d30cc79",
       "\n8    |3    |                 |                 |                 |                 |"
       "88cch|   369|    4095|permit|\n"},
      {"acltb_test_rules_part_1.json", "ip", 18,
       "aed6d67f9830b1aee2b1051da43dd231f7cf741b15d54657d3ae9d51a6fc6aa6", "\n8         |"},
      {"acltb_test_rules_part_1.json", "ip6", 3, noIp6, ""},
      {"acltb_test_rules_part_1.json", "mac", 1, noMac, ""},
      {"default_acl_rules.json", "ip", 2, noIp, ""},
      {"default_acl_rules.json", "ip6", 3, noIp6, ""},
      {"default_acl_rules.json", "mac", 2,
       "bb6c8b6aaef14df2c83fb13d6ef4adc42a3036282b6f21d74b314373ba6ea4a4", "\n1    |"},
      {"drop_packets_acltb_test_rule.json", "ip", 4,
       "13b029c8c738db614b000d19f6c6a49de4953ebdc01fd889de366497f740f883", "|deny\n"},
      {"drop_packets_acltb_test_rule.json", "ip6", 3, noIp6, ""},
      {"drop_packets_acltb_test_rule.json", "mac", 2,
       "8b98dd8ec126e1dd1ada79092d36090290395f5eb54430775d1cf825111ba8c9",
       "| 800h|     *|       *|permit|\n"},
      {"empty_acl.json", "ip", 2, noIp, ""},
      {"empty_acl.json", "ip6", 3, noIp6, ""},
      {"empty_acl.json", "mac", 1, noMac, ""},
      {"incremental_1.json", "ip", 4,
       "26a46354a73d093ca0ac4a69a02b8189e502cd4e274694786d230a3d975e632b", "\n1         |"},
      {"incremental_1.json", "ip6", 3, noIp6, ""},
      {"incremental_1.json", "mac", 1, noMac, ""},
      {"rendered_acltb_test_rules_v4.json", "ip", 68,
       "2f010593e4af4e4f7489a5f1c51dce7cb3ffbb589f8140d4bd5d60de435d12bb",
       "\n5         |5      | 0x7e  |"},
      {"rendered_acltb_test_rules_v4.json", "ip6", 3, noIp6, ""},
      {"rendered_acltb_test_rules_v4.json", "mac", 1, noMac, ""},
      {"rendered_acltb_v6_test_rules_part_1.json", "ip", 2, noIp, ""},
      {"rendered_acltb_v6_test_rules_part_1.json", "ip6", 27,
       "cd00deb44315b5ba7911fb651bdb797d43d2018c26a7cce21f974e7d6ee32232",
       "\n5    |13       | UDP   |                           70c0:a800::4|            *|"},
      {"rendered_acltb_v6_test_rules_part_1.json", "mac", 1, noMac, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.file) + " " + row.table);
    ProcessResult const imported = runTcamshow({"import", "openconfig", directory / row.file});
    ASSERT_EQ(imported.status, 0) << imported.err;
    ProcessResult const table = runTcamshow({row.table}, {.input = imported.out});
    EXPECT_EQ(table.err, "");
    EXPECT_EQ(std::count(table.out.begin(), table.out.end(), '\n'), row.lines);
    EXPECT_THAT(table.out, HasSubstr(row.part));
    EXPECT_EQ(sha256Of(table.out), row.sha256) << table.out;
  }
  // A match that no qualifier can hold is kept as it is.
  ProcessResult const kept = runTcamshow({"import", "openconfig", directory / "acl1.json"});
  EXPECT_EQ(kept.err, "");
  EXPECT_THAT(kept.out, HasSubstr("\"otherMatch\":\"input_interface="));
}

}  // namespace
}  // namespace tcamshow
