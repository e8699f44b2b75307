// RbTreeMap and RbTreeSet: the ordered collections.
#pragma once

#include <cstddef>
#include <functional>
#include <iterator>
#include <new>
#include <type_traits>
#include <utility>

#include "Sobrel.h"
#include "Zel/Base/Assert.h"
#include "Zel/Base/Types.h"
#include "Zel/Collections/RbTree.h"

namespace Zel {

namespace impl {

template <class K>
inline constexpr bool isNumberKey = std::is_integral_v<K> || std::is_enum_v<K>;

/// The common part of map and set. `Element` holds the key in its member `key`.
template <class K, class Element, class Tag, class Less>
class RbTreeOf {
  using Order = RbTreeOrder<K, Less>;

  template <bool isConst>
  class BasicIterator;

 public:
  using Key = K;
  using iterator = BasicIterator<false>;
  using const_iterator = BasicIterator<true>;

  RbTreeOf(const RbTreeOf&) = delete;
  RbTreeOf& operator=(const RbTreeOf&) = delete;

  U32 size() const noexcept { return tree_.size(); }
  bool empty() const noexcept { return size() == 0; }
  /// Starts at 1. Goes up by 2 with each removal of an element and each clear(), also of an empty
  /// collection. Insertions do not change it.
  U32 generation() const noexcept { return tree_.generation(); }
  bool has(const K& key) const noexcept { return found(key) != nullptr; }
  /// The bytes of all blocks and elements, as requested from the allocator. The 32 bytes of the
  /// collection object, and memory that the elements own, are not included.
  std::size_t memoryBytes() const noexcept { return tree_.blockBytes() + size() * sizeof(Element); }

  /// Removes the element of the key. Returns false when there is none.
  bool del(const K& key) {
    Holder const gone(unlinked(probeFor(key)));
    return gone.element != nullptr;
  }
  /// Removes an element through an iterator. Returns false when it removed nothing.
  ///
  /// - If no element was removed since the iterator was made (both have the same generation()),
  ///   this removes the element at the iterator. At the end it removes nothing.
  /// - Otherwise it removes the element of the key that the iterator last held. This holds even if
  ///   that element was removed and added again, or if the iterator has since gone to the end.
  ///
  /// Afterwards, `++` moves the iterator to the next element.
  ///
  /// The iterator must belong to this collection. Where debugging is on, an iterator of another
  /// collection stops the process (assertion "at.owner == this").
  bool del(const iterator& at) {
    ownIteratorExpected(at, "bool Zel::RbTreeOf::del(const iterator&)");
    if (!at.isHeld_ || (at.element_ == nullptr && at.generation_ == generation())) return false;
    Holder const gone(unlinked(at.heldProbe()));
    return gone.element != nullptr;
  }
  /// Removes all elements.
  void clear() noexcept {
    tree_.generationAdvance();
    // Empties the collection before it destroys the first element: a destructor may look at the
    // collection.
    RbTree old;
    old.contentsSwap(tree_);
    elementsDelete(old);
  }

  iterator begin() { return iterator(this, tree_.first()); }
  iterator end() noexcept { return iterator(this); }
  const_iterator begin() const { return const_iterator(this, tree_.first()); }
  const_iterator end() const noexcept { return const_iterator(this); }
  /// An iterator at the last element; end() when there is none.
  iterator last() { return iterator(this, tree_.last()); }
  const_iterator last() const { return const_iterator(this, tree_.last()); }
  /// An iterator at the element of the key; end() when there is none.
  iterator at(const K& key) { return iterator(this, positionOf(key)); }
  const_iterator at(const K& key) const { return const_iterator(this, positionOf(key)); }
  /// An iterator at the first element that is not less than the key.
  iterator lowerBound(const K& key) { return iterator(this, tree_.lowerBound(probeFor(key))); }
  const_iterator lowerBound(const K& key) const {
    return const_iterator(this, tree_.lowerBound(probeFor(key)));
  }
  /// An iterator at the first element that is greater than the key.
  iterator upperBound(const K& key) { return iterator(this, tree_.upperBound(probeFor(key))); }
  const_iterator upperBound(const K& key) const {
    return const_iterator(this, tree_.upperBound(probeFor(key)));
  }

