#include <gtest/gtest.h>

#include "ShadowFixture.h"

namespace VelmorTcam {
namespace {

using velmortest::ShadowOf;
using velmortest::String;

std::string line(U64 id, U64 hits, const String& description) {
  VelmorTcamCliFormat const format;
  return format.formatEntryRequest(RequestKey("acl"), RuleId(3), description, ShadowOf(id), hits)
      .str();
}

TEST(GenericFormat, PrintsAnEntryInOneLine) {
  struct Row {
    U64 id;
    U64 hits;
    const char* description;
    const char* expected;
  };
  Row const rows[] = {
      {0x1a2b, 42, "permit ip any any", "    0x00001a2b           42 hits - permit ip any any\n"},
      {0, 0, "", "    0x00000000            0 hits - \n"},
      // Only the low 32 bits of the id.
      {0x1234567890ABCDEF, 1, "x", "    0x90abcdef            1 hits - x\n"},
      {0xFFFFFFFFFFFFFFFF, 999999999999, "x", "    0xffffffff 999999999999 hits - x\n"},
      // Wider hits widen the line.
      {1, 1000000000000, "x", "    0x00000001 1000000000000 hits - x\n"},
      {1, 0xFFFFFFFFFFFFFFFF, "x", "    0x00000001 18446744073709551615 hits - x\n"},
      {1, 2, "100% %s %n", "    0x00000001            2 hits - 100% %s %n\n"},
  };
  for (auto const& row : rows) EXPECT_EQ(line(row.id, row.hits, row.description), row.expected);
}

TEST(GenericFormat, KeepsALongDescriptionWhole) {
  std::string const text(5000, 'd');
  EXPECT_EQ(line(1, 2, text), "    0x00000001            2 hits - " + text + "\n");
}

TEST(GenericFormat, PrintsAGroup) {
  struct Row {
    U32 group;
    U8 pipes;
    U8 pipe;
    U32 used;
    U32 available;
    const char* expected;
  };
  Row const rows[] = {
      {3, 4, 1, 1, 511, "TCAM group 3 in PIPE 1 uses 1 entry and can use up to 511 more.\n"},
      {3, 0, 9, 0, 0, "TCAM group 3 uses 0 entries and can use up to 0 more.\n"},
      {3, 1, 9, 2, 1, "TCAM group 3 uses 2 entries and can use up to 1 more.\n"},
      {3, 2, 0, 1, 1, "TCAM group 3 in PIPE 0 uses 1 entry and can use up to 1 more.\n"},
      {3, 255, 255, 5, 6, "TCAM group 3 in PIPE 255 uses 5 entries and can use up to 6 more.\n"},
      {65535, 1, 0, 2, 2, "TCAM group 65535 uses 2 entries and can use up to 2 more.\n"},
      // Only the low 16 bits of the group's number.
      {65536 + 7, 1, 0, 2, 2, "TCAM group 7 uses 2 entries and can use up to 2 more.\n"},
      // Counts from 2^31 up show as negative numbers.
      {1, 1, 0, 0x80000000, 0xFFFFFFFF,
       "TCAM group 1 uses -2147483648 entries and can use up to -1 more.\n"},
      {1, 1, 0, 0x7FFFFFFF, 0x7FFFFFFF,
       "TCAM group 1 uses 2147483647 entries and can use up to 2147483647 more.\n"},
  };
  VelmorTcamCliFormat const format;
  for (auto const& row : rows) {
    EXPECT_EQ(format.formatGroupHeader(row.group, row.pipes, row.pipe, row.used, row.available),
              row.expected);
  }
}

TEST(GenericFormat, PrintsARequestAlwaysInThePlural) {
  VelmorTcamCliFormat const format;
  EXPECT_EQ(format.formatRequestHeader("acl", 1), "  acl uses 1 entries.\n");
  EXPECT_EQ(format.formatRequestHeader("", 0), "   uses 0 entries.\n");
  EXPECT_EQ(format.formatRequestHeader("x", 0x80000000), "  x uses -2147483648 entries.\n");
}

}  // namespace
}  // namespace VelmorTcam
