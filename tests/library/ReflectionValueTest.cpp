// Values of reflection: kinds, texts, equality, hashes, and the module's value types.
#include <random>
#include <vector>

#include "ReflectionFixture.h"
#include "Zel/Types/Record.h"

namespace VelmorTcam {
namespace {

using namespace velmortest;

TEST(ReflectionValue, HoldsExactlyWhatItWasMadeFrom) {
  Value const values[] = {
      Value(),
      Value(true),
      Value(U8{7}),
      Value(Zel::U16{7}),
      Value(U32{7}),
      Value(U64{7}),
      Value(S16{7}),
      Value(Zel::S32{7}),
      Value(Zel::S64{7}),
      Value(cliHeaderTypeIp),
      Value(stageTypeIngress),
      Value(String("7")),
      Value(RuleId(7)),
      Value(EntryInfo(7, 7)),
      Value(Halvo::makePtr<CliFormat>()),
      Value(Ptr<const Node>(Halvo::makePtr<CliFormat>())),
  };
  for (std::size_t i = 0; i < std::size(values); ++i) {
    for (std::size_t k = 0; k < std::size(values); ++k) {
      EXPECT_EQ(values[i] == values[k], i == k) << i << " " << k;
      // Copy and move from every kind to every kind.
      Value to = values[k];
      to = values[i];
      EXPECT_EQ(to, values[i]);
      Value from = values[k];
      to = std::move(from);
      EXPECT_EQ(to, values[k]);
    }
  }
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] { static_cast<void>(values[4].as<bool>()); }),
            "expected bool, not U32");
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] { static_cast<void>(values[0].as<String>()); }),
            "expected String, not nothing");
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] { static_cast<void>(values[9].as<StageType>()); }),
            "expected VelmorTcam::StageType, not VelmorTcam::CliHeaderType");
  EXPECT_EQ(
      errorOf<Zel::ArgumentError>([&] { static_cast<void>(values[15].as<Ptr<CliFormat>>()); }),
      "expected VelmorTcam::CliFormat, not const VelmorTcam::CliFormat");
  EXPECT_EQ(values[14].as<Ptr<const CliFormat>>()->headerType(), cliHeaderTypeInvalid);
  EXPECT_FALSE(values[14].is<Ptr<IpEntryRequestCliFormat>>());
}

TEST(ReflectionValue, GivesItsReferencesBack) {
  auto const node = Halvo::makePtr<CliFormat>();
  {
    Value a(node);
    EXPECT_EQ(node->useCount(), 2U);
    Value b = a;
    EXPECT_EQ(node->useCount(), 3U);
    Value c = std::move(a);
    EXPECT_EQ(node->useCount(), 3U);
    b.clear();
    EXPECT_EQ(node->useCount(), 2U);
    c = U32{1};
    EXPECT_EQ(node->useCount(), 1U);
  }
  EXPECT_EQ(node->useCount(), 1U);
}

