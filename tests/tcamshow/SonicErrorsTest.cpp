// Bundles that are refused.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Process.h"
#include "SonicFiles.h"

namespace tcamshow {
namespace {

using Texts = std::vector<std::string>;

Texts read(const SonicFiles& files) {
  return readSonic(
      files, [](const Entry& entry) { return std::to_string(entry.shadowId); }, true);
}

TEST(SonicErrors, RefusesBadBundles) {
  struct Row {
    std::string asic;
    std::string config;
    std::string counters;
    const char* error;
  };
  std::string const table = asicTable("0x7");
  std::string const good = "{" + table + "}";
  auto const entry = [&](const Texts& attributes) {
    return "{" + table + ",\n" + asicEntry("0x8", "0x7", attributes) + "}";
  };
  auto const range = [&](const std::string& members) {
    return "{" + table + ",\n\"ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:0xa\":{" + members + "}}";
  };
  std::string const entryKey = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8";
  std::string const rangeKey = "ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:0xa";
  Row const rows[] = {
      // Empty, cut, of another kind.
      {"", "", "", "ASIC_DB.json:1: the document is empty"},
      {"{}", "", "", "ASIC_DB.json: no key begins with ASIC_STATE:, so this is no ASIC_DB"},
      {good.substr(0, 20), "", "",
       "ASIC_DB.json:1: not valid JSON: a string does not end, at byte 2"},
      {"{" + table, "", "",
       "ASIC_DB.json:1: not valid JSON: the document does not end where the object does, at byte "
       "105, member \"ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:0x7\""},
      {"[]", "", "", "ASIC_DB.json:1: the document is not a JSON object"},
      {"{" + row("ACL_RULE|A|R", {}) + "}", "", "",
       "ASIC_DB.json:1: this is CONFIG_DB, not ASIC_DB"},
      {good, good, "", "CONFIG_DB.json:1: this is ASIC_DB, not CONFIG_DB"},
      {good, "{\n\"PORT|Ethernet0\":{},\n\"COUNTERS:oid:0x1\":{}}", "",
       "CONFIG_DB.json:3: this is COUNTERS_DB, not CONFIG_DB"},
      {good, R"({"ACL_RULE_TABLE|A|R":{}})", "",
       "CONFIG_DB.json:1: this is STATE_DB, not CONFIG_DB"},
      {good, R"({"ACL_RULE_TABLE:A:R":{}})", "",
       "CONFIG_DB.json:1: this is APPL_DB, not CONFIG_DB"},
      {good, R"({"ACL_RULE":{"A|R":{}}})", "",
       "CONFIG_DB.json:1: this is the switch's configuration file, not CONFIG_DB"},
      {good, "{}", R"({"ACL_TABLE|A":{}})",
       "COUNTERS_DB.json:1: this is CONFIG_DB, not COUNTERS_DB"},
      {std::string("{\0}", 3), "", "", "ASIC_DB.json:1: the document holds a NUL byte"},
      {"{\"\xC3\"}", "", "", "ASIC_DB.json:1: not valid UTF-8, at byte 3"},
      // Rows.
      {"{" + table + ",\n" + table + "}", "", "",
       "ASIC_DB.json: tables of the same id stand twice"},
      {"{" + table + ",\n" + asicEntry("0x8", "0x7", {}) + ",\n" + asicEntry("0x08", "0x7", {}) +
           "}",
       "", "", nullptr},
      {"{" + asicEntry("0x8", "0x7", {}) + "}", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: the table of TABLE_ID is not "
       "in the database"},
      {"{" + table + ",\"" + entryKey + "\":5}", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: the row is not an object"},
      {"{" + table + ",\"" + entryKey + "\":{}}", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: TABLE_ID is missing"},
      {"{" + table + ",\"" + entryKey + R"(":{"type":"set","value":["a"]}})", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: \"type\" is not an attribute "
       "of an ACL entry"},
      {"{" + asicTable("x") + "}", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:x: the key does not end in an "
       "object id"},
      {"{" + asicTable("0x7", "SIDEWAYS") + "}", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:0x7: ACL_STAGE: "
       "\"SAI_ACL_STAGE_SIDEWAYS\" is not a stage"},
      {R"({"ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:0x7":{}})", "", "",
       "ASIC_DB.json:1: ASIC_STATE:SAI_OBJECT_TYPE_ACL_TABLE:oid:0x7: "
       "SAI_ACL_TABLE_ATTR_ACL_STAGE is missing"},
      // Fields.
      {entry({"PRIORITY=-1"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: PRIORITY: \"-1\" is not a "
       "number from 0 to 4294967295"},
      {entry({"PRIORITY=1", "PRIORITY=1"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: PRIORITY stands twice"},
      {entry({"TABLE_ID=oid:0x7"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: TABLE_ID stands twice"},
      {entry({"ADMIN_STATE=up"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: ADMIN_STATE: \"up\" is not "
       "true or false"},
      {entry({"FIELD_SRC_IP=10.0.0&mask:255.0.0.0"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: FIELD_SRC_IP: "
       "\"10.0.0&mask:255.0.0.0\" is not a value of this field and its mask"},
      {entry({"FIELD_L4_SRC_PORT=65536&mask:0xffff"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: FIELD_L4_SRC_PORT: "
       "\"65536&mask:0xffff\" is not a value of this field and its mask"},
      {entry({"FIELD_DSCP=8&mask:x"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: FIELD_DSCP: \"8&mask:x\" is "
       "not a value of this field and its mask"},
      {entry({"FIELD_ACL_RANGE_TYPE=2:oid:0xa"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: ACL_RANGE_TYPE: "
       "\"2:oid:0xa\" "
       "is not as many objects as it says"},
      {entry({"FIELD_ACL_RANGE_TYPE=oid:0xa"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: ACL_RANGE_TYPE: \"oid:0xa\" "
       "is "
       "not a list of objects"},
      {entry({"ACTION_COUNTER=9"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: "
       "SAI_ACL_ENTRY_ATTR_ACTION_COUNTER: \"9\" is not an object id"},
      {entry({"FIELD_TC=\\u0007"}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: the row holds a control "
       "character"},
      {entry({"FIELD_TC=" + std::string(40000, '1')}), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_ENTRY:oid:0x8: the entry's texts are longer "
       "than 32 KiB"},
      {range(R"("SAI_ACL_RANGE_ATTR_TYPE":"SAI_ACL_RANGE_TYPE_OUTER_VLAN")"), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:0xa: SAI_ACL_RANGE_ATTR_LIMIT is "
       "missing"},
      {range(R"("SAI_ACL_RANGE_ATTR_LIMIT":"5")"), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:0xa: SAI_ACL_RANGE_ATTR_LIMIT: "
       "\"5\" is not two numbers with a comma between them"},
      {range(R"("SAI_ACL_RANGE_ATTR_LIMIT":"5,6","SAI_ACL_RANGE_ATTR_TYPE":"X")"), "", "",
       "ASIC_DB.json:2: ASIC_STATE:SAI_OBJECT_TYPE_ACL_RANGE:oid:0xa: SAI_ACL_RANGE_ATTR_TYPE: "
       "\"X\" is not a type of range"},
      // The configuration and the counters.
      {good, R"({"ACL_RULE|R":{}})", "",
       "CONFIG_DB.json:1: ACL_RULE|R: the key does not name a table and a rule"},
      {good, "{" + row("ACL_RULE|A|R", {}) + ",\n" + row("ACL_RULE|A|R", {}) + "}", "",
       "CONFIG_DB.json:2: ACL_RULE|A|R: stands twice"},
      {good, "{" + row("ACL_TABLE|A", {}) + ",\n" + row("ACL_TABLE|A", {}) + "}", "",
       "CONFIG_DB.json: ACL_TABLE|A: stands twice"},
      {good, R"({"ACL_RULE|A|\u0001":{}})", "",
       "CONFIG_DB.json:1: ACL_RULE|A|\\u{1}: \"A|\\u{1}\" holds a control character"},
      {good, "{}", "{" + row("ACL_COUNTER_RULE_MAP", {"A:R=9"}) + "}",
       "COUNTERS_DB.json:1: ACL_COUNTER_RULE_MAP: A:R: \"9\" is not an object id"},
      {entry({"ACTION_COUNTER=oid:0x9"}), "{}",
       "{\n" + row("COUNTERS:oid:0x9", {"SAI_ACL_COUNTER_ATTR_PACKETS=N/A"}) + "}",
       "COUNTERS_DB.json:2: COUNTERS:oid:0x9: SAI_ACL_COUNTER_ATTR_PACKETS: \"N/A\" is not a "
       "number "
       "from 0 to 18446744073709551615"},
      {good, "{}",
       "{" + row("CRM:ACL_TABLE_STATS:0x7", {"crm_stats_acl_entry_used=4294967296"}) + "}",
       "COUNTERS_DB.json:1: CRM:ACL_TABLE_STATS:0x7: crm_stats_acl_entry_used: \"4294967296\" is "
       "not "
       "a number from 0 to 4294967295"},
  };
  for (const Row& each : rows) {
    SCOPED_TRACE(each.error == nullptr ? "an entry twice" : each.error);
    SonicFiles const files;
    files.write("ASIC_DB.json", each.asic);
    if (!each.config.empty()) files.write("CONFIG_DB.json", each.config);
    if (!each.counters.empty()) files.write("COUNTERS_DB.json", each.counters);
    Texts const all = read(files);
    if (each.error == nullptr) {
      ASSERT_EQ(all.size(), 1U);
      EXPECT_NE(all[0].find("stands twice"), std::string::npos) << all[0];
    } else {
      EXPECT_EQ(all, Texts{each.error});
    }
    // Nothing is written.
    ProcessResult const result = runTcamshow({"import", "sonic", files.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
  }
}

TEST(SonicErrors, RefusesEachDatabaseThatIsEmptyCutOrOfAnotherKind) {
  std::string const rules = "{" + row("ACL_RULE|A|R", {"PRIORITY=1"}) + "}";
  std::string const counts = "{" + row("COUNTERS:oid:0x9", {"Packets=1"}) + "}";
  struct Database {
    std::string name;
    std::string good;
    std::string other;  ///< the text of another one
  };
  Database const databases[] = {
      {"ASIC_DB", "{" + asicTable("0x7") + "}", counts},
      {"CONFIG_DB", rules, counts},
      {"COUNTERS_DB", counts, rules},
      {"STATE_DB", "{" + row("ACL_RULE_TABLE|A|R", {"status=Active"}) + "}", rules},
  };
  for (const Database& database : databases) {
    std::string const file = database.name + ".json";
    struct Row {
      std::string text;
      std::string error;
    };
    Row const rows[] = {
        {"", file + ":1: the document is empty"},
        {" \n", file + ":2: the document is empty"},
        {database.good.substr(0, database.good.size() - 2), file + ":1: not valid JSON: "},
        {database.good + "{}", file + ":1: not valid JSON: "},
        {database.other, file + ":1: this is "},
        {"\x1F\x8B\x08", file + ": the compressed data ends early"},
        {"[1]", file + ":1: the document is not a JSON object"},
    };
    for (const Row& each : rows) {
      SCOPED_TRACE(each.error + " " + each.text);
      SonicFiles const files;
      for (const Database& one : databases) files.write(one.name + ".json", one.good);
      EXPECT_FALSE(read(files)[0].starts_with(database.name));
      files.write(file, each.text);
      Texts const all = read(files);
      ASSERT_EQ(all.size(), 1U);
      EXPECT_EQ(all[0].substr(0, each.error.size()), each.error);
    }
  }
}

TEST(SonicErrors, RefusesADirectoryWithoutTheAsicsDatabase) {
  SonicFiles const files;
  EXPECT_EQ(read(files),
            Texts{"DIR: the directory holds no ASIC_DB.json, so it is no SONiC bundle"});
  std::filesystem::create_directory(std::filesystem::path(files.path()) / "dump");
  EXPECT_EQ(read(files),
            Texts{"DIR: the directory holds no ASIC_DB.json, so it is no SONiC bundle; an archive "
                  "has it in dump"});
  ProcessResult const result = runTcamshow({"import", "sonic", "/dev/null"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "tcamshow: /dev/null: this is not a directory, as a SONiC bundle is\n");
}

}  // namespace
}  // namespace tcamshow
