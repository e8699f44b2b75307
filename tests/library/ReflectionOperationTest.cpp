// Reflection: scalars, children, entries, queues, operations, and walks over collections.
#include <set>

#include "ReflectionFixture.h"
#include "ShadowFixture.h"

namespace VelmorTcam {
namespace {

using namespace velmortest;

std::vector<std::string> walked(const Node& node, U32 number, bool keys = false) {
  std::vector<std::string> texts;
  auto const cursor = call(node, number, Op::iterate).as<Ptr<Zel::Cursor>>();
  Value at;
  Value element;
  while (cursor->next(at, element)) texts.push_back((keys ? at : element).text().str());
  EXPECT_FALSE(cursor->next(at, element));
  return texts;
}
using Texts = std::vector<std::string>;

TEST(ReflectionOperation, WhatIsWrittenIsRead) {
  auto const copy = Halvo::makePtr<CliShowTcamUsageGroupPerCopyInfo>(U32{4});
  EXPECT_EQ(call(*copy, 130, Op::read).as<U32>(), 4U);
  for (U32 number : {131U, 132U, 133U}) {
    EXPECT_EQ(call(*copy, number, Op::read).as<U32>(), 0U);
    EXPECT_TRUE(call(*copy, number, Op::write, {Value(U32{0xFFFFFFFF} - number)}).empty());
    EXPECT_EQ(call(*copy, number, Op::read).as<U32>(), U32{0xFFFFFFFF} - number);
  }
  EXPECT_EQ(copy->usedEntries(), U32{0xFFFFFFFF} - 131);
  EXPECT_EQ(copy->freeEntries(), U32{0xFFFFFFFF} - 132);
  EXPECT_EQ(copy->availableEntries(), U32{0xFFFFFFFF} - 133);

  auto const feature = cliShowTcamUsageFeatureInfoFactory("acl");
  call(*feature, 131, Op::write, {Value(U32{5})});
  call(*feature, 132, Op::write, {Value(U32{6})});
  EXPECT_EQ(feature->usedEntries(), 5U);
  EXPECT_EQ(feature->reservedEntries(), 6U);
  EXPECT_EQ(call(*feature, 130, Op::read).as<String>(), "acl");
}

TEST(ReflectionOperation, EveryWritableScalarReadsBackWhatWasWritten) {
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    if (std::string(module->module().name) != "VelmorTcamCliTypes") continue;
    for (const TypeDescriptor* type : module->module().types) {
      if (type->kind == Zel::TypeKind::enumeration) continue;
      for (const Attribute* attribute : attributesOf(*type)) {
        if (attribute->kind != AttributeKind::readWrite) continue;
        if (std::string(attribute->name) == "initialized") continue;  // has a test of its own
        SCOPED_TRACE(std::string(type->name) + "::" + attribute->name);
        Value object = valueOf(*type, 3);
        for (U32 number : {1U, 0U, 77U}) {
          Value const written = valueOf(attribute->type(), number);
          if (object.record() != nullptr) {
            call(object, attribute->number, Op::write, {written});
            EXPECT_EQ(call(object, attribute->number, Op::read), written);
          } else {
            auto const node = object.as<Ptr<Node>>();
            call(*node, attribute->number, Op::write, {written});
            EXPECT_EQ(call(*node, attribute->number, Op::read), written);
          }
        }
      }
    }
  }
}

class Hooked : public IpEntryRequestCliFormat {
 public:
  void handleInitialized() override { ++calls; }
  int calls = 0;
};

TEST(ReflectionOperation, WritingInitializedRunsTheHookOnChange) {
  auto const format = Halvo::makePtr<Hooked>();
  EXPECT_FALSE(call(*format, 134, Op::read).as<bool>());
  call(*format, 134, Op::write, {Value(false)});
  EXPECT_EQ(format->calls, 0);
  call(*format, 134, Op::write, {Value(true)});
  call(*format, 134, Op::write, {Value(true)});
  EXPECT_EQ(format->calls, 1);
  EXPECT_TRUE(format->initialized());
  call(*format, 134, Op::write, {Value(false)});
  EXPECT_EQ(format->calls, 2);
  call(*format, 135, Op::invoke);
  EXPECT_EQ(format->calls, 3);
}

TEST(ReflectionOperation, KeysAreNotWritten) {
  struct Row {
    const char* type;
    U32 number;
  };
  Row const rows[] = {
      {"CliShowTcamUsageFeatureInfo", 130},
      {"CliShowTcamUsageStageInfo", 130},
      {"CliShowTcamUsagePipeInfo", 130},
      {"CliShowTcamUsageGroupPriorityBucket", 130},
      {"CliShowTcamUsageGroupInfo", 130},
      {"CliShowTcamUsageGroupPerCopyInfo", 130},
      {"CliShowTcamUsageFeaturePrioBucket", 130},
      {"CliShowTcamSummaryGroupName", 130},
      {"CliFormat", 130},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.type);
    Value const object = valueOf(typeNamed(row.type), 3);
    auto const node = object.as<Ptr<Node>>();
    Value const before = call(*node, row.number, Op::read);
    Value const other = valueOf(Zel::findAttribute(*node->typeData(), row.number)->type(), 1);
    EXPECT_NE(before, other);
    Value result;
    EXPECT_EQ(Zel::attributeOp(*node, row.number, Op::write, {&other, 1}, result),
              OpResult::notSupported);
    EXPECT_EQ(call(*node, row.number, Op::read), before);
  }
}

