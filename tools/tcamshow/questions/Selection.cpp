#include "questions/Selection.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <string>
#include <utility>

#include "io/Nearest.h"
#include "io/SafeText.h"
#include "match/FieldValues.h"
#include "match/Match.h"
#include "snapshot/StoreSource.h"

namespace tcamshow {

namespace {

constexpr WarningKind entriesLeftOut;

/// An entry's value of a key.
struct SortValue {
  bool isAbsent = true;
  bool isNegative = false;
  Word number = 0;
  double size = 0;
  std::string_view text;
};

SortValue valueOf(const SortKey& key, const EntryFacts& facts) {
  SortValue value;
  if (key.field != nullptr) {
    Match const match = matchOf(facts.entry);
    if (!hasField(match, facts.entry.table, *key.field)) return value;
    FieldValues const values(match, *key.field);
    std::span<const FieldSet> const sets = values.sets();
    if (sets.empty()) return value;
    value.isAbsent = false;
    value.number = sets.front().low();
    for (const FieldSet& set : sets) {
      value.number = std::min(value.number, set.low());
      value.size += set.size();
    }
  } else if (key.attribute->number != nullptr) {
    auto const number = key.attribute->number(facts);
    if (!number) return value;
    value.isAbsent = false;
    value.isNegative = *number < 0;
    value.number = static_cast<Word>(*number);
  } else {
    value.isAbsent = false;
    value.text = key.attribute->text(facts);
  }
  return value;
}

/// Negative, 0 or positive, as `a` comes before `b`, beside it or behind it.
int compared(const SortValue& a, const SortValue& b, bool isFalling) noexcept {
  if (a.isAbsent || b.isAbsent) return static_cast<int>(a.isAbsent) - static_cast<int>(b.isAbsent);
  auto const sign = [](auto const& x, auto const& y) { return x < y ? -1 : y < x ? 1 : 0; };
  int order = sign(b.isNegative, a.isNegative);
  if (order == 0) order = sign(a.number, b.number);
  if (order == 0) order = sign(a.size, b.size);
  if (order == 0) order = sign(a.text, b.text);
  return isFalling ? -order : order;
}

/// Gives some of another source's entries, as they come.
class FilterSource final : public Source {
 public:
  /// `where` may be null; it outlives the source.
  FilterSource(std::unique_ptr<Source> source, const Where* where, Table table,
               std::optional<std::uint64_t> limit, Complaints& complaints)
      : Source(complaints),
        source_(std::move(source)),
        where_(where),
        table_(table),
        left_(limit),
        complaints_(complaints) {
    header_ = source_->header();
  }

  const std::string& fileName() const noexcept override { return source_->fileName(); }
  std::uint64_t lineNumber() const noexcept override { return source_->lineNumber(); }

  Item next() override {
    for (;;) {
      switch (source_->next()) {
        case Item::end:
          warnLeftOut(complaints_, leftOut_);
          return Item::end;
        case Item::group:
          group_ = source_->group();
          return Item::group;
        case Item::entry:
          if (!isWanted(source_->entry())) break;
          entryIs(source_->entry());
          return Item::entry;
      }
    }
  }

 private:
  bool isWanted(const Entry& entry) {
    if (table_ != Table::tcam && entry.table != table_) return false;
    if (where_ != nullptr && !where_->holds({entry, {}})) return false;
    if (!left_) return true;
    if (*left_ == 0) {
      ++leftOut_;
      return false;
    }
    --*left_;
    return true;
  }

  std::unique_ptr<Source> source_;
  const Where* where_;
  Table table_;
  std::optional<std::uint64_t> left_;
  std::uint64_t leftOut_ = 0;
  Complaints& complaints_;
};

/// A store with a source of its own.
class StoredSource final : public Source {
 public:
  StoredSource(Source& source, const Selection& selection, Complaints& complaints)
      : Source(complaints), store_(source) {
    header_ = store_.header();
    std::vector<std::uint32_t> numbers;
    Entry scratch;
    std::vector<std::string_view> names(store_.size());
    for (const PlaceInfo& place : store_.places()) {
      for (std::uint32_t const number : place.entries) names[number] = place.name;
    }
    for (std::uint32_t number = 0; number < store_.size(); ++number) {
      if (isSelected(selection, store_.entry(number, scratch), names[number])) {
        numbers.push_back(number);
      }
    }
    sortNumbers(store_, selection.keys, numbers);
    again_ = storeSource(store_, std::move(numbers), complaints);
  }

