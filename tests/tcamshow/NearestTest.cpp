#include "io/Nearest.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tcamshow {
namespace {

TEST(Nearest, SuggestsWhatIsNear) {
  constexpr std::string_view known[] = {"ip",      "ip6",     "mac",    "tcam",    "usage",
                                        "summary", "inspect", "import", "shadowId"};
  struct Row {
    const char* word;
    const char* suggestion;
  };
  Row const rows[] = {
      {"ip4", R"(; did you mean "ip" or "ip6"?)"},
      {"ip66", R"(; did you mean "ip6"?)"},
      {"pi", R"(; did you mean "ip"?)"},         // swapped
      {"mca", R"(; did you mean "mac"?)"},       // swapped
      {"usge", R"(; did you mean "usage"?)"},    // missing
      {"usagee", R"(; did you mean "usage"?)"},  // needless
      {"usahe", R"(; did you mean "usage"?)"},   // changed
      {"UsAgE", R"(; did you mean "usage"?)"},   // the case does not count
      {"shadowid", R"(; did you mean "shadowId"?)"},
      {"sumary", R"(; did you mean "summary"?)"},
      {"smmry", R"(; did you mean "summary"?)"},  // two letters
      {"smry", ""},                               // three
      {"acl", ""},
      {"x", ""},
      {"", ""},
      {"usageusage", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.word);
    EXPECT_EQ(suggestion(row.word, known), row.suggestion);
  }
}

TEST(Nearest, NamesThreeAtMost) {
  constexpr std::string_view known[] = {"aaaa", "aaab", "aaac", "aaad", "zzzz"};
  EXPECT_EQ(suggestion("aaax", known), R"(; did you mean "aaaa", "aaab" or "aaac"?)");
  EXPECT_EQ(suggestion("aaaa", known), R"(; did you mean "aaaa"?)");
  EXPECT_EQ(suggestion("aaaa", {}), "");
}

TEST(Nearest, DoesNotReadALongWord) {
  std::string const word(std::size_t{1} << 20, 'a');
  constexpr std::string_view known[] = {"aaaa"};
  EXPECT_EQ(suggestion(word, known), "");
}

}  // namespace
}  // namespace tcamshow
