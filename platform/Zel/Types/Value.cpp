#include "Zel/Types/Value.h"

#include <functional>
#include <iterator>
#include <string>

#include "Zel/Base/Error.h"
#include "Zel/Types/Enum8.h"
#include "Zel/Types/Record.h"

namespace Zel {

Cursor::~Cursor() = default;

bool Cursor::next(Value& key, Value& element) {
  if (!nextElement(key, element)) return false;
  if (elementsAreConst_) element.constIs();
  return true;
}

namespace {

constexpr TypeDescriptor basicType(const char* name) {
  return {.name = name, .kind = TypeKind::basic};
}

constexpr TypeDescriptor boolType = basicType("bool");
constexpr TypeDescriptor u8Type = basicType("U8");
constexpr TypeDescriptor u16Type = basicType("U16");
constexpr TypeDescriptor u32Type = basicType("U32");
constexpr TypeDescriptor u64Type = basicType("U64");
constexpr TypeDescriptor s16Type = basicType("S16");
constexpr TypeDescriptor s32Type = basicType("S32");
constexpr TypeDescriptor s64Type = basicType("S64");
constexpr TypeDescriptor stringType = basicType("String");

// The types of the kinds from boolean to s64.
constexpr const TypeDescriptor* basicTypes[] = {&boolType, &u8Type,  &u16Type, &u32Type,
                                                &u64Type,  &s16Type, &s32Type, &s64Type};

template <class T>
Value basicFromText(const Halvo::String& text) {
  return Value(strepToValue<T>(text));
}
constexpr Value (*basicReaders[])(const Halvo::String&) = {
    basicFromText<bool>, basicFromText<U8>,  basicFromText<U16>, basicFromText<U32>,
    basicFromText<U64>,  basicFromText<S16>, basicFromText<S32>, basicFromText<S64>};

const char* nameOf(const TypeDescriptor* type) noexcept {
  return type == nullptr ? "an object" : type->name;
}

const ValueOperations& operationsOf(const TypeDescriptor& type) {
  if (type.value == nullptr) {
    throw ArgumentError(std::string(type.name) + ": its values are not described");
  }
  return *type.value;
}

}  // namespace

const TypeDescriptor& typeDescriptor(TypeTag<bool>) noexcept { return boolType; }
const TypeDescriptor& typeDescriptor(TypeTag<U8>) noexcept { return u8Type; }
const TypeDescriptor& typeDescriptor(TypeTag<U16>) noexcept { return u16Type; }
const TypeDescriptor& typeDescriptor(TypeTag<U32>) noexcept { return u32Type; }
const TypeDescriptor& typeDescriptor(TypeTag<U64>) noexcept { return u64Type; }
const TypeDescriptor& typeDescriptor(TypeTag<S16>) noexcept { return s16Type; }
const TypeDescriptor& typeDescriptor(TypeTag<S32>) noexcept { return s32Type; }
const TypeDescriptor& typeDescriptor(TypeTag<S64>) noexcept { return s64Type; }
const TypeDescriptor& typeDescriptor(TypeTag<Halvo::String>) noexcept { return stringType; }

const TypeDescriptor* Value::type() const noexcept {
  switch (kind_) {
    case Kind::none:
    case Kind::cursor:
      return nullptr;
    case Kind::enumeration:
    case Kind::record:
      return type_;
    case Kind::string:
      return &stringType;
    case Kind::node:
    case Kind::constNode:
      return storage_.node == nullptr ? nullptr : storage_.node->typeData();
    default:
      return basicTypes[static_cast<std::size_t>(kind_) - 1];
  }
}

void Value::wrongType(const TypeDescriptor* expected) const {
  std::string held = "nothing";
  if (kind_ == Kind::cursor) {
    held = "a cursor";
  } else if (kind_ != Kind::none) {
    held = nameOf(type());
    if (kind_ == Kind::constNode) held = "const " + held;
  }
  throw ArgumentError(std::string("expected ") + nameOf(expected) + ", not " + held);
}

void Value::constIs() noexcept {
  if (kind_ == Kind::node) {
    kind_ = Kind::constNode;
  } else if (kind_ == Kind::cursor && storage_.node != nullptr) {
    const_cast<Cursor*>(static_cast<const Cursor*>(storage_.node))->elementsAreConst();
  }
}

void Value::release() noexcept {
  switch (kind_) {
    case Kind::string:
      string().~String();
      break;
    case Kind::record:
      type_->value->destroy(const_cast<void*>(recordPlace()));
      recordRoomFree(*type_);
      break;
    default:
      if (storage_.node != nullptr) storage_.node->refDelete();
      break;
  }
}

void Value::copyFrom(const Value& other) {
  switch (other.kind_) {
    case Kind::string:
      new (storage_.bytes) Halvo::String(other.string());
      break;
    case Kind::record:
      recordPut(*other.type_, other.recordPlace());
      break;
    case Kind::node:
    case Kind::constNode:
    case Kind::cursor:
      storage_.node = other.storage_.node;
      if (storage_.node != nullptr) storage_.node->refNew();
      break;
    default:
      storage_.number = other.storage_.number;
      type_ = other.type_;
      break;
  }
  kind_ = other.kind_;
}

void Value::moveFrom(Value& other) noexcept {
  switch (other.kind_) {
    case Kind::string:
      new (storage_.bytes) Halvo::String(std::move(other.string()));
      other.string().~String();
      break;
    case Kind::record:
      if (other.type_->value->size <= inPlace) {
        other.type_->value->relocate(storage_.bytes, other.storage_.bytes);
      } else {
        storage_.heap = other.storage_.heap;
      }
      break;
    default:
      storage_.number = other.storage_.number;
      break;
  }
  type_ = other.type_;
  kind_ = other.kind_;
  other.kind_ = Kind::none;
}

const void* Value::recordPlace() const noexcept {
  return type_->value->size <= inPlace ? storage_.bytes : storage_.heap;
}

void* Value::recordRoom(const TypeDescriptor& type) {
  const ValueOperations& operations = operationsOf(type);
  if (operations.size <= inPlace) return storage_.bytes;
  return storage_.heap = ::operator new(operations.size);
}

// NOLINTNEXTLINE(readability-make-member-function-const): it frees the record
void Value::recordRoomFree(const TypeDescriptor& type) noexcept {
  if (type.value->size > inPlace) ::operator delete(storage_.heap);
}

void Value::recordPut(const TypeDescriptor& type, const void* from) {
  void* const place = recordRoom(type);
  try {
    type.value->copy(place, from);
  } catch (...) {
    recordRoomFree(type);
    throw;
  }
  type_ = &type;
}

Value Value::make(const TypeDescriptor& type, std::span<const Value> arguments) {
  Value made;
  void* const place = made.recordRoom(type);
  try {
    type.value->construct(place, arguments);
  } catch (...) {
    made.recordRoomFree(type);
    throw;
  }
  made.type_ = &type;
  made.kind_ = Kind::record;
  return made;
}

Halvo::String Value::text() const {
  switch (kind_) {
    case Kind::none:
    case Kind::cursor:
      return {};
    case Kind::enumeration:
      return enum8StringValue(*type_, static_cast<U8>(storage_.number));
    case Kind::string:
      return ZelHalvo::Impl::valueToStrep(string());
    case Kind::record:
      return type_->value->toText(recordPlace());
    case Kind::node:
    case Kind::constNode:
      return storage_.node == nullptr ? "null" : nameOf(type());
    case Kind::boolean:
      return ZelHalvo::Impl::valueToStrep(storage_.number != 0);
    case Kind::s16:
    case Kind::s32:
    case Kind::s64:
      return ZelHalvo::Impl::valueToStrep(static_cast<S64>(storage_.number));
    default:
      return ZelHalvo::Impl::valueToStrep(storage_.number);
  }
}

Value Value::fromText(const TypeDescriptor& type, const Halvo::String& text) {
  Value value;
  if (type.kind == TypeKind::enumeration) {
    value.storage_.number = enum8FromName(type, text);
    value.type_ = &type;
    value.kind_ = Kind::enumeration;
    return value;
  }
  if (type.value != nullptr) {
    void* const place = value.recordRoom(type);
    try {
      type.value->fromText(place, text);
    } catch (...) {
      value.recordRoomFree(type);
      throw;
    }
    value.type_ = &type;
    value.kind_ = Kind::record;
    return value;
  }
  if (&type == &stringType) return basicFromText<Halvo::String>(text);
  for (std::size_t i = 0; i < std::size(basicTypes); ++i) {
    if (basicTypes[i] == &type) return basicReaders[i](text);
  }
  throw ParseError(std::string(type.name) + ": has no text form");
}

std::size_t Value::hash() const {
  if (kind_ == Kind::string) return std::hash<Halvo::String>{}(string());
  if (kind_ == Kind::record && type_->value->hash != nullptr) {
    return type_->value->hash(recordPlace());
  }
  if (kind_ >= Kind::record || kind_ == Kind::none) {
    throw NonHashableTypeError(std::string(kind_ == Kind::none ? "nothing" : nameOf(type())) +
                               ": the type is not hashable");
  }
  return std::hash<U64>{}(storage_.number);
}

bool operator==(const Value& a, const Value& b) {
  if (a.kind_ != b.kind_) return false;
  switch (a.kind_) {
    case Value::Kind::none:
      return true;
    case Value::Kind::string:
      return a.string() == b.string();
    case Value::Kind::record:
      return a.type_ == b.type_ && a.type_->value->isEq(a.recordPlace(), b.recordPlace());
    case Value::Kind::enumeration:
      return a.type_ == b.type_ && a.storage_.number == b.storage_.number;
    case Value::Kind::node:
    case Value::Kind::constNode:
    case Value::Kind::cursor:
      return a.storage_.node == b.storage_.node;
    default:
      return a.storage_.number == b.storage_.number;
  }
}

}  // namespace Zel