TEST(ReflectionValue, TextsReadBackAsTheyWere) {
  struct Row {
    Value value;
    const char* text;
  };
  Row const rows[] = {
      {Value(true), "true"},
      {Value(false), "false"},
      {Value(U8{255}), "255"},
      {Value(Zel::U16{65535}), "65535"},
      {Value(U32{4294967295}), "4294967295"},
      {Value(U64{18446744073709551615U}), "18446744073709551615"},
      {Value(static_cast<S16>(-32768)), "-32768"},
      {Value(S16{32767}), "32767"},
      {Value(static_cast<Zel::S32>(-2147483647 - 1)), "-2147483648"},
      {Value(static_cast<Zel::S64>(-9223372036854775807L - 1)), "-9223372036854775808"},
      {Value(String("")), "\"\""},
      {Value(String("a \"b\" \\")), "\"a \\\"b\\\" \\\\\""},
      {Value(cliOutputTypeTcamNat), "cliOutputTypeTcamNat"},
      {Value(stageTypeEgress), "egress"},
      {Value(RequestKey("acl")), "VelmorTcam::RequestKey{name=\"acl\"}"},
      {Value(RuleId(4294967295)), "VelmorTcam::RuleId{sequenceNum=4294967295}"},
      {Value(TcamGroupId(65535)), "VelmorTcam::TcamGroupId{number=65535}"},
      {Value(CliDisplayStrings()), ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    EXPECT_EQ(row.value.text(), row.text);
    EXPECT_EQ(Value::fromText(*row.value.type(), row.text), row.value);
    // The whole text must be used.
    EXPECT_THROW(static_cast<void>(Value::fromText(*row.value.type(), String(row.text) + "!")),
                 Zel::ParseError);
  }
  struct BadRow {
    Value sample;
    const char* text;
  };
  BadRow const bad[] = {
      {Value(true), ""},
      {Value(true), "1"},
      {Value(U8{1}), "256"},
      {Value(U8{1}), "-1"},
      {Value(S16{1}), "32768"},
      {Value(S16{1}), "-32769"},
      {Value(U32{1}), ""},
      {Value(U64{1}), "18446744073709551616"},
      {Value(String()), "a"},
      {Value(stageTypeEgress), "stageTypeEgress"},
      {Value(RuleId()), "VelmorTcam::RuleId{}"},
      {Value(RuleId()), "VelmorTcam::RequestKey{name=\"\"}"},
      {Value(CliDisplayStrings()), " "},
      {Value(Halvo::makePtr<CliFormat>()), "VelmorTcam::CliFormat"},
  };
  for (const BadRow& row : bad) {
    SCOPED_TRACE(row.text);
    EXPECT_THROW(static_cast<void>(Value::fromText(*row.sample.type(), row.text)), Zel::ParseError);
  }
  try {
    static_cast<void>(Value::fromText(Zel::typeOf<CliFormat>(), ""));
    ADD_FAILURE() << "nothing thrown";
  } catch (const Zel::ParseError& error) {
    EXPECT_STREQ(error.what(), "VelmorTcam::CliFormat: has no text form");
  }
}

TEST(ReflectionValue, EntriesReadBackWithAnyBytes) {
  std::mt19937 random(4711);
  const TypeDescriptor& type = Zel::typeOf<EntryInfo>();
  for (int round = 0; round < 2000; ++round) {
    EntryInfo entry(static_cast<U32>(random()), static_cast<U32>(random()));
    String description;
    for (auto left = random() % 90; left != 0; --left) description += static_cast<char>(random());
    entry.descriptionIs(description);
    entry.hitsIs(U64{random()} << 32 | random());
    Value const value(entry);
    Value const back = Value::fromText(type, value.text());
    EXPECT_EQ(back, value);
    EXPECT_EQ(stateOf(back), stateOf(value));
    EXPECT_EQ(back.as<EntryInfo>().description(), description);
    EXPECT_EQ(back.as<EntryInfo>().hits(), entry.hits());
    EXPECT_EQ(value.text(), ZelHalvo::Impl::valueToStrep(entry));
  }
}

TEST(ReflectionValue, EveryEnumerationValueReadsBack) {
  int values = 0;
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    for (const TypeDescriptor* type : module->module().types) {
      if (type->kind != Zel::TypeKind::enumeration) continue;
      SCOPED_TRACE(type->name);
      for (const Zel::EnumValue& value : type->enumValues) {
        Value const read = Value::fromText(*type, value.name);
        EXPECT_EQ(read.bits(), value.number);
        EXPECT_EQ(read.text(), value.name);
        EXPECT_EQ(read.type(), type);
        ++values;
      }
      EXPECT_THROW(static_cast<void>(Value::fromText(*type, "noSuchName")), Zel::ParseError);
      EXPECT_THROW(static_cast<void>(Value::fromText(*type, "")), Zel::ParseError);
    }
  }
  EXPECT_GE(values, 5 + 10);
  EXPECT_EQ(Value(static_cast<CliHeaderType>(9)).text(), "CliHeaderType(9)");
}

