// The collections and the string: sequences of operations, against the standard library's.
#include "Containers.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "Zel/Collections/HashMap2018.h"
#include "Zel/Collections/RQueue.h"

namespace {

using velmorfuzz::Input;
using velmorfuzz::ItemTag;
using velmorfuzz::keyOf;
using velmorfuzz::String;

// --- HashMap2018

/// Gives few values, for long chains and for equal tags.
struct PoorHash {
  template <class K>
  std::size_t operator()(const K& key) const {
    return std::hash<K>{}(key) % 3;
  }
};

/// The first bytes of a text, as many as fit into a value no larger than a pointer.
class ShortText {
 public:
  ShortText() = default;
  explicit ShortText(std::string_view text)
      : size_(static_cast<Halvo::U8>(std::min(text.size(), sizeof bytes_))) {
    std::memcpy(bytes_, text.data(), size_);
  }
  std::string str() const { return std::string(bytes_, size_); }
  operator std::string_view() const { return {bytes_, size_}; }

 private:
  char bytes_[7] = {};
  Halvo::U8 size_ = 0;
};
static_assert(sizeof(ShortText) == sizeof(void*));

template <class K, class V, class Hash>
class HashMapRun {
  using Map = Zel::HashMap2018<K, V, Hash>;
  using Model = std::map<K, std::string>;

 public:
  explicit HashMapRun(Input& in) : in_(in) {}

  void run() {
    for (unsigned step = 0; !in_.empty() && step < 3000; ++step) {
      one();
      FUZZ_CHECK(map_.size() == model_.size() && map_.empty() == model_.empty());
      FUZZ_CHECK(map_.generation() == generation_);
      FUZZ_CHECK(map_.memoryBytes() != 0 || map_.size() <= 1);
    }
    walk();
  }

 private:
  K key() { return keyOf<K>(in_); }
  V value() { return V(in_.text(in_.below(80))); }
  void removed(std::size_t count) { generation_ += static_cast<Halvo::U32>(2 * count); }

  void one() {
    switch (in_.below(18)) {
      case 0:
      case 1:
      case 2: {
        K const k = key();
        V const v = value();
        auto const [at, isNew] = map_.insert(k, v);
        auto const expected = model_.emplace(k, v.str());
        FUZZ_CHECK(isNew == expected.second);
        FUZZ_CHECK_TEXT(*at, expected.first->second);
        break;
      }
      case 3: {
        K const k = key();
        V const v = value();
        map_.getOrCreate(k) = v;
        model_[k] = v.str();
        break;
      }
      case 4: {
        K const k = key();
        bool const isThere = model_.erase(k) != 0;
        FUZZ_CHECK(map_.del(k) == isThere);
        removed(isThere ? 1 : 0);
        break;
      }
      case 5: {
        K const k = key();
        auto const found = model_.find(k);
        V const taken = map_.take(k);
        FUZZ_CHECK_TEXT(taken, found == model_.end() ? "" : found->second);
        removed(model_.erase(k));
        break;
      }
      case 6: {
        K const k = key();
        const V* const at = std::as_const(map_).find(k);
        auto const found = model_.find(k);
        FUZZ_CHECK((at != nullptr) == (found != model_.end()) && map_.has(k) == (at != nullptr));
        FUZZ_CHECK_TEXT(map_.get(k), at == nullptr ? "" : found->second);
        break;
      }
      case 7:
        map_.clear();
        model_.clear();
        generation_ += 2;
        break;
      case 8: {
        std::size_t const before = map_.memoryBytes();
        map_.reserve(in_.number<std::uint16_t>() % 600U);
        // If elements moved, the generation shows it.
        if (map_.memoryBytes() != before && !map_.empty()) generation_ += 2;
        break;
      }
      case 9:
        walk();
        break;
      case 10:
        walkAndDelete();
        break;
      case 11:
        held_.emplace(in_.flag() ? map_.begin() : map_.at(key()));
        break;
      case 12:
      case 13:
        useHeld();
        break;
      case 14: {
        // A copy has the same elements and is independent.
        Map copy(map_);
        FUZZ_CHECK(copy.size() == map_.size() && copy.generation() == 1);
        for (auto const& [k, v] : model_) FUZZ_CHECK_TEXT(copy.get(k), v);
        copy.insert(key(), V("other"));
        if (in_.flag()) {
          copy = std::as_const(map_);
          for (auto const& [k, v] : model_) FUZZ_CHECK_TEXT(copy.get(k), v);
          FUZZ_CHECK(copy.size() == model_.size() && copy.generation() == 3);
        }
        break;
      }
      case 15: {
        // Move the map away and back. An iterator from before must not be used.
        held_.reset();
        Map other(std::move(map_));
        generation_ += 2;
        FUZZ_CHECK(map_.empty() && map_.generation() == generation_ && !map_.has(key()));
        if (in_.flag()) {
          map_.swap(other);
        } else {
          map_ = std::move(other);
        }
        generation_ += 2;
        break;
      }
      default: {
        // Many at once, so that a table grows.
        unsigned const count = in_.below(64);
        unsigned const seed = in_.u8();
        for (unsigned i = 0; i < count; ++i) {
          K const k = velmorfuzz::keyNumbered<K>(seed * 8 + i * 5);
          V const v(std::to_string(i));
          FUZZ_CHECK(map_.insert(K(k), v).second == model_.emplace(k, v.str()).second);
        }
      }
    }
  }

