#include "sources/SonicRow.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "io/SafeText.h"
#include "snapshot/JsonParser.h"
#include "sources/NumberText.h"

namespace tcamshow {
namespace {

constexpr std::string_view attributeStart = "SAI_ACL_ENTRY_ATTR_";
constexpr std::string_view fieldStart = "FIELD_";
constexpr std::string_view actionStart = "ACTION_";
constexpr std::string_view actionEnd = "_ACTION";
constexpr std::string_view rangeTypeStart = "SAI_ACL_RANGE_TYPE_";
constexpr std::string_view disabled = "disabled";

struct NamedField {
  std::string_view name;
  SonicField field;
};

template <std::size_t count>
SonicField fieldByName(const NamedField (&fields)[count], std::string_view name) noexcept {
  for (const NamedField& each : fields) {
    if (each.name == name) return each.field;
  }
  return SonicField::none;
}

constexpr NamedField asicFields[] = {
    {"SRC_IP", SonicField::sourceIp},
    {"DST_IP", SonicField::destinationIp},
    {"IP_PROTOCOL", SonicField::protocol},
    {"L4_SRC_PORT", SonicField::sourcePort},
    {"L4_DST_PORT", SonicField::destinationPort},
    {"TCP_FLAGS", SonicField::tcpFlags},
    {"SRC_IPV6", SonicField::sourceIp6},
    {"DST_IPV6", SonicField::destinationIp6},
    {"IPV6_NEXT_HEADER", SonicField::nextHeader},
    {"ACL_IP_TYPE", SonicField::ipType},
    {"ETHER_TYPE", SonicField::etherType},
    {"OUTER_VLAN_ID", SonicField::vlan},
    {"DSCP", SonicField::dscp},
    {"ICMP_TYPE", SonicField::icmpType},
    {"ICMP_CODE", SonicField::icmpCode},
    {"ICMPV6_TYPE", SonicField::icmp6Type},
    {"ICMPV6_CODE", SonicField::icmp6Code},
    {"SRC_MAC", SonicField::sourceMac},
    {"DST_MAC", SonicField::destinationMac},
    {"ACL_IP_FRAG", SonicField::fragment},
    {"TOS", SonicField::tos},
};

constexpr NamedField configFields[] = {
    {"SRC_IP", SonicField::sourceIp},
    {"DST_IP", SonicField::destinationIp},
    {"IP_PROTOCOL", SonicField::protocol},
    {"L4_SRC_PORT", SonicField::sourcePort},
    {"L4_DST_PORT", SonicField::destinationPort},
    {"TCP_FLAGS", SonicField::tcpFlags},
    {"SRC_IPV6", SonicField::sourceIp6},
    {"DST_IPV6", SonicField::destinationIp6},
    {"NEXT_HEADER", SonicField::nextHeader},
    {"IP_TYPE", SonicField::ipType},
    {"ETHER_TYPE", SonicField::etherType},
    {"VLAN_ID", SonicField::vlan},
    {"DSCP", SonicField::dscp},
    {"ICMP_TYPE", SonicField::icmpType},
    {"ICMP_CODE", SonicField::icmpCode},
    {"ICMPV6_TYPE", SonicField::icmp6Type},
    {"ICMPV6_CODE", SonicField::icmp6Code},
    {"SRC_MAC", SonicField::sourceMac},
    {"DST_MAC", SonicField::destinationMac},
};

struct NamedRange {
  std::string_view name;
  SonicRange range;
};
constexpr NamedRange rangeKinds[] = {
    {"L4_SRC_PORT_RANGE", SonicRange::sourcePort},
    {"L4_DST_PORT_RANGE", SonicRange::destinationPort},
    {"IP_LENGTH", SonicRange::ipLength},
};

SonicRange rangeByName(std::string_view name) noexcept {
  for (const NamedRange& each : rangeKinds) {
    if (each.name == name) return each.range;
  }
  return SonicRange::other;
}

/// The two numbers on both sides of a separator.
bool readBounds(std::string_view text, char separator, std::uint64_t largest, std::uint32_t& low,
                std::uint32_t& high) noexcept {
  std::size_t const at = text.find(separator);
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  if (at == text.npos || !numberFromText(text.substr(0, at), largest, first) ||
      !numberFromText(text.substr(at + 1), largest, last)) {
    return false;
  }
  low = static_cast<std::uint32_t>(first);
  high = static_cast<std::uint32_t>(last);
  return true;
}

SonicValue split(std::string_view name, std::string_view text, std::string_view separator) {
  SonicValue value{.name = name, .text = text, .value = text, .mask = {}};
  std::size_t const at = text.find(separator);
  if (at == text.npos) return value;
  value.value = text.substr(0, at);
  value.mask = text.substr(at + separator.size());
  value.hasMask = true;
  return value;
}

}  // namespace

// --- actions

void SonicAction::clear() noexcept {
  packet_.clear();
  others_.clear();
  size_ = 0;
  text_.clear();
}

void SonicAction::add(std::string_view name, std::string_view text) {
  constexpr std::string_view packetStart = "SAI_PACKET_ACTION_";
  size_ += name.size() + text.size() + 2;
  if (isTooLong()) return;
  if (name != "PACKET") {
    (others_.emplace_back(name) += '=') += text;
    return;
  }
  if (text.starts_with(packetStart)) text.remove_prefix(packetStart.size());
  packet_ = text == "FORWARD" || text == "ACCEPT" ? "permit" : text == "DROP" ? "deny" : text;
}

std::string_view SonicAction::text() {
  std::sort(others_.begin(), others_.end());
  text_ = packet_;
  for (const std::string& other : others_) {
    if (!text_.empty()) text_ += ' ';
    text_ += other;
  }
  return text_;
}

// --- ranges

SonicRangeObject readRangeObject(SonicDatabase& database, std::string_view key,
                                 std::string_view row) {
  SonicRangeObject object{0, 0, 0, SonicRange::other, {}};
  bool hasLimit = false;
  bool hasType = false;
  database.eachField(row, [&](std::string_view name, const JsonField& field) {
    if (name == "SAI_ACL_RANGE_ATTR_LIMIT") {
      hasLimit = readBounds(field.text, ',', UINT32_MAX, object.low, object.high);
      if (!hasLimit) {
        database.fail(field.begin, key,
                      std::string(name) + ": " + inQuotes(field.text) +
                          " is not two numbers with a comma between them");
      }
    } else if (name == "SAI_ACL_RANGE_ATTR_TYPE") {
      if (!field.isText || !field.text.starts_with(rangeTypeStart)) {
        database.fail(field.begin, key,
                      std::string(name) + ": " + inQuotes(field.text) + " is not a type of range");
      }
      std::string_view const kind = field.text.substr(rangeTypeStart.size());
      object.range = rangeByName(kind);
      // The text of a field is valid for the row alone.
      object.name = object.range == SonicRange::other ? database.keep(kind) : std::string_view();
      hasType = true;
    }
  });
  if (!hasLimit) database.fail(row.data(), key, "SAI_ACL_RANGE_ATTR_LIMIT is missing");
  if (!hasType) database.fail(row.data(), key, "SAI_ACL_RANGE_ATTR_TYPE is missing");
  return object;
}

// --- entries of the ASIC

AsicEntryReader::Ids AsicEntryReader::read(std::string_view key, std::string_view row,
                                           Entry& entry) {
  key_ = key;
  match_.clear();
  action_.clear();
  Ids ids;
  bool hasTable = false;
  bool hasPriority = false;
  database_.eachField(row, [&](std::string_view name, const JsonField& field) {
    if (name == "NULL") return;  // a row without fields has this one
    std::string_view attribute = name;
    if (!attribute.starts_with(attributeStart)) {
      database_.fail(field.begin, key_, inQuotes(name) + " is not an attribute of an ACL entry");
    }
    attribute.remove_prefix(attributeStart.size());
    if (!field.isText) fail(field, attribute, "a text");
    if (attribute == "TABLE_ID") {
      if (hasTable) database_.fail(field.begin, key_, "TABLE_ID stands twice");
      hasTable = objectIdFromText(field.text, ids.table);
      if (!hasTable) fail(field, attribute, "an object id");
    } else if (attribute == "PRIORITY") {
      if (hasPriority) database_.fail(field.begin, key_, "PRIORITY stands twice");
      std::uint64_t priority = 0;
      hasPriority = numberFromText(field.text, UINT32_MAX, priority);
      if (!hasPriority) fail(field, attribute, "a number from 0 to 4294967295");
      entry.priority = static_cast<std::uint32_t>(priority);
    } else if (attribute == "ADMIN_STATE") {
      if (field.text != "true" && field.text != "false") fail(field, attribute, "true or false");
      if (field.text == "false") entry.givenState = EntryState::pending;
    } else if (attribute.starts_with(actionStart)) {
      attribute.remove_prefix(actionStart.size());
      if (field.text == disabled) return;
      if (attribute == "COUNTER") {
        if (!objectIdFromText(field.text, ids.counter)) fail(field, name, "an object id");
      } else {
        action_.add(attribute == "PACKET_ACTION" ? "PACKET" : attribute, field.text);
      }
    } else if (attribute != "LABEL" && field.text != disabled) {
      readField(attribute, field);
    }
  });
  if (!hasTable) database_.fail(row.data(), key_, "TABLE_ID is missing");
  match_.fill(entry);
  entry.action = action_.text();
  if (match_.isTooLong() || action_.isTooLong()) {
    database_.fail(row.data(), key_, "the entry's texts are longer than 32 KiB");
  }
  if (findControl(entry.otherMatch) != std::string_view::npos ||
      findControl(entry.action) != std::string_view::npos) {
    database_.fail(row.data(), key_, "the row holds a control character");
  }
  if (entry.givenState) {
    entry.reason = disabled;
  } else {
    entry.givenState = EntryState::programmed;
  }
  return ids;
}

void AsicEntryReader::readField(std::string_view attribute, const JsonField& field) {
  std::string_view name = attribute;
  if (name.starts_with(fieldStart)) name.remove_prefix(fieldStart.size());
  if (name == "ACL_RANGE_TYPE") return readRanges(name, field);
  bool const isField = name.size() != attribute.size();
  SonicField const known = isField ? fieldByName(asicFields, name) : SonicField::none;
  if (!match_.add(known, split(name, field.text, "&mask:"))) {
    fail(field, attribute, "a value of this field and its mask");
  }
}

void AsicEntryReader::readRanges(std::string_view name, const JsonField& field) {
  // How many, then the objects: "2:oid:0xa1,oid:0xa2"; "0:null".
  std::string_view rest = field.text;
  std::size_t const colon = rest.find(':');
  std::uint64_t count = 0;
  if (colon == rest.npos || !numberFromText(rest.substr(0, colon), UINT32_MAX, count)) {
    fail(field, name, "a list of objects");
  }
  rest.remove_prefix(colon + 1);
  if (count == 0) return;
  for (std::uint64_t read = 1;; ++read) {
    std::size_t const comma = rest.find(',');
    std::string_view const text = rest.substr(0, comma);
    std::uint64_t id = 0;
    if (!objectIdFromText(text, id)) fail(field, name, "a list of objects");
    auto const found = std::lower_bound(
        ranges_.begin(), ranges_.end(), id,
        [](const SonicRangeObject& each, std::uint64_t wanted) { return each.id < wanted; });
    if (found == ranges_.end() || found->id != id) {
      match_.addOther(name, text);
    } else {
      match_.addRange(found->range, found->low, found->high, found->name);
    }
    if (comma == rest.npos) {
      if (read != count) fail(field, name, "as many objects as it says");
      return;
    }
    rest.remove_prefix(comma + 1);
  }
}

void AsicEntryReader::fail(const JsonField& field, std::string_view name,
                           std::string_view expected) {
  database_.fail(field.begin, key_,
                 shownName(name) + ": " + (field.isText ? inQuotes(field.text) : "a collection") +
                     " is not " + std::string(expected));
}

// --- rules of the configuration

bool ConfigRuleReader::read(std::string_view key, std::string_view row, Entry& entry) {
  match_.clear();
  action_.clear();
  bool isGood = true;
  database_.eachField(row, [&](std::string_view given, const JsonField& field) {
    // Names come in both cases, with blanks behind, and with the sign of a list.
    while (given.ends_with(' ') || given.ends_with('@')) given.remove_suffix(1);
    name_ = given;
    std::transform(name_.begin(), name_.end(), name_.begin(), [](char c) {
      return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    std::string_view text = field.text;
    if (!field.isText) {
      list_ = text;
      std::erase_if(list_, [](char c) { return c == '\n' || c == '\r' || c == '\t' || c == ' '; });
      text = list_;
    }
    std::string_view name = name_;
    if (name == "PRIORITY") {
      std::uint64_t priority = 0;
      isGood = numberFromText(text, UINT32_MAX, priority) && isGood;
      entry.priority = static_cast<std::uint32_t>(priority);
    } else if (name.ends_with(actionEnd)) {
      name.remove_suffix(actionEnd.size());
      action_.add(name, text);
    } else if (name != "NULL") {
      readField(name, text);
    }
  });
  match_.fill(entry);
  entry.action = action_.text();
  if (match_.isTooLong() || action_.isTooLong()) {
    database_.fail(row.data(), key, "the rule's texts are longer than 32 KiB");
  }
  if (findControl(entry.otherMatch) != std::string_view::npos ||
      findControl(entry.action) != std::string_view::npos) {
    database_.fail(row.data(), key, "the row holds a control character");
  }
  return isGood;
}

void ConfigRuleReader::readField(std::string_view name, std::string_view text) {
  SonicRange const range = rangeByName(name);
  if (range != SonicRange::other) {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
    if (readBounds(text, '-', UINT16_MAX, low, high)) {
      match_.addRange(range, low, high, name);
    } else {
      match_.addOther(name, text);
    }
    return;
  }
  if (!match_.add(fieldByName(configFields, name), split(name, text, "/"))) {
    match_.addOther(name, text);
  }
}

}  // namespace tcamshow
