// How far counters have moved since an older snapshot.
#include "questions/Since.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Answers.h"

namespace tcamshow {
namespace {

std::string line(int id, const std::string& members) {
  return R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(id) + members + "}";
}

/// "hits bytes mark" of each entry, in match order; "-" where nothing is known.
std::vector<std::string> since(const std::vector<std::string>& before,
                               const std::vector<std::string>& now) {
  TemporaryFile const file(snapshotOf(before));
  Complaints complaints;
  auto const baseline = openSnapshot(InputFile(file.path()), complaints);
  Since moved(*baseline);
  std::vector<std::string> result;
  auto const store = storeOf(snapshotOf(now));
  auto const textOf = [](const std::optional<std::uint64_t>& number) {
    return number ? std::to_string(*number) : std::string("-");
  };
  for (const PlaceInfo& place : store->places()) {
    Entry scratch;
    for (std::uint32_t const number : place.entries) {
      SinceFacts const facts = moved.of(store->entry(number, scratch));
      result.push_back(textOf(facts.hits) + " " + textOf(facts.bytes) + " " +
                       std::string(sinceMarkName(facts.mark)));
    }
  }
  return result;
}

TEST(Since, ComparesWithThePartner) {
  std::string const counted = R"(,"counterStatus":7)";
  struct Row {
    const char* name;
    std::vector<std::string> before, now, facts;
  } const rows[] = {
      {"grown",
       {line(1, counted + R"(,"hits":5,"bytes":100)")},
       {line(1, counted + R"(,"hits":9,"bytes":100)")},
       {"4 0 "}},
      {"an action or a sequence makes no other entry",
       {line(1, counted + R"(,"hits":5,"action":"permit","sequence":1,"priority":3)")},
       {line(1, counted + R"(,"hits":9,"action":"deny","sequence":2,"priority":4)")},
       {"4 - "}},
      {"another id is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(2, counted + R"(,"hits":9)")},
       {"9 - new"}},
      {"another match is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(1, counted + R"(,"hits":9,"bytes":3,"otherMatch":"in_port=3")")},
       {"9 3 new"}},
      {"another place is new",
       {line(1, counted + R"(,"hits":5)")},
       {line(1, counted + R"(,"hits":9,"copyId":1)"), line(1, counted + R"(,"hits":6)")},
       {"1 - ", "9 - new"}},
      {"each counter that fell is whole",
       {line(1, counted + R"(,"hits":5,"bytes":50)")},
       {line(1, counted + R"(,"hits":3,"bytes":60)")},
       {"3 10 reset"}},
      {"bytes that fell",
       {line(1, counted + R"(,"bytes":50)")},
       {line(1, counted + R"(,"bytes":7)")},
       {"0 7 reset"}},
      {"not programmed or not reported is not 0",
       {line(1, R"(,"hits":5)"), line(2, counted + R"(,"hits":5,"bytes":1)")},
       {line(1, counted + R"(,"hits":6,"bytes":2)"), line(2, R"(,"hits":9)")},
       {"- - ", "- - "}},
      {"new and not programmed", {}, {line(1, R"(,"hits":6)")}, {"- - new"}},
      {"each of several alike has a partner of its own",
       {line(1, counted + R"(,"hits":1)"), line(1, counted + R"(,"hits":10)")},
       {line(1, counted + R"(,"hits":3)"), line(1, counted + R"(,"hits":14)"),
        line(1, counted + R"(,"hits":5)")},
       {"2 - ", "4 - ", "5 - new"}},
      {"up to the largest",
       {line(1, counted + R"(,"hits":0)")},
       {line(1, counted + R"(,"hits":18446744073709551615)")},
       {"18446744073709551615 - "}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(since(row.before, row.now), row.facts);
  }
}

TEST(Since, KnowsWhenTheBaselineWasTaken) {
  TemporaryFile const file(
      "{\"type\":\"snapshot\",\"version\":2,\"takenAt\":\"2026-01-31T12:30:00Z\"}\n"
      "{\"type\":\"end\",\"groups\":0,\"entries\":0}\n");
  Complaints complaints;
  auto const baseline = openSnapshot(InputFile(file.path()), complaints);
  Since const since(*baseline);
  EXPECT_EQ(since.header().takenAt.text, "2026-01-31T12:30:00Z");
  EXPECT_EQ(since.fileName(), file.path());
}

}  // namespace
}  // namespace tcamshow
