// What can be asked of an entry beside its match: one table for conditions and orders.
//
// Threads: constant data and functions of their arguments alone; safe from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "snapshot/Snapshot.h"

namespace tcamshow {

/// A number of any attribute.
__extension__ using Number = __int128;

/// An entry, and what its place's group line says of it.
struct EntryFacts {
  const Entry& entry;
  std::string_view groupName;
};

/// An attribute with a number or a text.
struct Attribute {
  std::string_view name;
  /// Null for a text. None where the entry has no such number: hits of counters that are not
  /// programmed, bytes that are not reported.
  std::optional<Number> (*number)(const EntryFacts& facts);
  /// Null for a number.
  std::string_view (*text)(const EntryFacts& facts);
  /// The texts that there are; empty where there may be any.
  std::span<const std::string_view> texts;
  bool isOfPlace = false;  ///< the same for all entries of a place
};

std::span<const Attribute> attributes() noexcept;
/// Null when nothing has that name.
const Attribute* attributeByName(std::string_view name) noexcept;

}  // namespace tcamshow
