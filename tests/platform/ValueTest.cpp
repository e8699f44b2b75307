// Values of types that a program describes itself, and of the basic types.
#include "Zel/Types/Value.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "WhatOf.h"
#include "Zel/Base/Error.h"
#include "Zel/Types/AttributeTable.h"
#include "Zel/Types/Record.h"
#include "Zel/Types/Reflect.h"

namespace paint {

// Used with one size that a value holds in place, and with one that is a word too large.
template <std::size_t words>
struct Wide {
  explicit Wide(Halvo::U32 first = 0) : numbers{first} { ++alive; }
  Wide(const Wide& other) {
    if (other.numbers[0] == refused) throw std::runtime_error("no copy");
    for (std::size_t i = 0; i < words; ++i) numbers[i] = other.numbers[i];
    ++alive;
  }
  Wide(Wide&& other) noexcept {
    for (std::size_t i = 0; i < words; ++i) numbers[i] = other.numbers[i];
    ++alive;
  }
  Wide& operator=(const Wide&) = default;
  ~Wide() { --alive; }
  bool operator==(const Wide&) const = default;

  static constexpr std::size_t size = words;
  static constexpr Halvo::U64 refused = 666;
  static inline int alive = 0;
  Halvo::U64 numbers[words];
};

template <std::size_t words>
void valueToSequence(Halvo::String& out, const Wide<words>& value) {
  Zel::serAttrPre(out, "Wide", "first", value.numbers[0]);
  Zel::serAttrPost(out, "last", value.numbers[words - 1]);
}
template <std::size_t words>
void sequenceToValue(Zel::CharRange& in, Wide<words>* value) {
  Zel::desAttrPre(in, "Wide", "first", &value->numbers[0]);
  Zel::desAttrPost(in, "last", &value->numbers[words - 1]);
}

template <std::size_t words>
std::size_t hashOf(const void* value) {
  return static_cast<std::size_t>(static_cast<const Wide<words>*>(value)->numbers[0] + 1);
}
template <std::size_t words>
constexpr Zel::ValueOperations operations =
    Zel::valueOperations<Wide<words>, Halvo::U32>(&hashOf<words>);
template <std::size_t words>
constexpr Zel::TypeDescriptor wideType{
    .name = "Paint::Wide", .kind = Zel::TypeKind::value, .value = &operations<words>};
template <std::size_t words>
const Zel::TypeDescriptor& typeDescriptor(Zel::TypeTag<Wide<words>>) noexcept {
  return wideType<words>;
}

}  // namespace paint

