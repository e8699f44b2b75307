// `usage` and `summary`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Process.h"
#include "TemporaryFile.h"

namespace {

// Several of everything, in no order: stages, pipes on both sides of 0, priorities, groups, copies,
// features of one name in one priority and in two, ids that come twice, an entry whose place has no
// group line, a group without entries, numbers that show as negative.
constexpr const char* manyPlaces = R"({"type":"snapshot","version":1,"numPipes":2}
{"type":"group","pipe":1,"groupPriority":1,"groupId":65543,"name":"acl","availableEntries":100}
{"type":"entry","table":"ip","shadowId":3,"pipe":1,"groupPriority":1,"groupId":65543,"priority":10,"feature":"web","description":"second","hits":7}
{"type":"entry","table":"ip","shadowId":4294967297,"pipe":1,"groupPriority":1,"groupId":65543,"priority":20,"feature":"web","description":"first, of id 2^32+1","hits":18446744073709551615}

{"type":"entry","table":"ip6","shadowId":3,"pipe":1,"groupPriority":1,"groupId":65543,"priority":10,"feature":"web","description":"dropped","hits":8}
{"type":"entry","table":"mac","shadowId":3,"pipe":1,"groupPriority":1,"groupId":65543,"priority":9,"feature":"web","description":"kept: another priority"}
{"type":"entry","table":"tcam","shadowId":2,"pipe":1,"groupPriority":1,"groupId":65543,"priority":10,"feature":"web","description":""}
{"type":"entry","table":"ip","shadowId":3,"pipe":1,"groupPriority":1,"groupId":65543,"priority":10,"feature":"dns","description":"in another feature"}
{"type":"entry","table":"ip","shadowId":9,"pipe":1,"groupPriority":1,"groupId":65543,"featurePriority":4294967295,"feature":"web"}
{"type":"entry","table":"ip","shadowId":8,"pipe":1,"groupPriority":1,"groupId":65543,"featurePriority":5,"feature":"ant"}
{"type":"entry","table":"ip","shadowId":1,"pipe":-2,"groupId":2,"copyId":1,"feature":"qos"}
{"type":"entry","table":"ip","shadowId":1,"pipe":-2,"groupId":2,"copyId":0,"feature":"qos"}
{"type":"entry","table":"ip","shadowId":1,"pipe":-2,"groupId":1,"copyId":7}
{"type":"group","pipe":-2,"groupId":2,"copyId":1,"name":"Zoo","availableEntries":4294967295,"freeEntries":3}
{"type":"group","pipe":-2,"groupId":2,"copyId":0,"name":"acl"}
{"type":"group","pipe":0,"groupPriority":3,"groupId":1,"name":"none","availableEntries":64}
{"type":"group","pipe":0,"groupPriority":2,"groupId":2,"name":"none","availableEntries":65}
{"type":"entry","stage":"egress","table":"ip","shadowId":4294967295,"groupId":4,"priority":4294967295,"feature":"qos","hits":1,"description":"egress"}
{"type":"group","stage":"egress","groupId":4,"name":"acl","availableEntries":1}
{"type":"entry","stage":"egress","table":"ip","shadowId":1,"groupId":4,"feature":"new"}
{"type":"entry","stage":"egress","table":"ip","shadowId":1,"groupId":4,"featurePriority":1,"feature":"new"}
{"type":"group","stage":"lookup","pipe":-32768,"groupId":4294967295,"name":"acl"}
{"type":"entry","stage":"lookup","pipe":-32768,"table":"ip","shadowId":1,"groupId":4294967295,"feature":"dup"}
{"type":"entry","stage":"lookup","pipe":-32768,"table":"ip","shadowId":1,"groupId":4294967295,"featurePriority":1,"feature":"dup"}
)";

constexpr const char* warnings =
    "tcamshow: <stdin>:6: warning: entry: member \"shadowId\": an earlier entry of its place has 3 "
    "too (and 4 more)\n";

constexpr const char* usage = R"(Stage lookup
TCAM group 65535 in PIPE -32768 uses 2 entries and can use up to 0 more.
  dup uses 1 entries.
  dup uses 1 entries.
Stage ingress
TCAM group 1 in PIPE -2 uses 1 entry and can use up to 0 more.
   uses 1 entries.
TCAM group 2 in PIPE -2 uses 1 entry and can use up to 0 more.
  qos uses 1 entries.
TCAM group 2 in PIPE -2 uses 1 entry and can use up to -1 more.
  qos uses 1 entries.
TCAM group 2 in PIPE 0 uses 0 entries and can use up to 65 more.
TCAM group 1 in PIPE 0 uses 0 entries and can use up to 64 more.
TCAM group 7 in PIPE 1 uses 7 entries and can use up to 100 more.
  web uses 4 entries.
  dns uses 1 entries.
  ant uses 1 entries.
  web uses 1 entries.
