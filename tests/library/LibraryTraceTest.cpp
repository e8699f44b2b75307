// The library's trace lines and log messages, as its host sees them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ShadowFixture.h"
#include "Zel/Trace/Log.h"
#include "Zel/Trace/Trace.h"

namespace VelmorTcam {
namespace {

using velmortest::Ip6Format;
using velmortest::IpFormat;
using velmortest::rowOf;
using velmortest::ShadowOf;

struct Line {
  std::string handle;
  unsigned level;
  std::string source;
  U32 sourceLine;
  std::string function;
  std::string text;

  friend bool operator==(const Line&, const Line&) = default;
};

void PrintTo(const Line& line, std::ostream* out) {
  *out << line.handle << '/' << line.level << ' ' << line.source << ':' << line.sourceLine << ' '
       << line.function << ": " << line.text;
}

/// Collects the records of the library's handle. Level 8 is on while the object lives.
class Traced {
 public:
  explicit Traced(unsigned level = 8) : level_(level) {
    Zel::TraceControl::sinkIs(
        [](const Zel::TraceRecord& record, void* self) {
          static_cast<Traced*>(self)->lines_.push_back({record.handle, record.level, record.source,
                                                        record.sourceLine, record.function,
                                                        std::string(record.text)});
        },
        this);
    Zel::TraceControl::levelIs("VelmorTcamCliTypes", level_, true);
  }
  ~Traced() {
    Zel::TraceControl::levelIs("VelmorTcamCliTypes", level_, false);
    Zel::TraceControl::sinkIs(nullptr, nullptr);
  }
  Traced(const Traced&) = delete;
  Traced& operator=(const Traced&) = delete;

  std::vector<Line> take() { return std::exchange(lines_, {}); }

 private:
  unsigned level_;
  std::vector<Line> lines_;
};

Line site(U32 line, const char* function, const char* text) {
  return {
      "VelmorTcamCliTypes", 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", line, function, text};
}

TEST(LibraryTrace, SaysWhichFormatterWasInitialized) {
  Traced traced;
  IpFormat ip;
  ip.initializedIs(true);
  EXPECT_EQ(traced.take(), std::vector{site(524, "handleInitialized",
                                            "IpEntryRequestCliFormat::handleInitialized")});
  Ip6EntryRequestCliFormat ip6;
  ip6.initializedIs(true);
  EXPECT_EQ(traced.take(), std::vector{site(529, "handleInitialized",
                                            "Ip6EntryRequestCliFormat::handleInitialized")});
  MacEntryRequestCliFormat mac;
  mac.initializedIs(true);
  EXPECT_EQ(traced.take(), std::vector{site(534, "handleInitialized",
                                            "MacEntryRequestCliFormat::handleInitialized")});
  VelmorTcamCliFormat generic;
  generic.initializedIs(true);
  generic.initializedIs(true);
  generic.initializedIs(false);
  Line const line = site(638, "handleInitialized", "VelmorTcamCliFormat::handleInitialized");
  EXPECT_EQ(traced.take(), (std::vector{line, line}));
}

TEST(LibraryTrace, SaysWhichRowIsFormatted) {
  Traced traced;
  ShadowOf const shadow;
  (void)rowOf(IpFormat(), shadow);
  EXPECT_EQ(traced.take(), std::vector{site(497, "formatEntryRequest", "formatEntryRequest")});
  (void)rowOf(Ip6Format(), shadow);
  EXPECT_EQ(traced.take(), std::vector{site(562, "formatEntryRequest", "formatEntryRequest")});
  (void)rowOf(VelmorTcamCliFormat(), shadow);
  EXPECT_EQ(traced.take(), std::vector{site(675, "formatEntryRequest", "formatEntryRequest")});
}

TEST(LibraryTrace, SaysNothingWhileLevelEightIsOff) {
  for (unsigned level = 0; level < 10; ++level) {
    if (level == 8) continue;
    Traced traced(level);
    IpFormat ip;
    ip.initializedIs(true);
    (void)rowOf(ip, ShadowOf());
    EXPECT_TRUE(traced.take().empty()) << level;
  }
}

TEST(LibraryTrace, ChangesNoRow) {
  std::string const before = rowOf(IpFormat(), ShadowOf());
  Traced traced;
  EXPECT_EQ(rowOf(IpFormat(), ShadowOf()), before);
}

TEST(LibraryLog, HasAHandleForEachOfItsMessagesInOrder) {
  std::vector<const Zel::LogDescriptor*> found;
  for (auto const* handle = Zel::LogHandle::first(); handle != nullptr; handle = handle->next()) {
    if (std::string(handle->descriptor().key).starts_with("VELMOR_")) {
      found.push_back(&handle->descriptor());
    }
  }
  ASSERT_EQ(found.size(), 2U);
  auto const& change = *found[0];
  EXPECT_STREQ(change.key, "VELMOR_CONFIG_CHANGE");
  EXPECT_STREQ(change.format, "Configuration change requires the Velmor agent %s to restart");
  EXPECT_STREQ(change.explanation,
               "Configuration change requires the switch ASIC to be reconfigured, requiring the "
               "Velmor agent to restart.");
  EXPECT_STREQ(change.codeString, "\x01");
  EXPECT_EQ(change.severity, 6U);
  auto const& restart = *found[1];
  EXPECT_STREQ(restart.key, "VELMOR_UNEXPECTED_RESTART");
  EXPECT_STREQ(restart.format, "Unexpected restart of Velmor agent %s occurred");
  EXPECT_STREQ(restart.explanation, "Unexpected restart of the Velmor agent occurred.");
  EXPECT_STREQ(restart.codeString, "\x02");
  EXPECT_EQ(restart.severity, 3U);
  // The descriptors lie back to back in their section, the restart first.
  EXPECT_EQ(&change, &restart + 1);
}

// The agent logs the library's messages. The library itself never logs them.
TEST(LibraryLog, LetsTheAgentLogItsMessages) {
  struct Row {
    const char* key;
    const char* text;
    Halvo::U64 severity;
  } const rows[] = {
      {"VELMOR_UNEXPECTED_RESTART", "Unexpected restart of Velmor agent tcam occurred", 3},
      {"VELMOR_CONFIG_CHANGE", "Configuration change requires the Velmor agent tcam to restart", 6},
  };
  static std::vector<std::string> logged;
  Zel::LogHandle::sinkIs(
      [](const Zel::LogRecord& record, void*) {
        logged.push_back(std::string(record.key) + " " + std::to_string(record.severity) + " " +
                         std::string(record.text));
      },
      nullptr);
  std::vector<std::string> expected;
  for (const Row& row : rows) {
    const Zel::LogHandle* const handle = Zel::LogHandle::find(row.key);
    ASSERT_NE(handle, nullptr) << row.key;
    handle->log("tcam");
    expected.push_back(std::string(row.key) + " " + std::to_string(row.severity) + " " + row.text);
  }
  for (auto const* handle = Zel::LogHandle::first(); handle != nullptr; handle = handle->next()) {
    handle->log("tcam");
  }
  Zel::LogHandle::sinkIs(nullptr, nullptr);
  expected.push_back(expected[1]);
  expected.push_back(expected[0]);
  EXPECT_EQ(logged, expected);
  EXPECT_EQ(Zel::LogHandle::find("VELMOR_CONFIG"), nullptr);
  EXPECT_EQ(Zel::LogHandle::find(""), nullptr);
}

}  // namespace
}  // namespace VelmorTcam
