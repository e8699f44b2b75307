// The record notation.
#include "Zel/Types/Record.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

#include "VelmorTcamEntryShadow.h"

namespace {

using Halvo::S16;
using Halvo::S32;
using Halvo::S64;
using Halvo::S8;
using Halvo::String;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
using VelmorTcam::StageType;
using ZelHalvo::Impl::valueToStrep;

template <class T>
std::string errorOf(std::string_view text) {
  try {
    static_cast<void>(Zel::strepToValue<T>(String(text)));
    return "none";
  } catch (const Zel::ParseError& error) {
    return error.what();
  }
}

template <class T>
void expectRange(const char* least, const char* below, const char* most, const char* above) {
  using Limits = std::numeric_limits<T>;
  SCOPED_TRACE(most);
  EXPECT_EQ(valueToStrep(Limits::min()), least);
  EXPECT_EQ(valueToStrep(Limits::max()), most);
  EXPECT_EQ(Zel::strepToValue<T>(least), Limits::min());
  EXPECT_EQ(Zel::strepToValue<T>(most), Limits::max());
  EXPECT_NE(errorOf<T>(below), "none");
  EXPECT_NE(errorOf<T>(above), "none");
}

TEST(Record, NumbersAreExactToTheLast) {
  expectRange<U8>("0", "-1", "255", "256");
  expectRange<S8>("-128", "-129", "127", "128");
  expectRange<U16>("0", "-1", "65535", "65536");
  expectRange<S16>("-32768", "-32769", "32767", "32768");
  expectRange<U32>("0", "-1", "4294967295", "4294967296");
  expectRange<S32>("-2147483648", "-2147483649", "2147483647", "2147483648");
  expectRange<U64>("0", "-1", "18446744073709551615", "18446744073709551616");
  expectRange<S64>("-9223372036854775808", "-9223372036854775809", "9223372036854775807",
                   "9223372036854775808");
}

TEST(Record, RandomNumbersReadBack) {
  std::mt19937_64 random(1);
  for (int step = 0; step < 100'000; ++step) {
    U64 const bits = random() >> random() % 64;
    ASSERT_EQ(Zel::strepToValue<U64>(valueToStrep(bits)), bits);
    S64 const number = static_cast<S64>(random()) >> random() % 64;
    ASSERT_EQ(valueToStrep(number).str(), std::to_string(number));
    ASSERT_EQ(Zel::strepToValue<S64>(valueToStrep(number)), number);
  }
}

TEST(Record, StringsAreWrittenReadable) {
  struct Row {
    std::string value;
    const char* text;
  };
  Row const rows[] = {
      {"", R"("")"},
      {"permit ip any any", R"("permit ip any any")"},
      {"say \"no\" \\ 'yes'", R"("say \"no\" \\ 'yes'")"},
      {"a\nb\rc\td", R"("a\nb\rc\td")"},
      {std::string("\0\x01\x1f\x7f", 4), R"("\x00\x01\x1f\x7f")"},
      {"Z\xc3\xbcrich \xe2\x82\xac \xf0\x9f\x98\x80",
       "\"Z\xc3\xbcrich \xe2\x82\xac \xf0\x9f\x98\x80\""},
      {"\xff\xc3", R"("\xff\xc3")"},
      {"\xc2\x9b", R"("\xc2\x9b")"},
      {"\xc0\xaf", R"("\xc0\xaf")"},
      {"\xe0\x80\x80", R"("\xe0\x80\x80")"},
      {"\xed\xa0\x80", R"("\xed\xa0\x80")"},
      {"\xf4\x90\x80\x80", R"("\xf4\x90\x80\x80")"},
      {"\xf0\x9f\x98", R"("\xf0\x9f\x98")"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(valueToStrep(String(row.value)), row.text);
    EXPECT_EQ(Zel::strepToValue<String>(row.text).view(), row.value);
  }
}

// The number of bytes of a character whose first byte is `lead`.
std::size_t sizeOfCharacter(unsigned lead) { return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4; }
bool standsForItself(const std::string& bytes) {
  auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  unsigned number = byte(0) & (0x7FU >> bytes.size());
  for (std::size_t i = 1; i < bytes.size(); ++i) {
    if (byte(i) >> 6 != 2) return false;
    number = number << 6 | (byte(i) & 0x3F);
  }
  if (byte(0) >= 0xF8) return false;
  unsigned const least[] = {0, 0, 0xA0, 0x800, 0x10000};  // control characters go up to 0x9F
  return number >= least[bytes.size()] && number <= 0x10FFFF && number >> 11 != 0x1B;
}

TEST(Record, OnlyCharactersOfUtf8StandForThemselves) {
  int plain = 0;
  constexpr unsigned telling[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0xBF, 0xC0};
  for (unsigned lead = 0xC0; lead < 0x100; ++lead) {
    std::size_t const size = sizeOfCharacter(lead);
    for (unsigned second = 0; second < 0x100; ++second) {
      for (unsigned const third : telling) {
        for (unsigned const fourth : telling) {
          std::string bytes;
          for (unsigned const c : {lead, second, third, fourth}) bytes += static_cast<char>(c);
          bytes.resize(size);
          String const text = valueToStrep(String(bytes));
          bool const isPlain = standsForItself(bytes);
          ASSERT_EQ(text == String("\"" + bytes + "\""), isPlain) << text;
          ASSERT_EQ(text.view().starts_with("\"\\x"), !isPlain) << text;
          plain += isPlain ? 1 : 0;
          if (size < 4) break;
        }
        if (size < 3) break;
      }
    }
  }
  EXPECT_GT(plain, 9'000);
}

TEST(Record, AnyBytesReadBack) {
  std::mt19937 random(2);
  for (int step = 0; step < 20'000; ++step) {
    std::string value(random() % 80, '\0');
    for (char& c : value) {
      constexpr char telling[] = "\"\\\xc2\xe2\x80\xac xn0";
      c = random() % 4 == 0 ? static_cast<char>(random()) : telling[random() % 10];
    }
    String const text = valueToStrep(String(value));
    ASSERT_EQ(Zel::strepToValue<String>(text).view(), value) << text;
    for (char const c : text) {
      ASSERT_TRUE(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) << text;
    }
  }
}

TEST(Record, BooleansAndEnumerationsGoByName) {
  EXPECT_EQ(valueToStrep(true), "true");
  EXPECT_EQ(valueToStrep(false), "false");
  EXPECT_TRUE(Zel::strepToValue<bool>("true"));
  EXPECT_FALSE(Zel::strepToValue<bool>("false"));
  EXPECT_EQ(valueToStrep(VelmorTcam::stageTypeIngress), "ingress");
  EXPECT_EQ(Zel::strepToValue<StageType>("egress"), VelmorTcam::stageTypeEgress);
}

TEST(Record, ErrorsTellWhatAndWhere) {
  EXPECT_EQ(errorOf<U8>(""), "expected a number, found the end, at byte 0");
  EXPECT_EQ(errorOf<U8>("x"), "expected a number, found 'x', at byte 0");
  EXPECT_EQ(errorOf<U8>("7 "), "expected the end, found ' ', at byte 1");
  EXPECT_EQ(errorOf<U8>("256"), "expected a number up to 255, found '256', at byte 0");
  EXPECT_EQ(errorOf<S8>("-129"), "expected a number from -128 to 127, found '-129', at byte 0");
  EXPECT_EQ(errorOf<S8>("-"), "expected a number, found '-', at byte 0");
  EXPECT_EQ(errorOf<S8>("+1"), "expected a number, found '+1', at byte 0");
  EXPECT_EQ(errorOf<bool>("True"), "expected true or false, found 'True', at byte 0");
  EXPECT_EQ(errorOf<String>("a"), "expected a string in double quotes, found 'a', at byte 0");
  EXPECT_EQ(errorOf<String>("\"a"),
            "expected the string's closing quote, found the end, at byte 2");
  EXPECT_EQ(errorOf<String>("\"a\nb\""),
            "expected the string's closing quote, found '\\nb\"', at byte 2");
  EXPECT_EQ(errorOf<String>("\"\\x4\""),
            "expected two hexadecimal digits behind \\x, found '\\x4\"', at byte 1");
  EXPECT_EQ(errorOf<String>("\"\\"),
            "expected one of \\\" \\\\ \\n \\r \\t \\xHH, found '\\', at byte 1");
  EXPECT_EQ(errorOf<String>("\"\"\""), "expected the end, found '\"', at byte 2");
  EXPECT_NE(errorOf<StageType>("outgress").find("'outgress'"), std::string::npos);
}

TEST(Record, FailedReaderLeavesTheValue) {
  U32 number = 7;
  Zel::CharRange in("T{a=99999999999}");
  EXPECT_THROW(Zel::desAttrPre(in, "T", "a", &number), Zel::ParseError);
  EXPECT_EQ(number, 7U);
  EXPECT_EQ(in.view(), "99999999999}");
  String text = "before";
  Zel::CharRange open("\"abc");
  EXPECT_THROW(Zel::sequenceToValue(open, &text), Zel::ParseError);
  EXPECT_EQ(text, "before");
}

TEST(Record, ReadsNoFurtherThanTheRange) {
  using namespace std::string_view_literals;
  for (std::string_view const text :
       {"\"\\x4|1\""sv, "\"\\x|41\""sv, "\"\\|n\""sv, "\"|a\""sv, "\"a|\""sv, "|\"a\""sv}) {
    SCOPED_TRACE(text);
    // The range ends at the bar. The rest of the string stands behind it.
    std::size_t const size = text.find('|');
    std::string all(text);
    all.erase(size, 1);
    Zel::CharRange in(std::string_view(all).substr(0, size));
    String value("before");
    EXPECT_THROW(Zel::sequenceToValue(in, &value), Zel::ParseError);
    EXPECT_EQ(value, "before");
    Zel::CharRange whole(all);
    Zel::sequenceToValue(whole, &value);
    EXPECT_TRUE(whole.empty());
  }
}

TEST(Record, StepsMakeARecord) {
  String text;
  Zel::serAttrPre(text, "Agent::Flow", "id", U32{7});
  Zel::serAttrIntra(text, "stage", VelmorTcam::stageTypeLookup);
  Zel::serAttrPost(text, "offset", S16{-3});
  EXPECT_EQ(text, "Agent::Flow{id=7,stage=lookup,offset=-3}");
  Zel::CharRange in(text.view());
  U32 id = 0;
  StageType stage{};
  S16 offset = 0;
  Zel::desAttrPre(in, "Agent::Flow", "id", &id);
  Zel::desAttrIntra(in, "stage", &stage);
  Zel::desAttrPost(in, "offset", &offset);
  EXPECT_TRUE(in.empty());
  EXPECT_EQ(id, 7U);
  EXPECT_EQ(stage, VelmorTcam::stageTypeLookup);
  EXPECT_EQ(offset, -3);
}

}  // namespace
