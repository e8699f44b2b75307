// Reflection: any described object, created, read, changed and walked by the names and numbers of
// its attributes.
//
//     const Zel::TypeDescriptor* type = Zel::findType("VelmorTcam::CliShowTcamUsageChipInfo");
//     Halvo::Ptr<Halvo::Node> chip = Zel::createNode(*type, {});
//     Zel::Value stage;
//     Zel::Value const key = VelmorTcam::stageTypeIngress;
//     Zel::attributeOp(*chip, 130, Zel::Op::createOrGet, {&key, 1}, stage);
//     Zel::Value cursor, element;
//     Zel::attributeOp(*chip, 130, Zel::Op::iterate, {}, cursor);
//     Zel::Value at;
//     while (cursor.as<Halvo::Ptr<Zel::Cursor>>()->next(at, element)) print(at, element);
//
// All descriptors are constant data of their libraries: nothing is built or registered but the one
// entry of each module. An operation costs one virtual call and one call by pointer above the
// direct one.
//
// Threads: descriptors, findType and findAttribute are safe from any thread as long as no library
// is being unloaded. An operation on an object is for the threads that the object's class allows.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/Attribute.h"
#include "Zel/Types/TypeModule.h"
#include "Zel/Types/Value.h"

namespace Zel {

/// What became of a generic operation.
enum class [[nodiscard]] OpResult : U8{
    done,
    /// The type has no such attribute, or the attribute does not support the operation (to write a
    /// read-only one, say). Nothing was changed, the result neither.
    notSupported,
};

/// The type of that full name among the modules that are loaded; null when there is none.
VELMOR_PLATFORM_API const TypeDescriptor* findType(std::string_view name) noexcept;

/// The attribute of the type, or of a base of it; null when there is none.
VELMOR_PLATFORM_API const Attribute* findAttribute(const TypeDescriptor& type, U32 number) noexcept;
VELMOR_PLATFORM_API const Attribute* findAttribute(const TypeDescriptor& type,
                                                   std::string_view name) noexcept;

/// Calls `visit(attribute)` for each attribute of the type, its bases' first: in the order of their
/// numbers.
template <class Visit>
void forEachAttribute(const TypeDescriptor& type, Visit&& visit) {
  if (type.base != nullptr) forEachAttribute(*type.base, visit);
  for (const Attribute& attribute : type.attributes) visit(attribute);
}

/// Does `op` on one attribute of the object. Op says which arguments each takes and what `result`
/// becomes. `result` may be what keeps `node` alive, and may be among the arguments.
///
/// Throws ArgumentError for arguments that do not fit, SetFalseValueError for an insertion with the
/// flag false, and what the attribute's own operation throws; nothing has changed then. An
/// operation that stops the process when it is called directly does so here too.
VELMOR_PLATFORM_API OpResult attributeOp(Halvo::Node& node, const Attribute& attribute, Op op,
                                         std::span<const Value> arguments, Value& result);
/// As above; the attribute by number. A number that the type does not have is not supported.
VELMOR_PLATFORM_API OpResult attributeOp(Halvo::Node& node, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// On an object that must not change: what would change it is not supported, and nodes that it
/// gives out, its children for one, must not change either (Value::Kind::constNode).
VELMOR_PLATFORM_API OpResult attributeOp(const Halvo::Node& node, const Attribute& attribute, Op op,
                                         std::span<const Value> arguments, Value& result);
VELMOR_PLATFORM_API OpResult attributeOp(const Halvo::Node& node, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// On the record that `value` holds. A Value that holds none supports nothing.
VELMOR_PLATFORM_API OpResult attributeOp(Value& value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
VELMOR_PLATFORM_API OpResult attributeOp(const Value& value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// On a value of the value type `type`, wherever it is kept.
VELMOR_PLATFORM_API OpResult attributeOp(const TypeDescriptor& type, void* value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);

/// A new object of the type from its constructor's arguments; null for a type that is not a node's
/// or cannot be made this way. Throws ArgumentError.
VELMOR_PLATFORM_API Halvo::Ptr<Halvo::Node> createNode(const TypeDescriptor& type,
                                                       std::span<const Value> arguments);

/// The hash of a value of the value type `type`. Throws NonHashableTypeError, which names the type,
/// where it has none.
VELMOR_PLATFORM_API std::size_t valueHash(const TypeDescriptor& type, const void* value);

}  // namespace Zel
