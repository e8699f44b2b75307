#include "Zel/Trace/Trace.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "Trelix.h"

namespace {

using Halvo::S64;
using Halvo::S8;
using Halvo::U32;
using Halvo::U64;
using Halvo::U8;
using Zel::TraceControl;
using Zel::TraceHandle;
using Zel::TraceRecord;

struct Kept {
  std::string handle;
  unsigned level;
  std::string source;
  U32 sourceLine;
  std::string function;
  std::string text;
  std::string line;
};

// Collects the records of one test, and turns off the levels that it turned on.
class Trace : public testing::Test {
 protected:
  void SetUp() override { TraceControl::sinkIs(&keep, &records); }
  void TearDown() override { TraceControl::sinkIs(nullptr, nullptr); }

  static void keep(const TraceRecord& record, void* context) {
    static_cast<std::vector<Kept>*>(context)->push_back(
        {record.handle, record.level, record.source, record.sourceLine, record.function,
         std::string(record.text), std::string(record.line)});
  }

  std::vector<Kept> records;
};

U32 levelsOf(const TraceHandle& handle) {
  U32 levels = 0;
  for (unsigned level = 0; level < 64; ++level) {
    if (handle.enabled(level)) levels |= U32{1} << (level & 31);
  }
  return levels;
}

// The text that `f` writes to standard error.
template <class F>
std::string standardErrorOf(F f) {
  testing::internal::CaptureStderr();
  f();
  return testing::internal::GetCapturedStderr();
}

TEST_F(Trace, IsOffUntilTurnedOn) {
  TraceHandle const off("Trace.off", false);
  TraceHandle const on("Trace.byDefault", true);
  EXPECT_EQ(levelsOf(off), 0U);
  EXPECT_EQ(levelsOf(on), 1U);
  TraceControl::levelIs("Trace.off", 8, true);
  EXPECT_EQ(levelsOf(off), 1U << 8);
  TraceControl::levelIs("Trace.off", 0, true);
  TraceControl::levelIs("Trace.off", 9, true);
  EXPECT_EQ(levelsOf(off), 1U << 8 | 1U << 9 | 1U);
  TraceControl::levelIs("Trace.off", 8, false);
  EXPECT_EQ(levelsOf(off), 1U << 9 | 1U);
  EXPECT_EQ(levelsOf(on), 1U);
  EXPECT_STREQ(off.name(), "Trace.off");
}

TEST_F(Trace, AppliesToHandlesThatComeLaterAndToAllOfAName) {
  TraceControl::levelIs("Trace.later", 5, true);
  TraceControl::levelIs("Trace.later", 0, false);
  TraceHandle const first("Trace.later", true);
  TraceHandle const second("Trace.later", false);
  TraceHandle const other("Trace.late", false);
  EXPECT_EQ(levelsOf(first), 1U << 5);
  EXPECT_EQ(levelsOf(second), 1U << 5);
  EXPECT_EQ(levelsOf(other), 0U);
  TraceControl::levelIs("Trace.later", 5, false);
  EXPECT_EQ(levelsOf(first), 0U);
  EXPECT_EQ(levelsOf(second), 0U);
}

TEST_F(Trace, ListsHandlesWhileTheyLive) {
  auto const count = [] {
    int found = 0;
    TraceControl::forEachHandle(
        [](const char* name, U32 levels, void* context) {
          if (std::string_view(name) == "Trace.listed") {
            EXPECT_EQ(levels, 1U);
            ++*static_cast<int*>(context);
          }
        },
        &found);
    return found;
  };
  EXPECT_EQ(count(), 0);
  {
    TraceHandle const a("Trace.listed", true);
    {
      TraceHandle const b("Trace.listed", true);
      TraceHandle const c("Trace.listed", true);
      EXPECT_EQ(count(), 3);
    }
    EXPECT_EQ(count(), 1);
  }
  EXPECT_EQ(count(), 0);
}

TEST_F(Trace, GivesTheSinkEveryField) {
  TraceHandle const handle("Trace.fields", false);
  TraceControl::levelIs("Trace.fields", 8, true);
  ZEL_TRACE(handle, 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", 524, "handleInitialized",
            "IpEntryRequestCliFormat::"
                << "handleInitialized");
  ASSERT_EQ(records.size(), 1U);
  const Kept& record = records[0];
  EXPECT_EQ(record.handle, "Trace.fields");
  EXPECT_EQ(record.level, 8U);
  EXPECT_EQ(record.source, "VelmorTcamManagerBase/VelmorTcamCliTypes");
  EXPECT_EQ(record.sourceLine, 524U);
  EXPECT_EQ(record.function, "handleInitialized");
  EXPECT_EQ(record.text, "IpEntryRequestCliFormat::handleInitialized");
  EXPECT_THAT(record.line, testing::MatchesRegex(
                               "[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[.][0-9]{6}Z "
                               "Trace[.]fields/8 VelmorTcamManagerBase/VelmorTcamCliTypes:524 "
                               "handleInitialized: IpEntryRequestCliFormat::handleInitialized"));
}

TEST_F(Trace, StampsTheTimeOfTheClock) {
  TraceHandle const handle("Trace.time", true);
  static S64 time;
  TraceControl::sinkIs(
      [](const TraceRecord& record, void* context) {
        time = record.time;
        *static_cast<std::string*>(context) = record.line.substr(0, 26);
      },
      &records.emplace_back().line);
  // Not std::time: its coarse clock is up to a tick late.
  auto const now = [] {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  };
  std::time_t const before = now();
  ZEL_TRACE(handle, 0, "s", 1, "f", "");
  std::time_t const after = now();
  auto const seconds = static_cast<std::time_t>(time / 1'000'000'000);
  EXPECT_GE(seconds, before);
  EXPECT_LE(seconds, after);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char expected[40];
  std::strftime(expected, sizeof expected, "%Y-%m-%dT%H:%M:%S.", &parts);
  char micro[8];
  std::snprintf(micro, sizeof micro, "%06d", static_cast<int>(time / 1000 % 1'000'000));
  EXPECT_EQ(records[0].line, std::string(expected) + micro);
}

TEST_F(Trace, EvaluatesNothingWhenOff) {
  TraceHandle const handle("Trace.lazy", false);
  TraceControl::levelIs("Trace.lazy", 7, true);
  int evaluated = 0;
  auto const piece = [&] { return ++evaluated; };
  auto const line = [&] {
    ++evaluated;
    return 1U;
  };
  ZEL_TRACE(handle, 8, "s", line(), "f", piece() << ' ' << piece());
  EXPECT_EQ(evaluated, 0);
  EXPECT_TRUE(records.empty());
  ZEL_TRACE(handle, 7, "s", line(), "f", piece() << ' ' << piece());
  EXPECT_EQ(evaluated, 3);
  EXPECT_EQ(records.size(), 1U);
}

TEST_F(Trace, IsOneStatement) {
  TraceHandle const handle("Trace.statement", true);
  if (handle.enabled(1))
    ZEL_TRACE(handle, 0, "s", 1, "f", "wrong");
  else
    ZEL_TRACE(handle, 0, "s", 1, "f", "right");
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].text, "right");
}