TEST(ReflectionOperation, OrderedMapsMakeFindCountWalkAndRemove) {
  auto const stage = Halvo::makePtr<CliShowTcamUsageStageInfo>(stageTypeIngress);
  EXPECT_EQ(call(*stage, 131, Op::count).as<U32>(), 0U);
  EXPECT_FALSE(call(*stage, 131, Op::lookup, {Value(S16{2})}).as<Ptr<Node>>());
  for (S16 pipe : {S16{2}, S16{-1}, S16{0}}) {
    auto const made = call(*stage, 131, Op::createOrGet, {Value(pipe)});
    EXPECT_EQ(made.as<Ptr<CliShowTcamUsagePipeInfo>>(), stage->pipeInfo(pipe));
    EXPECT_EQ(call(*stage, 131, Op::createOrGet, {Value(pipe)}), made);
    EXPECT_EQ(call(*stage, 131, Op::lookup, {Value(pipe)}), made);
  }
  EXPECT_EQ(call(*stage, 131, Op::count).as<U32>(), 3U);
  EXPECT_EQ(walked(*stage, 131, true), (Texts{"-1", "0", "2"}));
  EXPECT_FALSE(call(*stage, 131, Op::del, {Value(S16{7})}).as<Ptr<Node>>());
  auto const gone = call(*stage, 131, Op::del, {Value(S16{0})}).as<Ptr<CliShowTcamUsagePipeInfo>>();
  EXPECT_EQ(gone->pipeId(), 0);
  EXPECT_EQ(walked(*stage, 131, true), (Texts{"-1", "2"}));
  EXPECT_TRUE(call(*stage, 131, Op::delAll).empty());
  EXPECT_EQ(stage->pipeInfo().size(), 0U);
}

TEST(ReflectionOperation, EveryChildMapTakesItsKeys) {
  struct Row {
    const char* type;
    U32 number;
  };
  Row const rows[] = {
      {"CliShowTcamUsageChipInfo", 130},  {"CliShowTcamUsageStageInfo", 131},
      {"CliShowTcamUsagePipeInfo", 131},  {"CliShowTcamUsageGroupPriorityBucket", 131},
      {"CliShowTcamUsageGroupInfo", 131}, {"CliShowTcamUsageGroupPerCopyInfo", 134},
      {"CliShowTcamSummaryOrdered", 130},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.type);
    auto const node = valueOf(typeNamed(row.type), 3).as<Ptr<Node>>();
    const Attribute& attribute = *Zel::findAttribute(*node->typeData(), row.number);
    Texts keys;
    for (U32 number : {3U, 1U, 2U}) {
      Value const key = valueOf(attribute.keyType(), number);
      auto const child = call(*node, row.number, Op::createOrGet, {key}).as<Ptr<Node>>();
      // The child's first attribute is its key.
      EXPECT_EQ(call(*child, 130, Op::read), key);
      EXPECT_EQ(call(*node, row.number, Op::lookup, {key}).as<Ptr<Node>>(), child);
      keys.push_back(key.text().str());
    }
    Texts found = walked(*node, row.number, true);
    if (attribute.kind == AttributeKind::orderedMap) {
      EXPECT_EQ(found, (Texts{keys[1], keys[2], keys[0]}));
    }
    EXPECT_EQ(std::set<std::string>(found.begin(), found.end()),
              std::set<std::string>(keys.begin(), keys.end()));
    EXPECT_EQ(call(*node, row.number, Op::count).as<U32>(), 3U);
    call(*node, row.number, Op::delAll);
    EXPECT_EQ(walked(*node, row.number), Texts{});
    Value result;
    // The error for a key of a wrong type names the attribute.
    std::string const what = errorOf<Zel::ArgumentError>([&] {
      Value const wrong(U8{1});
      static_cast<void>(Zel::attributeOp(*node, row.number, Op::createOrGet, {&wrong, 1}, result));
    });
    EXPECT_EQ(what, std::string("VelmorTcam::") + row.type + "::" + attribute.name +
                        ": argument 1 of createOrGet must be of type " + attribute.keyType().name +
                        ", not U8");
  }
}

