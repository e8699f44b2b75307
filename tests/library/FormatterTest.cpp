// The formatters as objects: class tree, attributes, slots, dispatch, abstract operations,
// lifetime.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "DestroyedFlags.h"
#include "ShadowFixture.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "VirtualSlots.h"
#include "Zel/Trace/Trace.h"

namespace VelmorTcam {
namespace {

using velmortest::IpFormat;
using velmortest::makePtr;
using velmortest::Ptr;
using velmortest::ShadowOf;
using velmortest::slotOf;
using velmortest::String;

// Collects the text that a formatter writes to a descriptor.
class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_), 0); }
  ~Pipe() {
    ::close(ends_[0]);
    if (ends_[1] >= 0) ::close(ends_[1]);
  }
  U32 fd() const { return static_cast<U32>(ends_[1]); }
  std::string read() {
    ::close(ends_[1]);
    ends_[1] = -1;
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = ::read(ends_[0], buffer, sizeof buffer)) > 0;) {
      text.append(buffer, static_cast<std::size_t>(n));
    }
    return text;
  }

 private:
  int ends_[2];
};

class NoPrinter : public pravo::Printer {
 public:
  void objectBegin(std::string_view) override {}
  void objectEnd() override {}
  void arrayBegin(std::string_view) override {}
  void arrayEnd() override {}
  void printText(std::string_view, std::string_view) override {}
  void printUnsigned(std::string_view, U64) override {}
  void printSigned(std::string_view, pravo::S64) override {}
  void printBool(std::string_view, bool) override {}
};

TEST(Formatter, TreeStandsOnNode) {
  EXPECT_TRUE((std::is_base_of_v<Halvo::Node, CliFormat>));
  EXPECT_TRUE((std::is_base_of_v<CliFormat, EntryRequestCliFormat>));
  EXPECT_TRUE((std::is_base_of_v<EntryRequestCliFormat, IpEntryRequestCliFormat>));
  EXPECT_TRUE((std::is_base_of_v<EntryRequestCliFormat, Ip6EntryRequestCliFormat>));
  EXPECT_TRUE((std::is_base_of_v<EntryRequestCliFormat, MacEntryRequestCliFormat>));
  EXPECT_TRUE((std::is_base_of_v<CliFormat, VelmorTcamCliFormat>));
  EXPECT_FALSE((std::is_base_of_v<EntryRequestCliFormat, VelmorTcamCliFormat>));
  // No subclass adds a data attribute.
  EXPECT_EQ(sizeof(IpEntryRequestCliFormat), sizeof(CliFormat));
  EXPECT_EQ(sizeof(Ip6EntryRequestCliFormat), sizeof(CliFormat));
  EXPECT_EQ(sizeof(MacEntryRequestCliFormat), sizeof(CliFormat));
  EXPECT_EQ(sizeof(VelmorTcamCliFormat), sizeof(CliFormat));
}

template <class Format>
void expectBorn(CliHeaderType headerType, const char* typeName) {
  SCOPED_TRACE(typeName);
  Ptr<Format> const format = makePtr<Format>();
  EXPECT_EQ(format->useCount(), 1U);
  EXPECT_FALSE(format->initialized());
  EXPECT_EQ(format->headerType(), headerType);
  ASSERT_NE(format->typeData(), nullptr);
  EXPECT_STREQ(format->typeData()->name, typeName);
  EXPECT_EQ(format->typeData()->tracker, &Format::memAllocationTracker_);
  EXPECT_EQ(format->publisher(), nullptr);
}

TEST(Formatter, IsBornWithItsHeaderTypeAndUninitialized) {
  expectBorn<CliFormat>(cliHeaderTypeInvalid, "VelmorTcam::CliFormat");
  expectBorn<EntryRequestCliFormat>(cliHeaderTypeInvalid, "VelmorTcam::EntryRequestCliFormat");
  expectBorn<IpEntryRequestCliFormat>(cliHeaderTypeIp, "VelmorTcam::IpEntryRequestCliFormat");
  expectBorn<Ip6EntryRequestCliFormat>(cliHeaderTypeIp6, "VelmorTcam::Ip6EntryRequestCliFormat");
  expectBorn<MacEntryRequestCliFormat>(cliHeaderTypeMac, "VelmorTcam::MacEntryRequestCliFormat");
  expectBorn<VelmorTcamCliFormat>(cliHeaderTypeInvalid, "VelmorTcam::VelmorTcamCliFormat");
}