  void walk() {
    Model met;
    for (auto const [k, v] : std::as_const(map_)) FUZZ_CHECK(met.emplace(k, v.str()).second);
    FUZZ_CHECK(met == model_);
  }

  /// Removes by iterator during a walk. The walk meets every element once.
  void walkAndDelete() {
    unsigned const mask = in_.u8();
    Model met;
    unsigned step = 0;
    for (auto at = map_.begin(); at != map_.end();) {
      FUZZ_CHECK(at.isFresh());
      K const k = at.key();
      auto const item = *at;
      FUZZ_CHECK(item.key == k && &item.value == &at.value());
      FUZZ_CHECK(met.emplace(k, at.value().str()).second);
      if ((mask >> (step++ % 8) & 1) != 0) {
        at = map_.del(at);
        FUZZ_CHECK(model_.count(k) == 1);
        FUZZ_CHECK_TEXT(met[k], model_[k]);
        model_.erase(k);
        removed(1);
      } else {
        ++at;
      }
    }
    for (auto const& [k, v] : model_) FUZZ_CHECK(met.count(k) == 1 && met[k] == v);
  }

  void useHeld() {
    if (!held_) return;
    auto& at = *held_;
    if (at == map_.end()) {
      FUZZ_CHECK(map_.del(at) == map_.end());
      return;
    }
    K const k = at.key();
    if (at.isFresh()) {
      FUZZ_CHECK(model_.count(k) == 1);
      FUZZ_CHECK_TEXT(at.value(), model_[k]);
    }
    if (in_.flag()) {
      ++at;
      if (at == map_.end()) return;
      // An element that is present, always.
      FUZZ_CHECK(at.isFresh() && model_.count(at.key()) == 1);
      FUZZ_CHECK_TEXT(at.value(), model_[at.key()]);
    } else {
      removed(model_.erase(k));
      at = map_.del(at);
      FUZZ_CHECK(!map_.has(k) && (at == map_.end() || model_.count(at.key()) == 1));
    }
  }

