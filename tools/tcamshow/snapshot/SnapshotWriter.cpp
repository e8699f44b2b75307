#include "snapshot/SnapshotWriter.h"

#include <string_view>

#include "io/JsonText.h"
#include "snapshot/AddressText.h"

namespace tcamshow {
namespace {

void appendName(std::string& out, std::string_view name) {
  out += ",\"";
  out += name;
  out += "\":";
}

template <class Number>
void appendMember(std::string& out, std::string_view name, Number value, Number usual) {
  if (value == usual) return;
  appendName(out, name);
  appendNumber(out, value);
}

void appendMember(std::string& out, std::string_view name, std::string_view text) {
  if (text.empty()) return;
  appendName(out, name);
  appendJsonString(out, text);
}

void appendPlace(std::string& out, const Place& place) {
  Place const usual;
  if (place.stage != usual.stage) appendMember(out, "stage", stageName(place.stage).view());
  appendMember(out, "pipe", place.pipe, usual.pipe);
  appendMember(out, "groupPriority", place.groupPriority, usual.groupPriority);
  appendMember(out, "groupId", place.groupId, usual.groupId);
  appendMember(out, "copyId", place.copyId, usual.copyId);
}

void appendValues(std::string& out, const Qualifier& qualifier) {
  out += "{\"value\":";
  switch (qualifier.kind) {
    case QualifierKind::word:
      appendNumber(out, qualifier.value);
      out += ",\"mask\":";
      appendNumber(out, qualifier.mask);
      return;
    case QualifierKind::ip:
      out += '"';
      appendIp(out, qualifier.value);
      out += R"(","mask":")";
      appendIp(out, qualifier.mask);
      break;
    case QualifierKind::ip6:
      out += '"';
      appendIp6(out, qualifier.ip6.value);
      out += R"(","mask":")";
      appendIp6(out, qualifier.ip6.mask);
      break;
    case QualifierKind::mac:
      out += '"';
      appendMac(out, qualifier.mac.value);
      out += R"(","mask":")";
      appendMac(out, qualifier.mac.mask);
      break;
  }
  out += '"';
}

/// Appends what follows a record's own members, its end included.
void appendStatus(std::string& out, std::uint8_t status) {
  appendMember(out, "status", status, statusProgrammed);
  out += '}';
}

}  // namespace

void appendLine(std::string& out, const Header& header) {
  out += R"({"type":"snapshot","version":1)";
  appendMember(out, "numPipes", header.numPipes, Header().numPipes);
  out += "}\n";
}

void appendLine(std::string& out, const GroupLine& group) {
  out += R"({"type":"group")";
  appendPlace(out, group.place);
  appendMember(out, "name", group.name);
  appendMember(out, "availableEntries", group.availableEntries, 0U);
  appendMember(out, "freeEntries", group.freeEntries, 0U);
  out += "}\n";
}

void appendLine(std::string& out, const EntryLine& entry) {
  out += R"({"type":"entry")";
  appendPlace(out, entry.place);
  appendMember(out, "table", tableName(entry.table));
  appendName(out, "shadowId");
  appendNumber(out, entry.shadowId);
  appendName(out, "sequence");
  appendNumber(out, entry.sequence);
  appendName(out, "priority");
  appendNumber(out, entry.priority);
  appendMember(out, "description", entry.description);
  appendMember(out, "action", entry.action);
  appendMember(out, "hits", entry.hits, std::uint64_t{0});
  appendMember(out, "counterStatus", entry.counterStatus, std::uint8_t{0});
  appendMember(out, "featurePriority", entry.featurePriority, 0U);
  appendMember(out, "feature", entry.feature);
  if (!entry.qualifiers.empty()) {
    appendName(out, "qualifiers");
    char before = '{';
    for (const Qualifier& qualifier : entry.qualifiers) {
      out += before;
      before = ',';
      appendJsonString(out, qualifierByType(qualifier.type)->name);
      out += ':';
      appendValues(out, qualifier);
      appendStatus(out, qualifier.status);
    }
    out += '}';
  }
  if (!entry.rangeCheckers.empty()) {
    appendName(out, "rangeCheckers");
    char before = '{';
    for (const RangeChecker& range : entry.rangeCheckers) {
      out += before;
      before = ',';
      appendJsonString(out, rangeCheckerByType(range.type)->name);
      out += ":{\"low\":";
      appendNumber(out, range.low);
      out += ",\"high\":";
      appendNumber(out, range.high);
      appendStatus(out, range.status);
    }
    out += '}';
  }
  out += "}\n";
}

}  // namespace tcamshow
