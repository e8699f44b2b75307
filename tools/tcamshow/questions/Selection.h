// Which entries are shown, and in which order.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "questions/Attributes.h"
#include "questions/Where.h"
#include "snapshot/EntryStore.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// One key of an order: an attribute or a field.
struct SortKey {
  const Attribute* attribute = nullptr;  ///< null: the key is a field
  const FieldName* field = nullptr;
  bool isFalling = false;
};

/// Reads keys such as "-hits,src". Throws TextFault.
///
/// A field orders by the lowest value that an entry allows there, then by the number of values, the
/// fewest first. An entry without the number or the field comes last, in a falling order too.
std::vector<SortKey> sortKeysFromText(std::string_view text);

/// What a user asks of the entries. Without a condition, all are selected; without keys they keep
/// their order.
struct Selection {
  std::optional<Where> where{};
  std::vector<SortKey> keys{};
  std::optional<std::uint64_t> limit{};  ///< the most entries

  /// Whether it takes all of the input to tell the first entry: for an order, or for the name of a
  /// group, whose line may come last.
  bool needsAll() const noexcept { return !keys.empty() || (where && where->asksName()); }
  bool isAll() const noexcept { return !where && keys.empty() && !limit; }
};

/// Whether an entry is selected. `groupName` is that of its place.
bool isSelected(const Selection& selection, const Entry& entry, std::string_view groupName);

/// Puts entries of a store into the order of the keys; equal ones stay as they are.
void sortNumbers(const EntryStore& store, const std::vector<SortKey>& keys,
                 std::vector<std::uint32_t>& numbers);

/// What `source` gives, without the entries that the condition is not true of. All, if the
/// condition asks for the name of a group: that is told when all has come. `selection` outlives the
/// result.
std::unique_ptr<Source> filtered(std::unique_ptr<Source> source, const Selection& selection,
                                 Complaints& complaints);

/// Warns that a limit left out so many entries, if it did.
void warnLeftOut(Complaints& complaints, std::uint64_t count);

/// What `source` gives, but of its entries the selected ones of `table` alone; Table::tcam means
/// every table. At the end it says, as a warning, how many entries `limit` left out. `selection`
/// outlives the result.
///
/// Memory: none, or an EntryStore where the selection needs all of the input.
std::unique_ptr<Source> selected(std::unique_ptr<Source> source, const Selection& selection,
                                 Table table, Complaints& complaints);

}  // namespace tcamshow
