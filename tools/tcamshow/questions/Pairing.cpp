#include "questions/Pairing.h"

#include <algorithm>
#include <utility>

#include "io/KeyedHash.h"
#include "match/Match.h"
#include "snapshot/EntryState.h"

namespace tcamshow {

namespace {

template <class Number>
void numberAppend(std::string& key, Number number) {
  for (unsigned byte = 0; byte < sizeof number; ++byte) {
    key += static_cast<char>(static_cast<unsigned char>(number >> 8 * byte));
  }
}

void textAppend(std::string& key, std::string_view text) {
  numberAppend(key, text.size());
  key += text;
}

/// A key that is equal where all properties are.
void propertiesAppend(std::string& key, const Entry& entry) {
  textAppend(key, entry.action);
  numberAppend(key, entry.priority);
  numberAppend(key, entry.sequence);
  numberAppend(key, static_cast<std::uint8_t>(stateOf(entry)));
  textAppend(key, entry.feature);
  textAppend(key, entry.description);
  pairKeyAppend(key, entry, PairBy::match);
  numberAppend(key, static_cast<std::uint8_t>(countersAreProgrammed(entry) ? 1 : 0));
}

/// An entry of a side, by its index there, with the hash of a key.
struct Hashed {
  std::uint64_t hash;
  std::uint32_t index;

  friend bool operator<(const Hashed& a, const Hashed& b) noexcept {
    return a.hash != b.hash ? a.hash < b.hash : a.index < b.index;
  }
};
using HashedList = std::vector<Hashed>;

/// Calls `use` with the items of each hash that both sorted lists have, as two spans.
template <class Use>
void forEachCommon(const HashedList& a, const HashedList& b, const Use& use) {
  auto const runAt = [](const HashedList& list, std::size_t begin) {
    std::size_t end = begin;
    while (end < list.size() && list[end].hash == list[begin].hash) ++end;
    return std::span(list).subspan(begin, end - begin);
  };
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i].hash != b[j].hash) {
      ++(a[i].hash < b[j].hash ? i : j);
      continue;
    }
    auto const runA = runAt(a, i);
    auto const runB = runAt(b, j);
    use(runA, runB);
    i += runA.size();
    j += runB.size();
  }
}

class Pairer {
 public:
  Pairer(const PairSide& a, const PairSide& b, PairBy by)
      : a_(a), b_(b), by_(by), partners_(a.entries.size(), noPartner) {}

  std::vector<std::uint32_t> run() {
    auto const keyAppend = [this](const Entry& entry) { pairKeyAppend(key_, entry, by_); };
    HashedList const a = hashed(a_, all(a_), keyAppend);
    HashedList const b = hashed(b_, all(b_), keyAppend);
    forEachCommon(a, b, [this](std::span<const Hashed> ofA, std::span<const Hashed> ofB) {
      if (ofA.size() == 1 && ofB.size() == 1) {
        partners_[ofA[0].index] = ofB[0].index;
      } else {
        pairAlike(ofA, ofB);
      }
    });
    check();
    return std::move(partners_);
  }

 private:
  using Indexes = std::vector<std::uint32_t>;

  static Indexes all(const PairSide& side) {
    Indexes indexes(side.entries.size());
    for (std::uint32_t i = 0; i < indexes.size(); ++i) indexes[i] = i;
    return indexes;
  }

  template <class KeyAppend>
  HashedList hashed(const PairSide& side, const Indexes& indexes, const KeyAppend& keyAppend) {
    HashedList list;
    list.reserve(indexes.size());
    for (std::uint32_t const index : indexes) {
      key_.clear();
      keyAppend(side.store.entry(side.entries[index], scratch_));
      list.push_back({keyedHash(key_), index});
    }
    std::sort(list.begin(), list.end());
    return list;
  }

  std::string keyOf(const PairSide& side, std::uint32_t index) {
    std::string key;
    pairKeyAppend(key, side.store.entry(side.entries[index], scratch_), by_);
    return key;
  }

  /// Parts those whose hashes alone are equal. Not in the order of the hashes: memory is read in
  /// order.
  void check() {
    Entry scratch;
    for (std::uint32_t index = 0; index < partners_.size(); ++index) {
      std::uint32_t& partner = partners_[index];
      if (partner == noPartner) continue;
      const Entry& a = a_.store.entry(a_.entries[index], scratch_);
      const Entry& b = b_.store.entry(b_.entries[partner], scratch);
      if (!haveOneKey(a, b)) partner = noPartner;
    }
  }
  bool haveOneKey(const Entry& a, const Entry& b) const {
    if (by_ != PairBy::match && a.shadowId != b.shadowId) return false;
    if (by_ == PairBy::id) return true;
    return a.otherMatch == b.otherMatch && matchOf(a) == matchOf(b);
  }