  /// For tests: whether every invariant of the tree holds.
  bool isSound() const noexcept { return tree_.isSound(Order::exact); }

 protected:
  RbTreeOf() noexcept = default;
  RbTreeOf(RbTreeOf&& other) noexcept {
    tree_.contentsSwap(other.tree_);
    other.tree_.generationAdvance();
  }
  RbTreeOf& operator=(RbTreeOf&& other) noexcept {
    if (this != &other) {
      clear();
      tree_.contentsSwap(other.tree_);
      other.tree_.generationAdvance();
    }
    return *this;
  }
  ~RbTreeOf() { elementsDelete(tree_); }
  void swap(RbTreeOf& other) noexcept {
    tree_.contentsSwap(other.tree_);
    tree_.generationAdvance();
    other.tree_.generationAdvance();
  }

  // Deletes an element at the end of its scope. By then the tree is valid and no longer has the
  // element.
  struct Holder {
    explicit Holder(Element* held) noexcept : element(held) {}
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() {
      if (element != nullptr) elementDelete(element);
    }
    Element* element;
  };

  RbTreeProbe probeFor(const K& key) const noexcept {
    if constexpr (Order::exact) {
      return {Order::hint(key), nullptr, nullptr, 0};
    } else if constexpr (skips) {
      U32 const skip = tree_.skip();
      if (skip == 0) return {Order::hint(key), &key, order, Order::hintSize};
      // A key that begins differently is below all elements or above all of them.
      const K& some = keyOf(tree_.anyElement());
      if (Order::commonSize(key, some, skip) == skip) [[likely]] {
        return {Order::hintBehind(key, skip), &key, order, skip + Order::hintSize};
      }
      return {Less{}(key, some) ? U64{0} : ~U64{0}, &key, order, 0};
    } else {
      return {Order::hint(key), &key, order, 0};
    }
  }
  Element* found(const K& key) const noexcept {
    if constexpr (Order::exact) {
      return static_cast<Element*>(tree_.find(Order::hint(key)));
    } else {
      return static_cast<Element*>(tree_.find(probeFor(key)));
    }
  }
  // Returns the element of the key and false. If there is none, adds an element that `make` makes,
  // and returns it and true.
  template <class Make>
  std::pair<Element*, bool> elementFor(const K& key, Make make) {
    RbTree::Path path;
    RbTreeProbe probe = probeFor(key);
    if constexpr (skips) {
      if (probe.told == 0) [[unlikely]] {
        skipLimit(key);
        probe = probeFor(key);
      }
    }
    if (void* const present = tree_.locate(probe, path)) {
      return {static_cast<Element*>(present), false};
    }
    static_assert(alignof(Element) <= 16, "slab memory is aligned to 16 bytes at most");
    void* const memory = Sobrel::trackedAlloc(Tag::memAllocationTracker_, sizeof(Element));
    Element* element = nullptr;
    try {
      element = make(memory);
      tree_.insertAt(path, probe.hint, element);
    } catch (...) {
      if (element != nullptr) {
        elementDelete(element);
      } else {
        Sobrel::trackedFree(Tag::memAllocationTracker_, memory, sizeof(Element));
      }
      throw;
    }
    if constexpr (skips) {
      if (tree_.mayGrowSkip()) skipGrow();
    }
    return {element, true};
  }
  Element* unlinked(const RbTreeProbe& probe) noexcept {
    RbTree::Path path;
    void* const element = tree_.locate(probe, path);
    if (element == nullptr) return nullptr;
    tree_.removeAt(path, Order::exact);
    tree_.generationAdvance();
    return static_cast<Element*>(element);
  }
  // Takes the element at the iterator out of the tree; for a stale iterator, the element of the key
  // that it holds. Returns null at the end and when that key is gone.
  Element* unlinked(const iterator& at) noexcept {
    ownIteratorExpected(at, "V Zel::RbTreeMap::take(const iterator&)");
    return at.element_ == nullptr ? nullptr : unlinked(at.heldProbe());
  }

