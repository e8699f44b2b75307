// RbTreeMap and RbTreeSet against std::map, with iterators that outlive changes.
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Containers.h"
#include "Zel/Collections/RbTreeMap.h"

namespace velmorfuzz {

namespace {

/// The operations of a collection on its elements. Sets have no values.
template <class K>
struct MapAccess {
  using Collection = Zel::RbTreeMap<K, String, ItemTag>;
  static bool insert(Collection& to, const K& key, const String& value, std::string_view held) {
    auto const [at, isNew] = to.insert(key, value);
    FUZZ_CHECK_TEXT(*at, held);
    return isNew;
  }
  static void checkElement(const Collection& in, const K& key, const std::string& value) {
    const String* const at = in.find(key);
    FUZZ_CHECK(at != nullptr);
    FUZZ_CHECK_TEXT(*at, value);
    FUZZ_CHECK_TEXT(in.get(key), value);
  }
  template <class Iterator>
  static void checkAt(const Iterator& at, const std::string& value) {
    FUZZ_CHECK_TEXT(at.value(), value);
    FUZZ_CHECK(&(*at).value == &at.value() && (*at).key == at.key());
  }
  template <class At>
  static void take(Collection& from, const At& at, const std::string* value) {
    FUZZ_CHECK_TEXT(from.take(at), value == nullptr ? "" : *value);
  }
};

template <class K>
struct SetAccess {
  using Collection = Zel::RbTreeSet<K, ItemTag>;
  static bool insert(Collection& to, const K& key, const String&, std::string_view) {
    auto const [at, isNew] = to.insert(key);
    FUZZ_CHECK(*at == key);
    return isNew;
  }
  static void checkElement(const Collection& in, const K& key, const std::string&) {
    const K* const at = in.find(key);
    FUZZ_CHECK(at != nullptr && *at == key);
  }
  template <class Iterator>
  static void checkAt(const Iterator& at, const std::string&) {
    FUZZ_CHECK(*at == at.key());
  }
};

template <class K, template <class> class AccessOf>
class OrderedRun {
  using Access = AccessOf<K>;
  using Collection = typename Access::Collection;
  using Iterator = typename Collection::iterator;
  using Model = std::map<K, std::string>;
  static constexpr bool isMap = std::is_same_v<Access, MapAccess<K>>;

 public:
  explicit OrderedRun(Input& in) : in_(in) {}

  void run() {
    for (unsigned step = 0; !in_.empty() && step < 3000; ++step) {
      one();
      FUZZ_CHECK(tree_.size() == model_.size() && tree_.empty() == model_.empty());
      FUZZ_CHECK(tree_.generation() == generation_);
    }
    FUZZ_CHECK(tree_.isSound());
    walk();
  }

 private:
  /// An iterator and the state that it should have.
  struct Held {
    Iterator at;
    std::optional<K> key;  ///< the key that it last held
    bool isAtEnd;
    Halvo::U32 made;  ///< the generation at which it was made
    Halvo::U32 seen;  ///< the generation at which it was made or last stepped
  };

  K key() { return keyOf<K>(in_); }
  void removed(std::size_t count) { generation_ += static_cast<Halvo::U32>(2 * count); }
  void checkStands(const Iterator& at, typename Model::const_iterator expected) {
    if (expected == model_.end()) {
      FUZZ_CHECK(at == tree_.end());
    } else {
      FUZZ_CHECK(at != tree_.end() && at.key() == expected->first);
      Access::checkAt(at, expected->second);
    }
  }

  void one() {
    switch (in_.below(17)) {
      case 0:
      case 1:
      case 2:
        insert(key(), String(in_.text(in_.below(80))));
        break;
      case 3: {
        unsigned const count = in_.u8();
        unsigned const begin = in_.u8();
        unsigned const stride = 1 + in_.below(7);
        for (unsigned i = 0; i < count; ++i) insert(keyNumbered<K>(begin + i * stride), "v");
        break;
      }
      case 4: {
        unsigned const count = in_.u8();
        unsigned const begin = in_.u8();
        for (unsigned i = 0; i < count; ++i) del(keyNumbered<K>(begin + i));
        break;
      }
      case 5:
        del(key());
        break;
      case 6: {
        K const k = key();
        auto const found = model_.find(k);
        FUZZ_CHECK(tree_.has(k) == (found != model_.end()));
        if (found != model_.end()) Access::checkElement(tree_, k, found->second);
        checkStands(tree_.at(k), found);
        checkStands(tree_.lowerBound(k), model_.lower_bound(k));
        checkStands(tree_.upperBound(k), model_.upper_bound(k));
        checkStands(tree_.last(), model_.empty() ? model_.end() : std::prev(model_.end()));
        break;
      }
      case 7:
        tree_.clear();
        model_.clear();
        generation_ += 2;
        break;
      case 8:
        walk();
        break;
      case 9:
        walkAndDelete();
        break;
      case 10:
      case 11:
        hold();
        break;
      case 12:
      case 13:
      case 14:
        useHeld();
        break;
      case 15: {
        held_.clear();
        Collection other(std::move(tree_));
        generation_ += 2;
        FUZZ_CHECK(tree_.empty() && tree_.begin() == tree_.end());
        if (in_.flag()) {
          tree_.swap(other);
        } else {
          tree_ = std::move(other);
        }
        generation_ += 2;
        break;
      }
      default:
        FUZZ_CHECK(tree_.isSound());
        break;
    }
  }