EntryInfo entry(U32 priority, U32 id, const char* description = "", U64 hits = 0) {
  EntryInfo made(priority, id);
  made.descriptionIs(description);
  made.hitsIs(hits);
  return made;
}

TEST(ReflectionOperation, TheEntrySetHoldsEachEntryOnceInItsOrder) {
  auto const feature = cliShowTcamUsageFeatureInfoFactory("acl");
  Value const yes(true);
  for (const EntryInfo& each : {entry(5, 1), entry(7, 3), entry(20, 1), entry(7, 1, "a", 3)}) {
    EXPECT_TRUE(call(*feature, 133, Op::insert, {Value(each), yes}).empty());
  }
  call(*feature, 133, Op::insert, {Value(entry(7, 1, "b", 9)), yes});
  EXPECT_EQ(call(*feature, 133, Op::count).as<U32>(), 4U);
  std::vector<EntryInfo> met;
  auto const cursor = call(*feature, 133, Op::iterate).as<Ptr<Zel::Cursor>>();
  Value at(U32{1});
  Value element;
  while (cursor->next(at, element)) {
    EXPECT_TRUE(at.empty());
    met.push_back(element.as<EntryInfo>());
  }
  EXPECT_EQ(met, (std::vector<EntryInfo>{entry(20, 1), entry(7, 1), entry(7, 3), entry(5, 1)}));
  EXPECT_EQ(met[1].description(), "a");
  EXPECT_EQ(met[1].hits(), 3U);
  EXPECT_TRUE(call(*feature, 133, Op::has, {Value(entry(7, 3, "other", 8))}).as<bool>());
  EXPECT_FALSE(call(*feature, 133, Op::has, {Value(entry(7, 4))}).as<bool>());
  EXPECT_TRUE(call(*feature, 133, Op::del, {Value(entry(7, 3))}).as<bool>());
  EXPECT_FALSE(call(*feature, 133, Op::del, {Value(entry(7, 3))}).as<bool>());
  EXPECT_EQ(feature->entrySet().size(), 3U);
  call(*feature, 133, Op::delAll);
  EXPECT_EQ(feature->entrySet().size(), 0U);
}

TEST(ReflectionOperation, AFalseSetValueIsRefused) {
  auto const feature = cliShowTcamUsageFeatureInfoFactory("acl");
  call(*feature, 133, Op::insert, {Value(entry(1, 1)), Value(true)});
  Value result;
  for (U32 id : {1U, 2U}) {  // present, and absent
    EXPECT_EQ(errorOf<Zel::SetFalseValueError>([&] {
                std::vector<Value> const arguments = {Value(entry(1, id)), Value(false)};
                static_cast<void>(Zel::attributeOp(*feature, 133, Op::insert, arguments, result));
              }),
              "VelmorTcam::CliShowTcamUsageFeatureInfo::entrySet: an element cannot be inserted "
              "with the value false");
  }
  EXPECT_EQ(feature->entrySet().size(), 1U);
}