 private:
  // A default-constructed iterator belongs to no collection and removes nothing.
  void ownIteratorExpected(const iterator& at, const char* function) const noexcept {
    assertWhenDebugging(at.owner_ == this || at.owner_ == nullptr,
                        {"at.owner == this", "platform/Zel/RbTreeMap", 0, function});
  }

  // Whether hints may leave out the common beginning of all keys.
  static constexpr bool skips = !Order::exact && requires(const K& key) {
    Order::hintBehind(key, U32{});
  };

  static const K& keyOf(const void* element) noexcept {
    return static_cast<const Element*>(element)->key;
  }
  static U64 hintOf(const void* element, U32 skip) noexcept {
    return Order::hintBehind(keyOf(element), skip);
  }
  // Call this before a key is added that begins differently: afterwards the hints leave out no more
  // than what all keys have in common.
  void skipLimit(const K& key) noexcept {
    U32 const skip = tree_.skip();
    U32 const common = Order::commonSize(key, keyOf(tree_.anyElement()), skip);
    // At most half as much: after few such steps the hints leave out nothing.
    tree_.rehint((common < skip / 2 ? common : skip / 2) & ~7U, hintOf);
  }
  void skipGrow() noexcept {
    RbTree::Position const last = tree_.last();
    U32 const common =
        Order::commonSize(keyOf(tree_.first().leaf->elements()[0]),
                          keyOf(last.leaf->elements()[last.index]), RbTree::maxSkip) &
        ~7U;
    if (common > tree_.skip()) tree_.rehint(common, hintOf);
  }
  // Called only for keys with equal hints.
  static int order(const void* element, const RbTreeProbe& probe) {
    const K& a = keyOf(element);
    const K& b = *static_cast<const K*>(probe.key);
    if constexpr (skips) {
      return Order::orderBehind(a, b, probe.told);
    } else {
      return Less{}(a, b) ? -1 : static_cast<int>(Less{}(b, a));
    }
  }
  RbTree::Position positionOf(const K& key) const noexcept {
    return tree_.positionOf(probeFor(key));
  }
  static void elementDelete(Element* element) noexcept {
    element->~Element();
    Sobrel::trackedFree(Tag::memAllocationTracker_, element, sizeof(Element));
  }
  static void elementsDelete(RbTree& tree) noexcept {
    for (RbTreeLeaf* leaf = tree.first().leaf; leaf != nullptr; leaf = leaf->next) {
      for (U32 i = 0; i < leaf->count; ++i)
        elementDelete(static_cast<Element*>(leaf->elements()[i]));
    }
    tree.blocksFree();
  }

  RbTree tree_;
};

/// Stands at an element or at the end. RbTreeMap says which changes it survives.
template <class K, class Element, class Tag, class Less>
template <bool isConst>
class RbTreeOf<K, Element, Tag, Less>::BasicIterator {
  using Owner = std::conditional_t<isConst, const RbTreeOf, RbTreeOf>;
  // An iterator may outlive its element. It then goes on from the hint, where hints are exact, and
  // otherwise from its copy of the key. A constant iterator cannot remove, and keeps no copy.
  static constexpr bool copiesKey = !Order::exact && !isConst;
  static constexpr bool isNumber = Order::exact && isNumberKey<K>;
  struct Nothing {};
  using Held = std::conditional_t<Order::exact, U64, std::conditional_t<copiesKey, K, Nothing>>;