TEST(ReflectionValue, EntriesAreMadeReadAndWritten) {
  const TypeDescriptor& type = typeNamed("CliShowTcamUsageEntryInfo");
  std::vector<Value> const arguments = {Value(U32{10}), Value(U32{5})};
  Value entry = Value::make(type, arguments);
  EXPECT_EQ(call(entry, 2, Op::read).as<U32>(), 10U);
  EXPECT_EQ(call(entry, 3, Op::read).as<U32>(), 5U);
  EXPECT_EQ(call(entry, 4, Op::read).as<String>(), "");
  EXPECT_EQ(call(entry, 5, Op::read).as<U64>(), 0U);
  call(entry, 4, Op::write, {Value(String("text"))});
  call(entry, 5, Op::write, {Value(U64{1} << 40)});
  EXPECT_EQ(entry.as<EntryInfo>().description(), "text");
  EXPECT_EQ(entry.as<EntryInfo>().hits(), U64{1} << 40);
  EXPECT_EQ(entry, Value(EntryInfo(10, 5)));
  EXPECT_NE(entry, Value(EntryInfo(10, 6)));
  for (U32 number : {2U, 3U}) {
    Value result;
    EXPECT_EQ(Zel::attributeOp(entry, number, Op::write, {&arguments[1], 1}, result),
              OpResult::notSupported);
  }
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] { static_cast<void>(Value::make(type, {})); }),
            "VelmorTcam::CliShowTcamUsageEntryInfo: takes 2 arguments, not 0");
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] {
              std::vector<Value> const wrong = {Value(U32{1}), Value(U64{1})};
              static_cast<void>(Value::make(type, wrong));
            }),
            "VelmorTcam::CliShowTcamUsageEntryInfo: argument 2 must be of type U32, not U64");
  EXPECT_EQ(errorOf<Zel::ArgumentError>(
                [&] { static_cast<void>(Value::make(Zel::typeOf<CliFormat>(), {})); }),
            "VelmorTcam::CliFormat: its values are not described");
}

TEST(ReflectionValue, ValuesAreMadeAndDestroyedInPlace) {
  const TypeDescriptor& type = typeNamed("CliShowTcamUsageEntryInfo");
  ASSERT_NE(type.value, nullptr);
  EXPECT_EQ(type.value->size, sizeof(EntryInfo));
  alignas(EntryInfo) unsigned char places[3][sizeof(EntryInfo)];
  std::vector<Value> const arguments = {Value(U32{10}), Value(U32{5})};
  type.value->construct(places[0], arguments);
  Value const text(String(300, 'x'));
  Value result;
  EXPECT_EQ(Zel::attributeOp(type, places[0], 4, Op::write, {&text, 1}, result), OpResult::done);
  type.value->copy(places[1], places[0]);
  EXPECT_TRUE(type.value->isEq(places[0], places[1]));
  type.value->fromText(places[2], type.value->toText(places[1]));
  EXPECT_EQ(Zel::attributeOp(type, places[2], 4, Op::read, {}, result), OpResult::done);
  EXPECT_EQ(result, text);
  for (auto& place : places) type.value->destroy(place);
}

TEST(ReflectionValue, DisplayStringsAreConstants) {
  Value strings = Value::make(typeNamed("CliDisplayStrings"), {});
  const char* const expected[] = {"Stage %s", " in PIPE %d",
                                  "TCAM group %d%s uses %d %s and can use up to %d more.\n",
                                  "  %s uses %d entries.\n", "    0x%08x %s hits - %s\n"};
  for (U32 i = 0; i < 5; ++i) {
    EXPECT_EQ(call(strings, 2 + i, Op::read).as<String>(), expected[i]);
    Value const other(String("x"));
    Value result;
    EXPECT_EQ(Zel::attributeOp(strings, 2 + i, Op::write, {&other, 1}, result),
              OpResult::notSupported);
    EXPECT_EQ(call(strings, 2 + i, Op::read).as<String>(), expected[i]);
  }
  EXPECT_EQ(strings, Value::make(typeNamed("CliDisplayStrings"), {}));
}

