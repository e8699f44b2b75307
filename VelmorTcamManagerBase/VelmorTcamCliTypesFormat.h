// The formatters: one TCAM entry in, text out.
#pragma once

#include <concepts>
#include <type_traits>

#include "Halvo/Node.h"
#include "Halvo/Ptr.h"
#include "Halvo/String.h"
#include "VelmorTcamEntryShadow.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypesEnums.h"
#include "VelmorTcamManagerBase/VelmorTcamExport.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/NodeType.h"
#include "pravo.h"

namespace VelmorTcam {

/// The root of the formatters: a contract, not a fallback.
///
/// A formatter has no state but its two attributes. The order of the virtual operations is fixed: a
/// subclass outside this library may have been compiled against an older header.
///
/// Threads: the const operations of this class and of those derived from it here may run on any
/// number together, over shadows that nobody writes, while Halvo::ThreadControl's switch is on.
/// initializedIs() is for one, before the others begin.
///
/// The entry shadow that an operation is given must not be null. An operation that returns text
/// throws std::bad_alloc when memory runs out, and holds no reference then.
///
/// An abstract operation that is called stops the process with an assertion: formatEntryRequest and
/// formatEntryRequestJson on a class that does not supply them, handleInitialized on this class and
/// on EntryRequestCliFormat, which inherits it: a class derived directly from either supplies its
/// own.
///
///     class MyIpFormat : public IpEntryRequestCliFormat {
///       Halvo::String formatActions(const VelmorTcamEntryShadow::PtrConst&) const override {
///         return "permit";
///       }
///     };
///     auto format = Halvo::makePtr<MyIpFormat>();
///     format->initializedIs(true);
///     format->displayEntryRequest(fd, key, RuleId(10), "", shadow, hits, nullptr);
class VELMOR_TCAM_API CliFormat : public Halvo::Node {
  ZEL_NODE_TYPE;

  CliFormat() noexcept;
  ~CliFormat() override;

  /// The table that this formatter's rows belong to. Fixed by the class.
  CliHeaderType headerType() const noexcept { return headerType_; }

  bool initialized() const noexcept { return initialized_; }
  /// Set by the owner once the formatter is ready. Every change, in either direction, runs
  /// handleInitialized(); setting what is already set does nothing.
  void initializedIs(bool initialized);

  /// These two print nothing; a header comes from getCliHeader(headerType()).
  virtual void displayHeader(U32 fd) const;
  virtual void displayFeatureHeader(U32 fd) const;

  /// The entry's row or rows, each line ending in a line break.
  virtual Halvo::String formatEntryRequest(
      const RequestKey& requestKey, const RuleId& ruleId, const Halvo::String& description,
      const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow, U64 hits) const;
  /// Writes the entry to a structured printer. No class of this library supplies it.
  virtual void formatEntryRequestJson(const RequestKey& requestKey, const RuleId& ruleId,
                                      const Halvo::String& description,
                                      const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                                      U64 hits, pravo::Printer* printer) const;
  /// Shows one entry: with a printer, by formatEntryRequestJson, and nothing is written to `fd`;
  /// without one (null), formatEntryRequest's text is written to the file descriptor `fd` with
  /// dprintf, which sees the text up to its first NUL byte. A failed write is not reported.
  /// Each call on a descriptor that is not open costs 8 KiB, which glibc's dprintf does not give
  /// back.
  virtual void displayEntryRequest(U32 fd, const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description,
                                   const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                                   U64 hits, pravo::Printer* printer) const;
  /// Called on every change of `initialized`.
  virtual void handleInitialized();

 protected:
  explicit CliFormat(CliHeaderType headerType) noexcept : headerType_(headerType) {}

 private:
  CliHeaderType const headerType_;
  bool initialized_ = false;
};

/// The cells that the tables of access lists share. Each operation returns its cell with the bar
/// that ends it.
///
/// A qualifier is shown where its status in the shadow is 7, programmed in hardware; else the cell
/// has its absent form. A text wider than its cell is never cut. A shadow that says 7 but lacks the
/// data stops the process on the spot; a record that is not set stops it with the assertion
/// "!!qualData->qual()".
///
/// handleInitialized is CliFormat's, which stops the process.
class VELMOR_TCAM_API EntryRequestCliFormat : public CliFormat {
  ZEL_NODE_TYPE;
  using PtrConst = VelmorTcamEntryShadow::PtrConst;

  EntryRequestCliFormat() noexcept;
  ~EntryRequestCliFormat() override;