Stage egress
TCAM group 4 in PIPE 0 uses 3 entries and can use up to 1 more.
  qos uses 1 entries.
  new uses 1 entries.
  new uses 1 entries.
)";

constexpr const char* usageDetail = R"(Stage lookup
TCAM group 65535 in PIPE -32768 uses 2 entries and can use up to 0 more.
  dup uses 1 entries.
    0x00000001            0 hits - 
  dup uses 1 entries.
    0x00000001            0 hits - 
Stage ingress
TCAM group 1 in PIPE -2 uses 1 entry and can use up to 0 more.
   uses 1 entries.
    0x00000001            0 hits - 
TCAM group 2 in PIPE -2 uses 1 entry and can use up to 0 more.
  qos uses 1 entries.
    0x00000001            0 hits - 
TCAM group 2 in PIPE -2 uses 1 entry and can use up to -1 more.
  qos uses 1 entries.
    0x00000001            0 hits - 
TCAM group 2 in PIPE 0 uses 0 entries and can use up to 65 more.
TCAM group 1 in PIPE 0 uses 0 entries and can use up to 64 more.
TCAM group 7 in PIPE 1 uses 7 entries and can use up to 100 more.
  web uses 4 entries.
    0x00000001 18446744073709551615 hits - first, of id 2^32+1
    0x00000002            0 hits - 
    0x00000003            7 hits - second
    0x00000003            0 hits - kept: another priority
  dns uses 1 entries.
    0x00000003            0 hits - in another feature
  ant uses 1 entries.
    0x00000008            0 hits - 
  web uses 1 entries.
    0x00000009            0 hits - 
Stage egress
TCAM group 4 in PIPE 0 uses 3 entries and can use up to 1 more.
  qos uses 1 entries.
    0xffffffff            1 hits - egress
  new uses 1 entries.
    0x00000001            0 hits - 
  new uses 1 entries.
    0x00000001            0 hits - 
)";

// "acl" has its first pass in the lookup stage, so "dup" stands twice; "new" comes later, and once.
constexpr const char* summary = R"(
  
Zoo
  qos
acl
  dup
  dup
  qos
  web
  dns
  ant
  new
none
)";

TEST(Usage, PrintsTheTree) {
  ProcessResult const result = runTcamshow({"usage"}, {.input = manyPlaces});
  EXPECT_EQ(result.err, warnings);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, usage);
}

TEST(Usage, PrintsTheEntriesInDetail) {
  TemporaryFile const file(manyPlaces);
  for (std::vector<std::string> const& arguments :
       {std::vector<std::string>{"usage", "--detail", file.path()},
        std::vector<std::string>{"usage", file.path(), "--detail"}}) {
    ProcessResult const result = runTcamshow(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, usageDetail);
  }
}

TEST(Usage, KeepsTheFirstOfTwoIdsThatShowAlike) {
  constexpr const char* snapshot = R"({"type":"snapshot","version":1}
{"type":"entry","table":"ip","shadowId":4294967299,"priority":1,"feature":"a","description":"first"}
{"type":"entry","table":"ip","shadowId":3,"priority":1,"feature":"a","description":"second"}
)";
  ProcessResult const result = runTcamshow({"usage", "--detail"}, {.input = snapshot});
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "Stage ingress\n"
            "TCAM group 0 uses 1 entry and can use up to 0 more.\n"
            "  a uses 1 entries.\n"
            "    0x00000003            0 hits - first\n");
}

TEST(Usage, NamesNoPipeWhereThereIsOne) {
  for (const char* const numPipes : {"", R"(,"numPipes":0)", R"(,"numPipes":1)"}) {
    ProcessResult const result = runTcamshow(
        {"usage"}, {.input = R"({"type":"snapshot","version":1)" + std::string(numPipes) +
                             "}\n"
                             R"({"type":"group","pipe":3})"
                             "\n"});
    EXPECT_EQ(result.out, "Stage ingress\nTCAM group 0 uses 0 entries and can use up to 0 more.\n");
  }
}

