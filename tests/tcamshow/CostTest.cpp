// `cost`: the prefixes of ranges, and its texts.
#include "questions/Cost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

/// The least number of aligned blocks, by trying all ways: the fewest from each value on.
std::uint64_t fewestBlocks(int low, int high, int bits) {
  int const end = 1 << bits;
  low = std::max(low, 0);
  high = std::min(high, end - 1);
  if (low > high) return 0;
  std::vector<std::uint64_t> fewest(static_cast<std::size_t>(high) + 2, 0);
  for (int at = high; at >= low; --at) {
    std::uint64_t best = ~std::uint64_t{0};
    for (int size = 1; size <= end; size *= 2) {
      if (at % size != 0 || at + size - 1 > high) continue;
      best = std::min(best, 1 + fewest[static_cast<std::size_t>(at + size)]);
    }
    fewest[static_cast<std::size_t>(at)] = best;
  }
  return fewest[static_cast<std::size_t>(low)];
}

TEST(Cost, CountsTheFewestPrefixes) {
  for (int low = -2; low < 70; ++low) {
    for (int high = -2; high < 70; ++high) {
      ASSERT_EQ(prefixCount(low, high, 6), fewestBlocks(low, high, 6)) << low << "-" << high;
    }
  }
  EXPECT_EQ(prefixCount(0, 65535, 16), 1U);
  EXPECT_EQ(prefixCount(1, 65534, 16), 30U);
  EXPECT_EQ(prefixCount(1024, 65535, 16), 6U);
  EXPECT_EQ(prefixCount(-2147483648, 2147483647, 16), 1U);
  EXPECT_EQ(prefixCount(65536, 70000, 16), 0U);
}

std::string entry(int id, int group, int sequence, const std::string& ranges) {
  return R"({"type":"entry","table":"ip","groupId":)" + std::to_string(group) + R"(,"shadowId":)" +
         std::to_string(id) + R"(,"sequence":)" + std::to_string(sequence) +
         R"(,"rangeCheckers":{)" + ranges + "}}";
}

std::string snapshot() {
  std::string const sport = R"("rangeCheckerL4SrcPort":{"low":1024,"high":65535)";
  std::string const dport = R"("rangeCheckerL4DstPort":{"low":1,"high":6)";
  return snapshotOf({
      R"({"type":"group","groupId":1,"name":"edge"})",
      entry(1, 1, 30, sport + "}," + dport + "}"),                // 6 * 4
      entry(2, 1, 20, dport + "}," + sport + R"(,"status":4})"),  // the same, earlier
      entry(3, 1, 10, R"("rangeCheckerL4DstPort":{"low":1,"high":7})"),
      entry(4, 1, 11, R"("rangeCheckerL4DstPort":{"low":7,"high":1})"),  // matches nothing
      entry(5, 1, 12, R"("rangeCheckerIpLength":{"low":-5,"high":70000})"),
      entry(6, 1, 13, ""),
      entry(7, 2, 0, ""),
      R"({"type":"group","groupId":3,"name":"bare"})",
  });
}

TEST(Cost, PrintsToTheByte) {
  ProcessResult const text = runTcamshow({"cost"}, {.input = snapshot()});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out,
            "ingress pipe 0 group 1 \"edge\" priority 0 copy 0: 6 entries, 53 if ranges were "
            "prefixes; range checkers: "
            "L4SrcPort 1, L4DstPort 3, IpLength 1; worst: entry 20 (id 2) with 24\n"
            "ingress pipe 0 group 2 priority 0 copy 0: 1 entry, 1 if ranges were prefixes; range "
            "checkers: L4SrcPort 0, "
            "L4DstPort 0, IpLength 0\n"
            "ingress pipe 0 group 3 \"bare\" priority 0 copy 0: 0 entries, 0 if ranges were "
            "prefixes; range checkers: "
            "L4SrcPort 0, L4DstPort 0, IpLength 0\n");
  ProcessResult const json =
      runTcamshow({"cost", "--json", "--where", "name = edge or group = 2"}, {.input = snapshot()});
  EXPECT_EQ(
      json.out,
      "{\"type\":\"cost\",\"schema\":1}\n"
      R"({"type":"cost","stage":"ingress","pipe":0,"groupPriority":0,"groupId":1,"copyId":0,"name":"edge","entries":6,"expandedEntries":53,"rangeCheckers":{"rangeCheckerL4SrcPort":1,"rangeCheckerL4DstPort":3,"rangeCheckerIpLength":1},"worst":{"shadowId":2,"entries":24}})"
      "\n"
      R"({"type":"cost","stage":"ingress","pipe":0,"groupPriority":0,"groupId":2,"copyId":0,"entries":1,"expandedEntries":1,"rangeCheckers":{"rangeCheckerL4SrcPort":0,"rangeCheckerL4DstPort":0,"rangeCheckerIpLength":0}})"
      "\n");
}

}  // namespace
}  // namespace tcamshow
