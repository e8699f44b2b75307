#include "Zel/Types/Reflect.h"

#include <string>

#include "Zel/Base/Error.h"
#include "Zel/Types/AttributeTable.h"
#include "Zel/Types/ModuleInspectData.h"

namespace Zel {

const char* opName(Op op) noexcept {
  constexpr const char* names[] = {"read",    "write",   "createOrGet", "lookup", "has",
                                   "insert",  "del",     "delAll",      "count",  "iterate",
                                   "enqueue", "dequeue", "front",       "back",   "invoke"};
  static_assert(std::size(names) == opCount);
  auto const index = static_cast<U32>(op);
  return index < opCount ? names[index] : "unknown";
}

const char* attributeKindName(AttributeKind kind) noexcept {
  switch (kind) {
    case AttributeKind::key:
      return "key";
    case AttributeKind::readOnly:
      return "read-only";
    case AttributeKind::readWrite:
      return "read/write";
    case AttributeKind::orderedMap:
      return "ordered map";
    case AttributeKind::hashMap:
      return "hash map";
    case AttributeKind::entrySet:
      return "entry set";
    case AttributeKind::queue:
      return "queue";
    case AttributeKind::operation:
      return "operation";
  }
  return "unknown";
}

const TypeDescriptor* findType(std::string_view name) noexcept {
  for (const auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    for (const TypeDescriptor* const type : module->module().types) {
      if (name == type->name) return type;
    }
  }
  return nullptr;
}

const Attribute* findAttribute(const TypeDescriptor& type, U32 number) noexcept {
  for (const TypeDescriptor* at = &type; at != nullptr; at = at->base) {
    if (at->attributes.empty()) continue;
    U32 const first = at->attributes.front().number;
    if (number < first) continue;
    // Numbers of element types leave gaps: attribute `number` is at index `number - first` or
    // before it.
    std::size_t index = number - first;
    if (index >= at->attributes.size()) index = at->attributes.size() - 1;
    for (;; --index) {
      const Attribute& attribute = at->attributes[index];
      if (attribute.number == number) return &attribute;
      if (attribute.number < number || index == 0) return nullptr;
    }
  }
  return nullptr;
}

const Attribute* findAttribute(const TypeDescriptor& type, std::string_view name) noexcept {
  for (const TypeDescriptor* at = &type; at != nullptr; at = at->base) {
    for (const Attribute& attribute : at->attributes) {
      if (name == attribute.name) return &attribute;
    }
  }
  return nullptr;
}

namespace {

bool belongsTo(const Attribute& attribute, const TypeDescriptor* type) noexcept {
  const TypeDescriptor* const owner = &attribute.owner();
  for (; type != nullptr; type = type->base) {
    if (type == owner) return true;
  }
  return false;
}

OpResult on(void* object, const Attribute& attribute, OpSet allowed, Op op,
            std::span<const Value> arguments, Value& result) {
  // A value that is no Op has no bit.
  if (static_cast<U32>(op) >= opCount || (allowed & opBit(op)) == 0) return OpResult::notSupported;
  attribute.access(object, op, attribute, arguments, result);
  return OpResult::done;
}

const Attribute* attributeOf(const Halvo::Node& node, U32 number) noexcept {
  const TypeDescriptor* const type = node.typeData();
  return type == nullptr ? nullptr : findAttribute(*type, number);
}

// For objects that must not change: allows only operations that do not change them, and marks what
// the result refers to as constant.
OpResult onConst(const void* object, const Attribute& attribute, Op op,
                 std::span<const Value> arguments, Value& result) {
  OpResult const became =
      on(const_cast<void*>(object), attribute, attribute.constOperations, op, arguments, result);
  if (became == OpResult::done) result.constIs();
  return became;
}

}  // namespace

OpResult attributeOp(Halvo::Node& node, const Attribute& attribute, Op op,
                     std::span<const Value> arguments, Value& result) {
  if (!belongsTo(attribute, node.typeData())) return OpResult::notSupported;
  return on(&node, attribute, attribute.operations, op, arguments, result);
}

OpResult attributeOp(Halvo::Node& node, U32 number, Op op, std::span<const Value> arguments,
                     Value& result) {
  const Attribute* const attribute = attributeOf(node, number);
  if (attribute == nullptr) return OpResult::notSupported;
  return on(&node, *attribute, attribute->operations, op, arguments, result);
}

OpResult attributeOp(const Halvo::Node& node, const Attribute& attribute, Op op,
                     std::span<const Value> arguments, Value& result) {
  if (!belongsTo(attribute, node.typeData())) return OpResult::notSupported;
  return onConst(&node, attribute, op, arguments, result);
}

OpResult attributeOp(const Halvo::Node& node, U32 number, Op op, std::span<const Value> arguments,
                     Value& result) {
  const Attribute* const attribute = attributeOf(node, number);
  if (attribute == nullptr) return OpResult::notSupported;
  return onConst(&node, *attribute, op, arguments, result);
}

OpResult attributeOp(Value& value, U32 number, Op op, std::span<const Value> arguments,
                     Value& result) {
  if (value.record() == nullptr) return OpResult::notSupported;
  return attributeOp(*value.type(), value.record(), number, op, arguments, result);
}

OpResult attributeOp(const Value& value, U32 number, Op op, std::span<const Value> arguments,
                     Value& result) {
  if (value.record() == nullptr) return OpResult::notSupported;
  const Attribute* const attribute = findAttribute(*value.type(), number);
  if (attribute == nullptr) return OpResult::notSupported;
  return onConst(value.record(), *attribute, op, arguments, result);
}

OpResult attributeOp(const TypeDescriptor& type, void* value, U32 number, Op op,
                     std::span<const Value> arguments, Value& result) {
  const Attribute* const attribute =
      type.kind == TypeKind::value ? findAttribute(type, number) : nullptr;
  if (attribute == nullptr) return OpResult::notSupported;
  return on(value, *attribute, attribute->operations, op, arguments, result);
}

Halvo::Ptr<Halvo::Node> createNode(const TypeDescriptor& type, std::span<const Value> arguments) {
  return type.create == nullptr ? nullptr : type.create(arguments);
}

std::size_t valueHash(const TypeDescriptor& type, const void* value) {
  if (type.value == nullptr || type.value->hash == nullptr) {
    throw NonHashableTypeError(std::string(type.name) + ": the type is not hashable");
  }
  return type.value->hash(value);
}

namespace table {

namespace {

std::string nameOf(const Attribute& attribute) {
  return std::string(attribute.owner().name) + "::" + attribute.name;
}

std::string plural(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " argument" : " arguments");
}

const char* heldName(const Value& value) noexcept {
  if (value.empty()) return "nothing";
  if (value.kind() == Value::Kind::cursor) return "a cursor";
  const TypeDescriptor* const type = value.type();
  if (type != nullptr) return type->name;
  return "null";
}

}  // namespace

void argumentCountWrong(const char* type, std::size_t expected, std::size_t count) {
  throw ArgumentError(std::string(type) + ": takes " + plural(expected) + ", not " +
                      std::to_string(count));
}

void argumentCountWrong(const Attribute& attribute, Op op, std::size_t expected,
                        std::size_t count) {
  throw ArgumentError(nameOf(attribute) + ": " + opName(op) + " takes " + plural(expected) +
                      ", not " + std::to_string(count));
}

void argumentTypeWrong(const char* type, std::size_t index, TypeRef expected, const Value& held) {
  throw ArgumentError(std::string(type) + ": argument " + std::to_string(index + 1) +
                      " must be of type " + expected().name + ", not " + heldName(held));
}

void argumentTypeWrong(const Attribute& attribute, Op op, std::size_t index, TypeRef expected,
                       const Value& held) {
  throw ArgumentError(nameOf(attribute) + ": argument " + std::to_string(index + 1) + " of " +
                      opName(op) + " must be of type " + expected().name + ", not " +
                      heldName(held));
}

void setFalse(const Attribute& attribute) {
  throw SetFalseValueError(nameOf(attribute) +
                           ": an element cannot be inserted with the value false");
}

}  // namespace table

}  // namespace Zel