enum class Shade : U8 { dark };
Halvo::String stringValue(Shade) { return "dark"; }

TEST_F(Trace, StreamsPiecesOfEveryKind) {
  Zel::TraceStream stream;
  const char* const null = nullptr;
  stream << "a" << std::string_view("b\0c", 3) << Halvo::String("d") << std::string("e") << 'f'
         << '|' << true << false << '|' << U8{200} << '|' << S8{-1} << '|'
         << std::numeric_limits<U64>::max() << '|' << std::numeric_limits<S64>::min() << '|' << -5
         << '|' << 0 << '|' << 7U << '|' << 2.5 << '|' << 1e300 << '|'
         << reinterpret_cast<const void*>(0xABC) << '|' << null << '|' << Shade::dark << '|'
         << Trelix::IpAddr::fromHostOrder(0x0A000001);
  using namespace std::string_view_literals;
  EXPECT_EQ(
      stream.text(),
      "ab\0cdef|truefalse|200|-1|18446744073709551615|-9223372036854775808|-5|0|7|2.5|1e+300|0xabc|"
      "(null)|dark|10.0.0.1"sv);
}

TEST_F(Trace, ShowsEveryControlCharacterAsItsNumber) {
  TraceHandle const handle("Trace.control", true);
  for (int c = 0; c < 256; ++c) {
    records.clear();
    ZEL_TRACE(handle, 0, "s", 1, "f", static_cast<char>(c) << "|");
    char number[8];
    std::snprintf(number, sizeof number, "\\x%02x", static_cast<unsigned>(c));
    std::string const shown = c == '\n'               ? "\\n"
                              : c == '\r'             ? "\\r"
                              : c == '\t'             ? "\\t"
                              : c < 0x20 || c == 0x7F ? number
                                                      : std::string(1, static_cast<char>(c));
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(records[0].line.ends_with(" f: " + shown + "|")) << c;
  }
}

