// The type module: its types, and each attribute with its number, kind and operations.
#include <algorithm>
#include <set>

#include "ReflectionFixture.h"

namespace VelmorTcam {
namespace {

using namespace velmortest;

const Zel::TypeModule& libraryModule() {
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    if (std::string(module->module().name) == "VelmorTcamCliTypes") return module->module();
  }
  ADD_FAILURE() << "the module is not loaded";
  static constexpr Zel::TypeModule none{"", {}};
  return none;
}

TEST(Reflection, OperationsAndKindsHaveNames) {
  std::vector<std::string> operations;
  for (unsigned op = 0; op <= Zel::opCount; ++op) {
    operations.emplace_back(Zel::opName(static_cast<Op>(op)));
  }
  EXPECT_EQ(operations,
            (std::vector<std::string>{"read", "write", "createOrGet", "lookup", "has", "insert",
                                      "del", "delAll", "count", "iterate", "enqueue", "dequeue",
                                      "front", "back", "invoke", "unknown"}));
  std::vector<std::string> kinds;
  for (unsigned kind = 0; kind < 9; ++kind) {
    kinds.emplace_back(Zel::attributeKindName(static_cast<Zel::AttributeKind>(kind)));
  }
  EXPECT_EQ(kinds,
            (std::vector<std::string>{"key", "read-only", "read/write", "ordered map", "hash map",
                                      "entry set", "queue", "operation", "unknown"}));
}

TEST(Reflection, SaysWhichArgumentsAreWrong) {
  auto const format = Halvo::makePtr<CliFormat>();
  const Attribute& initialized = *Zel::findAttribute(typeNamed("CliFormat"), "initialized");
  const std::string name = "VelmorTcam::CliFormat::initialized: ";
  struct Row {
    Op op;
    std::vector<Value> arguments;
    const char* message;
  } const rows[] = {
      {Op::write, {}, "write takes 1 argument, not 0"},
      {Op::write, {Value(true), Value(true)}, "write takes 1 argument, not 2"},
      {Op::read, {Value(true)}, "read takes 0 arguments, not 1"},
      {Op::write, {Value(U32{1})}, "argument 1 of write must be of type bool, not U32"},
      {Op::write, {Value()}, "argument 1 of write must be of type bool, not nothing"},
      {Op::write, {Value(Ptr<Node>())}, "argument 1 of write must be of type bool, not null"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.message);
    Value result;
    EXPECT_EQ(
        errorOf<Zel::ArgumentError>([&] {
          static_cast<void>(Zel::attributeOp(*format, initialized, row.op, row.arguments, result));
        }),
        name + row.message);
  }
}

TEST(Reflection, ReadsAConstantObjectByAttribute) {
  auto const format = Halvo::makePtr<CliFormat>();
  const Node& constant = *format;
  const Attribute& initialized = *Zel::findAttribute(typeNamed("CliFormat"), "initialized");
  const Attribute& foreign =
      *Zel::findAttribute(typeNamed("CliShowTcamUsageChipInfo"), "stageInfo");
  Value const yes(true);
  Value result;
  EXPECT_EQ(Zel::attributeOp(constant, initialized, Op::read, {}, result), OpResult::done);
  EXPECT_EQ(result, Value(false));
  EXPECT_EQ(Zel::attributeOp(constant, initialized, Op::write, {&yes, 1}, result),
            OpResult::notSupported);
  EXPECT_EQ(Zel::attributeOp(constant, foreign, Op::count, {}, result), OpResult::notSupported);
}

TEST(Reflection, HashesAValueByItsDescriptor) {
  RuleId const rule(7);
  EXPECT_EQ(Zel::valueHash(Zel::typeOf<RuleId>(), &rule), Value(rule).hash());
  U32 const number = 7;
  EXPECT_EQ(errorOf<Zel::NonHashableTypeError>(
                [&] { static_cast<void>(Zel::valueHash(Zel::typeOf<U32>(), &number)); }),
            "U32: the type is not hashable");
}

TEST(Reflection, ACursorIsNoOtherValue) {
  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  U32 const number = Zel::findAttribute(typeNamed("CliShowTcamUsageChipInfo"), "stageInfo")->number;
  Value const cursor = call(*chip, number, Op::iterate);
  EXPECT_EQ(errorOf<Zel::ArgumentError>([&] { static_cast<void>(cursor.as<U32>()); }),
            "expected U32, not a cursor");
  EXPECT_EQ(cursor.type(), nullptr);
  EXPECT_EQ(cursor.text(), "");
  EXPECT_EQ(cursor, Value(cursor));
}

TEST(Reflection, TrackersAreNamedForWhatTheyCount) {
  int nodes = 0;
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    for (const TypeDescriptor* type : module->module().types) {
      if (type->tracker == nullptr) continue;
      EXPECT_STREQ(type->tracker->typeName(), type->name);
      ++nodes;
    }
  }
  EXPECT_EQ(nodes, 16 + 3);
  std::vector<std::string> names;
  for (auto* tracker : libraryModule().trackers) names.emplace_back(tracker->typeName());
  EXPECT_EQ(names, (std::vector<std::string>{
                       "VelmorTcam::CliShowTcamSummaryGroupName::QE_TcamSummaryGroupName",
                       "VelmorTcam::CliShowTcamSummaryOrdered::TN_TcamSummary",
                       "VelmorTcam::CliShowTcamUsageChipInfo::HN_StageInfo",
                       "VelmorTcam::CliShowTcamUsageFeatureInfo::TN_EntrySet",
                       "VelmorTcam::CliShowTcamUsageFeaturePrioBucket::QE_FeatureInfo",
                       "VelmorTcam::CliShowTcamUsageGroupInfo::TN_GroupPerCopyInfo",
                       "VelmorTcam::CliShowTcamUsageGroupPerCopyInfo::TN_FeaturePrioBucket",
                       "VelmorTcam::CliShowTcamUsageGroupPriorityBucket::TN_GroupInfo",
                       "VelmorTcam::CliShowTcamUsagePipeInfo::TN_GroupPrioBucket",
                       "VelmorTcam::CliShowTcamUsageStageInfo::TN_PipeInfo"}));
}