  /// The action cell: abstract here, stops the process. A subclass supplies it; it carries its own
  /// bar if it wants one.
  virtual Halvo::String formatActions(const PtrConst& entryShadow) const;
  /// "%-7u|"; "Drop" for 4294967295.
  virtual Halvo::String formatSequenceNum(U32 sequenceNum) const;
  /// " %-6s|": TCP, UDP, ICMP, ICMPv6, a hexadecimal number; "*" when absent or 0.
  virtual Halvo::String formatQualifierIpProtocol(const PtrConst& entryShadow) const;
  /// "%11s|%11s|": VLAN id and mask in decimal, whatever they are; "*" and "*" when absent.
  virtual Halvo::String formatQualifierOuterVlanId(const PtrConst& entryShadow) const;
  /// "%11s|": the range checker's "low-high" if one is programmed; else the ICMP type; else the
  /// value, or "low-high": the value, and the value with every bit set that the low 16 bits of the
  /// mask leave free; "*" for every port, and where none is programmed.
  virtual Halvo::String formatQualifierL4SrcPort(const PtrConst& entryShadow) const;
  /// As the source port, with the ICMP code.
  virtual Halvo::String formatQualifierL4DstPort(const PtrConst& entryShadow) const;
  /// " %-6s|": one letter of FSRPAU for each flag that is set in the value, whatever the mask, and
  /// a blank for the others; blank when absent.
  virtual Halvo::String formatQualifierTcpControl(const PtrConst& entryShadow) const;
  /// `format`, which holds one "%s", applied to the IP length's range-check cell, bar included, or
  /// to "*". Stops the process when `format` is empty (assertion "!formatStr.empty()") or when its
  /// conversions do not fit one string.
  virtual Halvo::String formatQualifierIpLength(const PtrConst& entryShadow,
                                                const Halvo::String& format) const;
  /// "%11s|" of "low-high"; an empty string, and so no cell, where the range checker is not
  /// programmed.
  virtual Halvo::String formatQualifierRangeCheck(const PtrConst& entryShadow,
                                                  RangeCheckerType rangeChecker) const;

 protected:
  explicit EntryRequestCliFormat(CliHeaderType headerType) noexcept : CliFormat(headerType) {}
};

/// The IPv4 table: a row of two lines under the cliHeaderTypeIp header. A subclass supplies
/// formatActions.
///
/// The VLAN cells are wider than the header's, and a programmed IP length ends in two bars; scripts
/// that read the tables rely on both.
class VELMOR_TCAM_API IpEntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  IpEntryRequestCliFormat() noexcept;
  ~IpEntryRequestCliFormat() override;

  /// Does not read the key or the description. `hits` is shown only where the shadow's
  /// counterStatus is 7.
  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;

  /// "%15s|%15s|": address and mask as dotted quads. A mask of all ones shows as "*", and one of 0
  /// makes both "*".
  virtual Halvo::String formatQualifierSrcIp(const PtrConst& entryShadow) const;
  virtual Halvo::String formatQualifierDstIp(const PtrConst& entryShadow) const;
  /// "%10s|" of "value/0xMASK"; blank when absent.
  virtual Halvo::String formatQualifierDSCP(const PtrConst& entryShadow) const;
  /// " %3s   |": "N" (not a fragment), "Y" or "*".
  virtual Halvo::String formatQualifierIpFrag(const PtrConst& entryShadow) const;
};

/// The IPv6 table: a row of three lines under the cliHeaderTypeIp6 header. A subclass supplies
/// formatActions.
class VELMOR_TCAM_API Ip6EntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  Ip6EntryRequestCliFormat() noexcept;
  ~Ip6EntryRequestCliFormat() override;

  /// As the IPv4 row; the sequence cell is always this class's own.
  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;
  /// "%-9u|"; "Drop" for 4294967295.
  Halvo::String formatSequenceNum(U32 sequenceNum) const override;

  /// As the IPv4 table's; the row does not show it.
  virtual Halvo::String formatQualifierDSCP(const PtrConst& entryShadow) const;
  /// "%39s|%13s|": address, as stored, and prefix length: the mask's leading one bits. A length of
  /// 0 shows both as "*", one of 128 only the length. Reads the alternative qualifier where the
  /// first is not programmed.
  virtual Halvo::String formatQualifierSrcIp6(const PtrConst& entryShadow) const;
  virtual Halvo::String formatQualifierDstIp6(const PtrConst& entryShadow) const;
  /// " %8s |" of "value/0xMASK"; blank when absent or when the mask is 0.
  virtual Halvo::String formatQualifierIp6TrafficClass(const PtrConst& entryShadow) const;
  /// "%11s|"; blank when absent or when the mask is 0.
  virtual Halvo::String formatQualifierIp6HopLimit(const PtrConst& entryShadow) const;
};