  const std::string& fileName() const noexcept override { return store_.fileName(); }
  std::uint64_t lineNumber() const noexcept override { return 0; }

  Item next() override {
    Item const item = again_->next();
    if (item == Item::group) group_ = again_->group();
    if (item == Item::entry) entryIs(again_->entry());
    return item;
  }

 private:
  EntryStore store_;
  std::unique_ptr<Source> again_;
};

SortKey keyFromText(std::string_view text, std::size_t at) {
  SortKey key;
  key.isFalling = text.starts_with('-');
  if (key.isFalling) {
    text.remove_prefix(1);
    ++at;
  }
  key.attribute = attributeByName(text);
  if (key.attribute == nullptr) key.field = fieldByName(text);
  if (key.attribute != nullptr || key.field != nullptr) return key;
  std::vector<std::string_view> names;
  for (const Attribute& attribute : attributes()) names.push_back(attribute.name);
  for (const FieldName& field : fieldNames()) names.push_back(field.name);
  std::string message = inQuotes(text) + " is no attribute and no field";
  std::string const near = suggestion(text, names);
  if (near.empty()) {
    message += ": expected one of";
    for (std::string_view const name : names) (message += ' ') += name;
  }
  throw TextFault(at, message + near);
}

}  // namespace

std::vector<SortKey> sortKeysFromText(std::string_view text) {
  std::vector<SortKey> keys;
  for (std::size_t at = 0;;) {
    std::size_t const end = std::min(text.find(',', at), text.size());
    keys.push_back(keyFromText(text.substr(at, end - at), at));
    if (end == text.size()) return keys;
    at = end + 1;
  }
}

bool isSelected(const Selection& selection, const Entry& entry, std::string_view groupName) {
  return !selection.where || selection.where->holds({entry, groupName});
}

void sortNumbers(const EntryStore& store, const std::vector<SortKey>& keys,
                 std::vector<std::uint32_t>& numbers) {
  if (keys.empty()) return;
  std::vector<std::string_view> names(store.size());
  for (const PlaceInfo& place : store.places()) {
    for (std::uint32_t const number : place.entries) names[number] = place.name;
  }
  // The values of one entry stand together.
  std::vector<SortValue> values(numbers.size() * keys.size());
  Entry scratch;
  auto value = values.begin();
  for (std::uint32_t const number : numbers) {
    const Entry& entry = store.entry(number, scratch);
    for (const SortKey& key : keys) *value++ = valueOf(key, {entry, names[number]});
  }
  std::vector<std::uint32_t> order(numbers.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
      int const comparison =
          compared(values[a * keys.size() + i], values[b * keys.size() + i], keys[i].isFalling);
      if (comparison != 0) return comparison < 0;
    }
    return false;
  });
  for (std::uint32_t& place : order) place = numbers[place];
  numbers = std::move(order);
}

void warnLeftOut(Complaints& complaints, std::uint64_t count) {
  if (count == 0) return;
  complaints.warn(entriesLeftOut, [count] {
    return std::to_string(count) +
           (count == 1 ? " more entry is not shown" : " more entries are not shown");
  });
}

std::unique_ptr<Source> filtered(std::unique_ptr<Source> source, const Selection& selection,
                                 Complaints& complaints) {
  if (!selection.where || selection.where->asksName()) return source;
  return std::make_unique<FilterSource>(std::move(source), &*selection.where, Table::tcam,
                                        std::nullopt, complaints);
}

std::unique_ptr<Source> selected(std::unique_ptr<Source> source, const Selection& selection,
                                 Table table, Complaints& complaints) {
  if (selection.isAll() && table == Table::tcam) return source;
  const Where* where = selection.where ? &*selection.where : nullptr;
  if (selection.needsAll()) {
    source = std::make_unique<StoredSource>(*source, selection, complaints);
    where = nullptr;
  }
  return std::make_unique<FilterSource>(std::move(source), where, table, selection.limit,
                                        complaints);
}

}  // namespace tcamshow