TEST(ReflectionOperation, QueuesOfFeaturesAreFirstInFirstOut) {
  auto const bucket = Halvo::makePtr<CliShowTcamUsageFeaturePrioBucket>(U32{1});
  for (Op op : {Op::front, Op::back, Op::dequeue}) {
    EXPECT_FALSE(call(*bucket, 132, op).as<Ptr<Node>>());
  }
  std::vector<Value> features;
  for (const char* name : {"a", "b", "c", "d", "e", "f"}) {
    features.emplace_back(cliShowTcamUsageFeatureInfoFactory(name));
    EXPECT_TRUE(call(*bucket, 132, Op::enqueue, {features.back()}).empty());
  }
  EXPECT_EQ(call(*bucket, 132, Op::count).as<U32>(), 6U);
  EXPECT_EQ(call(*bucket, 132, Op::front), features.front());
  EXPECT_EQ(call(*bucket, 132, Op::back), features.back());
  std::vector<Value> met;
  auto const cursor = call(*bucket, 132, Op::iterate).as<Ptr<Zel::Cursor>>();
  Value at;
  Value element;
  while (cursor->next(at, element)) met.push_back(element);
  EXPECT_EQ(met, features);
  EXPECT_EQ(call(*bucket, 132, Op::dequeue), features.front());
  EXPECT_EQ(call(*bucket, 132, Op::count).as<U32>(), 5U);
  // A bucket in place of a feature.
  Value const wrong(Halvo::makePtr<CliShowTcamUsageFeaturePrioBucket>(U32{2}));
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] {
              static_cast<void>(Zel::attributeOp(*bucket, 132, Op::enqueue, {&wrong, 1}, element));
            }),
            "VelmorTcam::CliShowTcamUsageFeaturePrioBucket::featureInfo: argument 1 of enqueue "
            "must be of type VelmorTcam::CliShowTcamUsageFeatureInfo, not "
            "VelmorTcam::CliShowTcamUsageFeaturePrioBucket");
  call(*bucket, 132, Op::delAll);
  EXPECT_EQ(bucket->featureInfo().size(), 0U);
}

TEST(ReflectionOperation, QueuesOfStringsAreFirstInFirstOut) {
  auto const group = Halvo::makePtr<CliShowTcamSummaryGroupName>("g");
  for (Op op : {Op::front, Op::back, Op::dequeue}) {
    EXPECT_EQ(call(*group, 132, op).as<String>(), "");
  }
  String const bytes("b\0\xFF", 3);
  for (const String& name : {String("a"), bytes, String("a")}) {
    call(*group, 132, Op::enqueue, {Value(name)});
  }
  EXPECT_EQ(walked(*group, 132), (Texts{"\"a\"", "\"b\\x00\\xff\"", "\"a\""}));
  EXPECT_EQ(call(*group, 132, Op::dequeue).as<String>(), "a");
  EXPECT_EQ(call(*group, 132, Op::front).as<String>(), bytes);
  EXPECT_EQ(call(*group, 132, Op::back).as<String>(), "a");
  EXPECT_EQ(call(*group, 132, Op::count).as<U32>(), 2U);
  call(*group, 132, Op::delAll);
  EXPECT_EQ(group->tcamSummaryGroupName().size(), 0U);
  EXPECT_EQ(group->tcamSummaryGroupName().firstBlock(), nullptr);
}

TEST(ReflectionOperation, DuplicatesAreTestedByInvocation) {
  auto const group = Halvo::makePtr<CliShowTcamSummaryGroupName>("g");
  call(*group, 132, Op::enqueue, {Value(String("a"))});
  EXPECT_FALSE(call(*group, 134, Op::invoke, {Value(String("a"))}).as<bool>());
  call(*group, 133, Op::write, {Value(true)});
  Ptr<const CliShowTcamSummaryGroupName> const reader = group;
  EXPECT_TRUE(call(*reader, 134, Op::invoke, {Value(String("a"))}).as<bool>());
  EXPECT_FALSE(call(*reader, 134, Op::invoke, {Value(String("A"))}).as<bool>());
  EXPECT_EQ(walked(*group, 132), (Texts{"\"a\""}));
}

