// The collections that the usage model's classes are made of.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Halvo/MemoryTracker.h"
#include "Halvo/Ptr.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/HashMap2018.h"
#include "Zel/Collections/RbTreeMap.h"

/// Declares, in the body of a class, what the elements of one of its collections are counted under.
/// The class defines `TAG::memAllocationTracker_` in its source file.
#define VELMOR_COLLECTION_TAG(TAG)                         \
  struct VELMOR_TCAM_API TAG {                             \
    static ::Zel::AllocationTracker memAllocationTracker_; \
  }

namespace VelmorTcam {

/// The children of one node in ascending order of their keys.
///
/// Invariant: each child stands once, under the key that it was made with. Anybody may look; only
/// `Owner`, through its own operations, changes it.
///
/// The generation starts at 1 and goes up by 2 with each child removed and each delete-all; adding
/// leaves it alone. An iterator withstands every change: `++` goes to the first child behind the
/// key that it last held, and a removal by iterator goes by that key once another removal came
/// between. value() and `*` are for as long as the iterator's own child is in the collection; key()
/// is for as long as the iterator lives. A removal by another collection's iterator stops the
/// process where debugging is on (assertion "at.owner == this"), and means nothing elsewhere.
///
/// Threads: one at a time; any number may read while nobody changes, and while
/// Halvo::ThreadControl's switch is on: get() moves reference counts.
template <class Owner, class K, class Child, class Tag>
class ChildMap {
  using Map = Zel::RbTreeMap<K, Halvo::Ptr<Child>, Tag>;

 public:
  using Key = K;
  using ChildType = Child;
  /// A child as a walk meets it. A key that is a number comes by value; a text is the child's own.
  struct Item {
    std::conditional_t<Zel::impl::isNumberKey<K>, K, const K&> key;
    const Halvo::Ptr<Child>& value;
  };

  /// Stands at a child, or at the end. It gives no way to put another child in a child's place.
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = Item;
    using reference = Item;
    using pointer = void;

    iterator() noexcept = default;
    /// The key that the iterator last held, a copy of its own: it outlives the child.
    decltype(auto) key() const noexcept { return at_.key(); }
    const Halvo::Ptr<Child>& value() const noexcept { return at_.value(); }
    Item operator*() const noexcept {
      auto const [key, value] = *at_;
      return {key, value};
    }
    /// The generation at which the iterator was made.
    Halvo::U32 generation() const noexcept { return at_.generation(); }
    iterator& operator++() {
      ++at_;
      return *this;
    }
    iterator operator++(int) {
      iterator const before(*this);
      ++at_;
      return before;
    }
    friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.at_ == b.at_; }

   private:
    friend ChildMap;
    explicit iterator(typename Map::iterator at) : at_(std::move(at)) {}
    typename Map::iterator at_;
  };
  using const_iterator = iterator;

  Halvo::U32 size() const noexcept { return map_.size(); }
  bool empty() const noexcept { return map_.empty(); }
  Halvo::U32 generation() const noexcept { return map_.generation(); }
  /// The child of the key; null when there is none.
  Halvo::Ptr<Child> get(const K& key) const { return map_.get(key); }
  /// As get: never makes a child.
  Halvo::Ptr<Child> operator[](const K& key) const { return map_.get(key); }
  bool has(const K& key) const noexcept { return map_.has(key); }

  iterator begin() const { return iterator(map_.begin()); }
  iterator end() const noexcept { return iterator(map_.end()); }
  /// At the key; end() when it is not there.
  iterator at(const K& key) const { return iterator(map_.at(key)); }

 private:
  friend Owner;
  ChildMap() noexcept = default;
  ~ChildMap() = default;

  Halvo::Ptr<Child> childIs(const K& key) {
    return map_.getOrMake(key, [&] { return Halvo::makePtr<Child>(key); });
  }
  Halvo::Ptr<Child> childDel(const K& key) { return map_.take(key); }
  Halvo::Ptr<Child> childDel(const iterator& at) { return map_.take(at.at_); }
  void childDelAll() noexcept { map_.clear(); }

  // An iterator of a constant collection can be handed to the owner for a removal.
  mutable Map map_;
};

