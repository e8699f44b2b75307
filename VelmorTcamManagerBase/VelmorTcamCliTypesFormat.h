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

/// The base of all formatters.
///
/// A formatter has two attributes, headerType and initialized, and no other state. The order of the
/// virtual operations is fixed: a subclass outside this library may have been compiled against an
/// older header.
///
/// Some operations are abstract. Calling one stops the process with an assertion:
/// - formatEntryRequest and formatEntryRequestJson, on a class that does not supply them;
/// - handleInitialized, on this class and on EntryRequestCliFormat, which inherits it. A class
///   derived directly from one of these two supplies its own.
///
/// CompleteFormatter and JsonFormatter, below, check a subclass when it is compiled.
///
/// The entry shadow passed to an operation must not be null. An operation that returns text throws
/// std::bad_alloc when memory runs out, and then holds no reference.
///
/// Threads: any number of threads may call the const operations of this class, and of the classes
/// of this library derived from it, at the same time. Nobody may write the shadows meanwhile, and
/// Halvo::ThreadControl's switch must be on. Call initializedIs() from one thread, before the
/// others begin.
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

  /// The table that this formatter's rows belong to. Each class has a fixed one.
  CliHeaderType headerType() const noexcept { return headerType_; }

  bool initialized() const noexcept { return initialized_; }
  /// Set it when the formatter is ready. Every change, in either direction, calls
  /// handleInitialized(). Setting the present value does nothing.
  void initializedIs(bool initialized);

  /// These two print nothing. The header is getCliHeader(headerType()).
  virtual void displayHeader(U32 fd) const;
  virtual void displayFeatureHeader(U32 fd) const;

  /// The entry's text: one or more lines, each ending in a line feed.
  virtual Halvo::String formatEntryRequest(
      const RequestKey& requestKey, const RuleId& ruleId, const Halvo::String& description,
      const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow, U64 hits) const;
  /// Writes the entry to a structured printer. It is abstract in every class of this library.
  virtual void formatEntryRequestJson(const RequestKey& requestKey, const RuleId& ruleId,
                                      const Halvo::String& description,
                                      const Halvo::Ptr<const VelmorTcamEntryShadow>& entryShadow,
                                      U64 hits, pravo::Printer* printer) const;
  /// Shows one entry. With a printer it calls formatEntryRequestJson and writes nothing to `fd`.
  /// Without one (null) it writes the text of formatEntryRequest to the file descriptor `fd` with
  /// dprintf, up to the text's first NUL byte.
  ///
  /// A failed write is not reported. Each call on a descriptor that is not open leaks 8 KiB, which
  /// glibc's dprintf does not free.
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

/// The cells that the tables of access lists share. Each operation returns one cell with the bar
/// that ends it.
///
/// A cell shows its qualifier if the qualifier's status in the shadow is 7, programmed in hardware.
/// Otherwise the cell has its absent form. A text wider than its cell is never cut.
///
/// If a shadow says 7 but lacks the data, the process stops on the spot. If the record is not set,
/// it stops with the assertion "!!qualData->qual()".
///
/// handleInitialized is inherited from CliFormat and stops the process.
class VELMOR_TCAM_API EntryRequestCliFormat : public CliFormat {
  ZEL_NODE_TYPE;
  using PtrConst = VelmorTcamEntryShadow::PtrConst;

  EntryRequestCliFormat() noexcept;
  ~EntryRequestCliFormat() override;

