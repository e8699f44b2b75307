#include "views/EntryJson.h"

#include <string_view>
#include <tuple>
#include <vector>

#include "snapshot/Members.h"

namespace tcamshow {

namespace {

using pravo::Printer;
using VelmorTcam::VelmorTcamEntryShadow;

/// Both words of a record, by whatever way its kind is written.
void printValueAndMask(const VelmorTcam::QualifierData& data, QualifierKind kind,
                       Printer& printer) {
  switch (kind) {
    case QualifierKind::word: {
      VelmorTcam::Qualifier const record = data.qual();
      printer.attribute(valueName, record.value());
      printer.attribute(maskName, record.mask());
      return;
    }
    case QualifierKind::ip: {
      VelmorTcam::Qualifier const record = data.qual();
      printer.attribute(valueName,
                        Trelix::IpAddr::fromHostOrder(record.value()).stringValue().view());
      printer.attribute(maskName,
                        Trelix::IpAddr::fromHostOrder(record.mask()).stringValue().view());
      return;
    }
    case QualifierKind::ip6: {
      VelmorTcam::Ip6AddrQualifier const record = data.ip6Qual();
      printer.attribute(valueName, record.address().stringValue().view());
      printer.attribute(maskName, record.mask().stringValue().view());
      return;
    }
    case QualifierKind::mac: {
      VelmorTcam::EthAddrQualifier const record = data.ethQual();
      printer.attribute(valueName, record.address().stringValue().view());
      printer.attribute(maskName, record.mask().stringValue().view());
      return;
    }
  }
}

// The shadow's collections have no order of their own; a table's lines are to be comparable.

void printRecords(const std::vector<Qualifier>&, const VelmorTcamEntryShadow& shadow,
                  Printer& printer) {
  for (const QualifierName& known : qualifierList()) {
    auto const type = static_cast<VelmorTcam::QualifierType>(known.type);
    auto const status = shadow.qualifier(type);
    auto const data = status ? status->hwQualData(type) : nullptr;
    if (!data) continue;
    printer.objectBegin(known.name);
    printValueAndMask(*data, known.kind, printer);
    printer.attribute(std::get<0>(qualifierMembers).name, +shadow.getHwQualStatus(type, type));
    printer.objectEnd();
  }
}

void printRecords(const std::vector<RangeChecker>&, const VelmorTcamEntryShadow& shadow,
                  Printer& printer) {
  auto const& [low, high, status] = rangeCheckerMembers;
  for (const RangeCheckerName& known : rangeCheckerList()) {
    auto const range = shadow.rangeChecker(static_cast<VelmorTcam::RangeCheckerType>(known.type));
    if (!range) continue;
    printer.objectBegin(known.name);
    printer.attribute(low.name, range->low());
    printer.attribute(high.name, range->high());
    printer.attribute(status.name, +range->status());
    printer.objectEnd();
  }
}

// --- members, each by its type in the model

template <class Value>
void printMember(std::string_view name, const Value& value, const VelmorTcamEntryShadow&,
                 Printer& printer) {
  printer.attribute(name, value);
}
void printMember(std::string_view name, Stage stage, const VelmorTcamEntryShadow&,
                 Printer& printer) {
  printer.attribute(name, stageName(stage).view());
}
void printMember(std::string_view name, Table table, const VelmorTcamEntryShadow&,
                 Printer& printer) {
  printer.attribute(name, tableName(table));
}
void printMember(std::string_view name, EntryState state, const VelmorTcamEntryShadow&,
                 Printer& printer) {
  printer.attribute(name, stateName(state));
}
template <class Value>
void printMember(std::string_view name, const std::optional<Value>& value,
                 const VelmorTcamEntryShadow& shadow, Printer& printer) {
  printMember(name, *value, shadow, printer);
}
template <class Record>
void printMember(std::string_view name, const std::vector<Record>& records,
                 const VelmorTcamEntryShadow& shadow, Printer& printer) {
  printer.objectBegin(name);
  printRecords(records, shadow, printer);
  printer.objectEnd();
}

void printSince(const SinceFacts& since, Printer& printer) {
  if (since.hits) printer.attribute("hitsSince", *since.hits);
  if (since.bytes) printer.attribute("bytesSince", *since.bytes);
  if (since.mark != SinceMark::none) printer.attribute("sinceMark", sinceMarkName(since.mark));
}

}  // namespace

void printTableStart(Table table, Printer& printer) {
  printer.objectBegin();
  printer.attribute("type", "table");
  printer.attribute("schema", jsonSchemaVersion);
  printer.attribute("table", tableName(table));
  printer.objectEnd();
}

void printEntry(const Entry& entry, const VelmorTcamEntryShadow& shadow, Printer& printer) {
  printer.objectBegin();
  printer.attribute("type", lineKindNames[static_cast<std::size_t>(LineKind::entry)]);
  forEachMember<Entry>([&](auto const& member, auto) {
    auto const& value = memberOf(entry, member);
    if (member.since == 1 || !isUsual(value, usualValue(member))) {
      printMember(member.name, value, shadow, printer);
    }
  });
  if (entry.since) printSince(*entry.since, printer);
  printer.objectEnd();
}

}  // namespace tcamshow
