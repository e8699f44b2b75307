#include "sources/Openconfig.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "io/KeyedHash.h"
#include "io/SafeText.h"
#include "sources/OpenconfigEntry.h"

namespace tcamshow {
namespace {

constexpr WarningKind notAnAcl;

/// One ACL; its entries stand behind those of the ACLs before it.
struct Acl {
  std::uint32_t name = 0;  ///< where in the document it stands
  std::uint32_t nameSize = 0;
  std::uint32_t value = 0;  ///< likewise, for messages
  std::uint32_t entries : 28 = 0;
  Family declared : 2 = Family::unknown;  ///< as its own type says
  Family usual : 2 = Family::ip;          ///< of its entries that show none
};
// The least that an ACL takes in a document is 7 bytes.
static_assert(sizeof(Acl) <= 16);

/// The first index from 0 to `count` whose item is the same as an earlier one; `count` where there
/// is none. `hashOf(i)` is a keyed hash of the item, or the item itself. Takes n log n, whatever
/// the items are, and 8 bytes for each.
template <class HashOf, class AreSame>
std::size_t firstRepeated(std::size_t count, const HashOf& hashOf, const AreSame& areSame) {
  struct Item {
    std::uint32_t hash;
    std::uint32_t index;
  };
  std::vector<Item> items(count);
  for (std::uint32_t i = 0; i != count; ++i) items[i] = {static_cast<std::uint32_t>(hashOf(i)), i};
  std::sort(items.begin(), items.end(), [](const Item& a, const Item& b) {
    return a.hash != b.hash ? a.hash < b.hash : a.index < b.index;
  });
  std::size_t first = count;
  for (auto item = items.begin(); item != items.end(); ++item) {
    for (auto earlier = item; earlier != items.begin() && (--earlier)->hash == item->hash;) {
      if (!areSame(earlier->index, item->index)) continue;
      first = std::min<std::size_t>(first, item->index);
      break;  // all items may be the same
    }
  }
  return first;
}

class OpenconfigSource final : public Source {
 public:
  OpenconfigSource(InputFile file, Complaints& complaints)
      : Source(complaints), document_(std::move(file), complaints) {
    readDocument();
    document_.json().visited();
    checkNames();
  }

  const std::string& fileName() const noexcept override { return document_.json().fileName(); }
  // Everything was checked before it is given, so no message needs a line.
  std::uint64_t lineNumber() const noexcept override { return 0; }

  Item next() override {
    if (entriesLeft_ != 0) {
      --entriesLeft_;
      const Acl& acl = acls_[aclsGiven_ - 1];
      const AclEntry& from = entries_[entriesGiven_++];
      entry_.clear();
      fillEntry(from, from.family == Family::unknown ? acl.usual : from.family, acl.declared,
                entry_, description_, otherMatch_);
      entry_.place.groupId = static_cast<std::uint32_t>(aclsGiven_);
      entry_.shadowId = entriesGiven_;
      entry_.feature = nameOf(acl);
      return Item::entry;
    }
    if (aclsGiven_ == acls_.size()) return Item::end;
    const Acl& acl = acls_[aclsGiven_++];
    entriesLeft_ = acl.entries;
    group_ = Group();
    group_.place.groupId = static_cast<std::uint32_t>(aclsGiven_);
    group_.name = nameOf(acl);
    return Item::group;
  }

 private:
  /// A name and where its value stands.
  struct Named {
    std::string_view name;
    const char* at;
  };

  void readDocument() {
    JsonValue root = document_.json().root();
    document_.only(root, "", "acl", [&](const std::string& path, JsonValue& acl) {
      document_.only(acl, path, "acl-sets", [&](const std::string& setsPath, JsonValue& sets) {
        document_.only(sets, setsPath, "acl-set",
                       [&](const std::string& setPath, JsonValue& set) { readAcls(setPath, set); });
      });
    });
  }

  void readAcls(const std::string& path, JsonValue& set) {
    aclSetPath_ = path;
    set.eachMember([&](std::string_view name, JsonValue& value) {
      document_.aclIs({});
      if (!value.isObject()) {
        document_.warn(notAnAcl, value, path + "." + std::string(name),
                       ": " + value.shown() + " is not an ACL, and is left out");
        return;
      }
      readAcl(name, value);
    });
    document_.aclIs({});
  }

  std::string_view nameOf(const Acl& acl) const {
    return {document_.json().at(acl.name), acl.nameSize};
  }

  void checkNames() const {
    std::size_t const repeated = firstRepeated(
        acls_.size(), [&](std::size_t i) { return keyedHash(nameOf(acls_[i])); },
        [&](std::size_t a, std::size_t b) { return nameOf(acls_[a]) == nameOf(acls_[b]); });
    if (repeated == acls_.size()) return;
    const Acl& acl = acls_[repeated];
    document_.fail(document_.json().at(acl.value),
                   "member \"" + aclSetPath_ + "." + shownName(nameOf(acl)) + "\" stands twice");
  }

