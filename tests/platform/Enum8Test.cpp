#include "Zel/Types/Enum8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "WhatOf.h"
#include "Zel/Base/Error.h"

namespace {

using Halvo::U32;
using Halvo::U8;
using Zel::CharRange;

constexpr Zel::EnumValue denseValues[] = {{0, "colourNone"}, {1, "colourRed"}, {2, "colourGreen"}};
constexpr Zel::EnumValue sparseValues[] = {
    {8, "fieldDSCP"},     {15, "fieldDstIp"},      {20, "fieldDstIp6"},   {25, "fieldDstIp6Alt"},
    {28, "fieldDstMac"},  {36, "fieldEtherType"},  {92, "fieldHopLimit"}, {101, "fieldIpProtocol"},
    {116, "fieldL4Dst"},  {118, "fieldL4Src"},     {132, "fieldVlan"},    {153, "fieldSrcIp"},
    {158, "fieldSrcIp6"}, {163, "fieldSrcIp6Alt"}, {164, "fieldSrcMac"},  {182, "fieldTcp"},
    {255, "fieldLast"}};
constexpr Zel::TypeDescriptor colour{
    .name = "Paint::Colour", .kind = Zel::TypeKind::enumeration, .enumValues = denseValues};
constexpr Zel::TypeDescriptor field{
    .name = "Field", .kind = Zel::TypeKind::enumeration, .enumValues = sparseValues};
constexpr Zel::TypeDescriptor record{.name = "Paint::Record", .kind = Zel::TypeKind::value};
constexpr Zel::TypeDescriptor nothing{.name = "Paint::Nothing", .kind = Zel::TypeKind::enumeration};
constexpr const Zel::TypeDescriptor* types[] = {&colour, &field, &record, &nothing};
constexpr Zel::TypeModule module{"Paint", types};

TEST(Enum8, FindsEveryNumberAndNoOther) {
  for (std::size_t type : {0U, 1U}) {
    for (U32 number = 0; number < 600; ++number) {
      SCOPED_TRACE(number);
      const char* name = nullptr;
      for (const Zel::EnumValue& value : types[type]->enumValues) {
        if (value.number == number) name = value.name;
      }
      if (name != nullptr) {
        EXPECT_EQ(Zel::enum8FromNumber(module, type, number), number);
        EXPECT_STREQ(Zel::enum8Name(module, type, static_cast<U8>(number)), name);
        EXPECT_EQ(Zel::enum8StringValue(module, type, static_cast<U8>(number)), name);
      } else {
        EXPECT_THROW(Zel::enum8FromNumber(module, type, number), Zel::RangeError);
        if (number < 256) {
          EXPECT_EQ(Zel::enum8Name(module, type, static_cast<U8>(number)), nullptr);
        }
      }
    }
  }
  EXPECT_THROW(Zel::enum8FromNumber(module, 3, 0), Zel::RangeError);
}

TEST(Enum8, FindsEveryNameAgainAndAgain) {
  for (int round = 0; round < 3; ++round) {
    for (std::size_t type : {0U, 1U}) {
      for (const Zel::EnumValue& value : types[type]->enumValues) {
        SCOPED_TRACE(value.name);
        EXPECT_EQ(Zel::enum8FromName(module, type, Halvo::String(value.name)), value.number);
      }
    }
  }
}

TEST(Enum8, RefusesWhatIsNoName) {
  using namespace std::string_view_literals;
  for (std::string_view text :
       {""sv, "colour"sv, "colourRe"sv, "colourRedd"sv, "ColourRed"sv, " colourRed"sv,
        "colourRed "sv, "colourRed\0"sv, "colourRed\0x"sv, "fieldVlan"sv, "1"sv}) {
    SCOPED_TRACE(text);
    EXPECT_THROW(Zel::enum8FromName(module, 0, text), Zel::ParseError);
    EXPECT_THROW(Zel::enum8FromName(module, 3, text), Zel::ParseError);
  }
}

TEST(Enum8, ReadsNoByteBesideTheName) {
  // Exactly as large as the name, so that a sanitizer sees a read before or behind it.
  for (std::size_t size = 1; size < 40; ++size) {
    auto const name = std::make_unique<char[]>(size);
    std::fill_n(name.get(), size, 'x');
    EXPECT_THROW(Zel::enum8FromName(module, 1, std::string_view(name.get(), size)),
                 Zel::ParseError);
  }
  for (const Zel::EnumValue& value : sparseValues) {
    std::size_t const size = std::string_view(value.name).size();
    auto const name = std::make_unique<char[]>(size);
    std::copy_n(value.name, size, name.get());
    EXPECT_EQ(Zel::enum8FromName(module, 1, std::string_view(name.get(), size)), value.number);
  }
}

TEST(Enum8, SaysWhatIsWrong) {
  EXPECT_EQ(whatOf<Zel::RangeError>([] { Zel::enum8FromNumber(module, 0, 300); }),
            "Paint::Colour: no value has the number 300");
  EXPECT_EQ(whatOf<Zel::ParseError>([] { Zel::enum8FromName(module, 0, "red\n"); }),
            "Paint::Colour: no value is named 'red\\n'");
  EXPECT_EQ(whatOf<Zel::ParseError>([] { Zel::enum8FromName(module, 1, std::string(70, 'x')); }),
            "Field: no value is named '" + std::string(64, 'x') + "'...");
  EXPECT_EQ(whatOf<Zel::ParseError>([] {
              CharRange in("=7");
              Zel::enum8FromSequence(in, module, 0);
            }),
            "Paint::Colour: expected a name at '=7'");
  // A message quotes 64 bytes, and shows that there were more.
  EXPECT_EQ(whatOf<Zel::ParseError>([] { Zel::enum8FromName(module, 1, std::string(64, 'x')); }),
            "Field: no value is named '" + std::string(64, 'x') + "'");
  EXPECT_EQ(whatOf<Zel::ParseError>([] { Zel::enum8FromName(module, 1, std::string(65, 'x')); }),
            "Field: no value is named '" + std::string(64, 'x') + "'...");
  EXPECT_EQ(whatOf<Zel::ParseError>([] { Zel::enum8FromName(module, 0, "\x1f ~\x7f\x80\t\r"); }),
            "Paint::Colour: no value is named '\\x1f ~\\x7f\x80\\t\\r'");
}

TEST(Enum8, GivesANamelessNumberItsTypeAndNumber) {
  EXPECT_EQ(Zel::enum8StringValue(module, 0, 9), "Colour(9)");
  EXPECT_EQ(Zel::enum8StringValue(module, 1, 254), "Field(254)");
  EXPECT_EQ(Zel::enum8StringValue(module, 3, 0), "Nothing(0)");
}

TEST(Enum8, WritesOneItemWithWidth) {
  std::ostringstream out;
  Zel::enum8Write(out << std::setw(12) << std::left, module, 0, 1) << '|';
  Zel::enum8Write(out << std::setw(12) << std::right << std::setfill('.'), module, 0, 9) << '|';
  EXPECT_EQ(out.str(), "colourRed   |...Colour(9)|");
}

TEST(Enum8, ReadsTheLongestIdentifierOffASequence) {
  CharRange in("colourRed,colourGreen");
  EXPECT_EQ(Zel::enum8FromSequence(in, module, 0), 1);
  EXPECT_EQ(in.view(), ",colourGreen");
  EXPECT_TRUE(in.skipPrefix(','));
  EXPECT_EQ(Zel::enum8FromSequence(in, module, 0), 2);
  EXPECT_TRUE(in.empty());
}

TEST(Enum8, LeavesTheSequenceAsItWasOnError) {
  for (std::string_view text : {"", " colourRed", "colourRed_2", "colourRedX,", "colour-Red"}) {
    SCOPED_TRACE(text);
    CharRange in(text);
    EXPECT_THROW(Zel::enum8FromSequence(in, module, 0), Zel::ParseError);
    EXPECT_EQ(in.begin(), text.data());
    EXPECT_EQ(in.view(), text);
  }
}

TEST(Enum8, IsSafeFromManyThreads) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 5000; ++i) {
        const Zel::EnumValue& value = sparseValues[static_cast<std::size_t>(i) % 17];
        ASSERT_EQ(Zel::enum8FromName(module, 1, value.name), value.number);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST(Enum8DeathTest, StopsOnATypeThatIsNoEnumeration) {
  EXPECT_DEATH(Zel::enum8FromNumber(module, 4, 0),
               "^assertion failed: type < module.types.size\\(\\) at platform/Zel/Enum8:0 in "
               "const Zel::TypeDescriptor& Zel::enum8Descriptor\\(const Zel::TypeModule&, "
               "std::size_t\\)\n$");
  EXPECT_DEATH(Zel::enum8FromNumber(module, 2, 0),
               "^assertion failed: descriptor.kind == TypeKind::enumeration at "
               "platform/Zel/Enum8:0 in const Zel::TypeDescriptor& Zel::enum8Descriptor\\("
               "const Zel::TypeModule&, std::size_t\\)\n$");
  constexpr const char* ofDescriptor =
      "^assertion failed: type.kind == TypeKind::enumeration at platform/Zel/Enum8:0 in "
      "const Zel::TypeDescriptor& Zel::enum8Descriptor\\(const Zel::TypeDescriptor&\\)\n$";
  EXPECT_DEATH(Zel::enum8FromName(record, "x"), ofDescriptor);
  EXPECT_DEATH((void)Zel::enum8StringValue(record, 0), ofDescriptor);
}

TEST(CharRange, ReadsFromTheFront) {
  CharRange in("ab12 \t\n x");
  EXPECT_EQ(in.size(), 9U);
  EXPECT_EQ(in.front(), 'a');
  EXPECT_TRUE(in.startsWith("ab"));
  EXPECT_FALSE(in.skipPrefix("abc"));
  EXPECT_TRUE(in.skipPrefix("ab"));
  auto const isDigit = [](char c) { return c >= '0' && c <= '9'; };
  EXPECT_EQ(in.peekWhile(isDigit), "12");
  EXPECT_EQ(in.takeWhile(isDigit), "12");
  EXPECT_EQ(in.takeWhile(isDigit), "");
  EXPECT_EQ(in.skipSpace(), 4U);
  EXPECT_FALSE(in.skipPrefix('y'));
  EXPECT_TRUE(in.skipPrefix('x'));
  EXPECT_TRUE(in.empty());
  EXPECT_FALSE(in.skipPrefix('x'));
  EXPECT_TRUE(in.skipPrefix(""));
  EXPECT_EQ(CharRange().size(), 0U);
  EXPECT_EQ(CharRange().view(), "");
  static_assert(CharRange("abc").front() == 'a');
}

TEST(CharRangeDeathTest, StopsBehindTheEnd) {
  CharRange in("ab");
  EXPECT_DEATH(in.advance(3),
               "^assertion failed: count <= size\\(\\) at platform/Zel/CharRange:0 in "
               "void Zel::CharRange::advance\\(std::size_t\\)\n$");
  in.advance(2);
  EXPECT_DEATH((void)in.front(),
               "^assertion failed: !empty\\(\\) at platform/Zel/CharRange:0 in "
               "char Zel::CharRange::front\\(\\) const\n$");
}

}  // namespace
