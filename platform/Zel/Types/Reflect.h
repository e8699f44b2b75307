// Reflection: creates, reads, changes and walks any object whose type has a descriptor, by the
// names and numbers of its attributes.
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
// All descriptors are constant data of their libraries. Nothing is built or registered at run time,
// except the one entry of each module. An operation costs one virtual call and one call through a
// pointer more than the direct call.
//
// Threads: descriptors, findType and findAttribute are safe from any thread, as long as no library
// is being unloaded. The class of an object says which threads may do operations on it.
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

/// The result of a generic operation.
enum class [[nodiscard]] OpResult : U8{
    done,
    /// The type has no such attribute, or the attribute does not support the operation; for
    /// example, it cannot be written. Nothing was changed, not even the result.
    notSupported,
};

/// The type with this full name, from the loaded modules; null when there is none.
VELMOR_PLATFORM_API const TypeDescriptor* findType(std::string_view name) noexcept;

/// The attribute of the type or of one of its bases; null when there is none.
VELMOR_PLATFORM_API const Attribute* findAttribute(const TypeDescriptor& type, U32 number) noexcept;
VELMOR_PLATFORM_API const Attribute* findAttribute(const TypeDescriptor& type,
                                                   std::string_view name) noexcept;

/// Calls `visit(attribute)` for each attribute of the type, in the order of their numbers.
/// Attributes of its bases come first.
template <class Visit>
void forEachAttribute(const TypeDescriptor& type, Visit&& visit) {
  if (type.base != nullptr) forEachAttribute(*type.base, visit);
  for (const Attribute& attribute : type.attributes) visit(attribute);
}

/// Does `op` on one attribute of the object. See Op for the arguments and for the value that
/// `result` gets. `result` may hold the only reference to `node`, and it may be one of the
/// arguments.
///
/// Throws ArgumentError when arguments do not fit, SetFalseValueError for an insertion with the
/// flag false, and anything that the operation of the attribute throws. Nothing has changed then.
/// An operation that stops the process when it is called directly also stops it here.
VELMOR_PLATFORM_API OpResult attributeOp(Halvo::Node& node, const Attribute& attribute, Op op,
                                         std::span<const Value> arguments, Value& result);
/// As above, with the number of the attribute. A number that the type does not have gives
/// notSupported.
VELMOR_PLATFORM_API OpResult attributeOp(Halvo::Node& node, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// As above, on an object that must not change. An operation that would change it gives
/// notSupported. Nodes in the result, such as its children, must not be changed either
/// (Value::Kind::constNode).
VELMOR_PLATFORM_API OpResult attributeOp(const Halvo::Node& node, const Attribute& attribute, Op op,
                                         std::span<const Value> arguments, Value& result);
VELMOR_PLATFORM_API OpResult attributeOp(const Halvo::Node& node, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// As above, on the record that `value` holds. A Value without a record supports nothing.
VELMOR_PLATFORM_API OpResult attributeOp(Value& value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
VELMOR_PLATFORM_API OpResult attributeOp(const Value& value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);
/// As above, on a value of the value type `type`, wherever it is stored.
VELMOR_PLATFORM_API OpResult attributeOp(const TypeDescriptor& type, void* value, U32 number, Op op,
                                         std::span<const Value> arguments, Value& result);

/// Makes an object of the type from the arguments of its constructor. Returns null when the type is
/// not a node type or cannot be made this way. Throws ArgumentError.
VELMOR_PLATFORM_API Halvo::Ptr<Halvo::Node> createNode(const TypeDescriptor& type,
                                                       std::span<const Value> arguments);

/// The hash of a value of the value type `type`. Throws NonHashableTypeError, which names the type,
/// when the type has no hash.
VELMOR_PLATFORM_API std::size_t valueHash(const TypeDescriptor& type, const void* value);

}  // namespace Zel