TEST(ReflectionOperation, FormattersFormatByInvocation) {
  Ptr<const Shadow> const shadow =
      ShadowOf(0x1a2b)
          .qual(qualifierSrcIp, 0x0A000000, 0xFF000000)
          .qual(qualifierDSCP, 4, 0xFF)
          .qual(qualifierIpProtocol, 6, 0xFF)
          .qual(qualifierEtherType, 0x800, 0xFFFF)
          .mac(qualifierSrcMac, "00:11:22:33:44:55", "ff:ff:ff:ff:ff:ff")
          .range(rangeCheckerIpLength, 64, 1500);
  Value const at(shadow);
  auto const ip = Halvo::makePtr<IpFormat>();
  auto const ip6 = Halvo::makePtr<Ip6Format>();
  auto const mac = Halvo::makePtr<MacEntryRequestCliFormat>();
  auto const generic = Halvo::makePtr<VelmorTcamCliFormat>();
  struct Row {
    const Node& node;
    U32 number;
    std::vector<Value> arguments;
    String expected;
  };
  RequestKey const key("acl");
  Row const rows[] = {
      {*ip,
       133,
       {Value(key), Value(RuleId(10)), Value(String("d")), at, Value(U64{42})},
       ip->formatEntryRequest(key, RuleId(10), "d", shadow, 42)},
      {*generic,
       133,
       {Value(key), Value(RuleId(10)), Value(String("d")), at, Value(U64{42})},
       "    0x00001a2b           42 hits - d\n"},
      {*ip, 136, {at}, "permit"},
      {*ip, 137, {Value(U32{10})}, "10     |"},
      {*ip6, 137, {Value(U32{10})}, "10       |"},
      {*ip, 138, {at}, ip->formatQualifierIpProtocol(shadow)},
      {*ip, 139, {at}, ip->formatQualifierOuterVlanId(shadow)},
      {*ip, 140, {at}, ip->formatQualifierL4SrcPort(shadow)},
      {*ip, 141, {at}, ip->formatQualifierL4DstPort(shadow)},
      {*ip, 142, {at}, ip->formatQualifierTcpControl(shadow)},
      {*ip, 143, {at, Value(String("<%s>"))}, ip->formatQualifierIpLength(shadow, "<%s>")},
      {*ip, 144, {at, Value(rangeCheckerIpLength)}, "    64-1500|"},
      {*ip, 145, {at}, ip->formatQualifierSrcIp(shadow)},
      {*ip, 146, {at}, ip->formatQualifierDstIp(shadow)},
      {*ip, 147, {at}, ip->formatQualifierDSCP(shadow)},
      {*ip, 148, {at}, ip->formatQualifierIpFrag(shadow)},
      {*ip6, 145, {at}, ip6->formatQualifierDSCP(shadow)},
      {*ip6, 146, {at}, ip6->formatQualifierSrcIp6(shadow)},
      {*ip6, 147, {at}, ip6->formatQualifierDstIp6(shadow)},
      {*ip6, 148, {at}, ip6->formatQualifierIp6TrafficClass(shadow)},
      {*ip6, 149, {at}, ip6->formatQualifierIp6HopLimit(shadow)},
      {*mac,
       145,
       {at, Value(qualifierSrcMac)},
       mac->formatQualifierMacAddr(shadow, qualifierSrcMac)},
      {*mac, 146, {at}, "800h|"},
      {*generic,
       136,
       {Value(TcamGroupId(3)), Value(U8{4}), Value(U8{1}), Value(U32{1}), Value(U32{511})},
       "TCAM group 3 in PIPE 1 uses 1 entry and can use up to 511 more.\n"},
      {*generic, 137, {Value(String("acl")), Value(U32{1})}, "  acl uses 1 entries.\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.node.typeData() == nullptr ? "" : row.node.typeData()->name) +
                 " " + std::to_string(row.number));
    EXPECT_EQ(call(row.node, row.number, Op::invoke, row.arguments).as<String>(), row.expected);
  }
  EXPECT_TRUE(call(*ip, 131, Op::invoke, {Value(U32{1})}).empty());
  EXPECT_TRUE(call(*ip, 132, Op::invoke, {Value(U32{1})}).empty());
}

TEST(ReflectionOperation, ANullPointerIsNoArgument) {
  auto const ip = Halvo::makePtr<IpFormat>();
  Value const null{Ptr<const Shadow>()};
  Value result;
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] {
              static_cast<void>(Zel::attributeOp(*ip, 145, Op::invoke, {&null, 1}, result));
            }),
            "VelmorTcam::IpEntryRequestCliFormat::formatQualifierSrcIp: argument 1 of invoke must "
            "be of type VelmorTcam::VelmorTcamEntryShadow, not null");
}

