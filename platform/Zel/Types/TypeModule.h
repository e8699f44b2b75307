// The descriptors of types and modules: they tell the runtime which types a library declares.
//
// Threads: descriptors are constant data; safe from any thread.
#pragma once

#include <concepts>
#include <cstddef>
#include <span>
#include <string_view>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Ptr.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Attribute.h"

namespace Halvo {
class Node;
class String;
}  // namespace Halvo

namespace Zel {

class Value;

/// One value of an 8-bit enumeration.
struct EnumValue {
  U8 number;
  const char* name;
};

enum class TypeKind : U8 {
  enumeration,  ///< an 8-bit enumeration
  value,        ///< a copyable value
  node,         ///< a reference-counted class
  basic,        ///< a bool, a number or a string
};

/// The parameters of a type's constructor.
struct Constructor {
  static constexpr std::size_t maxParameters = 2;
  TypeRef parameters[maxParameters] = {};  ///< the types of the parameters, then null
};

/// The operations on values of a type, wherever the values are stored. Operations with a `place`
/// construct a value there: in `size` bytes, aligned to `alignment`, that hold no value yet.
struct ValueOperations {
  std::size_t size;
  std::size_t alignment;
  /// Constructs from constructor arguments. Throws ArgumentError when they do not fit.
  void (*construct)(void* place, std::span<const Value> arguments);
  void (*copy)(void* place, const void* from);
  /// Constructs the value at `place` and destroys it at `from`.
  void (*relocate)(void* place, void* from) noexcept;
  void (*destroy)(void* value) noexcept;
  bool (*isEq)(const void* a, const void* b);
  Halvo::String (*toText)(const void* value);
  /// Constructs from text. All of the text must be the value; otherwise throws ParseError.
  void (*fromText)(void* place, const Halvo::String& text);
  /// Null when the type has no hash.
  std::size_t (*hash)(const void* value);
};

/// Makes an object from constructor arguments. Throws ArgumentError when they do not fit.
using NodeCreate = Halvo::Ptr<Halvo::Node> (*)(std::span<const Value> arguments);

/// The descriptor of one type. Constant data, made at compile time.
struct TypeDescriptor {
  const char* name;  ///< with its namespace: "VelmorTcam::CliFormat"
  TypeKind kind;
  const TypeDescriptor* base = nullptr;        ///< nodes: the described base class, or null
  AllocationTracker* tracker = nullptr;        ///< nodes: the class's own tracker
  std::span<const EnumValue> enumValues = {};  ///< enumerations: the values, by ascending number
  /// Values and nodes: the attributes of the class itself, by ascending number. Those of the base
  /// class come before them.
  std::span<const Attribute> attributes = {};
  const ValueOperations* value = nullptr;  ///< values
  NodeCreate create = nullptr;             ///< nodes: null if createNode() cannot make one
  Constructor constructor = {};            ///< values and nodes: constructor parameters
};

/// Selects an overload by type. A described type has a function `const Zel::TypeDescriptor&
/// typeDescriptor(Zel::TypeTag<T>) noexcept` in its own namespace.
template <class T>
struct TypeTag {};

template <class T>
concept Described = requires(TypeTag<T> tag) {
  { typeDescriptor(tag) } -> std::same_as<const TypeDescriptor&>;
};

/// The descriptor of T.
template <class T>
const TypeDescriptor& typeOf() noexcept {
  // cppcheck-suppress returnTempReference  // the descriptor is not the tag
  return typeDescriptor(TypeTag<T>{});
}

/// The types of one module, in a fixed order. The index of a type is its place in `types`.
struct TypeModule {
  const char* name;
  std::span<const TypeDescriptor* const> types;
  /// Trackers that belong to no type: they count the elements of collections.
  std::span<AllocationTracker* const> trackers = {};
};

}  // namespace Zel

/// Declares the descriptor function of T, a class or value type of the enclosing namespace.
#define ZEL_DECLARE_TYPE(EXPORT, T) \
  EXPORT const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<T>) noexcept
/// Defines that function, in a source file.
#define ZEL_DEFINE_TYPE(T, DESCRIPTOR) \
  const ::Zel::TypeDescriptor& typeDescriptor(::Zel::TypeTag<T>) noexcept { return DESCRIPTOR; }