/// The cells of the MAC table. The row is a subclass's: formatEntryRequest stops the process here.
class VELMOR_TCAM_API MacEntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  MacEntryRequestCliFormat() noexcept;
  ~MacEntryRequestCliFormat() override;

  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;

  /// "%s|%s|": address and mask, of no fixed width; "||" when absent. `qualifierMacAddr` is
  /// qualifierSrcMac or qualifierDstMac; any other stops the process.
  virtual Halvo::String formatQualifierMacAddr(const PtrConst& entryShadow,
                                               QualifierType qualifierMacAddr) const;
  /// "%s|": "800h", say; "*" where the mask is 0; empty when absent.
  virtual Halvo::String formatQualifierEtherType(const PtrConst& entryShadow) const;
};

/// Tables that are not access lists: one indented line an entry, and the two lines that introduce a
/// group and a request. Stateless; headerType is cliHeaderTypeInvalid, there is no header.
class VELMOR_TCAM_API VelmorTcamCliFormat : public CliFormat {
  ZEL_NODE_TYPE;
  using PtrConst = VelmorTcamEntryShadow::PtrConst;

  VelmorTcamCliFormat() noexcept;
  ~VelmorTcamCliFormat() override;

  /// "    0x%08x %s hits - %s\n" of the low 32 bits of the shadow's id, the hits right-aligned in
  /// 12 columns, and the description. Does not read the key or the rule.
  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;

  /// "TCAM group %d%s uses %d %s and can use up to %d more.\n"; the pipe is named where numPipes
  /// is above 1, and "entry" is the noun for exactly one. Counts of 2^31 and more show as negative
  /// numbers.
  Halvo::String formatGroupHeader(TcamGroupId groupId, U8 numPipes, U8 pipeId, U32 usedEntries,
                                  U32 availableEntries) const;
  /// "  %s uses %d entries.\n"; "entries" also for one.
  Halvo::String formatRequestHeader(const Halvo::String& requestName, U32 usedEntries) const;
};

namespace impl {

/// Whether `Operation`, a pointer to the member as T names it, is another one than `Base`'s. A
/// member that cannot be named is T's own: those of this library are public, and have no overloads.
#define VELMOR_SUPPLIES_(NAME, BASE)                                     \
  [] {                                                                   \
    if constexpr (requires { &T::NAME; }) {                              \
      return !std::is_same_v<decltype(&T::NAME), decltype(&BASE::NAME)>; \
    } else {                                                             \
      return true;                                                       \
    }                                                                    \
  }()
template <class T>
inline constexpr bool suppliesActions = VELMOR_SUPPLIES_(formatActions, EntryRequestCliFormat);
template <class T>
inline constexpr bool suppliesRow = VELMOR_SUPPLIES_(formatEntryRequest, CliFormat) &&
                                    VELMOR_SUPPLIES_(formatEntryRequest, MacEntryRequestCliFormat);
template <class T>
inline constexpr bool hasRowWithActions =
    !VELMOR_SUPPLIES_(formatEntryRequest, IpEntryRequestCliFormat) ||
    !VELMOR_SUPPLIES_(formatEntryRequest, Ip6EntryRequestCliFormat);
template <class T>
inline constexpr bool suppliesInitialized = VELMOR_SUPPLIES_(handleInitialized, CliFormat);
template <class T>
inline constexpr bool suppliesJson = VELMOR_SUPPLIES_(formatEntryRequestJson, CliFormat);
#undef VELMOR_SUPPLIES_

}  // namespace impl

/// A formatter class that shows entries as text: none of the operations that it needs for that is
/// an abstract one, which would stop the process at the first entry. It needs formatEntryRequest,
/// formatActions where its row is the IPv4 or the IPv6 table's, and handleInitialized. Ask for it
/// where the class is complete:
///
///     class PermitFormat : public VelmorTcam::IpEntryRequestCliFormat {
///      public:
///       Halvo::String formatActions(const PtrConst&) const override { return "permit"; }
///     };
///     static_assert(VelmorTcam::CompleteFormatter<PermitFormat>);
template <class T>
concept CompleteFormatter = std::derived_from<T, CliFormat> && impl::suppliesRow<T> &&
    impl::suppliesInitialized<T> &&(!impl::hasRowWithActions<T> || impl::suppliesActions<T>);

/// A formatter class that can be given a printer: it supplies formatEntryRequestJson.
template <class T>
concept JsonFormatter = std::derived_from<T, CliFormat> && impl::suppliesJson<T>;

}  // namespace VelmorTcam