TEST(Formatter, ConceptTellsWhichClassesCanShowEntries) {
  struct Permit : IpEntryRequestCliFormat {
    String formatActions(const PtrConst&) const override { return "permit"; }
  };
  // Access does not matter: the operations are called through the base class.
  class Hidden : public Ip6EntryRequestCliFormat {
    String formatActions(const PtrConst&) const override { return "permit"; }
  };
  struct FurtherDerived : Hidden {};
  struct WithoutActions : IpEntryRequestCliFormat {};
  struct MacWithoutRow : MacEntryRequestCliFormat {
    String formatActions(const PtrConst&) const override { return "permit"; }
  };
  struct MacWithRow : MacEntryRequestCliFormat {
    String formatEntryRequest(const RequestKey&, const RuleId&, const String&, const PtrConst&,
                              U64) const override {
      return "row";
    }
  };
  struct RowOfItsOwn : IpEntryRequestCliFormat {
    String formatEntryRequest(const RequestKey&, const RuleId&, const String&, const PtrConst&,
                              U64) const override {
      return "row";
    }
  };
  struct WithoutInitialized : EntryRequestCliFormat {
    String formatEntryRequest(const RequestKey&, const RuleId&, const String&, const PtrConst&,
                              U64) const override {
      return "row";
    }
  };
  struct WithInitialized : WithoutInitialized {
    void handleInitialized() override {}
  };
  struct Json : WithoutActions {
    void formatEntryRequestJson(const RequestKey&, const RuleId&, const String&, const PtrConst&,
                                U64, pravo::Printer*) const override {}
  };
  static_assert(CompleteFormatter<Permit>);
  static_assert(CompleteFormatter<Hidden>);
  static_assert(CompleteFormatter<FurtherDerived>);
  static_assert(CompleteFormatter<MacWithRow>);
  static_assert(CompleteFormatter<RowOfItsOwn>);
  static_assert(CompleteFormatter<WithInitialized>);
  static_assert(CompleteFormatter<VelmorTcamCliFormat>);
  static_assert(!CompleteFormatter<WithoutActions>);
  static_assert(!CompleteFormatter<MacWithoutRow>);
  static_assert(!CompleteFormatter<WithoutInitialized>);
  static_assert(!CompleteFormatter<CliFormat>);
  static_assert(!CompleteFormatter<EntryRequestCliFormat>);
  static_assert(!CompleteFormatter<IpEntryRequestCliFormat>);
  static_assert(!CompleteFormatter<Ip6EntryRequestCliFormat>);
  static_assert(!CompleteFormatter<MacEntryRequestCliFormat>);
  static_assert(!CompleteFormatter<Halvo::Node>);
  static_assert(!CompleteFormatter<int>);
  static_assert(JsonFormatter<Json> && !CompleteFormatter<Json>);
  static_assert(!JsonFormatter<Permit> && !JsonFormatter<CliFormat>);
}

