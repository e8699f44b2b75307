// Value: one argument or result of a generic operation.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstring>
#include <new>
#include <span>
#include <type_traits>
#include <utility>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/TypeModule.h"

namespace Zel {

class Value;

/// Walks the elements of a collection in the order of the collection. Keeps the object that owns
/// the collection alive. The collection may change during the walk:
/// - Elements that were removed are not visited.
/// - An element that is added behind the cursor is visited in an ordered collection. In a hash map
///   it may or may not be visited. In a queue it is not visited.
/// - In a hash map, a change may cause elements that stay to be missed or visited twice. Removing
///   the element that was just visited causes neither.
///
/// Threads: as the collection.
class VELMOR_PLATFORM_API Cursor : public Halvo::Node {
 public:
  ~Cursor() override;
  /// Moves to the next element and stores it in `element`. In a map, stores its key in `key`;
  /// otherwise `key` becomes empty. Behind the last element, returns false and changes neither. A
  /// cursor over an object that must not change gives children that must not change either
  /// (Value::Kind::constNode).
  bool next(Value& key, Value& element);
  /// From now on next() gives children that must not change.
  void elementsAreConst() noexcept { elementsAreConst_ = true; }

 private:
  virtual bool nextElement(Value& key, Value& element) = 0;

  bool elementsAreConst_ = false;
};

/// A value of any type that an attribute can have, together with its type.
///
/// Invariant: kind() tells what is held:
/// - nothing;
/// - a bool, or an integer of exactly that width;
/// - a string;
/// - a value of an 8-bit enumeration, with the descriptor of the enumeration;
/// - a record: a copy of a value of a described value type;
/// - a counted pointer to a node, which may be null;
/// - a cursor.
///
/// A Value takes its kind from the type of the C++ value, without conversion: Value(U32{7}) is not
/// a U64. A record of up to 80 bytes is stored in place.
///
/// Threads: different threads may use different Values at the same time. If these hold the same
/// node, Halvo::ThreadControl's switch must be on. Several threads may read one Value while no
/// thread changes it.
///
///     Zel::Value value(U32{7});
///     value.as<U32>();          // 7
///     value.as<bool>();         // throws ArgumentError: "expected bool, not U32"
class VELMOR_PLATFORM_API Value {
 public:
  enum class Kind : U8 {
    none,
    boolean,
    u8,
    u16,
    u32,
    u64,
    s16,
    s32,
    s64,
    enumeration,
    string,  // this kind and all that follow must be destroyed
    record,
    node,       ///< may be changed through the pointer
    constNode,  ///< must not be changed through the pointer
    cursor,
  };

  // NOLINTNEXTLINE(modernize-use-equals-default): that would clear the storage
  Value() noexcept {}
  /// T is bool, an integer of a fixed width, Halvo::String, a described enumeration, a described
  /// value type, or a Halvo::Ptr to a node.
  template <class T>
  // NOLINTNEXTLINE(bugprone-forwarding-reference-overload): not for a Value
  requires(!std::same_as<std::remove_cvref_t<T>, Value>) Value(T&& value) {
    put(std::forward<T>(value));
  }
  Value(const Value& other) { copyFrom(other); }
  Value(Value&& other) noexcept { moveFrom(other); }
  ~Value() { clear(); }
  Value& operator=(const Value& other) {
    if (this != &other) {
      Value copy(other);
      clear();
      moveFrom(copy);
    }
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    if (this != &other) {
      clear();
      moveFrom(other);
    }
    return *this;
  }
  /// As the constructor. This Value may hold the only reference that keeps `value` alive.
  template <class T>
  requires(!std::same_as<std::remove_cvref_t<T>, Value>) Value& operator=(T&& value) {
    constexpr Kind kind = kindOf<std::remove_cvref_t<T>>();
    if constexpr (kind < Kind::string) {
      auto const number = value;
      clear();
      put(number);
    } else if constexpr (kind == Kind::string) {
      // One Value often reads many attributes, one after the other: reuse the string that it holds.
      if (kind_ == Kind::string) {
        string() = std::forward<T>(value);
      } else {
        Halvo::String taken(std::forward<T>(value));
        clear();
        put(std::move(taken));
      }
    } else {
      // This Value may hold the only reference that keeps `value` alive.
      Value taken(std::forward<T>(value));
      clear();
      moveFrom(taken);
    }
    return *this;
  }
  /// Makes the held value constant: a node becomes a constNode, and a cursor gives constNodes from
  /// now on. Other values are copies; they stay as they are.
  void constIs() noexcept;
  /// Makes the Value empty.
  void clear() noexcept {
    if (kind_ >= Kind::string) [[unlikely]] {
      release();
    }
    kind_ = Kind::none;
  }