 public:
  using iterator_category = std::forward_iterator_tag;
  using difference_type = std::ptrdiff_t;
  using value_type = std::remove_cvref_t<typename Element::template Item<isConst>>;
  using reference = typename Element::template Item<isConst>;
  using pointer = void;

  BasicIterator() noexcept = default;
  template <bool otherIsConst>
  requires(isConst && !otherIsConst) BasicIterator(const BasicIterator<otherIsConst>& other)
      : owner_(other.owner_),
        leaf_(other.leaf_),
        place_(other.place_),
        last_(other.last_),
        element_(other.element_),
        version_(other.version_),
        removalsSeen_(other.removalsSeen_),
        generation_(other.generation_),
        isHeld_(other.isHeld_) {
    if constexpr (Order::exact) held_ = other.held_;
  }

  /// The key that the iterator last held. A number comes by value. Another key comes by reference
  /// to the iterator's own copy, if it has one. Both are valid even when the element is gone. Two
  /// kinds of iterators have no copy of a key that is not a number: constant iterators, and
  /// iterators of a tree with exact hints. They refer to the key in the element, which must still
  /// be there.
  decltype(auto) key() const noexcept {
    if constexpr (isNumber) {
      return Order::keyOf(held_);
    } else if constexpr (copiesKey) {
      return static_cast<const K&>(held_);
    } else {
      return static_cast<const K&>(element_->key);
    }
  }
  /// Maps only: the value in the element.
  auto& value() const noexcept requires requires(Element& e) { e.value; }
  {
    if constexpr (isConst) {
      return std::as_const(element_->value);
    } else {
      return element_->value;
    }
  }
  reference operator*() const noexcept { return element_->template item<isConst>(); }
  /// The generation of the collection when the iterator was made. A copy has the same one as its
  /// original.
  U32 generation() const noexcept { return generation_; }

  /// Copying the key may throw. The iterator then stays where it is, provided that a copy
  /// assignment which throws leaves the key as it was.
  BasicIterator& operator++() {
    if (place_ != last_ && isFresh()) [[likely]] {
      void** const next = place_ + 1;
      element_ = held(leaf_, next, last_);
      place_ = next;
    } else if (element_ == nullptr) {
      return *this;
    } else if (isFresh()) {
      standAt({leaf_->next, 0});
    } else {
      resume();
    }
    return *this;
  }
  BasicIterator operator++(int) {
    BasicIterator const before(*this);
    ++*this;
    return before;
  }
  /// Whether both stand at the same element, or both at the end. Both must be iterators of one
  /// collection.
  friend bool operator==(const BasicIterator& a, const BasicIterator& b) noexcept {
    return a.element_ == b.element_;
  }

 private:
  friend RbTreeOf;
  friend BasicIterator<true>;
  explicit BasicIterator(Owner* owner) noexcept
      : owner_(owner),
        version_(owner->tree_.version()),
        removalsSeen_(owner->generation()),
        generation_(owner->generation()) {}
  BasicIterator(Owner* owner, RbTree::Position at)
      : owner_(owner),
        version_(owner->tree_.version()),
        removalsSeen_(owner->generation()),
        generation_(owner->generation()),
        isHeld_(at.leaf != nullptr) {
    standAt(at);
  }