TEST(Reflection, NodesOfAShadowKnowTheirClass) {
  auto const shadow = Halvo::makePtr<VelmorTcamEntryShadow>(U64{1});
  auto const status = shadow->qualifierIs(qualifierDSCP);
  auto const data = status->hwQualDataIs(qualifierDSCP);
  struct Row {
    Ptr<const Node> node;
    const TypeDescriptor& type;
    const char* name;
  } const rows[] = {
      {shadow, Zel::typeOf<VelmorTcamEntryShadow>(), "VelmorTcam::VelmorTcamEntryShadow"},
      {status, Zel::typeOf<QualifierStatus>(), "VelmorTcam::QualifierStatus"},
      {data, Zel::typeOf<QualifierData>(), "VelmorTcam::QualifierData"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.node->typeData(), &row.type);
    EXPECT_STREQ(row.type.name, row.name);
    EXPECT_EQ(row.type.create, nullptr);
  }
}

TEST(Reflection, TheShadowsModuleHasTheseTypes) {
  std::vector<std::string> names;
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    if (std::string(module->module().name) != "VelmorTcamEntryShadow") continue;
    for (const TypeDescriptor* type : module->module().types) names.emplace_back(type->name);
  }
  EXPECT_EQ(names,
            (std::vector<std::string>{"VelmorTcam::QualifierType", "VelmorTcam::RangeCheckerType",
                                      "VelmorTcam::HwQualStatus", "VelmorTcam::StageType",
                                      "VelmorTcam::QualifierData", "VelmorTcam::QualifierStatus",
                                      "VelmorTcam::VelmorTcamEntryShadow", "VelmorTcam::RequestKey",
                                      "VelmorTcam::RuleId", "VelmorTcam::TcamGroupId"}));
}