namespace {

using Halvo::S16;
using Halvo::S32;
using Halvo::S64;
using Halvo::String;
using Halvo::U16;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
using Zel::Value;

template <class T>
class RecordValue : public testing::Test {};
using Sizes = testing::Types<paint::Wide<1>, paint::Wide<9>, paint::Wide<10>, paint::Wide<11>,
                             paint::Wide<40>>;
TYPED_TEST_SUITE(RecordValue, Sizes);

TYPED_TEST(RecordValue, LivesAsItsTypeSays) {
  constexpr std::size_t last = TypeParam::size - 1;
  TypeParam record(7);
  record.numbers[last] = 7;
  int const before = TypeParam::alive;
  {
    Value value(record);
    EXPECT_EQ(TypeParam::alive, before + 1);
    EXPECT_EQ(value.type(), &Zel::typeOf<TypeParam>());
    EXPECT_EQ(value.as<TypeParam>(), record);
    EXPECT_EQ(value.text(), "Wide{first=7,last=7}");
    EXPECT_EQ(value.hash(), 8U);

    Value copy(value);
    EXPECT_EQ(TypeParam::alive, before + 2);
    EXPECT_EQ(copy, value);
    EXPECT_NE(copy.record(), value.record());
    Value moved(std::move(copy));
    EXPECT_EQ(TypeParam::alive, before + 2);
    EXPECT_EQ(moved, value);
    EXPECT_EQ(moved.as<TypeParam>().numbers[last], 7U);
    EXPECT_TRUE(copy.empty());  // NOLINT(bugprone-use-after-move): the class promises it
    copy = moved;
    moved = Value(U32{1});
    EXPECT_EQ(TypeParam::alive, before + 2);
    EXPECT_EQ(copy, value);
    value = copy.as<TypeParam>();
    value = std::move(copy);
    EXPECT_EQ(TypeParam::alive, before + 1);
    EXPECT_EQ(value.as<TypeParam>(), record);

    Value const read = Value::fromText(*value.type(), "Wide{first=7,last=7}");
    EXPECT_EQ(read, value);
    Value const argument(U32{7});
    Value made = Value::make(*value.type(), {&argument, 1});
    EXPECT_EQ(made.as<TypeParam>().numbers[0], 7U);
    EXPECT_EQ(made == value, last == 0);
    EXPECT_NE(Value(TypeParam(8)), value);
  }
  EXPECT_EQ(TypeParam::alive, before);
}

TYPED_TEST(RecordValue, HoldsNothingWhenItCannotBeMade) {
  const Zel::TypeDescriptor& type = Zel::typeOf<TypeParam>();
  int const before = TypeParam::alive;
  TypeParam const refused(666);
  EXPECT_EQ(whatOf<std::runtime_error>([&] { Value const value(refused); }), "no copy");
  Value value(U32{5});
  EXPECT_EQ(whatOf<std::runtime_error>([&] { value = refused; }), "no copy");
  EXPECT_EQ(value.as<U32>(), 5U);
  EXPECT_THROW(static_cast<void>(Value::fromText(type, "Wide{first=x,last=7}")), Zel::ParseError);
  Value const wrong(U16{7});
  EXPECT_EQ(whatOf<Zel::ArgumentError>([&] {
              static_cast<void>(Value::make(type, {&wrong, 1}));
            }),
            "Paint::Wide: argument 1 must be of type U32, not U16");
  EXPECT_EQ(whatOf<Zel::ArgumentError>([&] { static_cast<void>(Value::make(type, {})); }),
            "Paint::Wide: takes 1 argument, not 0");
  EXPECT_EQ(TypeParam::alive, before + 1);
}

TEST(Value, TakesStringsOverAnythingItHolds) {
  String const texts[] = {"", "acl", String(23, 's'), String(24, 'l'), String(300, 'n')};
  for (String const& before : texts) {
    for (String const& after : texts) {
      SCOPED_TRACE(testing::Message() << before.size() << ' ' << after.size());
      Value const held(before);
      Value copied(held);
      copied = after;
      EXPECT_EQ(copied.as<String>(), after);
      Value moved(held);
      moved = String(after);
      EXPECT_EQ(moved.as<String>(), after);
      Value itself(held);
      itself = itself.as<String>();
      EXPECT_EQ(itself.as<String>(), before);
    }
    for (Value other : {Value(), Value(U32{5}), Value(paint::Wide<11>(7))}) {
      other = before;
      EXPECT_EQ(other.as<String>(), before);
      EXPECT_EQ(other.type(), &Zel::typeOf<String>());
      other = U32{6};
      EXPECT_EQ(other.as<U32>(), 6U);
    }
  }
}

TEST(Value, KnowsTheBasicTypes) {
  struct Row {
    Value value;
    const Zel::TypeDescriptor& type;
    const char* name;
    const char* text;
  } const rows[] = {
      {Value(true), Zel::typeOf<bool>(), "bool", "true"},
      {Value(U8{200}), Zel::typeOf<U8>(), "U8", "200"},
      {Value(U16{60000}), Zel::typeOf<U16>(), "U16", "60000"},
      {Value(U32{4000000000}), Zel::typeOf<U32>(), "U32", "4000000000"},
      {Value(U64{1} << 63), Zel::typeOf<U64>(), "U64", "9223372036854775808"},
      {Value(S16{-5}), Zel::typeOf<S16>(), "S16", "-5"},
      {Value(S32{-6}), Zel::typeOf<S32>(), "S32", "-6"},
      {Value(S64{-7}), Zel::typeOf<S64>(), "S64", "-7"},
      {Value(String("a")), Zel::typeOf<String>(), "String", "\"a\""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.value.type(), &row.type);
    EXPECT_STREQ(row.type.name, row.name);
    EXPECT_EQ(row.value.text(), row.text);
    EXPECT_EQ(Value::fromText(row.type, row.text), row.value);
    EXPECT_EQ(row.value.hash(), Value(row.value).hash());
    for (const Row& other : rows) EXPECT_EQ(row.value == other.value, &row == &other);
  }
  EXPECT_NE(Value(U32{1}).hash(), Value(U32{2}).hash());
  EXPECT_EQ(Value(S16{-1}).bits(), ~U64{0});
}

TEST(Value, HasNoHashWhereNothingIsHeld) {
  EXPECT_EQ(whatOf<Zel::NonHashableTypeError>([] { static_cast<void>(Value().hash()); }),
            "nothing: the type is not hashable");
  EXPECT_EQ(whatOf<Zel::NonHashableTypeError>(
                [] { static_cast<void>(Value(Halvo::Ptr<Halvo::Node>()).hash()); }),
            "an object: the type is not hashable");
  EXPECT_EQ(Value(), Value());
  EXPECT_NE(Value(), Value(false));
  EXPECT_EQ(Value().text(), "");
  EXPECT_EQ(Value().type(), nullptr);
  EXPECT_EQ(Value(Halvo::Ptr<Halvo::Node>()).text(), "null");
}

TEST(Value, SaysWhatItHoldsWhenAskedForAnother) {
  EXPECT_EQ(whatOf<Zel::ArgumentError>([] { static_cast<void>(Value().as<U32>()); }),
            "expected U32, not nothing");
  EXPECT_EQ(whatOf<Zel::ArgumentError>([] { static_cast<void>(Value(true).as<U32>()); }),
            "expected U32, not bool");
  EXPECT_EQ(whatOf<Zel::ArgumentError>(
                [] { static_cast<void>(Value(Halvo::Ptr<Halvo::Node>()).as<String>()); }),
            "expected String, not an object");
  EXPECT_EQ(whatOf<Zel::ArgumentError>(
                [] { static_cast<void>(Value(Halvo::Ptr<const Halvo::Node>()).as<String>()); }),
            "expected String, not const an object");
  EXPECT_EQ(whatOf<Zel::ArgumentError>(
                [] { static_cast<void>(Value(U8{1}).as<Halvo::Ptr<Halvo::Node>>()); }),
            "expected an object, not U8");
}

}  // namespace