  /// Of entries with one hash, which is almost always one key.
  struct Alike {
    std::string key;
    Indexes a;
    Indexes b;
  };
  void pairAlike(std::span<const Hashed> ofA, std::span<const Hashed> ofB) {
    std::vector<Alike> kinds;
    auto const add = [&](const PairSide& side, std::uint32_t index, Indexes Alike::*to) {
      std::string key = keyOf(side, index);
      auto at = std::find_if(kinds.begin(), kinds.end(),
                             [&key](const Alike& kind) { return kind.key == key; });
      if (at == kinds.end()) at = kinds.insert(at, {std::move(key), {}, {}});
      ((*at).*to).push_back(index);
    };
    for (const Hashed& item : ofA) add(a_, item.index, &Alike::a);
    for (const Hashed& item : ofB) add(b_, item.index, &Alike::b);
    for (Alike& kind : kinds) {
      pairEqual(kind, [this](const Entry& entry) {
        propertiesAppend(key_, entry);
        pairKeyAppend(key_, entry, PairBy::id);
      });
      pairEqual(kind, [this](const Entry& entry) { propertiesAppend(key_, entry); });
      std::size_t const count = std::min(kind.a.size(), kind.b.size());
      for (std::size_t i = 0; i < count; ++i) partners_[kind.a[i]] = kind.b[i];
    }
  }

  /// Pairs those whose keys are equal, and takes them away. A hash does for the key: which of
  /// several partners an entry gets decides no more than how its difference is told.
  template <class KeyAppend>
  void pairEqual(Alike& kind, const KeyAppend& keyAppend) {
    if (kind.a.empty() || kind.b.empty()) return;
    HashedList const a = hashed(a_, kind.a, keyAppend);
    HashedList const b = hashed(b_, kind.b, keyAppend);
    Indexes takenA;
    Indexes takenB;
    forEachCommon(a, b, [&](std::span<const Hashed> ofA, std::span<const Hashed> ofB) {
      for (std::size_t i = 0; i < std::min(ofA.size(), ofB.size()); ++i) {
        partners_[ofA[i].index] = ofB[i].index;
        takenA.push_back(ofA[i].index);
        takenB.push_back(ofB[i].index);
      }
    });
    takeAway(kind.a, takenA);
    takeAway(kind.b, takenB);
  }

  static void takeAway(Indexes& from, Indexes& taken) {
    std::sort(taken.begin(), taken.end());
    std::erase_if(from, [&taken](std::uint32_t index) {
      return std::binary_search(taken.begin(), taken.end(), index);
    });
  }

  const PairSide& a_;
  const PairSide& b_;
  PairBy by_;
  std::vector<std::uint32_t> partners_;
  std::string key_;
  Entry scratch_;
};

}  // namespace

void pairKeyAppend(std::string& key, const Entry& entry, PairBy by) {
  if (by != PairBy::match) numberAppend(key, entry.shadowId);
  if (by == PairBy::id) return;
  matchOf(entry).keyAppend(key);
  key += '\0';  // no field's key begins so
  textAppend(key, entry.otherMatch);
}

Properties differencesOf(const Entry& a, const Entry& b) {
  Properties differences = 0;
  auto const note = [&differences](Property property, bool differs) {
    if (differs) differences = static_cast<Properties>(differences | bitOf(property));
  };
  note(Property::action, a.action != b.action);
  note(Property::priority, a.priority != b.priority);
  note(Property::sequence, a.sequence != b.sequence);
  note(Property::state, stateOf(a) != stateOf(b));
  note(Property::feature, a.feature != b.feature);
  note(Property::description, a.description != b.description);
  note(Property::match, a.otherMatch != b.otherMatch || !(matchOf(a) == matchOf(b)));
  note(Property::counters, countersAreProgrammed(a) != countersAreProgrammed(b));
  return differences;
}

std::vector<std::uint32_t> partnersOf(const PairSide& a, const PairSide& b, PairBy by) {
  return Pairer(a, b, by).run();
}

}  // namespace tcamshow
