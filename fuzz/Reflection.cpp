// Reflection: sequences of any attribute, operation and arguments, on objects and values of every
// type. A refused operation changes nothing. An operation that is done changes the counts as it
// says.
#include "Zel/Types/Reflect.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "Target.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Base/Error.h"
#include "Zel/Types/ModuleInspectData.h"

namespace {

using Halvo::Node;
using Halvo::Ptr;
using Halvo::String;
using Halvo::U32;
using velmorfuzz::Input;
using Zel::Attribute;
using Zel::AttributeKind;
using Zel::Op;
using Zel::OpResult;
using Zel::TypeDescriptor;
using Zel::Value;

std::vector<const TypeDescriptor*> allTypes() {
  // Finds the modules by name: their order is the order in which they were loaded.
  std::vector<const TypeDescriptor*> types;
  for (const char* const module : {"VelmorTcamCliTypes", "VelmorTcamEntryShadow"}) {
    for (const auto* at = Halvo::ModuleInspectData::first(); at != nullptr; at = at->next()) {
      if (std::string_view(at->module().name) != module) continue;
      types.insert(types.end(), at->module().types.begin(), at->module().types.end());
    }
  }
  return types;
}

std::vector<const Attribute*> attributesOf(const TypeDescriptor& type) {
  std::vector<const Attribute*> all;
  Zel::forEachAttribute(type, [&](const Attribute& attribute) { all.push_back(&attribute); });
  return all;
}

bool isCollection(const Attribute& attribute) { return attribute.supports(Op::count); }

/// The outcome of an operation.
enum class Outcome { done, notSupported, refused };

class Run {
 public:
  explicit Run(Input& in) : in_(in) {
    for (Value& value : pool_) value = Value();
  }

  void run() {
    for (unsigned step = 0; !in_.empty() && step < 1000; ++step) {
      switch (in_.below(8)) {
        case 0:
          pool_[slot()] = anyValue(2);
          break;
        case 1:
          walkOn();
          break;
        case 2:
          looks();
          break;
        default:
          operate();
          break;
      }
    }
    for (const Value& value : pool_) (void)value.text();
  }

 private:
  static constexpr std::size_t slots = 12;

  std::size_t slot() { return in_.below(slots); }

  const TypeDescriptor& anyType() {
    static const std::vector<const TypeDescriptor*> types = allTypes();
    return *types[in_.below(static_cast<unsigned>(types.size()))];
  }

