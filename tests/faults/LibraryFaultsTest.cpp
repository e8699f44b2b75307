// The library's main paths, each with every allocation failing in turn.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "../library/ShadowFixture.h"
#include "EveryFault.h"
#include "Sink.h"
#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "Zel/Trace/Log.h"
#include "Zel/Trace/Trace.h"
#include "Zel/Types/Record.h"

namespace VelmorTcam {
namespace {

using velmortest::fullShadow;
using velmortest::makePtr;
using velmortest::Ptr;
using velmortest::Shadow;
using velmortest::useCounts;

TEST(Faults, LoadingTheHeaders) {
  everyFault("headers",
             [](Fault& fault) {
               if (!fault.tries([] { initializeCliHeaders(); })) initializeCliHeaders();
               for (auto const& [type, size] :
                    {std::pair(cliHeaderTypeIp, 186U), std::pair(cliHeaderTypeIp6, 303U),
                     std::pair(cliHeaderTypeMac, 118U)}) {
                 Halvo::String header;
                 if (!fault.tries([&, which = type] { header = getCliHeader(which); })) {
                   fault.check(header.empty(), "nothing is given");
                   header = getCliHeader(type);
                 }
                 fault.check(header.size() == size, "the header is whole");
               }
             },
             {.inChild = true, .keepsMemory = true});
}

struct Table {
  const char* name;
  Ptr<CliFormat> format;
};

std::vector<Table> tables() {
  Halvo::String const action(100, 'a');
  return {{"IPv4 row", makePtr<velmortest::IpFormat>(action)},
          {"IPv6 row", makePtr<velmortest::Ip6Format>(action)},
          {"MAC cells", makePtr<velmortest::MacCellsFormat>()},
          {"generic row", makePtr<VelmorTcamCliFormat>()}};
}

TEST(Faults, Rows) {
  Ptr<const Shadow> const shadow = fullShadow();
  RequestKey const key(Halvo::String(100, 'k'));
  Halvo::String const description(100, 'd');
  for (const Table& table : tables()) {
    auto const format = [&] {
      return table.format->formatEntryRequest(key, RuleId(10), description, shadow, 42);
    };
    Halvo::String const expected = format();
    auto const counts = useCounts(*shadow);
    everyFault(table.name, [&](Fault& fault) {
      Halvo::String row;
      if (fault.tries([&] { row = format(); })) {
        fault.check(row == expected, "the row is whole");
      } else {
        fault.check(row.empty(), "nothing is given");
      }
      fault.check(useCounts(*shadow) == counts, "no reference is held");
      fault.check(format() == expected, "the same row comes afterwards");
    });
  }
}

TEST(Faults, DisplayWritesARowWholeOrNotAtAll) {
  Ptr<const Shadow> const shadow = fullShadow();
  Sink sink;
  for (const Table& table : tables()) {
    auto const display = [&] {
      table.format->displayEntryRequest(static_cast<U32>(sink.descriptor()), RequestKey(),
                                        RuleId(10), Halvo::String(100, 'd'), shadow, 42, nullptr);
    };
    display();
    std::string const expected = sink.take();
    everyFault((std::string("display, ") + table.name).c_str(), [&](Fault& fault) {
      bool const isDone = fault.tries(display);
      fault.check(sink.take() == (isDone ? expected : ""), "the row is written, or nothing");
      display();
      fault.check(sink.take() == expected, "the next row is written");
    });
  }
}

std::string stateOf(const Shadow& shadow) {
  std::string state;
  for (auto const& type : qualifierTypeValues()) {
    auto const t = static_cast<QualifierType>(type.number);
    auto const status = shadow.qualifier(t);
    auto const data = status ? status->hwQualData(t) : nullptr;
    if (shadow.getHwQualStatus(t, t) == hwQualStatusProgrammed && !data) return "broken contract";
    if (shadow.getHwQualStatus(t, t) == hwQualStatusProgrammed) state += type.name;
  }
  for (auto const& status : shadow.qualifier()) {
    if (!status.value) return "a key without a child";
    for (auto const& data : status.value->hwQualData()) {
      if (!data.value) return "a key without a child";
    }
  }
  for (auto const& range : rangeCheckerTypeValues()) {
    auto const held = shadow.rangeChecker(static_cast<RangeCheckerType>(range.number));
    if (held) state += std::to_string(held->low());
  }
  return state;
}

TEST(Faults, FillingAShadow) {
  everyFault("filling a shadow", [](Fault& fault) {
    Ptr<Shadow> shadow;
    if (!fault.tries([&] { shadow = makePtr<Shadow>(U64{1}); })) shadow = makePtr<Shadow>(U64{1});
    for (auto const& type : qualifierTypeValues()) {
      auto const fill = [&] {
        shadow->hwQualIs(static_cast<QualifierType>(type.number), Qualifier(1, 2));
      };
      std::string const before = stateOf(*shadow);
      if (fault.tries(fill)) continue;
      fault.check(stateOf(*shadow) == before, "the shadow reads as before");
      fill();
    }
    for (auto const& range : rangeCheckerTypeValues()) {
      auto const fill = [&] {
        shadow->rangeCheckerIs(static_cast<RangeCheckerType>(range.number),
                               RangeCheckerStatus(range.number, 9));
      };
      std::string const before = stateOf(*shadow);
      if (fault.tries(fill)) continue;
      fault.check(stateOf(*shadow) == before, "the shadow reads as before");
      fill();
    }
    fault.withoutMemory([&] {
      static_cast<void>(shadow->qualifierDel(qualifierSrcIp));
      shadow->rangeCheckerDelAll();
      shadow.reset();
    });
  });
  EXPECT_EQ(Shadow::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(QualifierStatus::memAllocationTracker_.liveObjects(), 0U);
  EXPECT_EQ(QualifierData::memAllocationTracker_.liveObjects(), 0U);
}

TEST(Faults, ValueText) {
  CliShowTcamUsageEntryInfo entry(10, 5);
  entry.descriptionIs(Halvo::String(100, '\x01'));
  entry.hitsIs(3);
  Halvo::String const text = ZelHalvo::Impl::valueToStrep(entry);
  everyFault("value to text and back", [&](Fault& fault) {
    Halvo::String written;
    if (fault.tries([&] { written = ZelHalvo::Impl::valueToStrep(entry); })) {
      fault.check(written == text, "the text is whole");
    } else {
      fault.check(written.empty(), "nothing is given");
    }
    CliShowTcamUsageEntryInfo read(1, 2);
    if (fault.tries([&] { read = Zel::strepToValue<CliShowTcamUsageEntryInfo>(text); })) {
      fault.check(read == entry && read.description() == entry.description(), "it reads back");
    } else {
      fault.check(read == CliShowTcamUsageEntryInfo(1, 2), "the value is as it was");
    }
    // The error's message needs memory too.
    bool isRefused = false;
    bool const isDone = fault.tries([&] {
      try {
        static_cast<void>(Zel::strepToValue<CliShowTcamUsageEntryInfo>(text + Halvo::String("x")));
      } catch (const Zel::ParseError&) {
        isRefused = true;
      }
    });
    fault.check(isDone == isRefused, "a bad text is refused");
  });
}

struct Seen {
  int records = 0;
  std::string last;
};

TEST(Faults, LogLines) {
  static constexpr Zel::LogDescriptor descriptor{"FAULTS", "%s", "Explained.", "\x01", 6};
  Halvo::String const argument(100, 'x');
  for (bool const toSink : {true, false}) {
    everyFault(toSink ? "log to a sink" : "log to standard error", [&](Fault& fault) {
      Seen seen;
      auto const watch = [&seen] {
        Zel::LogHandle::sinkIs(
            [](const Zel::LogRecord& record, void* context) {
              auto* const to = static_cast<Seen*>(context);
              ++to->records;
              FailingMemory::pause();
              to->last = std::string(record.text) + "/" + std::to_string(record.suppressed);
            },
            &seen);
      };
      // This handle lets one message through in all.
      Zel::LogHandle handle(descriptor, Halvo::Duration(), 1.0, 0, 1);
      if (toSink) watch();
      bool const isDone = fault.tries([&] { handle.log(argument); });
      fault.check(!toSink || seen.records == (isDone ? 1 : 0), "the message came, or did not");
      // A message that was not logged does not count against the limit.
      watch();
      handle.log(argument);
      Zel::LogHandle::sinkIs(nullptr, nullptr);
      fault.check(seen.records == (isDone && !toSink ? 0 : 1), "the limit counts what came");
      fault.check(seen.records == 0 || seen.last == argument.str() + "/0", "nothing is suppressed");
    });
  }
}

TEST(Faults, TraceLines) {
  static Zel::TraceHandle handle("Faults", false);
  Zel::TraceControl::levelIs("Faults", 8, true);
  std::string const piece(300, 'x');
  Seen seen;
  Zel::TraceControl::sinkIs(
      [](const Zel::TraceRecord& record, void* context) {
        auto* const to = static_cast<Seen*>(context);
        ++to->records;
        FailingMemory::pause();
        to->last = std::string(record.text);
        FailingMemory::resume();
      },
      &seen);
  everyFault("trace", [&](Fault& fault) {
    seen = Seen();
    errno = ERANGE;
    bool const isDone = fault.tries(
        [&] { ZEL_TRACE(handle, 8, "Faults", 1, "trace", "value " << 7 << ' ' << piece << '!'); });
    fault.check(isDone, "nothing is thrown");
    fault.check(errno == ERANGE, "errno is left alone");
    fault.check(seen.records <= 1, "one record or none");
    if (FailingMemory::failed() == 0) {
      fault.check(seen.last == "value 7 " + piece + "!", "the record is whole");
    } else {
      fault.check(seen.records == 0 || seen.last.starts_with("value 7 "), "the text is cut");
    }
  });
  Zel::TraceControl::sinkIs(nullptr, nullptr);
  everyFault(
      "turning a trace level on",
      [](Fault& fault) {
        auto const turn = [] {
          Zel::TraceControl::levelIs("Faults.a name that is longer than a string's room", 3, true);
        };
        Zel::TraceHandle const later("Faults.a name that is longer than a string's room", false);
        if (!fault.tries(turn)) {
          fault.check(!later.enabled(3), "nothing has changed");
          turn();
        }
        fault.check(later.enabled(3), "the level is on");
      },
      {.inChild = true, .keepsMemory = true});
}

}  // namespace
}  // namespace VelmorTcam