TEST(Reflection, TheModuleIsRegisteredOnceWithTheseTypes) {
  std::vector<std::string> names;
  int modules = 0;
  for (auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    if (std::string(module->module().name) == "VelmorTcamCliTypes") ++modules;
  }
  EXPECT_EQ(modules, 1);
  for (const TypeDescriptor* type : libraryModule().types) names.emplace_back(type->name);
  std::vector<std::string> const expected = {
      "VelmorTcam::CliHeaderType",
      "VelmorTcam::CliOutputType",
      "VelmorTcam::CliFormat",
      "VelmorTcam::EntryRequestCliFormat",
      "VelmorTcam::IpEntryRequestCliFormat",
      "VelmorTcam::Ip6EntryRequestCliFormat",
      "VelmorTcam::MacEntryRequestCliFormat",
      "VelmorTcam::VelmorTcamCliFormat",
      "VelmorTcam::CliDisplayStrings",
      "VelmorTcam::CliShowTcamSummaryGroupName",
      "VelmorTcam::CliShowTcamSummaryOrdered",
      "VelmorTcam::CliShowTcamUsageChipInfo",
      "VelmorTcam::CliShowTcamUsageEntryInfo",
      "VelmorTcam::CliShowTcamUsageFeatureInfo",
      "VelmorTcam::CliShowTcamUsageFeaturePrioBucket",
      "VelmorTcam::CliShowTcamUsageGroupInfo",
      "VelmorTcam::CliShowTcamUsageGroupPerCopyInfo",
      "VelmorTcam::CliShowTcamUsageGroupPriorityBucket",
      "VelmorTcam::CliShowTcamUsagePipeInfo",
      "VelmorTcam::CliShowTcamUsageStageInfo",
  };
  EXPECT_EQ(names, expected);
  for (const std::string& name : expected) {
    ASSERT_NE(Zel::findType(name), nullptr) << name;
    EXPECT_EQ(Zel::findType(name)->name, name);
  }
  EXPECT_EQ(Zel::findType("VelmorTcam::CliForma"), nullptr);
  EXPECT_EQ(Zel::findType("CliFormat"), nullptr);
  EXPECT_EQ(Zel::findType(""), nullptr);
}

constexpr Zel::OpSet readOps = Zel::opSet(Op::read);
constexpr Zel::OpSet writeOps = Zel::opSet(Op::read, Op::write);
constexpr Zel::OpSet mapOps =
    Zel::opSet(Op::createOrGet, Op::lookup, Op::del, Op::delAll, Op::count, Op::iterate);
constexpr Zel::OpSet setOps =
    Zel::opSet(Op::has, Op::insert, Op::del, Op::delAll, Op::count, Op::iterate);
constexpr Zel::OpSet queueOps =
    Zel::opSet(Op::enqueue, Op::dequeue, Op::front, Op::back, Op::delAll, Op::count, Op::iterate);
constexpr Zel::OpSet invokeOps = Zel::opSet(Op::invoke);

struct AttributeRow {
  const char* type;
  U32 number;
  const char* name;
  AttributeKind kind;
  Zel::OpSet operations;
  const char* valueType;  // without namespace; "" for nothing
};

constexpr AttributeKind key = AttributeKind::key;
constexpr AttributeKind readOnly = AttributeKind::readOnly;
constexpr AttributeKind readWrite = AttributeKind::readWrite;
constexpr AttributeKind orderedMap = AttributeKind::orderedMap;
constexpr AttributeKind hashMap = AttributeKind::hashMap;
constexpr AttributeKind entrySet = AttributeKind::entrySet;
constexpr AttributeKind queue = AttributeKind::queue;
constexpr AttributeKind operation = AttributeKind::operation;