  void readAcl(std::string_view name, JsonValue& value) {
    static constexpr std::string_view names[] = {"config", "acl-entries"};
    document_.aclIs(name);
    document_.checkPrintable(value, name, "name");
    Acl acl;
    acl.name = document_.json().offsetOf(name.data());
    acl.nameSize = static_cast<std::uint32_t>(name.size());
    acl.value = document_.json().offsetOf(value.begin());
    std::size_t const begin = entries_.size();
    shown_[0] = shown_[1] = Shown();
    document_.eachKnown(value, "", names, [&](std::size_t index, auto& path, JsonValue& member) {
      if (index == 0) {
        document_.object(member, path);
        acl.declared = readConfig(name, path, member);
      } else {
        document_.only(member, path, "acl-entry",
                       [&](const std::string&, JsonValue& values) { readEntries(values, begin); });
      }
    });
    document_.entryIs({});
    acl.entries = static_cast<std::uint32_t>(entries_.size() - begin) & 0xFFFFFFF;
    acl.usual = usualFamily(acl.declared);
    acls_.push_back(acl);
  }

  Family readConfig(std::string_view aclName, const std::string& path, JsonValue& config) const {
    static constexpr std::string_view names[] = {"name", "type", "description"};
    Family declared = Family::unknown;
    document_.eachKnown(config, path, names, [&](std::size_t index, auto& member, auto& value) {
      std::string_view const text = document_.printable(value, member);
      if (index == 0 && text != aclName) {
        document_.failMember(value, member, ": " + inQuotes(text) + " is not the ACL's name");
      }
      if (index != 1) return;
      if (text == "ACL_IPV4") {
        declared = Family::ip;
      } else if (text == "ACL_IPV6") {
        declared = Family::ip6;
      } else if (text != "ACL_L2" && text != "ACL_MIXED") {
        document_.failMember(value, member, ": " + inQuotes(text) + " is not a known type");
      }
    });
    return declared;
  }

  void readEntries(JsonValue& values, std::size_t begin) {
    std::vector<Named> names;
    values.eachMember([&](std::string_view name, JsonValue& value) {
      AclEntry const entry = readAclEntry(document_, name, value);
      names.push_back({name, value.begin()});
      if (entry.family != Family::unknown) {
        Shown& shown = shown_[entry.family == Family::ip6 ? 1 : 0];
        if (shown.at == nullptr) shown = {name, value.begin()};
      }
      entries_.push_back(entry);
    });
    document_.entryIs({});
    std::size_t repeated = firstRepeated(
        names.size(), [&](std::size_t i) { return keyedHash(names[i].name); },
        [&](std::size_t a, std::size_t b) { return names[a].name == names[b].name; });
    if (repeated != names.size()) {
      document_.fail(names[repeated].at, "member \"acl-entries.acl-entry." +
                                             shownName(names[repeated].name) + "\" stands twice");
    }
    auto const sequenceOf = [&](std::size_t i) { return entries_[begin + i].sequence; };
    repeated =
        firstRepeated(names.size(), sequenceOf, [](std::size_t, std::size_t) { return true; });
    if (repeated == names.size()) return;
    document_.entryIs(names[repeated].name);
    document_.fail(names[repeated].at, "member \"config.sequence-id\": another entry has " +
                                           std::to_string(sequenceOf(repeated)) + " too");
  }

  /// The family of the entries that show none. No entry may show another than the ACL's type.
  Family usualFamily(Family declared) {
    bool const ip = shown_[0].at != nullptr;
    bool const ip6 = shown_[1].at != nullptr;
    const Shown& other = shown_[declared == Family::ip6 ? 0 : 1];
    if (declared != Family::unknown && other.at != nullptr) {
      document_.entryIs(other.name);
      document_.fail(other.at,
                     "member \"config.type\" of the ACL: it is not of the entry's family");
    }
    if (ip != ip6) return ip ? Family::ip : Family::ip6;
    return declared == Family::unknown ? Family::ip : declared;
  }

  AclDocument document_;
  std::string aclSetPath_;
  // Containers that never move what they hold: together they need no more than they show.
  std::deque<Acl> acls_;
  std::deque<AclEntry> entries_;
  std::size_t aclsGiven_ = 0;
  std::size_t entriesGiven_ = 0;
  std::uint32_t entriesLeft_ = 0;
  std::string description_;
  std::string otherMatch_;
  /// The first entry of the ACL at hand that shows IPv4, and IPv6.
  struct Shown {
    std::string_view name;
    const char* at = nullptr;
  };
  Shown shown_[2];
};

}  // namespace

std::string_view openconfigRuledOut(std::string_view start) noexcept {
  std::size_t const first = start.find_first_not_of(" \t\r\n");
  if (first == start.npos || start[first] != '{') return "it does not begin with {";
  return start.find("\"acl-sets\"") == start.npos ? R"(no "acl-sets" is near its beginning)" : "";
}

std::unique_ptr<Source> openOpenconfig(InputFile file, Complaints& complaints) {
  return std::make_unique<OpenconfigSource>(std::move(file), complaints);
}

}  // namespace tcamshow