TEST(ReflectionOperationDeathTest, AbstractOperationsStopTheProcessHereToo) {
  auto const acl = Halvo::makePtr<EntryRequestCliFormat>();
  Value const shadow{Ptr<const Shadow>(ShadowOf(1))};
  Value result;
  EXPECT_DEATH(static_cast<void>(Zel::attributeOp(*acl, 136, Op::invoke, {&shadow, 1}, result)),
               "Call to abstract interface formatActions");
  Value const yes(true);
  EXPECT_DEATH(static_cast<void>(Zel::attributeOp(*acl, 134, Op::write, {&yes, 1}, result)),
               "Trying to instantiate abstract class CliFormat");
}

// An object that must not change gives out children that must not change either.
TEST(ReflectionOperation, AConstantObjectGivesConstantChildren) {
  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  auto const bucket = chip->stageInfoIs(stageTypeIngress)
                          ->pipeInfoIs(0)
                          ->groupPrioBucketIs(1)
                          ->groupInfoIs(2)
                          ->groupPerCopyInfoIs(3)
                          ->featurePrioBucketIs(4);
  bucket->featureInfoEnq(cliShowTcamUsageFeatureInfoFactory("acl"));
  const Node& constChip = *chip;
  const Node& constBucket = *bucket;
  Value const stage(stageTypeIngress);
  U32 const stageInfo = attributeNumber("CliShowTcamUsageChipInfo", "stageInfo");
  U32 const featureInfo = attributeNumber("CliShowTcamUsageFeaturePrioBucket", "featureInfo");
  auto const elementOf = [](Value const& cursor) {
    Value key;
    Value element;
    EXPECT_TRUE(cursor.as<Ptr<Zel::Cursor>>()->next(key, element));
    return element;
  };
  struct Row {
    const char* name;
    Value constant;
    Value changeable;
  } const rows[] = {
      {"lookup", call(constChip, stageInfo, Op::lookup, {stage}),
       call(*chip, stageInfo, Op::lookup, {stage})},
      {"iterate", elementOf(call(constChip, stageInfo, Op::iterate)),
       elementOf(call(*chip, stageInfo, Op::iterate))},
      {"front", call(constBucket, featureInfo, Op::front), call(*bucket, featureInfo, Op::front)},
      {"back", call(constBucket, featureInfo, Op::back), call(*bucket, featureInfo, Op::back)},
      {"iterate a queue", elementOf(call(constBucket, featureInfo, Op::iterate)),
       elementOf(call(*bucket, featureInfo, Op::iterate))},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.constant.kind(), Value::Kind::constNode);
    EXPECT_FALSE(row.constant.is<Ptr<Node>>());
    EXPECT_TRUE(row.constant.is<Ptr<const Node>>());
    EXPECT_EQ(row.changeable.kind(), Value::Kind::node);
    EXPECT_EQ(row.constant.as<Ptr<const Node>>(), row.changeable.as<Ptr<Node>>());
  }
  // The same holds further down.
  Value const constStage = call(constChip, stageInfo, Op::lookup, {stage});
  EXPECT_EQ(call(*constStage.as<Ptr<const Node>>(),
                 attributeNumber("CliShowTcamUsageStageInfo", "pipeInfo"), Op::lookup,
                 {Value(Halvo::S16{0})})
                .kind(),
            Value::Kind::constNode);
  // An absent child is a null pointer, also from a constant object.
  EXPECT_EQ(call(constChip, stageInfo, Op::lookup, {Value(stageTypeEgress)}).text(), "null");
}