  Kind kind() const noexcept { return kind_; }
  bool empty() const noexcept { return kind_ == Kind::none; }
  /// The type descriptor of the held value; for a node, of the object's own class. Null when the
  /// Value is empty or holds a null pointer, a cursor, or a node whose class has no descriptor.
  const TypeDescriptor* type() const noexcept;

  /// Whether a T is held. For a Ptr: whether it is null or points to an object of that class.
  template <class T>
  bool is() const noexcept;
  /// The held value as a T. Throws ArgumentError, which names both types, when it is not a T.
  template <class T>
  decltype(auto) as() const {
    if (!is<T>()) [[unlikely]] {
      wrongType(expectedType<T>());
    }
    return get<T>();
  }

  /// The memory of the held record. Read and write it through the descriptor of its type. Null when
  /// no record is held.
  const void* record() const noexcept { return kind_ == Kind::record ? recordPlace() : nullptr; }
  void* record() noexcept {
    return kind_ == Kind::record ? const_cast<void*>(recordPlace()) : nullptr;
  }
  /// The held value as 64 bits: a number, in two's complement if negative; a bool as 0 or 1; the
  /// number of an enumeration's value. 0 for everything else.
  U64 bits() const noexcept { return kind_ < Kind::string ? storage_.number : 0; }

  /// The text form, in the notation of Zel/Types/Record.h: "true", decimal digits, the name of an
  /// enumeration's value, a string in quotes, a record. For a node: the name of its class, or
  /// "null" for a null pointer. Otherwise the empty text.
  Halvo::String text() const;
  /// Reads all of `text` as a value of `type`, in the form that text() returns. Throws ParseError
  /// when it is not one, and for a type without a text form (nodes).
  static Value fromText(const TypeDescriptor& type, const Halvo::String& text);
  /// Makes a value of the value type `type` from constructor arguments. Throws ArgumentError.
  static Value make(const TypeDescriptor& type, std::span<const Value> arguments);
  /// The hash of the held value. Throws NonHashableTypeError when its type has no hash.
  std::size_t hash() const;
  /// Whether both have the same kind and type and are equal by the rule of that type. Nodes are
  /// equal when they are the same object.
  friend VELMOR_PLATFORM_API bool operator==(const Value& a, const Value& b);

 private:
  static constexpr std::size_t inPlace = 80;
  template <class T>
  struct PtrTo;
  template <class T>
  static constexpr Kind kindOf() noexcept;
  template <class T>
  static const TypeDescriptor* expectedType() noexcept;
  template <class T>
  decltype(auto) get() const;

  template <class T>
  void put(T&& value);
  [[noreturn]] void wrongType(const TypeDescriptor* expected) const;
  void release() noexcept;
  void copyFrom(const Value& other);
  void moveFrom(Value& other) noexcept;
  void recordPut(const TypeDescriptor& type, const void* from);
  void* recordRoom(const TypeDescriptor& type);
  void recordRoomFree(const TypeDescriptor& type) noexcept;
  const void* recordPlace() const noexcept;
  Halvo::String& string() noexcept {
    return *std::launder(reinterpret_cast<Halvo::String*>(storage_.bytes));
  }
  const Halvo::String& string() const noexcept {
    return *std::launder(reinterpret_cast<const Halvo::String*>(storage_.bytes));
  }

  union Storage {
    Storage() noexcept : number(0) {}
    U64 number;
    const Halvo::Node* node;  // counted
    void* heap;               // a record that is too large for `bytes`
    unsigned char bytes[inPlace];
  };
  Storage storage_;
  const TypeDescriptor* type_ = nullptr;  // for enumerations and records
  Kind kind_ = Kind::none;
};

/// The descriptors of the basic types: bool, U8, ... S64, String.
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<bool>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<U8>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<U16>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<U32>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<U64>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<S16>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<S32>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<S64>) noexcept;
VELMOR_PLATFORM_API const TypeDescriptor& typeDescriptor(TypeTag<Halvo::String>) noexcept;

