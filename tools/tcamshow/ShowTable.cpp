#include "ShowTable.h"

#include "FillShadow.h"
#include "Formats.h"
#include "Halvo/Ptr.h"
#include "SnapshotReader.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"

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

void showRow(const VelmorTcam::CliFormat& format, const EntryLine& entry, OutputBuffer& out) {
  out.write(format
                .formatEntryRequest(VelmorTcam::RequestKey(Halvo::String(entry.feature)),
                                    VelmorTcam::RuleId(entry.sequence),
                                    Halvo::String(entry.description), shadowOf(entry), entry.hits)
                .view());
}

/// The header of the format's table, then the rows of the entries of `table`.
template <class Format>
void showTable(InputFile& snapshot, OutputBuffer& out, Table table) {
  VelmorTcam::initializeCliHeaders();
  auto const format = Halvo::makePtr<Format>();
  format->initializedIs(true);
  out.write(VelmorTcam::getCliHeader(format->headerType()).view());
  forEachEntry(snapshot, [&](const EntryLine& entry) {
    if (entry.table != table) return;
    format->actionIs(entry.action);
    showRow(*format, entry, out);
  });
}

}  // namespace

void showIp(InputFile& snapshot, OutputBuffer& out) {
  showTable<IpFormat>(snapshot, out, Table::ip);
}

void showTcam(InputFile& snapshot, OutputBuffer& out) {
  auto const format = Halvo::makePtr<VelmorTcam::VelmorTcamCliFormat>();
  format->initializedIs(true);
  forEachEntry(snapshot, [&](const EntryLine& entry) { showRow(*format, entry, out); });
}

}  // namespace tcamshow