/// The children of one node in no order, for keys of 8 bits.
///
/// Invariant and rules as ChildMap's; iterators are the hash map's constant ones, which a change
/// may make stale.
///
/// Threads: as ChildMap.
template <class Owner, class K, class Child, class Tag>
class ChildHashMap {
  using Map = Zel::HashMap2018<K, Halvo::Ptr<Child>, std::hash<K>, Tag>;

 public:
  ChildHashMap(const ChildHashMap&) = delete;
  ChildHashMap& operator=(const ChildHashMap&) = delete;

  using Key = K;
  using ChildType = Child;
  using iterator = typename Map::const_iterator;
  using const_iterator = iterator;
  using Item = typename iterator::Item;

  Halvo::U32 size() const noexcept { return map_.size(); }
  bool empty() const noexcept { return map_.empty(); }
  Halvo::U32 generation() const noexcept { return map_.generation(); }
  /// The child of the key; null when there is none.
  Halvo::Ptr<Child> get(const K& key) const { return map_.get(key); }
  /// As get: never makes a child.
  Halvo::Ptr<Child> operator[](const K& key) const { return map_.get(key); }
  bool has(const K& key) const noexcept { return map_.has(key); }
  iterator begin() const { return map_.begin(); }
  iterator end() const noexcept { return map_.end(); }

 private:
  friend Owner;
  ChildHashMap() noexcept = default;
  ~ChildHashMap() = default;

  Halvo::Ptr<Child> childIs(const K& key) {
    if (const Halvo::Ptr<Child>* const present = map_.find(key)) return *present;
    return *map_.insert(key, Halvo::makePtr<Child>(key)).first;
  }
  Halvo::Ptr<Child> childDel(const K& key) { return map_.take(key); }
  void childDelAll() noexcept { map_.clear(); }

  Map map_;
};

/// The ordered set of records of one node.
///
/// Invariant: no two records are equal. Two generations, both odd and both from 1, go up by 2 with
/// each record removed and each delete-all, that of an empty set also. Iterators as ChildMap's, but
/// that a removal by one whose generation is not the set's goes by its key at the end also. Only
/// `Owner` changes it.
///
/// Threads: as ChildMap.
template <class Owner, class Record, class Tag>
class RecordSet {
  using Set = Zel::RbTreeSet<Record, Tag>;

 public:
  using RecordType = Record;
  using iterator = typename Set::iterator;
  using const_iterator = iterator;

  Halvo::U32 size() const noexcept { return set_.size(); }
  bool empty() const noexcept { return set_.empty(); }
  /// What the iterators' own generation is compared with.
  Halvo::U32 generation() const noexcept { return set_.generation(); }
  /// For those who keep a view of the set: while it stays the same, nothing has been removed.
  Halvo::U32 removalGeneration() const noexcept { return removalGeneration_; }
  bool has(const Record& record) const noexcept { return set_.has(record); }
  /// The record that is equal to `record`, null when there is none.
  const Record* find(const Record& record) const noexcept { return set_.find(record); }

  iterator begin() const { return set_.begin(); }
  iterator end() const noexcept { return set_.end(); }
  /// At the equal record; end() when there is none.
  iterator at(const Record& record) const { return set_.at(record); }
  /// Bytes that the records and the structure around them take, their strings' own memory not
  /// counted.
  std::size_t memoryBytes() const noexcept { return set_.memoryBytes(); }

 private:
  friend Owner;
  RecordSet() noexcept = default;
  ~RecordSet() = default;

  bool recordIs(const Record& record) { return set_.insert(record).second; }
  bool recordDel(const Record& record) { return removed(set_.del(record)); }
  bool recordDel(const iterator& at) { return removed(set_.del(at)); }
  void recordDelAll() noexcept {
    removalGeneration_ += 2;
    set_.clear();
  }
  bool removed(bool isRemoved) noexcept {
    if (isRemoved) removalGeneration_ += 2;
    return isRemoved;
  }

  // An iterator of a constant set can be handed to the owner for a removal.
  mutable Set set_;
  Halvo::U32 removalGeneration_ = 1;
};

}  // namespace VelmorTcam
