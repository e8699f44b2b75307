// Attribute: what the runtime knows about one attribute of a type.
//
// Threads: descriptors are constant data; safe from any thread.
#pragma once

#include <cstddef>
#include <span>

#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

class Value;
struct Attribute;
struct TypeDescriptor;

/// A type by the function that gives its descriptor: the address of a function, unlike that of
/// data, is a constant also where the type is another library's.
using TypeRef = const TypeDescriptor& (*)() noexcept;

/// What can be asked of an attribute, with its arguments and its result. Counts are U32; "nothing"
/// is the empty Value.
enum class Op : U8 {
  read,         ///< () -> the value
  write,        ///< (value) -> nothing
  createOrGet,  ///< (key) -> the child, made when there was none
  lookup,       ///< (key) -> the child; null when there is none
  has,          ///< (element) -> bool
  insert,       ///< (element, true) -> nothing; SetFalseValueError when the flag is false
  del,          ///< map: (key) -> the child that is gone, or null; set: (element) -> bool
  delAll,       ///< () -> nothing
  count,        ///< () -> U32
  iterate,      ///< () -> a cursor that walks the elements in the collection's order
  enqueue,      ///< (element) -> nothing
  dequeue,      ///< () -> the front element, which is gone; empty queue: null, or an empty string
  front,        ///< () -> the front element; empty queue: as dequeue
  back,         ///< () -> the back element; empty queue: as dequeue
  invoke,       ///< (as the operation takes) -> what it returns
};
inline constexpr U32 opCount = 15;

enum class AttributeKind : U8 {
  key,         ///< the value under which the object is known: read-only
  readOnly,    ///< a scalar
  readWrite,   ///< a scalar
  orderedMap,  ///< children by key, ascending
  hashMap,     ///< children by key, in no order
  entrySet,    ///< values in their own order
  queue,       ///< values, or references, first in first out
  operation,   ///< something that the object does
};

/// "createOrGet", say: the name of the enumerator.
VELMOR_PLATFORM_API const char* opName(Op op) noexcept;
/// "ordered map", say: in words.
VELMOR_PLATFORM_API const char* attributeKindName(AttributeKind kind) noexcept;

/// A set of operations, one bit each.
using OpSet = U32;
constexpr OpSet opBit(Op op) noexcept { return OpSet{1} << static_cast<U32>(op); }
template <class... Ops>
constexpr OpSet opSet(Ops... ops) noexcept {
  return (OpSet{0} | ... | opBit(ops));
}

/// One attribute of one class. Constant data, made at compile time by the class's table
/// (Zel/Types/AttributeTable.h).
struct Attribute {
  static constexpr std::size_t maxParameters = 5;

  const char* name = nullptr;
  U32 number = 0;  ///< unique in the type and its bases
  AttributeKind kind = AttributeKind::readOnly;
  OpSet operations = 0;       ///< the operations that it supports
  OpSet constOperations = 0;  ///< those of them that leave the object as it is
  TypeRef owner = nullptr;    ///< the class that declares it
  /// The value's type; a collection's element type; what an operation returns, null for nothing.
  TypeRef type = nullptr;
  TypeRef keyType = nullptr;                   ///< maps
  TypeRef parameterTypes[maxParameters] = {};  ///< operations: as many as there are, then null
  U32 elementNumbers = 0;  ///< the numbers before its own that belong to its element type

  /// Does what `op` says, which is one of `operations`. `object` is the object, or for a node its
  /// Halvo::Node.
  void (*access)(void* object, Op op, const Attribute& self, std::span<const Value> arguments,
                 Value& result) = nullptr;

  constexpr bool supports(Op op) const noexcept { return (operations & opBit(op)) != 0; }
  std::span<const TypeRef> parameters() const noexcept {
    std::size_t count = 0;
    while (count < maxParameters && parameterTypes[count] != nullptr) ++count;
    return {parameterTypes, count};
  }
};

}  // namespace Zel