enum class Silent : U8 { one };
Halvo::String stringValue(Silent) { throw std::bad_alloc(); }
struct Mute {
  Halvo::String stringValue() const { throw std::bad_alloc(); }
};

TEST_F(Trace, GoesOnWhereAPieceHasNoText) {
  Zel::TraceStream stream;
  stream << "a" << Silent::one << "b" << Mute() << "c";
  EXPECT_EQ(stream.text(), "a(no text)b(no text)c");
}

TEST_F(Trace, KeepsARecordOnOneLine) {
  TraceHandle const handle("Trace.oneLine", true);
  std::string const text("a\nb\rc\td\x01\x7F\\\xC3\xA9");
  ZEL_TRACE(handle, 0, "s", 1, "f", text << std::string(3000, 'x'));
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].text, text + std::string(3000, 'x'));
  EXPECT_TRUE(
      records[0].line.ends_with("f: a\\nb\\rc\\td\\x01\\x7f\\\xC3\xA9" + std::string(3000, 'x')));
}

TEST_F(Trace, EmitsOnCloseOnce) {
  TraceHandle const handle("Trace.close", true);
  {
    Zel::TraceHelper record(handle, 0, "s", 1, "f");
    record.stream() << 1;
    EXPECT_TRUE(records.empty());
    record.close();
    EXPECT_EQ(records.size(), 1U);
    record.close();
  }
  EXPECT_EQ(records.size(), 1U);
}

TEST_F(Trace, LeavesErrnoAlone) {
  TraceHandle const handle("Trace.errno", true);
  TraceControl::sinkIs([](const TraceRecord&, void*) { errno = EBADF; }, nullptr);
  errno = ENOTTY;
  ZEL_TRACE(handle, 0, "s", 1, "f", std::string(500, 'x'));
  EXPECT_EQ(errno, ENOTTY);
  TraceHandle const another("Trace.errno2", true);
  EXPECT_EQ(errno, ENOTTY);
}

TEST_F(Trace, LeavesErrnoAloneWhenStandardErrorIsClosed) {
  TraceHandle const handle("Trace.errno3", true);
  TraceControl::sinkIs(nullptr, nullptr);
  int const kept = dup(STDERR_FILENO);
  close(STDERR_FILENO);
  errno = ENOTTY;
  ZEL_TRACE(handle, 0, "s", 1, "f", "lost");
  int const after = errno;
  dup2(kept, STDERR_FILENO);
  close(kept);
  EXPECT_EQ(after, ENOTTY);
}

TEST_F(Trace, DropsWhatTheSinkTraces) {
  TraceHandle const handle("Trace.recursion", true);
  struct Context {
    const TraceHandle& handle;
    int calls = 0;
  } context{handle};
  TraceControl::sinkIs(
      [](const TraceRecord&, void* c) {
        auto& mine = *static_cast<Context*>(c);
        ++mine.calls;
        ZEL_TRACE(mine.handle, 0, "s", 1, "sink", "again");
      },
      &context);
  ZEL_TRACE(handle, 0, "s", 1, "f", "once");
  ZEL_TRACE(handle, 0, "s", 1, "f", "twice");
  EXPECT_EQ(context.calls, 2);
}

TEST_F(Trace, WritesOneLineOnStandardError) {
  TraceHandle const handle("Trace.stderr", true);
  TraceControl::sinkIs(nullptr, nullptr);
  std::string const text = standardErrorOf([&] {
    ZEL_TRACE(handle, 0, "src", 3, "fn", "a\n" << 1);
  });
  EXPECT_THAT(
      text, testing::MatchesRegex("[-0-9]{10}T[:.0-9]{15}Z Trace[.]stderr/0 src:3 fn: a\\\\n1\n"));
}

TEST_F(Trace, IsSafeFromManyThreads) {
  static std::atomic<bool> stop;
  stop = false;
  static std::atomic<int> emitted;
  emitted = 0;
  TraceHandle const handle("Trace.threads", true);
  static std::atomic<int> garbled;
  garbled = 0;
  TraceControl::sinkIs(
      [](const TraceRecord& r, void*) {
        ++(r.text == "ab1" && r.line.ends_with("f: ab1") ? emitted : garbled);
      },
      nullptr);
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&handle] {
      while (!stop) {
        ZEL_TRACE(handle, 0, "s", 1, "f", "a" << 'b' << 1);
        ZEL_TRACE(handle, 4, "s", 1, "f", "ab" << 1);
        TraceHandle const own("Trace.threads", true);
        ZEL_TRACE(own, 0, "s", 1, "f", "ab1");
      }
    });
  }
  // Go on until the threads have worked for a while, even if they start late.
  for (int i = 0; i < 2000 || emitted < 1000; ++i) {
    TraceControl::levelIs("Trace.threads", 4, i % 2 == 0);
    TraceControl::levelIs("Trace.threads", 0, true);
  }
  stop = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(garbled, 0);
}