// Each type's own attributes.
constexpr AttributeRow attributeRows[] = {
    {"CliFormat", 130, "headerType", readOnly, readOps, "CliHeaderType"},
    {"CliFormat", 131, "displayHeader", operation, invokeOps, ""},
    {"CliFormat", 132, "displayFeatureHeader", operation, invokeOps, ""},
    {"CliFormat", 133, "formatEntryRequest", operation, invokeOps, "String"},
    {"CliFormat", 134, "initialized", readWrite, writeOps, "bool"},
    {"CliFormat", 135, "handleInitialized", operation, invokeOps, ""},
    {"EntryRequestCliFormat", 136, "formatActions", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 137, "formatSequenceNum", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 138, "formatQualifierIpProtocol", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 139, "formatQualifierOuterVlanId", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 140, "formatQualifierL4SrcPort", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 141, "formatQualifierL4DstPort", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 142, "formatQualifierTcpControl", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 143, "formatQualifierIpLength", operation, invokeOps, "String"},
    {"EntryRequestCliFormat", 144, "formatQualifierRangeCheck", operation, invokeOps, "String"},
    {"IpEntryRequestCliFormat", 145, "formatQualifierSrcIp", operation, invokeOps, "String"},
    {"IpEntryRequestCliFormat", 146, "formatQualifierDstIp", operation, invokeOps, "String"},
    {"IpEntryRequestCliFormat", 147, "formatQualifierDSCP", operation, invokeOps, "String"},
    {"IpEntryRequestCliFormat", 148, "formatQualifierIpFrag", operation, invokeOps, "String"},
    {"Ip6EntryRequestCliFormat", 145, "formatQualifierDSCP", operation, invokeOps, "String"},
    {"Ip6EntryRequestCliFormat", 146, "formatQualifierSrcIp6", operation, invokeOps, "String"},
    {"Ip6EntryRequestCliFormat", 147, "formatQualifierDstIp6", operation, invokeOps, "String"},
    {"Ip6EntryRequestCliFormat", 148, "formatQualifierIp6TrafficClass", operation, invokeOps,
     "String"},
    {"Ip6EntryRequestCliFormat", 149, "formatQualifierIp6HopLimit", operation, invokeOps, "String"},
    {"MacEntryRequestCliFormat", 145, "formatQualifierMacAddr", operation, invokeOps, "String"},
    {"MacEntryRequestCliFormat", 146, "formatQualifierEtherType", operation, invokeOps, "String"},
    {"VelmorTcamCliFormat", 136, "formatGroupHeader", operation, invokeOps, "String"},
    {"VelmorTcamCliFormat", 137, "formatRequestHeader", operation, invokeOps, "String"},
    {"CliDisplayStrings", 2, "stageHeaderFmt", readOnly, readOps, "String"},
    {"CliDisplayStrings", 3, "pipeHeaderFmt", readOnly, readOps, "String"},
    {"CliDisplayStrings", 4, "groupInfoFmt", readOnly, readOps, "String"},
    {"CliDisplayStrings", 5, "requestHeaderFmt", readOnly, readOps, "String"},
    {"CliDisplayStrings", 6, "entryInfoFmt", readOnly, readOps, "String"},
    {"CliShowTcamUsageEntryInfo", 2, "entryPriority", key, readOps, "U32"},
    {"CliShowTcamUsageEntryInfo", 3, "entryId", key, readOps, "U32"},
    {"CliShowTcamUsageEntryInfo", 4, "description", readWrite, writeOps, "String"},
    {"CliShowTcamUsageEntryInfo", 5, "hits", readWrite, writeOps, "U64"},
    {"CliShowTcamSummaryGroupName", 130, "groupName", key, readOps, "String"},
    {"CliShowTcamSummaryGroupName", 132, "tcamSummaryGroupName", queue, queueOps, "String"},
    {"CliShowTcamSummaryGroupName", 133, "pipeFinished", readWrite, writeOps, "bool"},
    {"CliShowTcamSummaryGroupName", 134, "isGroupPipeDuplicate", operation, invokeOps, "bool"},
    {"CliShowTcamSummaryOrdered", 130, "tcamSummary", orderedMap, mapOps,
     "CliShowTcamSummaryGroupName"},
    {"CliShowTcamUsageChipInfo", 130, "stageInfo", hashMap, mapOps, "CliShowTcamUsageStageInfo"},
    {"CliShowTcamUsageFeatureInfo", 130, "cliFeatureName", key, readOps, "String"},
    {"CliShowTcamUsageFeatureInfo", 131, "usedEntries", readWrite, writeOps, "U32"},
    {"CliShowTcamUsageFeatureInfo", 132, "reservedEntries", readWrite, writeOps, "U32"},
    {"CliShowTcamUsageFeatureInfo", 133, "entrySet", entrySet, setOps, "CliShowTcamUsageEntryInfo"},
    {"CliShowTcamUsageFeaturePrioBucket", 130, "featurePrio", key, readOps, "U32"},
    {"CliShowTcamUsageFeaturePrioBucket", 132, "featureInfo", queue, queueOps,
     "CliShowTcamUsageFeatureInfo"},
    {"CliShowTcamUsageGroupInfo", 130, "groupId", key, readOps, "U32"},
    {"CliShowTcamUsageGroupInfo", 131, "groupPerCopyInfo", orderedMap, mapOps,
     "CliShowTcamUsageGroupPerCopyInfo"},
    {"CliShowTcamUsageGroupPerCopyInfo", 130, "copyId", key, readOps, "U32"},
    {"CliShowTcamUsageGroupPerCopyInfo", 131, "usedEntries", readWrite, writeOps, "U32"},
    {"CliShowTcamUsageGroupPerCopyInfo", 132, "freeEntries", readWrite, writeOps, "U32"},
    {"CliShowTcamUsageGroupPerCopyInfo", 133, "availableEntries", readWrite, writeOps, "U32"},
    {"CliShowTcamUsageGroupPerCopyInfo", 134, "featurePrioBucket", orderedMap, mapOps,
     "CliShowTcamUsageFeaturePrioBucket"},
    {"CliShowTcamUsageGroupPriorityBucket", 130, "groupPriority", key, readOps, "U32"},
    {"CliShowTcamUsageGroupPriorityBucket", 131, "groupInfo", orderedMap, mapOps,
     "CliShowTcamUsageGroupInfo"},
    {"CliShowTcamUsagePipeInfo", 130, "pipeId", key, readOps, "S16"},
    {"CliShowTcamUsagePipeInfo", 131, "groupPrioBucket", orderedMap, mapOps,
     "CliShowTcamUsageGroupPriorityBucket"},
    {"CliShowTcamUsageStageInfo", 130, "stage", key, readOps, "StageType"},
    {"CliShowTcamUsageStageInfo", 131, "pipeInfo", orderedMap, mapOps, "CliShowTcamUsagePipeInfo"},
};