  void insert(const K& k, const String& v) {
    auto const [at, isNew] = model_.emplace(k, v.str());
    FUZZ_CHECK(Access::insert(tree_, k, v, at->second) == isNew);
  }

  void del(const K& k) {
    bool const isThere = model_.erase(k) != 0;
    FUZZ_CHECK(tree_.del(k) == isThere);
    removed(isThere ? 1 : 0);
  }

  void walk() {
    auto expected = model_.begin();
    for (auto at = std::as_const(tree_).begin(); at != std::as_const(tree_).end(); ++at) {
      FUZZ_CHECK(expected != model_.end() && at.key() == expected->first);
      Access::checkAt(at, expected->second);
      ++expected;
    }
    FUZZ_CHECK(expected == model_.end());
  }

  void walkAndDelete() {
    unsigned const mask = in_.u8();
    unsigned step = 0;
    auto expected = model_.begin();
    for (auto at = tree_.begin(); at != tree_.end(); ++at) {
      FUZZ_CHECK(expected != model_.end() && at.key() == expected->first);
      if ((mask >> (step++ % 8) & 1) != 0) {
        FUZZ_CHECK(tree_.del(at));
        removed(1);
        expected = model_.erase(expected);
      } else {
        ++expected;
      }
    }
    FUZZ_CHECK(expected == model_.end());
  }

  void hold() {
    if (held_.size() == 4) held_.erase(held_.begin());
    unsigned const way = in_.below(4);
    K const k = key();
    Iterator const at = way == 0   ? tree_.begin()
                        : way == 1 ? tree_.at(k)
                        : way == 2 ? tree_.lowerBound(k)
                                   : tree_.end();
    bool const isAtEnd = at == tree_.end();
    held_.push_back(
        {at, isAtEnd ? std::optional<K>() : at.key(), isAtEnd, generation_, generation_});
    FUZZ_CHECK(at.generation() == generation_);
  }

  void useHeld() {
    if (held_.empty()) return;
    Held& held = held_[in_.below(static_cast<unsigned>(held_.size()))];
    FUZZ_CHECK(held.at.generation() == held.made);
    // If nothing has been removed, it still stands at the same element.
    if (!held.isAtEnd && held.seen == generation_) checkStands(held.at, model_.find(*held.key));
    if constexpr (isMap) {
      if (held.key) FUZZ_CHECK(held.at.key() == *held.key);
    }
    switch (in_.below(3)) {
      case 0: {
        if (held.isAtEnd) {
          ++held.at;
          FUZZ_CHECK(held.at == tree_.end());
          break;
        }
        ++held.at;
        auto const expected = model_.upper_bound(*held.key);
        checkStands(held.at, expected);
        held.isAtEnd = expected == model_.end();
        if (!held.isAtEnd) held.key = expected->first;
        held.seen = generation_;
        break;
      }
      case 1: {
        bool const isMeant = held.key && (!held.isAtEnd || held.made != generation_);
        bool const isThere = isMeant && model_.erase(*held.key) != 0;
        FUZZ_CHECK(tree_.del(held.at) == isThere);
        removed(isThere ? 1 : 0);
        break;
      }
      default:
        if constexpr (isMap) {
          auto const found = held.isAtEnd ? model_.end() : model_.find(*held.key);
          bool const isThere = found != model_.end();
          Access::take(tree_, held.at, isThere ? &found->second : nullptr);
          if (isThere) model_.erase(found);
          removed(isThere ? 1 : 0);
        }
        break;
    }
  }

  Input& in_;
  Collection tree_;
  Model model_;
  Halvo::U32 generation_ = 1;
  std::vector<Held> held_;
};

}  // namespace

void orderedMapOfNumbers(Input& in) {
  if (in.flag()) return OrderedRun<Halvo::U32, MapAccess>(in).run();
  OrderedRun<Halvo::S16, MapAccess>(in).run();
}
void orderedMapOfTexts(Input& in) { OrderedRun<String, MapAccess>(in).run(); }
void orderedSet(Input& in) {
  if (in.flag()) return OrderedRun<String, SetAccess>(in).run();
  OrderedRun<Halvo::U64, SetAccess>(in).run();
}

}  // namespace velmorfuzz