TEST(Formatter, VirtualOperationsKeepTheirSlots) {
  struct Row {
    const char* name;
    std::size_t slot;
    std::size_t expected;
  };
#define SLOT(CLASS, OPERATION, EXPECTED) \
  {#CLASS "::" #OPERATION, slotOf(&CLASS::OPERATION), EXPECTED}
  // The destructor takes the first two slots: complete and deleting.
  Row const rows[] = {
      SLOT(Halvo::Node, lastUserGone, 2),
      SLOT(Halvo::Node, publisher, 3),
      SLOT(Halvo::Node, typeData, 4),
      SLOT(CliFormat, displayHeader, 5),
      SLOT(CliFormat, displayFeatureHeader, 6),
      SLOT(CliFormat, formatEntryRequest, 7),
      SLOT(CliFormat, formatEntryRequestJson, 8),
      SLOT(CliFormat, displayEntryRequest, 9),
      SLOT(CliFormat, handleInitialized, 10),
      SLOT(EntryRequestCliFormat, formatActions, 11),
      SLOT(EntryRequestCliFormat, formatSequenceNum, 12),
      SLOT(EntryRequestCliFormat, formatQualifierIpProtocol, 13),
      SLOT(EntryRequestCliFormat, formatQualifierOuterVlanId, 14),
      SLOT(EntryRequestCliFormat, formatQualifierL4SrcPort, 15),
      SLOT(EntryRequestCliFormat, formatQualifierL4DstPort, 16),
      SLOT(EntryRequestCliFormat, formatQualifierTcpControl, 17),
      SLOT(EntryRequestCliFormat, formatQualifierIpLength, 18),
      SLOT(EntryRequestCliFormat, formatQualifierRangeCheck, 19),
      SLOT(IpEntryRequestCliFormat, formatQualifierSrcIp, 20),
      SLOT(IpEntryRequestCliFormat, formatQualifierDstIp, 21),
      SLOT(IpEntryRequestCliFormat, formatQualifierDSCP, 22),
      SLOT(IpEntryRequestCliFormat, formatQualifierIpFrag, 23),
      SLOT(Ip6EntryRequestCliFormat, formatQualifierDSCP, 20),
      SLOT(Ip6EntryRequestCliFormat, formatQualifierSrcIp6, 21),
      SLOT(Ip6EntryRequestCliFormat, formatQualifierDstIp6, 22),
      SLOT(Ip6EntryRequestCliFormat, formatQualifierIp6TrafficClass, 23),
      SLOT(Ip6EntryRequestCliFormat, formatQualifierIp6HopLimit, 24),
      SLOT(MacEntryRequestCliFormat, formatQualifierMacAddr, 20),
      SLOT(MacEntryRequestCliFormat, formatQualifierEtherType, 21),
      // An override keeps the slot of the operation that it overrides.
      SLOT(IpEntryRequestCliFormat, formatEntryRequest, 7),
      SLOT(Ip6EntryRequestCliFormat, formatSequenceNum, 12),
      SLOT(MacEntryRequestCliFormat, formatEntryRequest, 7),
      SLOT(VelmorTcamCliFormat, formatEntryRequest, 7),
      SLOT(VelmorTcamCliFormat, handleInitialized, 10),
  };
#undef SLOT
  for (auto const& row : rows) EXPECT_EQ(row.slot, row.expected) << row.name;
}

TEST(Formatter, ClassesHaveNoFurtherVirtualOperations) {
  using velmortest::slotCount;
  EXPECT_EQ(slotCount<CliFormat>(), 11U);
  EXPECT_EQ(slotCount<EntryRequestCliFormat>(), 20U);
  EXPECT_EQ(slotCount<IpEntryRequestCliFormat>(), 24U);
  EXPECT_EQ(slotCount<Ip6EntryRequestCliFormat>(), 25U);
  EXPECT_EQ(slotCount<MacEntryRequestCliFormat>(), 22U);
  EXPECT_EQ(slotCount<VelmorTcamCliFormat>(), 11U);
}

// Counts the calls of handleInitialized.
class Hooked : public IpFormat {
 public:
  void handleInitialized() override { ++calls; }
  int calls = 0;
};

TEST(Formatter, RunsItsHookOnEveryChangeOfInitialized) {
  Hooked format;
  format.initializedIs(false);
  EXPECT_EQ(format.calls, 0);
  format.initializedIs(true);
  format.initializedIs(true);
  EXPECT_EQ(format.calls, 1);
  EXPECT_TRUE(format.initialized());
  format.initializedIs(false);
  EXPECT_EQ(format.calls, 2);
  EXPECT_FALSE(format.initialized());
}

TEST(Formatter, HeaderOperationsPrintNothing) {
  Pipe pipe;
  Ptr<IpFormat> const format = makePtr<IpFormat>();
  format->displayHeader(pipe.fd());
  format->displayFeatureHeader(pipe.fd());
  EXPECT_EQ(pipe.read(), "");
}

// Records the arguments of its calls.
class Recording : public CliFormat {
 public:
  String formatEntryRequest(const RequestKey& key, const RuleId& rule, const String& description,
                            const Ptr<const VelmorTcamEntryShadow>& shadow,
                            U64 hits) const override {
    ++rows;
    return text + key.name() + "/" + description + "/" +
           String(std::to_string(rule.sequenceNum()) + "/" + std::to_string(shadow->shadowId()) +
                  "/" + std::to_string(hits)) +
           end;
  }
  void formatEntryRequestJson(const RequestKey&, const RuleId&, const String&,
                              const Ptr<const VelmorTcamEntryShadow>&, U64,
                              pravo::Printer* printer) const override {
    ++json;
    seen = printer;
  }
  String text;
  String end = "\n";
  mutable int rows = 0;
  mutable int json = 0;
  mutable pravo::Printer* seen = nullptr;
};

TEST(Formatter, DisplayWritesTheRowWithoutAPrinter) {
  Pipe pipe;
  Recording const format;
  format.displayEntryRequest(pipe.fd(), RequestKey("acl"), RuleId(10), "web", ShadowOf(7), 99,
                             nullptr);
  EXPECT_EQ(pipe.read(), "acl/web/10/7/99\n");
  EXPECT_EQ(format.json, 0);
}

TEST(Formatter, DisplayGoesToThePrinterAloneWithOne) {
  Pipe pipe;
  Recording const format;
  NoPrinter printer;
  format.displayEntryRequest(pipe.fd(), RequestKey("acl"), RuleId(10), "web", ShadowOf(7), 99,
                             &printer);
  EXPECT_EQ(pipe.read(), "");
  EXPECT_EQ(format.rows, 0);
  EXPECT_EQ(format.json, 1);
  EXPECT_EQ(format.seen, &printer);
}

TEST(Formatter, DisplayTakesPercentSignsAsText) {
  Pipe pipe;
  Recording const format;
  format.displayEntryRequest(pipe.fd(), RequestKey("%s%n"), RuleId(1), "%d", ShadowOf(1), 0,
                             nullptr);
  EXPECT_EQ(pipe.read(), "%s%n/%d/1/1/0\n");
}

class EmptyRow : public CliFormat {
  String formatEntryRequest(const RequestKey&, const RuleId&, const String&,
                            const Ptr<const VelmorTcamEntryShadow>&, U64) const override {
    return {};
  }
};

TEST(Formatter, DisplayWritesNothingForAnEmptyRow) {
  Pipe pipe;
  EmptyRow const format;
  format.displayEntryRequest(pipe.fd(), RequestKey(), RuleId(), "", ShadowOf(1), 0, nullptr);
  EXPECT_EQ(pipe.read(), "");
}

TEST(FormatterDeathTest, AbstractOperationsStopTheProcess) {
  ShadowOf const shadow;
  RequestKey const key;
  RuleId const rule;
  NoPrinter printer;
  CliFormat plain;
  EntryRequestCliFormat acl;
  MacEntryRequestCliFormat mac;
  IpEntryRequestCliFormat ip;
  Ip6EntryRequestCliFormat ip6;
  VelmorTcamCliFormat generic;
#define SOURCE " at VelmorTcamManagerBase/VelmorTcamCliTypes:"
#define ARGUMENTS                                                                \
  "\\(const VelmorTcam::RequestKey&, const VelmorTcam::RuleId&, const String&, " \
  "const PtrConst&, U64"
#define ABSTRACT_FORMAT "^assertion failed: false && \" Call to abstract interface format\"" SOURCE
#define ABSTRACT_ROW \
  ABSTRACT_FORMAT    \
  "444 in virtual Zel::String VelmorTcam::CliFormat::formatEntryRequest" ARGUMENTS "\\) const\n$"
#define ABSTRACT_JSON                                                           \
  ABSTRACT_FORMAT                                                               \
  "455 in virtual void VelmorTcam::CliFormat::formatEntryRequestJson" ARGUMENTS \
  ", pravo::Printer\\*\\) const\n$"
#define ABSTRACT_ACTIONS                                                            \
  "^assertion failed: false && \"Call to abstract interface formatActions\"" SOURCE \
  "435 in virtual Zel::String VelmorTcam::EntryRequestCliFormat::formatActions"     \
  "\\(const PtrConst&\\) const\n$"
#define ABSTRACT_CLASS                                                                    \
  "^assertion failed: false && \"Trying to instantiate abstract class CliFormat\"" SOURCE \
  "487 in virtual void VelmorTcam::CliFormat::handleInitialized\\(\\)\n$"
#define ABSTRACT_MAC                                                                              \
  ABSTRACT_FORMAT                                                                                 \
  "596 in virtual Zel::String VelmorTcam::MacEntryRequestCliFormat::formatEntryRequest" ARGUMENTS \
  "\\) const\n$"

  EXPECT_DEATH((void)plain.formatEntryRequest(key, rule, "", shadow, 0), ABSTRACT_ROW);
  EXPECT_DEATH((void)acl.formatEntryRequest(key, rule, "", shadow, 0), ABSTRACT_ROW);
  EXPECT_DEATH((void)mac.formatEntryRequest(key, rule, "", shadow, 0), ABSTRACT_MAC);
  for (CliFormat* format : {&plain, static_cast<CliFormat*>(&acl), static_cast<CliFormat*>(&ip),
                            static_cast<CliFormat*>(&ip6), static_cast<CliFormat*>(&mac),
                            static_cast<CliFormat*>(&generic)}) {
    EXPECT_DEATH(format->displayEntryRequest(1, key, rule, "", shadow, 0, &printer), ABSTRACT_JSON);
  }
  for (EntryRequestCliFormat* format :
       {&acl, static_cast<EntryRequestCliFormat*>(&ip), static_cast<EntryRequestCliFormat*>(&ip6),
        static_cast<EntryRequestCliFormat*>(&mac)}) {
    EXPECT_DEATH((void)format->formatActions(shadow), ABSTRACT_ACTIONS);
  }
  EXPECT_DEATH((void)ip.formatEntryRequest(key, rule, "", shadow, 0), ABSTRACT_ACTIONS);
  EXPECT_DEATH((void)ip6.formatEntryRequest(key, rule, "", shadow, 0), ABSTRACT_ACTIONS);
  EXPECT_DEATH(plain.initializedIs(true), ABSTRACT_CLASS);
  EXPECT_DEATH(acl.initializedIs(true), ABSTRACT_CLASS);
}

template <class Format>
void expectFlagCleared() {
  velmortest::expectFlagsLeft<Format>(0xFFFFFFFF, 0xDFFFFFFF);
}

TEST(Formatter, DestructionClearsTheNotifyFlagAndNoOther) {
  expectFlagCleared<CliFormat>();
  expectFlagCleared<EntryRequestCliFormat>();
  expectFlagCleared<IpEntryRequestCliFormat>();
  expectFlagCleared<Ip6EntryRequestCliFormat>();
  expectFlagCleared<MacEntryRequestCliFormat>();
  expectFlagCleared<VelmorTcamCliFormat>();
}

TEST(Formatter, IsCountedByItsClassAndGone) {
  auto const& tracker = MacEntryRequestCliFormat::memAllocationTracker_;
  auto const live = tracker.liveObjects();
  {
    Ptr<CliFormat> const format = makePtr<MacEntryRequestCliFormat>();
    EXPECT_EQ(tracker.liveObjects(), live + 1);
  }
  EXPECT_EQ(tracker.liveObjects(), live);
}

}  // namespace
}  // namespace VelmorTcam
