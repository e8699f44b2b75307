// Attribute: the descriptor of one attribute of a type.
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

/// Names a type by the function that returns its descriptor. The address of a function is a
/// constant even when the type belongs to another library; the address of data is not.
using TypeRef = const TypeDescriptor& (*)() noexcept;

/// The operations on an attribute, with (arguments) -> result. A count is a U32; "nothing" is the
/// empty Value.
enum class Op : U8 {
  read,         ///< () -> the value
  write,        ///< (value) -> nothing
  createOrGet,  ///< (key) -> the child; made if there is none
  lookup,       ///< (key) -> the child; null when there is none
  has,          ///< (element) -> bool
  insert,       ///< (element, true) -> nothing; SetFalseValueError when the flag is false
  del,          ///< map: (key) -> the removed child, or null; set: (element) -> bool
  delAll,       ///< () -> nothing
  count,        ///< () -> U32
  iterate,      ///< () -> a cursor over the elements in the order of the collection
  enqueue,      ///< (element) -> nothing
  dequeue,      ///< () -> the removed front element; empty queue: null, or an empty string
  front,        ///< () -> the front element; empty queue: as dequeue
  back,         ///< () -> the back element; empty queue: as dequeue
  invoke,       ///< (its own parameters) -> its own result
};
inline constexpr U32 opCount = 15;

enum class AttributeKind : U8 {
  key,         ///< the value that identifies the object: read-only
  readOnly,    ///< a scalar that can be read
  readWrite,   ///< a scalar that can be read and written
  orderedMap,  ///< children by key, ascending
  hashMap,     ///< children by key, in no order
  entrySet,    ///< values in their own order
  queue,       ///< values, or references, first in first out
  operation,   ///< an operation of the object
};

/// The name of the enumerator, for example "createOrGet".
VELMOR_PLATFORM_API const char* opName(Op op) noexcept;
/// The kind in words, for example "ordered map".
VELMOR_PLATFORM_API const char* attributeKindName(AttributeKind kind) noexcept;

/// A set of operations, one bit each.
using OpSet = U32;
constexpr OpSet opBit(Op op) noexcept { return OpSet{1} << static_cast<U32>(op); }
template <class... Ops>
constexpr OpSet opSet(Ops... ops) noexcept {
  return (OpSet{0} | ... | opBit(ops));
}

/// One attribute of one class. Constant data: the table of the class makes it at compile time
/// (Zel/Types/AttributeTable.h).
struct Attribute {
  static constexpr std::size_t maxParameters = 5;

  const char* name = nullptr;
  U32 number = 0;  ///< unique in the type and its base types
  AttributeKind kind = AttributeKind::readOnly;
  OpSet operations = 0;       ///< the supported operations
  OpSet constOperations = 0;  ///< the supported operations that do not change the object
  TypeRef owner = nullptr;    ///< the class that declares it
  /// The type of the value; for a collection, of its elements; for an operation, of its result, or
  /// null when it returns nothing.
  TypeRef type = nullptr;
  TypeRef keyType = nullptr;                   ///< maps: the type of the key
  TypeRef parameterTypes[maxParameters] = {};  ///< operations: their parameters, then null
  U32 elementNumbers = 0;  ///< numbers before its own that belong to its element type

  /// Does `op`, which must be one of `operations`. `object` points to the object; for a node, to
  /// its Halvo::Node.
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
