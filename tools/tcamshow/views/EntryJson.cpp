#include "views/EntryJson.h"

namespace tcamshow {

namespace {

using Halvo::S64;
using Halvo::U64;
using pravo::Printer;

/// Both words of a record, by whatever way its kind is written.
void printValueAndMask(const VelmorTcam::QualifierData& data, QualifierKind kind,
                       Printer& printer) {
  switch (kind) {
    case QualifierKind::word: {
      VelmorTcam::Qualifier const record = data.qual();
      printer.attribute("value", record.value());
      printer.attribute("mask", record.mask());
      return;
    }
    case QualifierKind::ip: {
      VelmorTcam::Qualifier const record = data.qual();
      printer.attribute("value",
                        Trelix::IpAddr::fromHostOrder(record.value()).stringValue().view());
      printer.attribute("mask", Trelix::IpAddr::fromHostOrder(record.mask()).stringValue().view());
      return;
    }
    case QualifierKind::ip6: {
      VelmorTcam::Ip6AddrQualifier const record = data.ip6Qual();
      printer.attribute("value", record.address().stringValue().view());
      printer.attribute("mask", record.mask().stringValue().view());
      return;
    }
    case QualifierKind::mac: {
      VelmorTcam::EthAddrQualifier const record = data.ethQual();
      printer.attribute("value", record.address().stringValue().view());
      printer.attribute("mask", record.mask().stringValue().view());
      return;
    }
  }
}

// The shadow's collections have no order of their own; a table's lines are to be comparable.

void printQualifiers(const VelmorTcam::VelmorTcamEntryShadow& shadow, Printer& printer) {
  for (const QualifierName& known : qualifierList()) {
    auto const type = static_cast<VelmorTcam::QualifierType>(known.type);
    auto const status = shadow.qualifier(type);
    auto const data = status ? status->hwQualData(type) : nullptr;
    if (!data) continue;
    printer.objectBegin(known.name);
    printValueAndMask(*data, known.kind, printer);
    printer.attribute("status", +shadow.getHwQualStatus(type, type));
    printer.objectEnd();
  }
}

void printRangeCheckers(const VelmorTcam::VelmorTcamEntryShadow& shadow, Printer& printer) {
  for (const RangeCheckerName& known : rangeCheckerList()) {
    auto const range = shadow.rangeChecker(static_cast<VelmorTcam::RangeCheckerType>(known.type));
    if (!range) continue;
    printer.objectBegin(known.name);
    printer.attribute("low", range->low());
    printer.attribute("high", range->high());
    printer.attribute("status", +range->status());
    printer.objectEnd();
  }
}

}  // namespace

void printTableStart(Table table, Printer& printer) {
  printer.objectBegin();
  printer.attribute("type", "table");
  printer.attribute("schema", jsonSchemaVersion);
  printer.attribute("table", tableName(table));
  printer.objectEnd();
}

void printEntry(const EntryLine& entry, const VelmorTcam::RequestKey& requestKey,
                const VelmorTcam::RuleId& ruleId, const Halvo::String& description,
                const VelmorTcam::VelmorTcamEntryShadow& shadow, U64 hits, Printer& printer) {
  printer.objectBegin();
  printer.attribute("type", "entry");
  printer.attribute("stage", stageName(entry.place.stage).view());
  printer.attribute("pipe", entry.place.pipe);
  printer.attribute("groupPriority", entry.place.groupPriority);
  printer.attribute("groupId", entry.place.groupId);
  printer.attribute("copyId", entry.place.copyId);
  printer.attribute("table", tableName(entry.table));
  printer.attribute("shadowId", shadow.shadowId());
  printer.attribute("sequence", ruleId.sequenceNum());
  printer.attribute("priority", entry.priority);
  printer.attribute("description", description.view());
  printer.attribute("action", entry.action);
  printer.attribute("hits", hits);
  printer.attribute("counterStatus", shadow.counterStatus());
  printer.attribute("featurePriority", entry.featurePriority);
  printer.attribute("feature", requestKey.name().view());
  printer.objectBegin("qualifiers");
  printQualifiers(shadow, printer);
  printer.objectEnd();
  printer.objectBegin("rangeCheckers");
  printRangeCheckers(shadow, printer);
  printer.objectEnd();
  printer.objectEnd();
}

}  // namespace tcamshow
