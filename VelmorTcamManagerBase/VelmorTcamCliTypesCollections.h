// The collections of the usage tree and the summary.
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

/// Declares, in the body of a class, a tag for one of its collections. The memory of the
/// collection's elements is counted under the tag. The class's source file defines
/// `TAG::memAllocationTracker_`.
#define VELMOR_COLLECTION_TAG(TAG)                         \
  struct VELMOR_TCAM_API TAG {                             \
    static ::Zel::AllocationTracker memAllocationTracker_; \
  }

namespace VelmorTcam {

/// The children of one node, in ascending order of their keys.
///
/// Invariant: each child is in the map once, under the key that it was made with. Anyone may read
/// the map; only `Owner` changes it, through its own operations.
///
/// The generation starts at 1. It rises by 2 with each child removed and with each delete-all.
/// Adding a child does not change it.
///
/// An iterator survives every change of the map:
/// - `++` goes to the first child behind the key that the iterator last held.
/// - A removal by iterator removes the child under it. After another removal it removes the child
///   with the key that the iterator last held. At the end it removes nothing.
/// - key() is valid as long as the iterator lives. value() and `*` are valid as long as the
///   iterator's own child is in the map.
/// - Another map's iterator must not be used for a removal. Where debugging is on (no NDEBUG), it
///   stops the process (assertion "at.owner == this"). In other builds the result is undefined.
///
/// Threads: one thread at a time. Any number of threads may read a map that nobody changes, while
/// Halvo::ThreadControl's switch is on: get() changes reference counts.
template <class Owner, class K, class Child, class Tag>
class ChildMap {
  using Map = Zel::RbTreeMap<K, Halvo::Ptr<Child>, Tag>;

 public:
  using Key = K;
  using ChildType = Child;
  /// A child and its key, as an iterator gives them. A key that is a number is a copy. A key that
  /// is a text refers into the map, and is valid as long as the child is in it.
  struct Item {
    std::conditional_t<Zel::impl::isNumberKey<K>, K, const K&> key;
    const Halvo::Ptr<Child>& value;
  };

  /// Stands at a child or at the end. It cannot replace the child.
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = Item;
    using reference = Item;
    using pointer = void;

    iterator() noexcept = default;
    /// The key that the iterator last held. The iterator has its own copy, which outlives the
    /// child.
    decltype(auto) key() const noexcept { return at_.key(); }
    const Halvo::Ptr<Child>& value() const noexcept { return at_.value(); }
    Item operator*() const noexcept {
      auto const [key, value] = *at_;
      // cppcheck-suppress returnDanglingLifetime  // `value` refers to what the collection holds
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
  /// The child with this key, or null.
  Halvo::Ptr<Child> get(const K& key) const { return map_.get(key); }
  /// Same as get(): never makes a child.
  Halvo::Ptr<Child> operator[](const K& key) const { return map_.get(key); }
  bool has(const K& key) const noexcept { return map_.has(key); }

  iterator begin() const { return iterator(map_.begin()); }
  iterator end() const noexcept { return iterator(map_.end()); }
  /// The iterator at this key, or end().
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

  // Mutable: the owner accepts an iterator of a constant map for a removal.
  mutable Map map_;
};

/// The children of one node, in no particular order, for keys of 8 bits.
///
/// Same invariant and rules as ChildMap, except for the iterators: they are the constant iterators
/// of Zel::HashMap2018, and a change may make them stale.
///
/// Threads: same as ChildMap.
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
  /// The child with this key, or null.
  Halvo::Ptr<Child> get(const K& key) const { return map_.get(key); }
  /// Same as get(): never makes a child.
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
/// Invariant: no two records are equal. Only `Owner` changes the set.
///
/// The set has two generations. Both start at 1 and stay odd: both rise by 2 with each record
/// removed and with each delete-all, also of an empty set.
///
/// Iterators behave like ChildMap's, with one difference. If the iterator's generation is not the
/// set's, a removal goes by the key that it last held even when the iterator is at the end.
///
/// Threads: same as ChildMap.
template <class Owner, class Record, class Tag>
class RecordSet {
  using Set = Zel::RbTreeSet<Record, Tag>;

 public:
  using RecordType = Record;
  using iterator = typename Set::iterator;
  using const_iterator = iterator;

  Halvo::U32 size() const noexcept { return set_.size(); }
  bool empty() const noexcept { return set_.empty(); }
  /// Compare an iterator's generation() with this one.
  Halvo::U32 generation() const noexcept { return set_.generation(); }
  /// For a caller that keeps a view of the set: while it is unchanged, nothing has been removed.
  Halvo::U32 removalGeneration() const noexcept { return removalGeneration_; }
  bool has(const Record& record) const noexcept { return set_.has(record); }
  /// The record equal to `record`, or null.
  const Record* find(const Record& record) const noexcept { return set_.find(record); }

  iterator begin() const { return set_.begin(); }
  iterator end() const noexcept { return set_.end(); }
  /// The iterator at the record equal to `record`, or end().
  iterator at(const Record& record) const { return set_.at(record); }
  /// Bytes of the records and of the tree around them, without the memory that the records' strings
  /// own.
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

  // Mutable: the owner accepts an iterator of a constant set for a removal.
  mutable Set set_;
  Halvo::U32 removalGeneration_ = 1;
};

}  // namespace VelmorTcam
