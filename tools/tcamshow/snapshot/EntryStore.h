// All that a source gives, in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "io/KeyedTable.h"
#include "snapshot/Source.h"

namespace tcamshow {

/// Texts, each kept once, by a number from 0. Number 0 is the empty text.
class TextPool {
 public:
  TextPool();

  /// The number of a text that is equal to `text`; it is added where there is none.
  std::uint32_t add(std::string_view text);
  std::string_view operator[](std::uint32_t number) const noexcept { return texts_[number]; }

 private:
  struct Item {
    std::string_view text;
    std::uint32_t number = none;

    static constexpr std::uint32_t none = 0xFFFFFFFF;
    bool isEmpty() const noexcept { return number == none; }
    std::uint64_t hash() const noexcept;
    bool hasKeyOf(const Item& other) const noexcept { return text == other.text; }
  };

  std::string_view kept(std::string_view text);

  KeyedTable<Item> table_;
  std::vector<std::string_view> texts_;
  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t left_ = 0;  // in the last block
};

/// What a source says of one place.
struct PlaceInfo {
  Place place;
  bool hasGroup = false;  ///< whether a group line stands for the place
  std::string_view name;  ///< the group's
  std::optional<std::uint32_t> availableEntries;
  std::optional<std::uint32_t> freeEntries;
  std::optional<std::uint32_t> totalEntries;
  std::vector<std::uint32_t> entries;  ///< their numbers, in match order
};

/// The groups and entries of a source, read to its end. Entries are numbered from 0 in the order in
/// which the source gave them.
///
/// An entry takes about 150 bytes beyond its texts. Texts of the store are good as long as it
/// lives.
///
///     EntryStore const store(source);
///     for (const PlaceInfo& place : store.places()) {
///       for (std::uint32_t number : place.entries) use(store.entry(number, scratch));
///     }
class EntryStore {
 public:
  explicit EntryStore(Source& source);

  const Header& header() const noexcept { return header_; }
  /// What the source was read from, for messages.
  const std::string& fileName() const noexcept { return fileName_; }
  std::uint32_t size() const noexcept { return size_; }
  /// By ascending place: stage, pipe, group priority, group id, copy id. A place has a group line,
  /// or an entry, or both.
  std::span<const PlaceInfo> places() const noexcept { return places_; }

  /// Fills `scratch` with an entry, and gives it. Its texts are the store's.
  const Entry& entry(std::uint32_t number, Entry& scratch) const;

 private:
  struct Stored {
    std::uint64_t shadowId;
    std::uint64_t hits;
    std::uint64_t bytes;
    const char* data;  // description, qualifiers, range checkers, facts of an older snapshot
    std::uint32_t sequence;
    std::uint32_t priority;
    std::uint32_t featurePriority;
    std::uint32_t place;
    std::uint32_t feature;
    std::uint32_t action;
    std::uint32_t reason;
    std::uint32_t otherMatch;
    std::uint32_t descriptionSize;
    Table table;
    EntryState state;
    std::uint8_t counterStatus;
    std::uint8_t qualifiers;
    std::uint8_t rangeCheckers;
    bool hasBytes;
    bool hasState;
    bool hasSince;
  };
  static constexpr std::size_t entriesInBlock = 4096;

  std::uint32_t placeNumber(const Place& place);
  void add(const Group& group);
  void add(const Entry& entry);
  const char* dataOf(const Entry& entry);
  char* dataRoom(std::size_t size);
  void placesOrder();
  const Stored& stored(std::uint32_t number) const noexcept {
    return blocks_[number / entriesInBlock][number % entriesInBlock];
  }

  Header header_;
  std::string fileName_;
  TextPool texts_;
  std::map<Place, std::uint32_t> placeNumbers_;
  std::vector<PlaceInfo> places_;
  std::uint32_t lastPlace_ = 0;
  // Blocks: a vector that grows would hold everything twice for a while.
  std::vector<std::unique_ptr<Stored[]>> blocks_;
  std::uint32_t size_ = 0;
  std::vector<std::unique_ptr<char[]>> data_;
  char* dataAt_ = nullptr;
  std::size_t dataLeft_ = 0;
};

}  // namespace tcamshow