  /// The action cell. Abstract: it stops the process here, and a subclass supplies it. The text is
  /// used as it is, with a bar only if the subclass adds one.
  virtual Halvo::String formatActions(const PtrConst& entryShadow) const;
  /// "%-7u|", or "%-7s|" of "Drop" for 4294967295.
  virtual Halvo::String formatSequenceNum(U32 sequenceNum) const;
  /// " %-6s|": TCP, UDP, ICMP, ICMPv6 or a hexadecimal number. "*" when absent or 0.
  virtual Halvo::String formatQualifierIpProtocol(const PtrConst& entryShadow) const;
  /// "%11s|%11s|": VLAN id and mask as they are, in decimal. "*" and "*" when absent.
  virtual Halvo::String formatQualifierOuterVlanId(const PtrConst& entryShadow) const;
  /// "%11s|". Shows the first of these that applies:
  /// - the range checker's "low-high", if it is programmed;
  /// - "*", if the qualifier is not programmed;
  /// - the ICMP type, if there is one (getQualifierL4PortIfIcmp);
  /// - "*", if value and mask are 0: any port;
  /// - the value, or "low-high". Low is the value. High is the value with every bit set that the
  ///   mask leaves free. One number if both are equal.
  ///
  /// Only the low 16 bits of value and mask count.
  virtual Halvo::String formatQualifierL4SrcPort(const PtrConst& entryShadow) const;
  /// Same as the source port, with the ICMP code.
  virtual Halvo::String formatQualifierL4DstPort(const PtrConst& entryShadow) const;
  /// " %-6s|": "FSRPAU", with a blank in place of each flag that is not set in the value. The mask
  /// is not read. Blank when absent.
  virtual Halvo::String formatQualifierTcpControl(const PtrConst& entryShadow) const;
  /// Puts the range cell of the IP length, with its bar, into `format`, which has one "%s". Puts
  /// "*" there if the range checker is not programmed. Stops the process if `format` is empty
  /// (assertion "!formatStr.empty()") or if its conversions do not fit one string.
  virtual Halvo::String formatQualifierIpLength(const PtrConst& entryShadow,
                                                const Halvo::String& format) const;
  /// "%11s|" of "low-high". An empty text, without a bar, if the range checker is not programmed.
  virtual Halvo::String formatQualifierRangeCheck(const PtrConst& entryShadow,
                                                  RangeCheckerType rangeChecker) const;

 protected:
  explicit EntryRequestCliFormat(CliHeaderType headerType) noexcept : CliFormat(headerType) {}
};

/// The IPv4 table: a row of two lines under the cliHeaderTypeIp header. A subclass supplies
/// formatActions.
///
/// The VLAN cells are wider than their headers, and a programmed IP length ends in two bars.
/// Scripts that read the tables rely on both.
class VELMOR_TCAM_API IpEntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  IpEntryRequestCliFormat() noexcept;
  ~IpEntryRequestCliFormat() override;

  /// Does not read the key or the description. Shows `hits` only if the shadow's counterStatus is
  /// 7.
  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;

  /// "%15s|%15s|": address and mask as dotted quads. A mask of all ones shows as "*". A mask of 0
  /// shows both as "*", as does an absent qualifier.
  virtual Halvo::String formatQualifierSrcIp(const PtrConst& entryShadow) const;
  virtual Halvo::String formatQualifierDstIp(const PtrConst& entryShadow) const;
  /// "%10s|" of "value/0xMASK". Blank when absent.
  virtual Halvo::String formatQualifierDSCP(const PtrConst& entryShadow) const;
  /// " %3s   |": "N" for the values 1 and 2 (not a fragment), "Y" for 3 (a fragment), "*" for any
  /// other and when absent.
  virtual Halvo::String formatQualifierIpFrag(const PtrConst& entryShadow) const;
};

