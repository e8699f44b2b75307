#include "snapshot/JsonSyntax.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace tcamshow {
namespace {

TEST(JsonSyntax, FindsNoFaultInAValue) {
  for (const char* const text :
       {"1", "-0.5e+10", "0", " [ ] ", "{}", R"({"a":[1,{"b":null}],"c":"\u00e9\n\\"})", "true",
        "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"", "[[[]]]", "{\"a\" : 1 , \"b\" : 2}\r"}) {
    SCOPED_TRACE(text);
    EXPECT_EQ(findJsonFault(text).byte, 0U);
  }
}

TEST(JsonSyntax, NamesTheByteAndTheMemberReadLast) {
  struct Row {
    std::string text;
    std::size_t byte;
    bool hasMember;
    std::string member;
  };
  Row const rows[] = {
      {"", 1, false, ""},
      {"{", 2, false, ""},
      {"[1,]", 4, false, ""},
      {"{\"a\":}", 6, true, "a"},
      {"{\"a\":1,\"b\":{\"c\":[1,x]}}", 20, true, "b.c"},
      {"{\"b\":{\"c\":1},}", 14, true, "b"},
      {"{\"\":tru}", 5, true, ""},
      {"{\"a\":\"b", 6, true, "a"},
      {"{\"a\":\"b\\", 6, true, "a"},
      {"{\"a\":\"\\x\"}", 7, true, "a"},
      {"{\"a\":\"\\u12g4\"}", 7, true, "a"},
      {"{\"a\":\"\\ud83d\\ude00\"}", 0, false, ""},
      {"{\"a\":\"\\ud83d\"}", 7, true, "a"},
      {"{\"a\":\"\\ud83d\\u0041\"}", 7, true, "a"},
      {"{\"a\":\"\\ude00\"}", 7, true, "a"},
      {"{\"a\":1.}", 8, true, "a"},
      {"{\"a\":01}", 7, true, "a"},
      {"{\"a\":-}", 7, true, "a"},
      {"{\"a\":1e}", 8, true, "a"},
      {"{\"a\":1} {", 9, false, ""},
      {"{\"a\n\":1}", 4, false, ""},
      {"\"\xE2\x82\"", 2, false, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    JsonFault const fault = findJsonFault(row.text);
    EXPECT_EQ(fault.byte, row.byte);
    EXPECT_EQ(fault.hasMember, row.hasMember);
    EXPECT_EQ(fault.member, row.member);
  }
}

TEST(JsonSyntax, AgreesWithAnotherReaderOnWhatIsJson) {
  std::mt19937 random(1);
  std::string const sound = R"({"a":[1,-2.5e3,true,null],"b":{"c":"x\u00e9\"é"},"d":[]})";
  for (int i = 0; i < 20000; ++i) {
    std::string text = sound;
    for (std::size_t changes = 1 + random() % 3; changes > 0; --changes) {
      std::size_t const at = random() % text.size();
      constexpr std::string_view bytes = "{}[],:\"\\0129-.eEtrufalsn \t\x01\xC3\xA9\xFF";
      if (random() % 2 == 0) {
        text[at] = bytes[random() % bytes.size()];
      } else {
        text.erase(at, 1);
      }
    }
    EXPECT_EQ(findJsonFault(text).byte == 0, nlohmann::json::accept(text)) << text;
  }
}

}  // namespace
}  // namespace tcamshow