TEST(ReflectionValue, DisplayStringsAreMadeOfNothing) {
  const TypeDescriptor& type = typeNamed("CliDisplayStrings");
  ASSERT_NE(type.value, nullptr);
  EXPECT_EQ(type.value->size, sizeof(CliDisplayStrings));
  alignas(CliDisplayStrings) unsigned char places[2][sizeof(CliDisplayStrings)];
  type.value->construct(places[0], {});
  type.value->copy(places[1], places[0]);
  EXPECT_TRUE(type.value->isEq(places[0], places[1]));
  Value result;
  EXPECT_EQ(Zel::attributeOp(type, places[1], 2, Op::read, {}, result), OpResult::done);
  EXPECT_EQ(result.as<String>(), "Stage %s");
  for (auto& place : places) type.value->destroy(place);
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] {
              std::vector<Value> const one = {Value(U32{1})};
              static_cast<void>(Value::make(type, one));
            }),
            "VelmorTcam::CliDisplayStrings: takes 0 arguments, not 1");
}

TEST(ReflectionValue, IdentifiersShowTheirOneAttribute) {
  EXPECT_EQ(call(Value(RequestKey("acl")), 2, Op::read), Value(String("acl")));
  EXPECT_EQ(call(Value(RuleId(7)), 2, Op::read), Value(U32{7}));
  EXPECT_EQ(call(Value(TcamGroupId(7)), 2, Op::read), Value(Halvo::U16{7}));
}

TEST(ReflectionValue, TypesWithoutHashSaySo) {
  for (const char* const name : {"CliDisplayStrings", "CliShowTcamUsageEntryInfo"}) {
    std::string const expected = std::string("VelmorTcam::") + name + ": the type is not hashable";
    Value const value = valueOf(typeNamed(name), 1);
    EXPECT_EQ(errorOf<Zel::NonHashableTypeError>([&] { static_cast<void>(value.hash()); }),
              expected);
    EXPECT_EQ(errorOf<Zel::NonHashableTypeError>(
                  [&] { static_cast<void>(Zel::valueHash(*value.type(), value.record())); }),
              expected);
  }
  EXPECT_EQ(Value(RuleId(7)).hash(), Value(RuleId(7)).hash());
  EXPECT_NE(Value(RuleId(7)).hash(), Value(RuleId(8)).hash());
  EXPECT_EQ(Value(RequestKey("a")).hash(), Value(RequestKey("a")).hash());
  EXPECT_NE(Value(RequestKey("a")).hash(), Value(RequestKey("b")).hash());
  EXPECT_EQ(Value(TcamGroupId(7)).hash(), Value(TcamGroupId(7)).hash());
  EXPECT_NE(Value(TcamGroupId(7)).hash(), Value(TcamGroupId(8)).hash());
  EXPECT_EQ(Value(String("a")).hash(), Value(String("a")).hash());
  EXPECT_NE(Value(String("a")).hash(), Value(String("b")).hash());
}

TEST(ReflectionValue, NothingIsSupportedByWhatIsNoRecord) {
  Value number(U32{7});
  Value result(U32{9});
  EXPECT_EQ(Zel::attributeOp(number, 2, Op::read, {}, result), OpResult::notSupported);
  Value none;
  EXPECT_EQ(Zel::attributeOp(none, 2, Op::read, {}, result), OpResult::notSupported);
  EXPECT_EQ(result, Value(U32{9}));
}

}  // namespace
}  // namespace VelmorTcam