  /// A value of the type, made from bytes. For a node type sometimes an existing node, or null.
  Value valueOf(const TypeDescriptor& type, unsigned depth) {
    std::string_view const name = type.name;
    if (type.kind == Zel::TypeKind::enumeration) {
      auto const& values = type.enumValues;
      return Value::fromText(type, values[in_.u8() % values.size()].name);
    }
    if (name == "bool") return Value(in_.flag());
    if (name == "U8") return Value(in_.u8());
    if (name == "U16") return Value(in_.oddNumber<Halvo::U16>());
    if (name == "U32") return Value(in_.oddNumber<U32>());
    if (name == "U64") return Value(in_.oddNumber<Halvo::U64>());
    if (name == "S16") return Value(in_.oddNumber<Halvo::S16>());
    if (name == "S32") return Value(in_.oddNumber<Halvo::S32>());
    if (name == "S64") return Value(in_.oddNumber<Halvo::S64>());
    if (name == "String") return Value(String(in_.text(in_.below(80))));
    if (type.kind == Zel::TypeKind::node && in_.flag()) {
      const Value& present = pool_[slot()];
      if (present.type() == &type) return present;
    }
    if (name == "VelmorTcam::VelmorTcamEntryShadow") return Value(shadow());
    if (name == "VelmorTcam::QualifierStatus") {
      return Value(Halvo::makePtr<VelmorTcam::QualifierStatus>());
    }
    if (name == "VelmorTcam::QualifierData") {
      return Value(Halvo::makePtr<VelmorTcam::QualifierData>());
    }
    std::vector<Value> arguments;
    for (Zel::TypeRef const parameter : type.constructor.parameters) {
      if (parameter != nullptr) arguments.push_back(valueOf(parameter(), depth));
    }
    bool const isSpoilt = in_.u8() < 8;
    if (isSpoilt) spoil(arguments, depth);
    try {
      if (type.kind == Zel::TypeKind::value) return Value::make(type, arguments);
      Ptr<Node> const node = Zel::createNode(type, arguments);
      FUZZ_CHECK(node != nullptr && node->useCount() == 1 && node->typeData() == &type);
      return Value(node);
    } catch (const Zel::ArgumentError&) {
      FUZZ_CHECK(isSpoilt);
      return Value();
    }
  }
  /// A shadow that keeps its contract: a programmed qualifier has its data.
  Ptr<VelmorTcam::VelmorTcamEntryShadow> shadow() {
    auto made = Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(in_.oddNumber<Halvo::U64>());
    auto const types = VelmorTcam::qualifierTypeValues();
    for (unsigned count = in_.below(4); count != 0; --count) {
      auto const type = static_cast<VelmorTcam::QualifierType>(types[in_.below(18)].number);
      if (type == VelmorTcam::qualifierSrcMac || type == VelmorTcam::qualifierDstMac) {
        made->hwQualIs(type, VelmorTcam::EthAddrQualifier(Trelix::EthAddr::fromHostOrder(in_.u8()),
                                                          Trelix::EthAddr()));
      } else {
        made->hwQualIs(type, VelmorTcam::Qualifier(in_.oddNumber<U32>(), in_.oddNumber<U32>()));
      }
    }
    if (in_.flag()) {
      made->rangeCheckerIs(static_cast<VelmorTcam::RangeCheckerType>(1 + in_.below(3)),
                           VelmorTcam::RangeCheckerStatus(in_.u8(), in_.u8()));
    }
    return made;
  }
  Value anyValue(unsigned depth) {
    unsigned const shape = in_.u8();
    if (shape < 16) return Value();
    if (shape < 32) return pool_[shape % slots];
    if (shape < 40) return Value(Ptr<Node>());
    static constexpr Zel::TypeRef basic[] = {
        &Zel::typeOf<bool>,       &Zel::typeOf<Halvo::U8>,  &Zel::typeOf<Halvo::U16>,
        &Zel::typeOf<U32>,        &Zel::typeOf<Halvo::U64>, &Zel::typeOf<Halvo::S16>,
        &Zel::typeOf<Halvo::S32>, &Zel::typeOf<Halvo::S64>, &Zel::typeOf<String>};
    if (shape < 64) return valueOf(basic[shape % std::size(basic)](), depth);
    return valueOf(anyType(), depth);
  }
  /// Adds an argument, removes one or replaces one.
  void spoil(std::vector<Value>& arguments, unsigned depth) {
    unsigned const way = in_.below(3);
    if (way == 0 || arguments.empty()) {
      arguments.push_back(depth == 0 ? Value() : anyValue(depth - 1));
    } else if (way == 1) {
      arguments.pop_back();
    } else {
      arguments[in_.below(static_cast<unsigned>(arguments.size()))] =
          depth == 0 ? Value() : anyValue(depth - 1);
    }
  }

  std::vector<Value> argumentsFor(const Attribute& attribute, Op op) {
    std::vector<Value> arguments;
    switch (op) {
      case Op::write:
      case Op::has:
      case Op::enqueue:
        if (attribute.type != nullptr) arguments.push_back(valueOf(attribute.type(), 1));
        break;
      case Op::insert:
        if (attribute.type != nullptr) arguments.push_back(valueOf(attribute.type(), 1));
        arguments.emplace_back(in_.u8() >= 16);
        break;
      case Op::createOrGet:
      case Op::lookup:
        if (attribute.keyType != nullptr) arguments.push_back(valueOf(attribute.keyType(), 1));
        break;
      case Op::del:
        if (attribute.keyType != nullptr) {
          arguments.push_back(valueOf(attribute.keyType(), 1));
        } else if (attribute.type != nullptr) {
          arguments.push_back(valueOf(attribute.type(), 1));
        }
        break;
      case Op::invoke:
        for (Zel::TypeRef const parameter : attribute.parameters()) {
          arguments.push_back(valueOf(parameter(), 1));
        }
        break;
      default:
        break;
    }
    if (in_.u8() < 24) spoil(arguments, 1);
    return arguments;
  }

  /// Whether the operation itself stops the process, as its class documents.
  static bool stops(const TypeDescriptor& type, const Attribute& attribute, Op op,
                    const std::vector<Value>& arguments) {
    std::string_view const name = attribute.name;
    std::string_view const typeName = type.name;
    bool const isPlain =
        typeName == "VelmorTcam::CliFormat" || typeName == "VelmorTcam::EntryRequestCliFormat";
    if (name == "initialized" && op == Op::write) return isPlain;
    if (op != Op::invoke) return false;
    if (name == "handleInitialized") return isPlain;
    if (name == "formatActions") return true;
    if (name == "formatEntryRequest") return typeName != "VelmorTcam::VelmorTcamCliFormat";
    if (name == "formatQualifierIpLength") {
      // Other texts with one "%s" belong to the target `format`.
      return arguments.size() > 1 && arguments[1].is<String>() &&
             arguments[1].as<String>() != "%11s|";
    }
    if (name == "formatQualifierMacAddr" && arguments.size() > 1 &&
        arguments[1].is<VelmorTcam::QualifierType>()) {
      auto const which = arguments[1].as<VelmorTcam::QualifierType>();
      return which != VelmorTcam::qualifierSrcMac && which != VelmorTcam::qualifierDstMac;
    }
    return false;
  }