TEST(Reflection, EveryAttributeHasItsNumberKindAndOperations) {
  std::size_t described = 0;
  for (const TypeDescriptor* type : libraryModule().types) described += type->attributes.size();
  EXPECT_EQ(described, std::size(attributeRows));
  for (const AttributeRow& row : attributeRows) {
    SCOPED_TRACE(std::string(row.type) + "::" + row.name);
    const TypeDescriptor& type = typeNamed(row.type);
    const Attribute* const attribute = Zel::findAttribute(type, row.number);
    ASSERT_NE(attribute, nullptr);
    EXPECT_EQ(&attribute->owner(), &type);
    EXPECT_STREQ(attribute->name, row.name);
    EXPECT_EQ(Zel::findAttribute(type, row.name), attribute);
    EXPECT_EQ(attribute->kind, row.kind);
    EXPECT_EQ(attribute->operations, row.operations);
    EXPECT_EQ(attribute->constOperations & ~attribute->operations, 0U);
    std::string valueType = attribute->type == nullptr ? "" : attribute->type().name;
    if (valueType.starts_with("VelmorTcam::")) valueType.erase(0, 12);
    EXPECT_EQ(valueType, row.valueType);
    EXPECT_EQ(attribute->keyType != nullptr, row.kind == orderedMap || row.kind == hashMap);
  }
}

TEST(Reflection, InheritedAttributesAreFoundInDerivedTypes) {
  for (const char* const name :
       {"IpEntryRequestCliFormat", "Ip6EntryRequestCliFormat", "MacEntryRequestCliFormat"}) {
    const TypeDescriptor& type = typeNamed(name);
    EXPECT_EQ(&Zel::findAttribute(type, 130)->owner(), &Zel::typeOf<CliFormat>());
    EXPECT_EQ(&Zel::findAttribute(type, 144)->owner(), &Zel::typeOf<EntryRequestCliFormat>());
    EXPECT_EQ(Zel::findAttribute(type, "headerType")->number, 130U);
  }
  EXPECT_EQ(&Zel::findAttribute(typeNamed("VelmorTcamCliFormat"), 135)->owner(),
            &Zel::typeOf<CliFormat>());
}