template <class T>
struct Value::PtrTo {
  static constexpr bool is = false;
};
template <class T>
struct Value::PtrTo<Halvo::Ptr<T>> {
  static constexpr bool is = true;
  using Element = T;
};

template <class T>
constexpr Value::Kind Value::kindOf() noexcept {
  if constexpr (std::same_as<T, bool>) {
    return Kind::boolean;
  } else if constexpr (std::same_as<T, U8>) {
    return Kind::u8;
  } else if constexpr (std::same_as<T, U16>) {
    return Kind::u16;
  } else if constexpr (std::same_as<T, U32>) {
    return Kind::u32;
  } else if constexpr (std::same_as<T, U64>) {
    return Kind::u64;
  } else if constexpr (std::same_as<T, S16>) {
    return Kind::s16;
  } else if constexpr (std::same_as<T, S32>) {
    return Kind::s32;
  } else if constexpr (std::same_as<T, S64>) {
    return Kind::s64;
  } else if constexpr (std::same_as<T, Halvo::String>) {
    return Kind::string;
  } else if constexpr (std::is_enum_v<T>) {
    static_assert(sizeof(T) == 1, "only 8-bit enumerations are described");
    return Kind::enumeration;
  } else if constexpr (PtrTo<T>::is) {
    using Element = typename PtrTo<T>::Element;
    if constexpr (std::same_as<Element, Cursor>) return Kind::cursor;
    return (std::is_const_v<Element>) ? Kind::constNode : Kind::node;
  } else {
    static_assert(std::is_class_v<T>, "no attribute is of this type");
    return Kind::record;
  }
}

template <class T>
inline void Value::put(T&& value) {
  using Plain = std::remove_cvref_t<T>;
  constexpr Kind kind = kindOf<Plain>();
  if constexpr (kind < Kind::enumeration) {
    storage_.number = static_cast<U64>(value);
  } else if constexpr (kind == Kind::enumeration) {
    storage_.number = static_cast<U64>(value);
    type_ = &typeOf<Plain>();
  } else if constexpr (kind == Kind::string) {
    new (storage_.bytes) Halvo::String(std::forward<T>(value));
  } else if constexpr (kind == Kind::record) {
    recordPut(typeOf<Plain>(), &value);
  } else {
    Plain held(std::forward<T>(value));
    storage_.node = held.detach();
  }
  kind_ = kind;
}

template <class T>
inline bool Value::is() const noexcept {
  constexpr Kind kind = kindOf<T>();
  if constexpr (kind == Kind::node || kind == Kind::constNode) {
    if (kind_ != Kind::node && (kind != Kind::constNode || kind_ != Kind::constNode)) return false;
    using Element = typename PtrTo<T>::Element;
    return storage_.node == nullptr || dynamic_cast<const Element*>(storage_.node) != nullptr;
  } else if constexpr (kind == Kind::enumeration || kind == Kind::record) {
    return kind_ == kind && type_ == &typeOf<T>();
  } else {
    return kind_ == kind;
  }
}

template <class T>
inline decltype(auto) Value::get() const {
  constexpr Kind kind = kindOf<T>();
  if constexpr (kind == Kind::boolean) {
    return storage_.number != 0;
  } else if constexpr (kind <= Kind::enumeration) {
    return static_cast<T>(storage_.number);
  } else if constexpr (kind == Kind::string) {
    return string();
  } else if constexpr (kind == Kind::record) {
    return *static_cast<const T*>(recordPlace());
  } else {
    using Element = typename PtrTo<T>::Element;
    auto* const object = dynamic_cast<const Element*>(storage_.node);
    return T::share(const_cast<Element*>(object));
  }
}

template <class T>
inline const TypeDescriptor* Value::expectedType() noexcept {
  if constexpr (PtrTo<T>::is) {
    using Element = std::remove_const_t<typename PtrTo<T>::Element>;
    if constexpr (Described<Element>) return &typeOf<Element>();
    return nullptr;
  } else {
    return &typeOf<T>();
  }
}

}  // namespace Zel