  template <class Object>
  static std::string stateOf(Object& object, const TypeDescriptor& type) {
    std::string state;
    for (const Attribute* const attribute : attributesOf(type)) {
      for (Op const op : {Op::read, Op::count, Op::front, Op::back}) {
        if (!attribute->supports(op)) continue;
        Value result;
        FUZZ_CHECK(attributeOp(object, attribute->number, op, {}, result) == OpResult::done);
        state += result.text().str() + ';';
      }
    }
    return state;
  }
  template <class Object>
  static U32 countOf(Object& object, const Attribute& attribute) {
    Value result;
    FUZZ_CHECK(attributeOp(object, attribute.number, Op::count, {}, result) == OpResult::done);
    return result.as<U32>();
  }
  template <class Object>
  static void checkWalk(Object& object, const Attribute& attribute) {
    Value result;
    FUZZ_CHECK(attributeOp(object, attribute.number, Op::iterate, {}, result) == OpResult::done);
    auto const cursor = result.as<Ptr<Zel::Cursor>>();
    Value key;
    Value element;
    U32 met = 0;
    while (cursor->next(key, element)) {
      ++met;
      FUZZ_CHECK(key.empty() == (attribute.keyType == nullptr));
      if (attribute.keyType == nullptr) continue;
      FUZZ_CHECK(key.type() == &attribute.keyType());
      Value found;
      FUZZ_CHECK(attributeOp(object, attribute.number, Op::lookup, {&key, 1}, found) ==
                 OpResult::done);
      FUZZ_CHECK(found == element);
    }
    FUZZ_CHECK(met == countOf(object, attribute) && !cursor->next(key, element));
  }

  void operate() {
    std::size_t const at = slot();
    const TypeDescriptor* const type = pool_[at].type();
    Value const held = pool_[at];  // keeps the value when the slot changes
    if (held.record() != nullptr) {
      // A record is copied: the operation changes the copy.
      Value changed = held;
      operateOn(changed, *type, changed);
      if (in_.flag()) pool_[at] = std::move(changed);
    } else if (held.kind() == Value::Kind::node && type != nullptr) {
      auto const node = held.as<Ptr<Node>>();
      operateOn(*node, *type, held);
    } else if (type == nullptr || type->attributes.empty()) {
      Value result(U32{7});
      Value target = held;
      OpResult const what = attributeOp(target, in_.u8(), Op::read, {}, result);
      FUZZ_CHECK(what == OpResult::notSupported && result.as<U32>() == 7);
    }
  }

  template <class Object>
  void operateOn(Object& object, const TypeDescriptor& type, const Value&) {
    std::vector<const Attribute*> const attributes = attributesOf(type);
    const Attribute* attribute = nullptr;
    U32 number = in_.u8();
    if (number < 224 && !attributes.empty()) {
      attribute = attributes[number % attributes.size()];
      number = attribute->number;
    } else {
      number = in_.flag() ? in_.oddNumber<U32>() : 120 + in_.below(40);
      attribute = Zel::findAttribute(type, number);
    }
    unsigned const choice = in_.u8();
    Op op = static_cast<Op>(choice);
    if (choice < 240 && attribute != nullptr) {
      // Choose an operation that the attribute supports.
      unsigned wanted = choice % static_cast<unsigned>(__builtin_popcount(attribute->operations));
      U32 bits = attribute->operations;
      for (; wanted != 0; --wanted) bits &= bits - 1;
      op = static_cast<Op>(__builtin_ctz(bits));
    } else if (choice >= 248) {
      op = static_cast<Op>(in_.u8());
    }
    static const Attribute none;
    std::vector<Value> const arguments = argumentsFor(attribute == nullptr ? none : *attribute, op);
    bool const isSupported =
        attribute != nullptr && static_cast<U32>(op) < Zel::opCount && attribute->supports(op);
    if (isSupported && stops(type, *attribute, op, arguments)) return;
    bool const isConst = in_.below(4) == 0;

    std::string const before = stateOf(object, type);
    bool const isCounted = attribute != nullptr && isCollection(*attribute);
    U32 const count = isCounted ? countOf(object, *attribute) : 0;
    std::size_t const to = slot();
    Value result = pool_[to];
    std::string const resultBefore = result.text().str();
    Outcome outcome = Outcome::refused;
    try {
      OpResult const what = isConst
                                ? attributeOp(std::as_const(object), number, op, arguments, result)
                                : attributeOp(object, number, op, arguments, result);
      outcome = what == OpResult::done ? Outcome::done : Outcome::notSupported;
    } catch (const Zel::ArgumentError& error) {
      FUZZ_CHECK(std::string_view(error.what()).find(attribute->name) != std::string_view::npos);
    } catch (const Zel::SetFalseValueError&) {
      FUZZ_CHECK(op == Op::insert && !arguments[1].as<bool>());
    }
    bool const isAllowed =
        isSupported && (!isConst || (attribute->constOperations & Zel::opBit(op)) != 0);
    FUZZ_CHECK((outcome == Outcome::notSupported) == !isAllowed);
    if (outcome != Outcome::done || isConst) {
      FUZZ_CHECK_TEXT(stateOf(object, type), before);
    }
    if (outcome != Outcome::done) {
      FUZZ_CHECK_TEXT(result.text(), resultBefore);
      return;
    }
    if (isCounted) checkCount(object, *attribute, op, arguments, result, count);
    if (op == Op::write) {
      Value now;
      FUZZ_CHECK(attributeOp(object, number, Op::read, {}, now) == OpResult::done);
      FUZZ_CHECK(now == arguments[0]);
    }
    pool_[to] = std::move(result);
  }