TEST(Reflection, NumbersThatAreNoAttributesAreNotFound) {
  struct Row {
    const char* type;
    std::vector<U32> numbers;
  };
  Row const rows[] = {
      {"CliFormat", {0, 2, 129, 136, 0xFFFFFFFF}},
      {"VelmorTcamCliFormat", {129, 138, 145}},
      {"IpEntryRequestCliFormat", {129, 149}},
      {"CliShowTcamSummaryGroupName", {129, 131, 135}},
      {"CliShowTcamUsageFeaturePrioBucket", {129, 131, 133}},
      {"CliShowTcamUsageEntryInfo", {0, 1, 6, 130}},
      {"CliDisplayStrings", {1, 7}},
      {"CliHeaderType", {0, 1, 2, 130}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.type);
    for (U32 const number : row.numbers) {
      EXPECT_EQ(Zel::findAttribute(typeNamed(row.type), number), nullptr) << number;
    }
    EXPECT_EQ(Zel::findAttribute(typeNamed(row.type), "noSuchAttribute"), nullptr);
    EXPECT_EQ(Zel::findAttribute(typeNamed(row.type), ""), nullptr);
  }
}

TEST(Reflection, OperationsTakeWhatTheyAreDeclaredWith) {
  struct Row {
    const char* type;
    U32 number;
    std::vector<std::string> parameters;
  };
  std::string const shadow = "VelmorTcam::VelmorTcamEntryShadow";
  Row const rows[] = {
      {"CliFormat", 131, {"U32"}},
      {"CliFormat", 133, {"VelmorTcam::RequestKey", "VelmorTcam::RuleId", "String", shadow, "U64"}},
      {"CliFormat", 135, {}},
      {"EntryRequestCliFormat", 136, {shadow}},
      {"EntryRequestCliFormat", 137, {"U32"}},
      {"EntryRequestCliFormat", 143, {shadow, "String"}},
      {"EntryRequestCliFormat", 144, {shadow, "VelmorTcam::RangeCheckerType"}},
      {"MacEntryRequestCliFormat", 145, {shadow, "VelmorTcam::QualifierType"}},
      {"VelmorTcamCliFormat", 136, {"VelmorTcam::TcamGroupId", "U8", "U8", "U32", "U32"}},
      {"VelmorTcamCliFormat", 137, {"String", "U32"}},
      {"CliShowTcamSummaryGroupName", 134, {"String"}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.type) + " " + std::to_string(row.number));
    std::vector<std::string> parameters;
    for (Zel::TypeRef type : Zel::findAttribute(typeNamed(row.type), row.number)->parameters()) {
      parameters.emplace_back(type().name);
    }
    EXPECT_EQ(parameters, row.parameters);
  }
}

TEST(Reflection, NodesTellTheirTypeAndTracker) {
  for (const TypeDescriptor* type : libraryModule().types) {
    if (type->kind != Zel::TypeKind::node) continue;
    SCOPED_TRACE(type->name);
    ASSERT_NE(type->tracker, nullptr);
    EXPECT_STREQ(type->tracker->typeName(), type->name);
    auto const live = type->tracker->liveObjects();
    {
      Value const object = valueOf(*type, 3);
      auto const node = object.as<Ptr<Node>>();
      ASSERT_TRUE(node);
      EXPECT_EQ(node->typeData(), type);
      EXPECT_EQ(object.type(), type);
      EXPECT_EQ(type->tracker->liveObjects(), live + 1);
    }
    EXPECT_EQ(type->tracker->liveObjects(), live);
  }
}

// Arguments that fit some operation of the attribute, and some that fit none.
std::vector<std::vector<Value>> argumentLists(const Attribute& attribute) {
  std::vector<std::vector<Value>> lists = {
      {}, {Value(true)}, {Value(U32{7})}, {Value(String("7"))}};
  if (attribute.type != nullptr) {
    lists.push_back({valueOf(attribute.type(), 9)});
    lists.push_back({valueOf(attribute.type(), 9), Value(true)});
  }
  if (attribute.keyType != nullptr) lists.push_back({valueOf(attribute.keyType(), 1)});
  return lists;
}