  Input& in_;
  Map map_;
  Model model_;
  Halvo::U32 generation_ = 1;
  std::optional<typename Map::iterator> held_;
};

template <class K, class V = String, class Hash = std::hash<K>>
void hashMap(Input& in) {
  HashMapRun<K, V, Hash>(in).run();
}

// --- RQueue

void queue(Input& in) {
  using Queue = Halvo::RQueue<String, ItemTag>;
  auto const first = in.oddNumber<std::uint32_t>();
  Queue queue(first);
  std::deque<std::string> model;
  // Walks the elements that were there when it was made.
  Queue::const_iterator held;
  bool isHeld = false;
  std::deque<std::string> toCome;
  std::size_t before = 0;  // elements in front of its element
  unsigned budget = 60000;
  while (!in.empty() && budget != 0) {
    --budget;
    switch (in.below(9)) {
      case 0:
      case 1: {
        String const text(in.text(in.below(80)));
        queue.enq(text);
        model.push_back(text.str());
        break;
      }
      case 2: {
        unsigned const count = std::min(unsigned{in.number<std::uint16_t>()} % 20000, budget);
        budget -= count;
        for (unsigned i = 0; i < count; ++i) {
          queue.enq(String("x"));
          model.emplace_back("x");
        }
        break;
      }
      case 3: {
        unsigned const count = in.flag() ? 1U : in.number<std::uint16_t>() % 9000U;
        for (unsigned i = 0; i < count; ++i) {
          bool const isThere = !model.empty();
          // The iterator must not be used once its element has gone.
          if (before == 0 && !toCome.empty()) isHeld = false;
          if (before != 0) --before;
          FUZZ_CHECK_TEXT(queue.deq(), isThere ? model.front() : "");
          if (!isThere) break;
          model.pop_front();
        }
        break;
      }
      case 4:
        // Enqueue an element of the queue itself.
        if (!model.empty()) {
          queue.enq(in.flag() ? *queue.frontPeek() : *queue.backPeek());
          std::string const back = queue.back().str();
          FUZZ_CHECK(back == model.front() || back == model.back());
          model.push_back(back);
        }
        break;
      case 5:
        isHeld = false;
        queue.delAll();
        model.clear();
        FUZZ_CHECK(queue.firstBlock() == nullptr);
        break;
      case 6: {
        Queue other(std::move(queue));
        FUZZ_CHECK(queue.empty() && queue.frontPeek() == nullptr);
        if (in.flag()) queue.enq("dropped");
        if (in.flag()) {
          queue = std::move(other);
        } else {
          queue.swap(other);
        }
        break;
      }
      case 7:
        held = queue.begin();
        isHeld = true;
        toCome = model;
        before = 0;
        FUZZ_CHECK(held.left() == model.size());
        break;
      default:
        if (!isHeld) break;
        for (unsigned count = in.u8(); count != 0 && !toCome.empty(); --count) {
          FUZZ_CHECK(held.left() == toCome.size() && held != queue.end());
          FUZZ_CHECK_TEXT(*held, toCome.front());
          ++held;
          toCome.pop_front();
          ++before;
        }
        FUZZ_CHECK((held == queue.end()) == toCome.empty());
        break;
    }
    FUZZ_CHECK(queue.size() == model.size() && queue.empty() == model.empty());
    FUZZ_CHECK_TEXT(queue.front(), model.empty() ? "" : model.front());
    FUZZ_CHECK_TEXT(queue.back(), model.empty() ? "" : model.back());
    if (!model.empty()) {
      const auto* const head = queue.firstBlock();
      FUZZ_CHECK(head->capacity() >= 4 && head->capacity() <= 8192);
      FUZZ_CHECK(head->firstIndex() < head->capacity());
    }
  }
  auto at = queue.begin();
  for (std::string const& text : model) {
    FUZZ_CHECK_TEXT(*at, text);
    ++at;
  }
  FUZZ_CHECK(at == queue.end());
}

// --- String

void checkSame(const String& text, const std::string& model) {
  FUZZ_CHECK_TEXT(text, model);
  FUZZ_CHECK(text.size() == model.size() && text.capacity() >= text.size());
  FUZZ_CHECK(text.c_str()[text.size()] == '\0');
  FUZZ_CHECK(text.capacity() >= String::inlineCapacity);
  // These bytes may always be read. A sanitizer reports it if they may not.
  char readable[String::readableBytes];
  std::memcpy(readable, text.data(), sizeof readable);
  FUZZ_CHECK(readable[0] == text.data()[0]);
}

void string(Input& in) {
  String text[2];
  std::string model[2];
  for (unsigned step = 0; !in.empty() && step < 500; ++step) {
    unsigned const which = in.below(2);
    String& s = text[which];
    std::string& m = model[which];
    std::string_view const part =
        m.empty() ? std::string_view()
                  : std::string_view(m).substr(in.u8() % m.size()).substr(0, in.u8());
    std::size_t const from = m.empty() ? 0 : static_cast<std::size_t>(part.data() - m.data());
    switch (in.below(22)) {
      case 0: {
        std::string_view const more = in.shortText();
        s.append(more);
        m += more;
        break;
      }
      case 1:
        // A part of the string itself.
        s.append(s.view().substr(from, part.size()));
        m += std::string(part);
        break;
      case 2:
        s.assign(s.view().substr(from, part.size()));
        m = std::string(part);
        break;
      case 3: {
        char const c = static_cast<char>(in.u8());
        s.push_back(c);
        m.push_back(c);
        break;
      }
      case 4:
        if (m.empty()) break;
        s.pop_back();
        m.pop_back();
        break;
      case 5: {
        std::size_t const size = in.number<std::uint16_t>() % 300U;
        char const fill = static_cast<char>(in.u8());
        s.resize(size, fill);
        m.resize(size, fill);
        break;
      }
      case 6:
        s.reserve(in.number<std::uint16_t>() % 500U);
        break;
      case 7:
        s.shrinkToFit();
        break;
      case 8:
        s.clear();
        m.clear();
        break;
      case 9: {
        std::size_t const count = m.empty() ? 0 : in.u8() % (m.size() + 1);
        s.shrinkBy(count);
        m.resize(m.size() - count);
        break;
      }
      case 10:
        s = text[1 - which];
        m = model[1 - which];
        break;
      case 11:
        s = std::move(text[1 - which]);
        m = std::move(model[1 - which]);
        model[1 - which].clear();
        break;
      case 12:
        swap(text[0], text[1]);
        std::swap(model[0], model[1]);
        break;
      case 13:
        s = s.substr(from, part.size());
        m = std::string(part);
        break;
      case 14: {
        std::string_view const needle = in.flag() ? part : in.shortText();
        std::size_t const begin = in.u8();
        FUZZ_CHECK(s.find(needle, begin) == m.find(needle, begin));
        FUZZ_CHECK(s.startsWith(needle) == (m.compare(0, needle.size(), needle) == 0));
        FUZZ_CHECK(s.endsWith(needle) == std::string_view(m).ends_with(needle));
        char const c = static_cast<char>(in.u8());
        FUZZ_CHECK(s.find(c, begin) == m.find(c, begin) && s.rfind(c) == m.rfind(c));
        break;
      }
      case 15: {
        std::size_t const count = in.u8();
        s.append(count, 'z');
        m.append(count, 'z');
        break;
      }
      case 16:
        s = s + text[1 - which];
        m = m + model[1 - which];
        break;
      case 17:
        s += s;
        m += std::string(m);
        if (m.size() > 4000) {
          s.resize(10);
          m.resize(10);
        }
        break;
      case 18: {
        std::string const more(in.shortText());
        s = more.c_str();
        m = more.c_str();
        s += more.c_str();
        m += more.c_str();
        break;
      }
      case 19: {
        String copy(s);
        String const moved(std::move(copy));
        checkSame(moved, m);
        FUZZ_CHECK(copy.empty());  // NOLINT(bugprone-use-after-move): the class promises it
        copy = "again";
        FUZZ_CHECK_TEXT(copy, "again");
        break;
      }
      case 20:
        // The order goes by the contents alone, as unsigned bytes.
        FUZZ_CHECK((text[0] <=> text[1]) ==
                   (std::string_view(model[0]) <=> std::string_view(model[1])));
        FUZZ_CHECK((text[0] == text[1]) == (model[0] == model[1]));
        FUZZ_CHECK(std::hash<String>{}(s) == std::hash<String>{}(String(m)));
        break;
      default:
        try {
          FUZZ_CHECK_TEXT(s.substr(from + m.size(), 3), from == 0 ? "" : "?");
        } catch (const std::out_of_range&) {
          FUZZ_CHECK(from > 0);
        }
        break;
    }
    checkSame(text[0], model[0]);
    checkSame(text[1], model[1]);
  }
}

}  // namespace

constinit Zel::AllocationTracker velmorfuzz::ItemTag::memAllocationTracker_{"velmorfuzz::ItemTag"};

FUZZ_TARGET(containers) {
  static constexpr velmorfuzz::Run parts[] = {
      hashMap<Halvo::U8>,
      hashMap<Halvo::U16>,
      hashMap<Halvo::U32, String, PoorHash>,
      hashMap<velmorfuzz::String>,
      velmorfuzz::orderedMapOfNumbers,
      velmorfuzz::orderedMapOfTexts,
      velmorfuzz::orderedSet,
      queue,
      string,
      hashMap<Halvo::U8, ShortText>,
  };
  parts[in.below(std::size(parts))](in);
}