  template <class Object>
  void checkCount(Object& object, const Attribute& attribute, Op op,
                  const std::vector<Value>& arguments, const Value& result, U32 before) {
    U32 const count = countOf(object, attribute);
    switch (op) {
      case Op::count:
        FUZZ_CHECK(result.as<U32>() == count && count == before);
        break;
      case Op::createOrGet: {
        FUZZ_CHECK(count == before || count == before + 1);
        Value found;
        FUZZ_CHECK(attributeOp(object, attribute.number, Op::lookup, arguments, found) ==
                   OpResult::done);
        FUZZ_CHECK(found == result);
        break;
      }
      case Op::insert: {
        FUZZ_CHECK(count == before || count == before + 1);
        Value has;
        FUZZ_CHECK(attributeOp(object, attribute.number, Op::has, {arguments.data(), 1}, has) ==
                   OpResult::done);
        FUZZ_CHECK(has.as<bool>());
        break;
      }
      case Op::del: {
        bool const isGone =
            result.kind() == Value::Kind::boolean ? result.as<bool>() : result.type() != nullptr;
        FUZZ_CHECK(count == before - (isGone ? 1 : 0));
        break;
      }
      case Op::delAll:
        FUZZ_CHECK(count == 0);
        break;
      case Op::enqueue: {
        FUZZ_CHECK(count == before + 1);
        Value back;
        FUZZ_CHECK(attributeOp(object, attribute.number, Op::back, {}, back) == OpResult::done);
        FUZZ_CHECK(back == arguments[0]);
        break;
      }
      case Op::dequeue:
        FUZZ_CHECK(count == (before == 0 ? 0 : before - 1));
        break;
      default:
        FUZZ_CHECK(count == before);
        break;
    }
    if (count < 50) checkWalk(object, attribute);
  }

  /// A cursor can go on, whatever happened to its collection.
  void walkOn() {
    const Value held = pool_[slot()];
    if (!held.is<Ptr<Zel::Cursor>>()) return;
    auto const cursor = held.as<Ptr<Zel::Cursor>>();
    std::size_t const keyAt = slot();
    std::size_t const elementAt = slot();
    Value key = pool_[keyAt];
    Value element = pool_[elementAt];
    for (unsigned count = 1 + in_.below(4); count != 0; --count) {
      if (!cursor->next(key, element)) break;
      (void)key.text();
      (void)element.text();
    }
    pool_[keyAt] = std::move(key);
    pool_[elementAt] = std::move(element);
  }

  /// The questions that any value answers.
  void looks() {
    const Value value = pool_[slot()];
    const Value other = pool_[slot()];
    FUZZ_CHECK(value == value && (value == other) == (other == value));
    String const text = value.text();
    const TypeDescriptor* const type = value.type();
    std::optional<std::size_t> hash;
    try {
      hash = value.hash();
    } catch (const Zel::NonHashableTypeError&) {
    }
    if (hash && value == other) FUZZ_CHECK(other.hash() == *hash);
    if (type != nullptr && type->kind != Zel::TypeKind::node) {
      FUZZ_CHECK(Value::fromText(*type, text) == value);
    }
    try {
      (void)value.as<Halvo::U16>();
      FUZZ_CHECK(value.kind() == Value::Kind::u16);
    } catch (const Zel::ArgumentError&) {
      FUZZ_CHECK(value.kind() != Value::Kind::u16);
    }
    if (value.kind() == Value::Kind::constNode && type != nullptr) {
      auto const node = value.as<Ptr<const Node>>();
      (void)stateOf(*node, *type);
    }
  }

  Input& in_;
  std::array<Value, slots> pool_;
};

}  // namespace

FUZZ_TARGET(reflection) { Run(in).run(); }