TEST(Reflection, UnsupportedOperationsChangeNothing) {
  std::size_t answered = 0;
  for (const TypeDescriptor* type : libraryModule().types) {
    if (type->kind == Zel::TypeKind::enumeration) continue;
    SCOPED_TRACE(type->name);
    Value object = valueOf(*type, 3);
    if (type->kind == Zel::TypeKind::node) fill(object);
    std::string const before = stateOf(object);
    auto const doOp = [&](U32 number, Op op, const std::vector<Value>& arguments, Value& result) {
      return object.record() != nullptr
                 ? Zel::attributeOp(object, number, op, arguments, result)
                 : Zel::attributeOp(*object.as<Ptr<Node>>(), number, op, arguments, result);
    };
    for (const Attribute* attribute : attributesOf(*type)) {
      SCOPED_TRACE(attribute->name);
      auto const lists = argumentLists(*attribute);
      for (U32 op = 0; op < Zel::opCount + 3; ++op) {
        if (op < Zel::opCount && attribute->supports(static_cast<Op>(op))) continue;
        SCOPED_TRACE(op);
        for (auto const& arguments : lists) {
          Value result(String("untouched"));
          EXPECT_EQ(doOp(attribute->number, static_cast<Op>(op), arguments, result),
                    OpResult::notSupported);
          EXPECT_EQ(result, Value(String("untouched")));
          ++answered;
        }
      }
    }
    // Unknown attributes support no operation.
    for (U32 number : {0U, 1U, 7U, 129U, 150U, 0xFFFFFFFFU}) {
      for (U32 op = 0; op < Zel::opCount; ++op) {
        Value result(U32{7});
        EXPECT_EQ(doOp(number, static_cast<Op>(op), {}, result), OpResult::notSupported);
        EXPECT_EQ(result, Value(U32{7}));
      }
    }
    EXPECT_EQ(stateOf(object), before);
  }
  EXPECT_GT(answered, 5000U);
}

TEST(Reflection, ArgumentsThatDoNotFitChangeNothing) {
  for (const TypeDescriptor* type : libraryModule().types) {
    if (type->kind != Zel::TypeKind::node) continue;
    Value const object = valueOf(*type, 3);
    fill(object);
    auto const node = object.as<Ptr<Node>>();
    std::string const before = stateOf(object);
    for (const Attribute* attribute : attributesOf(*type)) {
      for (U32 number = 0; number < Zel::opCount; ++number) {
        auto const op = static_cast<Op>(number);
        if (!attribute->supports(op)) continue;
        SCOPED_TRACE(std::string(type->name) + "::" + attribute->name + " " + Zel::opName(op));
        // Six arguments are too many for any operation, and no operation takes a cursor.
        Value result(U32{7});
        std::string what = errorOf<Zel::ArgumentError>([&] {
          static_cast<void>(Zel::attributeOp(*node, attribute->number, op,
                                             std::vector<Value>(6, Value(true)), result));
        });
        std::string const owner = attribute->owner().name;
        EXPECT_TRUE(what.starts_with(owner + "::" + attribute->name + ": " + Zel::opName(op)))
            << what;
        EXPECT_EQ(result, Value(U32{7}));
        std::size_t count = 1;
        if (op == Op::invoke) count = attribute->parameters().size();
        if (op == Op::insert) count = 2;
        bool const takesNone = op == Op::read || op == Op::delAll || op == Op::count ||
                               op == Op::iterate || op == Op::dequeue || op == Op::front ||
                               op == Op::back;
        if (takesNone || count == 0) continue;
        what = errorOf<Zel::ArgumentError>([&] {
          static_cast<void>(
              Zel::attributeOp(*node, attribute->number, op, std::vector<Value>(count), result));
        });
        EXPECT_NE(what.find(owner + "::" + attribute->name), std::string::npos) << what;
        EXPECT_NE(what.find("not nothing"), std::string::npos) << what;
      }
    }
    EXPECT_EQ(stateOf(object), before);
  }
}

