// The descriptors of types and modules: how the runtime knows what a library declares.
#pragma once

#include <span>
#include <string_view>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Types.h"

namespace Zel {

struct TypeDescriptor;

/// One value of an 8-bit enumeration.
struct EnumValue {
  U8 number;
  const char* name;
};

enum class TypeKind : U8 {
  enumeration,  ///< an 8-bit enumeration
  value,        ///< a copyable value
  node,         ///< a reference-counted class
};

/// What the runtime knows about one type. Constant data, made at compile time.
struct TypeDescriptor {
  const char* name;  ///< with its namespace: "VelmorTcam::CliFormat"
  TypeKind kind;
  const TypeDescriptor* base = nullptr;  ///< nodes: the described base class, null at the root
  AllocationTracker* tracker = nullptr;  ///< nodes: the class's own tracker
  std::span<const EnumValue> enumValues = {};  ///< enumerations: in ascending order of number
};

/// The types of one module, in a fixed order; a type's index is its place in it.
struct TypeModule {
  const char* name;
  std::span<const TypeDescriptor* const> types;
  /// Trackers that are no type's own: those of its collections' elements.
  std::span<AllocationTracker* const> trackers = {};
};

}  // namespace Zel
