#include "views/MacFormat.h"

#include <cstddef>
#include <string_view>

#include "Zel/Format/Format.h"

namespace tcamshow {

namespace {

/// Takes the first cell off `cells`: its text, without the blanks before it and the bar that ends
/// it.
std::string_view nextCell(std::string_view& cells) {
  std::size_t const bar = cells.find('|');
  std::string_view cell = cells.substr(0, bar);
  cells.remove_prefix(bar == cells.npos ? cells.size() : bar + 1);
  cell.remove_prefix(std::min(cell.find_first_not_of(' '), cell.size()));
  return cell;
}

/// The texts of the two cells that an operation of the library returns together.
struct CellPair {
  explicit CellPair(const Halvo::String& cells) : CellPair(cells.view()) {}

  std::string_view first;
  std::string_view second;

 private:
  explicit CellPair(std::string_view cells) : first(nextCell(cells)), second(nextCell(cells)) {}
};

}  // namespace

Halvo::String MacFormat::formatSequenceNum(VelmorTcam::U32 sequenceNum) const {
  if (sequenceNum == VelmorTcam::RuleId::dropSequenceNum) return Zel::_fmt("%-5s|", "Drop");
  return Zel::_fmt("%-5u|", sequenceNum);
}

Halvo::String MacFormat::formatEntryRequest(
    const VelmorTcam::RequestKey&, const VelmorTcam::RuleId& ruleId, const Halvo::String&,
    const VelmorTcam::VelmorTcamEntryShadow::PtrConst& entryShadow, VelmorTcam::U64 hits) const {
  // The library's cells have the texts but not the widths of this table.
  Halvo::String const sourceCells =
      formatQualifierMacAddr(entryShadow, VelmorTcam::qualifierSrcMac);
  Halvo::String const destinationCells =
      formatQualifierMacAddr(entryShadow, VelmorTcam::qualifierDstMac);
  Halvo::String const etherTypeCell = formatQualifierEtherType(entryShadow);
  Halvo::String const vlanCells = formatQualifierOuterVlanId(entryShadow);

  CellPair const source(sourceCells);
  CellPair const destination(destinationCells);
  std::string_view etherType = etherTypeCell.view();
  CellPair const vlan(vlanCells);
  bool const isCounted = entryShadow->counterStatus() == VelmorTcam::hwQualStatusProgrammed;
  return Zel::_fmt("%-5lu|%s%17s|%17s|%17s|%17s|%5s|%6s|%8s|%-6s|%s\n", entryShadow->shadowId(),
                   formatSequenceNum(ruleId.sequenceNum()), source.first, source.second,
                   destination.first, destination.second, nextCell(etherType), vlan.first,
                   vlan.second, formatActions(entryShadow),
                   isCounted ? Zel::_fmt("%lu", hits) : Halvo::String());
}

}  // namespace tcamshow