TEST(Reflection, ConstantObjectsOnlyAnswerWhatLeavesThemAsTheyAre) {
  Zel::OpSet const harmless = Zel::opSet(Op::read, Op::lookup, Op::has, Op::count, Op::iterate,
                                         Op::front, Op::back, Op::invoke);
  for (const TypeDescriptor* type : libraryModule().types) {
    if (type->kind == Zel::TypeKind::enumeration) continue;
    SCOPED_TRACE(type->name);
    Value object = valueOf(*type, 3);
    if (type->kind == Zel::TypeKind::node) fill(object);
    std::string const before = stateOf(object);
    for (const Attribute* attribute : attributesOf(*type)) {
      EXPECT_EQ(attribute->constOperations & ~harmless, 0U) << attribute->name;
      for (U32 number = 0; number < Zel::opCount; ++number) {
        auto const op = static_cast<Op>(number);
        if ((attribute->constOperations & Zel::opBit(op)) != 0) continue;
        Value result;
        Value const& held = object;
        OpResult const answer =
            held.record() != nullptr
                ? Zel::attributeOp(held, attribute->number, op, {}, result)
                : Zel::attributeOp(*held.as<Ptr<const Node>>(), attribute->number, op, {}, result);
        EXPECT_EQ(answer, OpResult::notSupported) << attribute->name << " " << Zel::opName(op);
      }
    }
    EXPECT_EQ(stateOf(object), before);
  }
  // The only operation that changes its object.
  EXPECT_EQ(Zel::findAttribute(Zel::typeOf<CliFormat>(), "handleInitialized")->constOperations, 0U);
}

TEST(Reflection, AttributesOfOtherTypesAreNotSupported) {
  auto const chip = Halvo::makePtr<CliShowTcamUsageChipInfo>();
  const Attribute& foreign = *Zel::findAttribute(Zel::typeOf<CliShowTcamUsageStageInfo>(), 130);
  Value result;
  EXPECT_EQ(Zel::attributeOp(*chip, foreign, Op::read, {}, result), OpResult::notSupported);
  EXPECT_TRUE(result.empty());
  // A derived object has the attributes of its base. A base object does not have those of a derived
  // one.
  auto const ip = Halvo::makePtr<IpEntryRequestCliFormat>();
  const Attribute& base = *Zel::findAttribute(Zel::typeOf<CliFormat>(), "headerType");
  EXPECT_EQ(Zel::attributeOp(*ip, base, Op::read, {}, result), OpResult::done);
  EXPECT_EQ(result.as<CliHeaderType>(), cliHeaderTypeIp);
  auto const plain = Halvo::makePtr<CliFormat>();
  const Attribute& derived = *Zel::findAttribute(Zel::typeOf<IpEntryRequestCliFormat>(), 145);
  EXPECT_EQ(Zel::attributeOp(*plain, derived, Op::invoke, {}, result), OpResult::notSupported);
}

TEST(Reflection, NodesAreMadeFromWhatTheirConstructorsTake) {
  Value const seven(U32{7});
  auto const group = Zel::createNode(typeNamed("CliShowTcamUsageGroupInfo"), {&seven, 1});
  ASSERT_TRUE(Halvo::ptrCast<CliShowTcamUsageGroupInfo>(group));
  EXPECT_EQ(Halvo::ptrCast<CliShowTcamUsageGroupInfo>(group)->groupId(), 7U);
  EXPECT_EQ(errorOf<Zel::ArgumentError>([] {
              static_cast<void>(Zel::createNode(typeNamed("CliShowTcamUsageGroupInfo"), {}));
            }),
            "VelmorTcam::CliShowTcamUsageGroupInfo: takes 1 argument, not 0");
  EXPECT_EQ(
      errorOf<Zel::ArgumentError>([&] {
        static_cast<void>(Zel::createNode(typeNamed("CliShowTcamUsagePipeInfo"), {&seven, 1}));
      }),
      "VelmorTcam::CliShowTcamUsagePipeInfo: argument 1 must be of type S16, not U32");
  EXPECT_FALSE(Zel::createNode(typeNamed("CliShowTcamUsageEntryInfo"), {}));
  EXPECT_FALSE(Zel::createNode(typeNamed("CliHeaderType"), {}));
}

}  // namespace
}  // namespace VelmorTcam