/// The IPv6 table: a row of three lines under the cliHeaderTypeIp6 header. A subclass supplies
/// formatActions.
class VELMOR_TCAM_API Ip6EntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  Ip6EntryRequestCliFormat() noexcept;
  ~Ip6EntryRequestCliFormat() override;

  /// Same as the IPv4 row, but it always uses this class's own formatSequenceNum.
  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;
  /// "%-9u|", or "%-9s|" of "Drop" for 4294967295.
  Halvo::String formatSequenceNum(U32 sequenceNum) const override;

  /// Same as the IPv4 table's cell. The row does not show it.
  virtual Halvo::String formatQualifierDSCP(const PtrConst& entryShadow) const;
  /// "%39s|%13s|": the address as stored, and the prefix length, which is the number of leading one
  /// bits of the mask. Length 0 shows both as "*", as does an absent qualifier. Length 128 shows
  /// the length as "*". If the qualifier is not programmed, the cell shows the alternative one.
  virtual Halvo::String formatQualifierSrcIp6(const PtrConst& entryShadow) const;
  virtual Halvo::String formatQualifierDstIp6(const PtrConst& entryShadow) const;
  /// " %8s |" of "value/0xMASK". Blank when absent or when the mask is 0.
  virtual Halvo::String formatQualifierIp6TrafficClass(const PtrConst& entryShadow) const;
  /// "%11s|" of the value. Blank when absent or when the mask is 0.
  virtual Halvo::String formatQualifierIp6HopLimit(const PtrConst& entryShadow) const;
};

/// The cells of the MAC table. A subclass supplies the row: formatEntryRequest stops the process
/// here.
class VELMOR_TCAM_API MacEntryRequestCliFormat : public EntryRequestCliFormat {
  ZEL_NODE_TYPE;

  MacEntryRequestCliFormat() noexcept;
  ~MacEntryRequestCliFormat() override;

  Halvo::String formatEntryRequest(const RequestKey& requestKey, const RuleId& ruleId,
                                   const Halvo::String& description, const PtrConst& entryShadow,
                                   U64 hits) const override;
  void handleInitialized() override;

  /// "%s|%s|": address and mask, without a fixed width. "||" when absent. `qualifierMacAddr` is
  /// qualifierSrcMac or qualifierDstMac. Any other stops the process.
  virtual Halvo::String formatQualifierMacAddr(const PtrConst& entryShadow,
                                               QualifierType qualifierMacAddr) const;
  /// "%s|": the value in hexadecimal with an "h", for example "800h". "*" if the mask is 0. Only
  /// the bar when absent.
  virtual Halvo::String formatQualifierEtherType(const PtrConst& entryShadow) const;
};

/// The tables that are not access lists: one indented line for each entry, and the lines above a
/// group and a request. The class has no state. headerType is cliHeaderTypeInvalid: there is no
/// header.
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

  /// "TCAM group %d%s uses %d %s and can use up to %d more.\n". Names the pipe if numPipes is above
  /// 1. The noun is "entry" for exactly one used entry, else "entries". Counts of 2^31 and more
  /// show as negative numbers.
  Halvo::String formatGroupHeader(TcamGroupId groupId, U8 numPipes, U8 pipeId, U32 usedEntries,
                                  U32 availableEntries) const;
  /// "  %s uses %d entries.\n", with "entries" also for one.
  Halvo::String formatRequestHeader(const Halvo::String& requestName, U32 usedEntries) const;
};

namespace impl {

/// Whether T has its own member NAME, other than BASE's. If `&T::NAME` does not compile, T has its
/// own: the members of this library's classes are public and not overloaded.
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

/// A formatter class that can show entries as text. It supplies every operation that this needs:
/// formatEntryRequest, handleInitialized and, if its row is the IPv4 or the IPv6 table's,
/// formatActions. A class that lacks one compiles, but stops the process at the first entry. Check
/// it behind the class:
///
///     class PermitFormat : public VelmorTcam::IpEntryRequestCliFormat {
///      public:
///       Halvo::String formatActions(const PtrConst&) const override { return "permit"; }
///     };
///     static_assert(VelmorTcam::CompleteFormatter<PermitFormat>);
template <class T>
concept CompleteFormatter = std::derived_from<T, CliFormat> && impl::suppliesRow<T> &&
    impl::suppliesInitialized<T> &&(!impl::hasRowWithActions<T> || impl::suppliesActions<T>);

/// A formatter class that can be used with a printer: it supplies formatEntryRequestJson.
template <class T>
concept JsonFormatter = std::derived_from<T, CliFormat> && impl::suppliesJson<T>;

}  // namespace VelmorTcam