  bool isFresh() const noexcept { return version_ == owner_->tree_.version(); }
  // Takes the key of the element at `place`, and returns the element. Copying the key may throw: a
  // step changes everything else after this call.
  Element* held(RbTreeLeaf* leaf, void** place, void** last) {
    auto* const element = static_cast<Element*>(*place);
    // Elements are scattered in memory: fetch one in advance.
    if (last - place >= ahead) __builtin_prefetch(place[ahead]);
    if constexpr (Order::exact) held_ = leaf->hintAt(place);
    if constexpr (copiesKey) held_ = element->key;
    return element;
  }
  void standAt(RbTree::Position at) {
    void** place = nullptr;
    void** last = nullptr;
    Element* element = nullptr;
    if (at.leaf != nullptr) {
      place = at.leaf->elements() + at.index;
      last = at.leaf->elements() + at.leaf->count - 1;
      element = held(at.leaf, place, last);
    }
    leaf_ = at.leaf;
    place_ = place;
    last_ = last;
    element_ = element;
  }
  RbTreeProbe heldProbe() const noexcept {
    if constexpr (Order::exact) {
      return {held_, nullptr, nullptr, 0};
    } else if constexpr (copiesKey) {
      return owner_->probeFor(held_);
    } else {
      return owner_->probeFor(element_->key);
    }
  }
  // `++` after the tree has changed.
  [[gnu::always_inline]] void resume() {
    RbTree::Position at;
    // An iterator without a key of its own needs its element, which may be gone.
    if (Order::exact || copiesKey || removalsSeen_ == owner_->generation()) {
      at = owner_->tree_.upperBound(heldProbe());
    }
    standAt(at);
    version_ = owner_->tree_.version();
    removalsSeen_ = owner_->generation();
  }

  static constexpr std::ptrdiff_t ahead = 6;

  Owner* owner_ = nullptr;
  // The place of the element and the last place of its leaf. Valid while the tree does not change.
  // All null at the end.
  RbTreeLeaf* leaf_ = nullptr;
  void** place_ = nullptr;
  void** last_ = nullptr;
  Element* element_ = nullptr;
  U32 version_ = 0;       // the tree's version when the place was found
  U32 removalsSeen_ = 0;  // the collection's generation then
  U32 generation_ = 0;    // the collection's generation when the iterator was made
  bool isHeld_ = false;   // whether it ever stood at an element
  [[no_unique_address]] Held held_{};
};

template <class K, class V>
struct RbTreeMapElement {
  /// A number is copied, so that it outlives the element.
  template <bool isConst>
  struct Item {
    std::conditional_t<isNumberKey<K>, K, const K&> key;
    std::conditional_t<isConst, const V, V>& value;
  };
  template <bool isConst>
  Item<isConst> item() noexcept {
    return {key, value};
  }
  const K key;
  V value;
};

template <class K>
struct RbTreeSetElement {
  template <bool isConst>
  using Item = const K&;
  template <bool isConst>
  const K& item() noexcept {
    return key;
  }
  const K key;
};

}  // namespace impl

/// A map from K to V in ascending order of the keys.
///
/// Invariant: each key is in the map once. Elements never move: a pointer or reference to a key or
/// value stays valid until its element is removed, whatever else is added or removed. The map
/// object takes 32 bytes. An empty map allocates nothing.
///
/// An iterator survives every change of the map. value() may be used as long as the element of the
/// iterator is in the map; key() says how long it may be used. `++` always goes to the first
/// element behind the key that the iterator last held. del() says which element it removes. There
/// are two limits:
/// - A const_iterator in a map whose hints are not exact (see RbTreeOrder) goes to the end at the
///   first `++` after an element was removed.
/// - No iterator may be used after its map was moved from, swapped or destroyed.
///
/// `Tag` names the elements for memory accounting: its static `Zel::AllocationTracker
/// memAllocationTracker_` counts them. If an insertion throws (no memory, or a copy that throws),
/// the map is unchanged.
///
/// Threads: one thread at a time. Several threads may read one map while no thread changes it.
/// Trees of different threads that have the same Tag share its tracker: Halvo::ThreadControl's
/// switch must then be on.
///
///     Zel::RbTreeMap<U32, Halvo::Ptr<Group>, HN_Group> groups;
///     groups.insert(7, Halvo::makePtr<Group>(7));
///     for (auto [id, group] : groups) group->print();
///     Halvo::Ptr<Group> removed = groups.take(7);
template <class K, class V, class Tag, class Less = std::less<K>>
class RbTreeMap : public impl::RbTreeOf<K, impl::RbTreeMapElement<K, V>, Tag, Less> {
  using Element = impl::RbTreeMapElement<K, V>;
  using Base = impl::RbTreeOf<K, Element, Tag, Less>;