TEST(Usage, PrintsNothingOfAnEmptySnapshot) {
  for (const char* const command : {"usage", "summary"}) {
    ProcessResult const result =
        runTcamshow({command}, {.input = R"({"type":"snapshot","version":1})"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "");
  }
}

TEST(Usage, FeaturesOfOneNameAreOneHoweverManyThereAre) {
  for (int const features : {1, 7, 8, 9, 10, 40}) {
    SCOPED_TRACE(features);
    std::string snapshot = "{\"type\":\"snapshot\",\"version\":1}\n";
    std::string expected = "Stage ingress\nTCAM group 0 uses " + std::to_string(5 * features) +
                           " entries and can use up to 0 more.\n";
    int id = 0;
    // In turn, four times in one bucket and once in another between them.
    for (int const featurePriority : {0, 0, 1, 0, 0}) {
      for (int i = 0; i < features; ++i) {
        snapshot += R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(++id) +
                    R"(,"featurePriority":)" + std::to_string(featurePriority) +
                    R"(,"feature":"f)" + std::to_string(i) + "\"}\n";
      }
    }
    for (const char* const uses : {" uses 4 entries.\n", " uses 1 entries.\n"}) {
      for (int i = 0; i < features; ++i) expected += "  f" + std::to_string(i) + uses;
    }
    EXPECT_EQ(runTcamshow({"usage"}, {.input = snapshot}).out, expected);
  }
}

TEST(Usage, TellsWhichLineIsBad) {
  std::string const bad = std::string(manyPlaces) + "{\"type\":\"entry\",\"hit\":1}\n";
  for (const char* const command : {"usage", "summary"}) {
    ProcessResult const result = runTcamshow({command}, {.input = bad});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.err,
        warnings + std::string("tcamshow: <stdin>:26: entry: member \"hit\" is not known; did "
                               "you mean \"hits\"?\n"));
  }
}

TEST(Summary, ListsTheFeaturesOfEachGroup) {
  ProcessResult const result = runTcamshow({"summary"}, {.input = manyPlaces});
  EXPECT_EQ(result.err, warnings);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, summary);
}

TEST(Summary, RecordsDuplicatesWithinTheFirstPassOnly) {
  // One group in two places of the first pipe, and again in the second pipe.
  std::string snapshot = R"({"type":"snapshot","version":1,"numPipes":2})"
                         "\n";
  for (const char* const place : {R"("pipe":0,"copyId":0)", R"("pipe":0,"copyId":1)",
                                  R"("pipe":1,"copyId":0)", R"("pipe":1,"copyId":1)"}) {
    snapshot += R"({"type":"group","name":"g",)" + std::string(place) + "}\n";
    snapshot +=
        R"({"type":"entry","table":"ip","shadowId":1,"feature":"a",)" + std::string(place) + "}\n";
  }
  snapshot += R"({"type":"entry","table":"ip","shadowId":2,"feature":"b","pipe":1})"
              "\n";
  snapshot += R"({"type":"entry","table":"ip","shadowId":2,"feature":"b","pipe":1,"copyId":1})"
              "\n";
  ProcessResult const result = runTcamshow({"summary"}, {.input = snapshot});
  EXPECT_EQ(result.out, "g\n  a\n  a\n  b\n");
}

TEST(Summary, OnePipeOfOneStageIsAPass) {
  struct Row {
    const char* what;
    const char* lines;
    const char* summary;
  };
  Row const rows[] = {
      {"the first pass has no entry",
       R"({"type":"group","pipe":0,"name":"g"}
{"type":"group","pipe":1,"copyId":0,"name":"g"}
{"type":"group","pipe":1,"copyId":1,"name":"g"}
{"type":"entry","table":"ip","shadowId":1,"pipe":1,"copyId":0,"feature":"a"}
{"type":"entry","table":"ip","shadowId":1,"pipe":1,"copyId":1,"feature":"a"}
)",
       "g\n  a\n"},
      {"one pipe number in two stages",
       R"({"type":"entry","stage":"ingress","table":"ip","shadowId":1,"feature":"a"}
{"type":"entry","stage":"egress","table":"ip","shadowId":1,"copyId":0,"feature":"a"}
{"type":"entry","stage":"egress","table":"ip","shadowId":1,"copyId":1,"feature":"a"}
)",
       "\n  a\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    std::string const header = R"({"type":"snapshot","version":1,"numPipes":2})"
                               "\n";
    ProcessResult const result = runTcamshow({"summary"}, {.input = header + row.lines});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, row.summary);
  }
}

TEST(Summary, ManyFeaturesAreEachRecordedOnce) {
  // Features by their tens of thousands in one bucket, all met again in a second pipe.
  constexpr int features = 30'000;
  std::string snapshot = R"({"type":"snapshot","version":1,"numPipes":2})"
                         "\n";
  std::string expected;
  for (int pipe = 0; pipe < 2; ++pipe) {
    for (int id = 0; id < features; ++id) {
      std::string const name = "f" + std::to_string(id);
      snapshot += R"({"type":"entry","table":"ip","shadowId":)" + std::to_string(id) +
                  R"(,"pipe":)" + std::to_string(pipe) + R"(,"feature":")" + name + "\"}\n";
      if (pipe == 0) expected += "  " + name + "\n";
    }
  }
  ProcessResult const result = runTcamshow({"summary"}, {.input = snapshot});
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.out == "\n" + expected);
}

}  // namespace