using TraceDeathTest = Trace;

TEST_F(TraceDeathTest, StopsOnALevelThatDoesNotExist) {
  EXPECT_DEATH(
      TraceControl::levelIs("Trace.level", 10, true),
      "^assertion failed: level <= traceLevelMax at platform/Zel/Trace:0 in "
      "static void Zel::TraceControl::levelIs\\(std::string_view, unsigned int, bool\\)\n$");
}

// The first handle of a process reads the environment, once. So each row runs in a process of its
// own: a death test starts this program again.
struct EnvironmentRow {
  const char* value;
  U32 levels;  // of the handle "Tcam"
  std::vector<const char*> malformed;
};

const EnvironmentRow environmentRows[] = {
    {"", 0, {}},
    {"Tcam/8", 1U << 8, {}},
    {"Tcam/058", 1U << 0 | 1U << 5 | 1U << 8, {}},
    {"Tcam/88", 1U << 8, {}},
    {"Tcam/1,Other/2,Tcam/3", 1U << 1 | 1U << 3, {}},
    {"tcam/8", 0, {}},
    {"Tcam", 0, {"'Tcam'"}},
    {"Tcam/", 0, {"'Tcam/'"}},
    {"/8", 0, {"'/8'"}},
    {"Tcam/8x", 0, {"'Tcam/8x'"}},
    {"Tcam/-1,Tcam/2", 1U << 2, {"'Tcam/-1'"}},
    {"Tcam/09,Tcam/:", 1U << 9 | 1U, {"'Tcam/:'"}},
    {"Tcam/4,,Tcam/ 5", 1U << 4, {"''", "'Tcam/ 5'"}},
    {"a\nb", 0, {"'a\\nb'"}},
};

TEST(TraceEnvironment, TurnsLevelsOnAndNamesMalformedParts) {
  for (const EnvironmentRow& row : environmentRows) {
    SCOPED_TRACE(row.value);
    EXPECT_EXIT(
        {
          setenv("VELMOR_TRACE", row.value, 1);
          std::string said = standardErrorOf([&] {
            TraceHandle const tcam("Tcam", false);
            if (levelsOf(tcam) != row.levels) std::_Exit(1);
            TraceHandle const again("Tcam", true);
            if (levelsOf(again) != (row.levels | 1U)) std::_Exit(2);
          });
          std::string expected;
          for (const char* part : row.malformed) {
            expected += std::string("VELMOR_TRACE: ignored ") + part +
                        ", which is not NAME/LEVELS with the digits of levels\n";
          }
          if (said != expected) std::fputs(said.c_str(), stderr);
          std::_Exit(said == expected ? 0 : 3);
        },
        testing::ExitedWithCode(0), "");
  }
}

TEST(TraceEnvironment, YieldsToTheProgram) {
  EXPECT_EXIT(
      {
        setenv("VELMOR_TRACE", "Tcam/58", 1);
        TraceControl::levelIs("Tcam", 8, false);
        TraceControl::levelIs("Tcam", 1, true);
        TraceHandle const tcam("Tcam", false);
        if (levelsOf(tcam) != (1U << 5 | 1U << 1)) std::_Exit(1);
        TraceControl::levelIs("Tcam", 5, false);
        std::_Exit(levelsOf(tcam) == 1U << 1 ? 0 : 2);
      },
      testing::ExitedWithCode(0), "");
}

TEST(TraceEnvironment, IsReadByTheFirstHandleAlone) {
  EXPECT_EXIT(
      {
        unsetenv("VELMOR_TRACE");
        TraceHandle const first("First", false);
        setenv("VELMOR_TRACE", "Tcam/8", 1);
        TraceHandle const tcam("Tcam", false);
        std::_Exit(levelsOf(tcam) == 0 ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST_F(TraceDeathTest, StopsOnAHandleWithoutAName) {
  const char* volatile name = nullptr;  // hidden from the compiler
  EXPECT_DEATH(Zel::TraceHandle(name, false),
               "^assertion failed: name != nullptr at platform/Zel/Trace:0 in "
               "Zel::TraceHandle::TraceHandle\\(const char\\*, bool\\)\n$");
}

}  // namespace

// Each death test starts this program again, so that no other test's handle has read the
// environment.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  return RUN_ALL_TESTS();
}