TEST(ReflectionOperation, CursorsWithstandChanges) {
  auto const stage = Halvo::makePtr<CliShowTcamUsageStageInfo>(stageTypeIngress);
  for (S16 pipe = 0; pipe < 10; ++pipe) stage->pipeInfoIs(pipe);
  auto cursor = call(*stage, 131, Op::iterate).as<Ptr<Zel::Cursor>>();
  Texts met;
  Value at;
  Value element;
  while (cursor->next(at, element)) {
    met.push_back(at.text().str());
    auto const pipe = at.as<S16>();
    stage->pipeInfoDel(pipe);
    stage->pipeInfoDel(static_cast<S16>(pipe + 1));
  }
  EXPECT_EQ(met, (Texts{"0", "2", "4", "6", "8"}));

  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  for (StageType type : {stageTypeLookup, stageTypeIngress, stageTypeEgress}) {
    chip->stageInfoIs(type);
  }
  cursor = call(*chip, 130, Op::iterate).as<Ptr<Zel::Cursor>>();
  ASSERT_TRUE(cursor->next(at, element));
  chip->stageInfoDelAll();
  EXPECT_FALSE(cursor->next(at, element));
  // Removing each child as it is met: the walk misses none and meets none twice.
  for (StageType type : {stageTypeLookup, stageTypeIngress, stageTypeEgress}) {
    chip->stageInfoIs(type);
  }
  cursor = call(*chip, 130, Op::iterate).as<Ptr<Zel::Cursor>>();
  std::multiset<StageType> stages;
  while (cursor->next(at, element)) {
    stages.insert(at.as<StageType>());
    chip->stageInfoDel(at.as<StageType>());
  }
  EXPECT_EQ(stages, (std::multiset<StageType>{stageTypeLookup, stageTypeIngress, stageTypeEgress}));

  auto const group = Halvo::makePtr<CliShowTcamSummaryGroupName>("g");
  auto const refill = [&](int count) {
    group->tcamSummaryGroupNameDelAll();
    for (int i = 0; i < count; ++i) group->tcamSummaryGroupNameEnq(String(std::to_string(i)));
  };
  // Every combination of elements met before, then taken and added.
  for (int size : {1, 4, 5, 12, 40}) {
    for (int before = 0; before <= size; ++before) {
      for (int taken = 0; taken <= size; ++taken) {
        refill(size);
        cursor = call(*group, 132, Op::iterate).as<Ptr<Zel::Cursor>>();
        for (int i = 0; i < before; ++i) ASSERT_TRUE(cursor->next(at, element));
        for (int i = 0; i < taken; ++i) {
          group->tcamSummaryGroupNameDeq();
          group->tcamSummaryGroupNameEnq("new");
        }
        for (int i = std::max(before, taken); i < size; ++i) {
          ASSERT_TRUE(cursor->next(at, element));
          ASSERT_EQ(element.as<String>().str(), std::to_string(i));
        }
        ASSERT_FALSE(cursor->next(at, element));
      }
    }
    refill(size);
    cursor = call(*group, 132, Op::iterate).as<Ptr<Zel::Cursor>>();
    refill(size);
    EXPECT_FALSE(cursor->next(at, element));
  }
}

TEST(ReflectionOperation, CursorsKeepTheirObject) {
  auto const& tracker = CliShowTcamUsageStageInfo::memAllocationTracker_;
  auto const live = tracker.liveObjects();
  {
    Value cursor;
    {
      auto const stage = Halvo::makePtr<CliShowTcamUsageStageInfo>(stageTypeIngress);
      stage->pipeInfoIs(1);
      cursor = call(*stage, 131, Op::iterate);
    }
    EXPECT_EQ(tracker.liveObjects(), live + 1);
    Value at;
    Value element;
    EXPECT_TRUE(cursor.as<Ptr<Zel::Cursor>>()->next(at, element));
  }
  EXPECT_EQ(tracker.liveObjects(), live);
}

TEST(ReflectionOperation, TheResultMayBeWhatKeepsTheObject) {
  Value value(Halvo::makePtr<CliShowTcamSummaryGroupName>(String(200, 'n')));
  EXPECT_EQ(Zel::attributeOp(*value.as<Ptr<Node>>(), 130, Op::read, {}, value), OpResult::done);
  EXPECT_EQ(value.as<String>(), String(200, 'n'));
  value = Halvo::makePtr<CliShowTcamSummaryGroupName>(String(200, 'n'));
  Node& node = *value.as<Ptr<Node>>();
  EXPECT_EQ(Zel::attributeOp(node, 130, Op::read, {}, value), OpResult::done);
  EXPECT_EQ(value.as<String>(), String(200, 'n'));
  // The result may be one of the arguments, too.
  auto const group = Halvo::makePtr<CliShowTcamSummaryGroupName>("g");
  EXPECT_EQ(Zel::attributeOp(*group, 132, Op::enqueue, {&value, 1}, value), OpResult::done);
  EXPECT_TRUE(value.empty());
  EXPECT_EQ(group->tcamSummaryGroupNameFront(), String(200, 'n'));
}

}  // namespace
}  // namespace VelmorTcam