 public:
  using Value = V;
  using typename Base::iterator;

  RbTreeMap() noexcept = default;
  RbTreeMap(RbTreeMap&&) noexcept = default;
  RbTreeMap& operator=(RbTreeMap&&) noexcept = default;
  void swap(RbTreeMap& other) noexcept { Base::swap(other); }

  /// A pointer to the value of `key`; null when the map has none.
  V* find(const K& key) noexcept { return valueOf(this->found(key)); }
  const V* find(const K& key) const noexcept { return valueOf(this->found(key)); }
  /// A copy of the value of `key`; V{} when the map has none.
  V get(const K& key) const {
    Element* const element = this->found(key);
    if (element == nullptr) return V{};
    return element->value;
  }

  /// Adds the element if the key is not in the map. Otherwise the present value stays, and `value`
  /// is dropped. Returns a pointer to the value that is now in the map, and whether it is the new
  /// one.
  std::pair<V*, bool> insert(const K& key, V value) {
    auto const [element, isNew] = this->elementFor(key, [&](void* memory) {
      return new (memory) Element{key, std::move(value)};
    });
    return {&element->value, isNew};
  }
  /// The value of `key`. Adds the key with a default value if it is not in the map.
  V& getOrCreate(const K& key) {
    return this->elementFor(key,
                            [&](void* memory) {
                              return new (memory) Element{key, V{}};
                            })
        .first->value;
  }
  /// The value of `key`. If the key is not in the map, adds it with the value that `make()`
  /// returns. `make` must not change the map.
  template <class Make>
  V& getOrMake(const K& key, Make make) {
    return this->elementFor(key,
                            [&](void* memory) {
                              return new (memory) Element{key, make()};
                            })
        .first->value;
  }

  /// Removes the element of the key and returns its value; V{} when there is none.
  V take(const K& key) { return valueTaken(this->unlinked(this->probeFor(key))); }
  /// Removes the element at the iterator and returns its value. If an element was removed since the
  /// iterator was made, this removes the element of the key that the iterator last held. Returns
  /// V{} when there is none, and at the end.
  V take(const iterator& at) { return valueTaken(this->unlinked(at)); }

 private:
  static V* valueOf(Element* element) noexcept {
    return element == nullptr ? nullptr : &element->value;
  }
  static V valueTaken(Element* element) {
    typename Base::Holder const gone(element);
    if (element == nullptr) return V{};
    return std::move(element->value);
  }
};

/// A set of K in ascending order. All that RbTreeMap promises holds for it too; its elements are
/// their own keys.
template <class K, class Tag, class Less = std::less<K>>
class RbTreeSet : public impl::RbTreeOf<K, impl::RbTreeSetElement<K>, Tag, Less> {
  using Element = impl::RbTreeSetElement<K>;
  using Base = impl::RbTreeOf<K, Element, Tag, Less>;

 public:
  RbTreeSet() noexcept = default;
  RbTreeSet(RbTreeSet&&) noexcept = default;
  RbTreeSet& operator=(RbTreeSet&&) noexcept = default;
  void swap(RbTreeSet& other) noexcept { Base::swap(other); }

  /// A pointer to the element that equals `key`; null when the set has none.
  const K* find(const K& key) const noexcept {
    Element* const element = this->found(key);
    return element == nullptr ? nullptr : &element->key;
  }
  /// Adds a copy of `key` if the set has no element that equals it. Otherwise the present element
  /// stays as it is. Returns a pointer to the element that is now in the set, and whether it is the
  /// new one.
  std::pair<const K*, bool> insert(const K& key) {
    auto const [element, isNew] =
        this->elementFor(key, [&](void* memory) { return new (memory) Element{key}; });
    return {&element->key, isNew};
  }
};

}  // namespace Zel
