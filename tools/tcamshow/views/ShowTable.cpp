#include "views/ShowTable.h"

#include "Halvo/Ptr.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "snapshot/SnapshotReader.h"
#include "views/FillShadow.h"
#include "views/Formats.h"
#include "views/JsonPrinter.h"
#include "views/MacFormat.h"

namespace tcamshow {

namespace {

/// Gives every entry of the snapshot to `show`.
template <class Show>
void forEachEntry(InputFile& snapshot, Show show) {
  SnapshotReader reader(snapshot);
  for (;;) {
    switch (reader.next()) {
      case SnapshotReader::Line::end:
        return;
      case SnapshotReader::Line::group:
        break;
      case SnapshotReader::Line::entry:
        show(reader.entry());
        break;
    }
  }
}

/// What the formatters' operations take beside the shadow.
struct Request {
  explicit Request(const EntryLine& entry)
      : key(Halvo::String(entry.feature)), rule(entry.sequence), description(entry.description) {}

  VelmorTcam::RequestKey key;
  VelmorTcam::RuleId rule;
  Halvo::String description;
};

/// The rows of the entries that `isShown` picks, under the header where the format has one.
template <class Format, class IsShown>
void showRows(InputFile& snapshot, OutputBuffer& out, IsShown isShown) {
  auto const format = Halvo::makePtr<Format>();
  format->initializedIs(true);
  if (format->headerType() != VelmorTcam::cliHeaderTypeInvalid) {
    VelmorTcam::initializeCliHeaders();
    out.write(VelmorTcam::getCliHeader(format->headerType()).view());
  }
  forEachEntry(snapshot, [&](const EntryLine& entry) {
    if (!isShown(entry)) return;
    format->entryIs(entry);
    Request const request(entry);
    // In place of displayEntryRequest, which would make a system call for each row.
    out.write(format
                  ->formatEntryRequest(request.key, request.rule, request.description,
                                       shadowOf(entry), entry.hits)
                  .view());
  });
}

template <class Format, class IsShown>
void showJson(InputFile& snapshot, OutputBuffer& out, Table table, IsShown isShown) {
  auto const format = Halvo::makePtr<Format>();
  format->initializedIs(true);
  JsonPrinter printer(out);
  printTableStart(table, printer);
  forEachEntry(snapshot, [&](const EntryLine& entry) {
    if (!isShown(entry)) return;
    format->entryIs(entry);
    Request const request(entry);
    format->displayEntryRequest(static_cast<VelmorTcam::U32>(out.descriptor()), request.key,
                                request.rule, request.description, shadowOf(entry), entry.hits,
                                &printer);
  });
}

template <class Format>
void show(InputFile& snapshot, OutputBuffer& out, Table table, TableForm form) {
  auto const isShown = [table](const EntryLine& entry) {
    return table == Table::tcam || entry.table == table;
  };
  if (form == TableForm::jsonLines) {
    showJson<Format>(snapshot, out, table, isShown);
  } else {
    showRows<Format>(snapshot, out, isShown);
  }
}

}  // namespace

void showIp(InputFile& snapshot, OutputBuffer& out, TableForm form) {
  show<IpFormat>(snapshot, out, Table::ip, form);
}

void showIp6(InputFile& snapshot, OutputBuffer& out, TableForm form) {
  show<Ip6Format>(snapshot, out, Table::ip6, form);
}

void showMac(InputFile& snapshot, OutputBuffer& out, TableForm form) {
  show<MacFormat>(snapshot, out, Table::mac, form);
}

void showTcam(InputFile& snapshot, OutputBuffer& out, TableForm form) {
  show<TcamFormat>(snapshot, out, Table::tcam, form);
}

}  // namespace tcamshow
