#include "views/Tables.h"

#include "Halvo/Ptr.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "views/FillShadow.h"
#include "views/Formats.h"
#include "views/JsonPrinter.h"
#include "views/MacFormat.h"
#include "views/TextOutput.h"

namespace tcamshow {

namespace {

/// Gives every entry of a table to `show`.
template <class Show>
void forEachEntry(Source& source, Table table, Show show) {
  for (;;) {
    switch (source.next()) {
      case Source::Item::end:
        return;
      case Source::Item::group:
        break;
      case Source::Item::entry:
        if (table == Table::tcam || source.entry().table == table) show(source.entry());
        break;
    }
  }
}

/// The arguments of the formatters' operations, besides the shadow.
struct Request {
  explicit Request(const Entry& entry)
      : key(Halvo::String(entry.feature)), rule(entry.sequence), description(entry.description) {}

  VelmorTcam::RequestKey key;
  VelmorTcam::RuleId rule;
  Halvo::String description;
};

/// The rows, under the header where the format has one.
template <class Format>
void showRows(Source& source, OutputBuffer& out, Table table) {
  TextOutput text(out);
  auto const format = Halvo::makePtr<Format>();
  format->initializedIs(true);
  if (format->headerType() != VelmorTcam::cliHeaderTypeInvalid) {
    VelmorTcam::initializeCliHeaders();
    text.write(VelmorTcam::getCliHeader(format->headerType()).view());
  }
  forEachEntry(source, table, [&](const Entry& entry) {
    format->entryIs(entry);
    Request const request(entry);
    // In place of displayEntryRequest, which would make a system call for each row.
    text.write(format
                   ->formatEntryRequest(request.key, request.rule, request.description,
                                        shadowOf(entry), entry.hits)
                   .view());
  });
}

template <class Format>
void showJson(Source& source, OutputBuffer& out, Table table) {
  auto const format = Halvo::makePtr<Format>();
  format->initializedIs(true);
  JsonPrinter printer(out);
  printTableStart(table, printer);
  forEachEntry(source, table, [&](const Entry& entry) {
    format->entryIs(entry);
    Request const request(entry);
    format->displayEntryRequest(static_cast<VelmorTcam::U32>(out.descriptor()), request.key,
                                request.rule, request.description, shadowOf(entry), entry.hits,
                                &printer);
  });
}

template <class Format>
void show(Source& source, OutputBuffer& out, Table table, TableForm form) {
  if (form == TableForm::jsonLines) {
    showJson<Format>(source, out, table);
  } else {
    showRows<Format>(source, out, table);
  }
}

}  // namespace

void showCount(Source& source, OutputBuffer& out) {
  std::uint64_t count = 0;
  forEachEntry(source, Table::tcam, [&count](const Entry&) { ++count; });
  out.write(std::to_string(count) + '\n');
}

void showTable(Source& source, OutputBuffer& out, Table table, TableForm form) {
  switch (table) {
    case Table::ip:
      return show<IpFormat>(source, out, table, form);
    case Table::ip6:
      return show<Ip6Format>(source, out, table, form);
    case Table::mac:
      return show<MacFormat>(source, out, table, form);
    case Table::tcam:
      return show<TcamFormat>(source, out, table, form);
  }
}

}  // namespace tcamshow
