#include "Zel/Trace/Log.h"

#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

ZEL_LOG_DESCRIPTORS(messages,
                    {"TEST_RESTART", "Restart of %s at 100%%", "The agent restarted.", "\x02", 3},
                    {"TEST_CHANGE", "%s changed", "The configuration changed.", "\x01", 6});
ZEL_LOG_DESCRIPTORS(moreMessages, {"TEST_MORE", "more of %s", "There is more.", "\x03", 7});

namespace {

using Halvo::Duration;
using Halvo::S64;
using Halvo::U64;
using Zel::LogDescriptor;
using Zel::LogHandle;
using Zel::LogLimiter;
using Zel::LogRecord;

struct Kept {
  std::string key;
  U64 severity;
  std::string text;
  std::string explanation;
  std::string codeString;
  U64 suppressed;
};

class Log : public testing::Test {
 protected:
  void SetUp() override { LogHandle::sinkIs(&keep, &records); }
  void TearDown() override { LogHandle::sinkIs(nullptr, nullptr); }

  static void keep(const LogRecord& r, void* context) {
    static_cast<std::vector<Kept>*>(context)->push_back(
        {r.key, r.severity, std::string(r.text), r.explanation, r.codeString, r.suppressed});
    errno = EBADF;
  }

  std::vector<Kept> records;
};

template <class F>
std::string standardErrorOf(F f) {
  testing::internal::CaptureStderr();
  f();
  return testing::internal::GetCapturedStderr();
}

TEST_F(Log, GivesTheSinkEveryField) {
  LogHandle handle(messages[0], Duration(), 1.0, 0, 0);
  errno = ENOTTY;
  handle.log("Velmor %s");
  EXPECT_EQ(errno, ENOTTY);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].key, "TEST_RESTART");
  EXPECT_EQ(records[0].severity, 3U);
  EXPECT_EQ(records[0].text, "Restart of Velmor %s at 100%");
  EXPECT_EQ(records[0].explanation, "The agent restarted.");
  EXPECT_EQ(records[0].codeString, "\x02");
  EXPECT_EQ(records[0].suppressed, 0U);
}

TEST_F(Log, WritesOneLineOnStandardError) {
  LogHandle::sinkIs(nullptr, nullptr);
  LogHandle handle(messages[1], Duration(3600.0), 1.0, 0, 0);
  EXPECT_EQ(standardErrorOf([&] {
              handle.log("a\nb");
              handle.log("held back");
            }),
            "%TEST_CHANGE-6: a\\nb changed\n");
}

TEST_F(Log, HasNoLimitByDefault) {
  LogHandle handle(messages[1], Duration(), 1.0, 0, 0);
  for (int i = 0; i < 1000; ++i) handle.log("x");
  EXPECT_EQ(records.size(), 1000U);
}

// On a fast or a slow machine: the messages that passed and those reported as held back add up to
// all of them.
TEST_F(Log, SaysHowManyWereHeldBack) {
  LogHandle handle(messages[1], Duration(0.05), 1.0, 1, 0);
  for (int i = 0; i < 5; ++i) handle.log("x");
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  handle.log("y");
  U64 total = records.size();
  for (const Kept& record : records) total += record.suppressed;
  EXPECT_EQ(total, 6U);

  LogHandle::sinkIs(nullptr, nullptr);
  LogHandle other(messages[1], Duration(0.05), 1.0, 0, 0);
  std::string const said = standardErrorOf([&] {
    for (int i = 0; i < 3; ++i) other.log("x");
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    other.log("x");
  });
  std::istringstream lines(said);
  std::string const plain = "%TEST_CHANGE-6: x changed";
  U64 logged = 0;
  for (std::string line; std::getline(lines, line);) {
    ++logged;
    if (line == plain) continue;
    unsigned more = 0;
    ASSERT_EQ(std::sscanf(line.c_str(), "%%TEST_CHANGE-6: x changed (%u more", &more), 1) << line;
    EXPECT_EQ(line, plain + " (" + std::to_string(more) + " more like it suppressed)");
    logged += more;
  }
  EXPECT_EQ(logged, 4U) << said;
}

TEST_F(Log, ListsHandlesInOrderOfConstruction) {
  std::size_t before = 0;
  for (const LogHandle* h = LogHandle::first(); h != nullptr; h = h->next()) ++before;
  auto const added = [before] {
    std::vector<const LogHandle*> found;
    for (const LogHandle* h = LogHandle::first(); h != nullptr; h = h->next()) found.push_back(h);
    found.erase(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(before));
    return found;
  };
  using List = std::vector<const LogHandle*>;
  LogHandle a(messages[1], Duration(), 1.0, 0, 0);
  auto* const b = new LogHandle(messages[0], Duration(), 1.0, 0, 0);
  auto* const c = new LogHandle(moreMessages[0], Duration(), 1.0, 0, 0);
  EXPECT_EQ(added(), (List{&a, b, c}));
  EXPECT_EQ(&a.descriptor(), &messages[1]);
  delete b;
  EXPECT_EQ(added(), (List{&a, c}));
  delete c;
  EXPECT_EQ(added(), (List{&a}));
  LogHandle d(messages[0], Duration(), 1.0, 0, 0);
  EXPECT_EQ(added(), (List{&a, &d}));
}

TEST_F(Log, IsSafeFromManyThreads) {
  static std::atomic<int> count;
  count = 0;
  LogHandle::sinkIs([](const LogRecord&, void*) { ++count; }, nullptr);
  LogHandle handle(messages[0], Duration(), 1.0, 0, 3000);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&handle] {
      for (int i = 0; i < 1000; ++i) {
        handle.log("x");
        LogHandle const other(messages[1], Duration(), 1.0, 0, 0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(count, 3000);
}

using LogDeathTest = Log;

TEST_F(LogDeathTest, StopsOnAFormatWithoutOneArgument) {
  LogDescriptor const bad{"BAD", "%d of %s", "", "", 3};
  LogHandle handle(bad, Duration(), 1.0, 0, 0);
  EXPECT_DEATH(handle.log("x"),
               "^assertion failed: isLogFormat\\(descriptor.format\\) at platform/Zel/Log:0 in "
               "void Zel::LogHandle::log\\(const Halvo::String&\\) const\n$");
}

TEST(LogFormat, TakesExactlyOneString) {
  struct Row {
    const char* format;
    bool good;
  } const rows[] = {{"%s", true},    {"a %s b", true}, {"%%%s%%", true}, {"", false},
                    {"none", false}, {"%s%s", false},  {"%d", false},    {"%s %d", false},
                    {"%s %", false}, {"%", false},     {"%%s", false},   {"%5s", false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.format);
    EXPECT_EQ(Zel::isLogFormat(row.format), row.good);
  }
}

// Shows which messages pass, given their times.
std::string passes(LogLimiter limiter, const std::vector<S64>& times) {
  std::string pattern;
  for (S64 const time : times) pattern += limiter.admit(time) ? '+' : '-';
  return pattern;
}

TEST(LogLimiter, LetsThroughWhatItsArgumentsSay) {
  auto const ns = [](S64 n) { return Duration(std::chrono::nanoseconds(n)); };
  struct Row {
    const char* what;
    LogLimiter limiter;
    std::vector<S64> times;
    const char* pattern;
  } const rows[] = {
      {"no limit", {ns(0), 1.0, 0, 0}, {0, 0, 0, 5, 5}, "+++++"},
      {"negative interval", {ns(-5), 2.0, 3, 0}, {0, 0, 0}, "+++"},
      {"one a window", {ns(10), 1.0, 0, 0}, {100, 101, 109, 110, 111, 119, 120}, "+--+--+"},
      {"a window begins with its first message", {ns(10), 1.0, 0, 0}, {0, 15, 24, 25}, "++-+"},
      {"a burst", {ns(10), 1.0, 2, 0}, {0, 1, 2, 3, 4, 10, 11, 12, 13}, "+++--+++-"},
      {"negative burst", {ns(10), 1.0, -1, 0}, {0, 1, 10}, "+-+"},
      {"growth after holding back",
       {ns(10), 2.0, 0, 0},
       {0, 5, 10, 19, 29, 30, 60, 69, 70},
       "+-+--+--+"},
      {"no growth when nothing was held", {ns(10), 2.0, 0, 0}, {0, 10, 20, 30}, "++++"},
      {"back to the interval after quiet",
       {ns(10), 2.0, 0, 0},
       {0, 5, 10, 15, 70, 79, 80},
       "+-+-+-+"},
      {"growth below one", {ns(10), 0.5, 0, 0}, {0, 5, 10, 15, 20}, "+-+-+"},
      {"growth not a number", {ns(10), std::nan(""), 0, 0}, {0, 5, 10, 15, 20}, "+-+-+"},
      {"growth is bounded by an hour",
       {ns(10), 1e300, 0, 0},
       {0, 5, 10, 11, 3'599'999'999'999, 3'600'000'000'010},
       "+-+--+"},
      {"limit in all", {ns(0), 1.0, 0, 3}, {0, 0, 0, 0, 1000}, "+++--"},
      {"limit and window", {ns(10), 1.0, 0, 2}, {0, 5, 10, 20, 1000}, "+-+--"},
      {"negative limit", {ns(0), 1.0, 0, -1}, {0, 0}, "++"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(passes(row.limiter, row.times), row.pattern);
  }
}

TEST(LogLimiter, CountsWhatItHoldsBack) {
  LogLimiter limiter(Duration(std::chrono::nanoseconds(10)), 1.0, 0, 0);
  for (S64 time = 0; time < 8; ++time) limiter.admit(time);
  EXPECT_EQ(limiter.takeSuppressed(), 7U);
  EXPECT_EQ(limiter.takeSuppressed(), 0U);
}

// Finds this program's own .corvex_logmsg. The section's header comes from the file. The loader's
// first module gives the address that the program was loaded at.
struct Section {
  const void* begin = nullptr;
  std::size_t size = 0;
  std::size_t alignment = 0;
};

Section logSection() {
  std::ifstream file("/proc/self/exe", std::ios::binary);
  std::ostringstream copy;
  copy << file.rdbuf();
  std::string const image = copy.str();
  Elf64_Ehdr header;
  std::memcpy(&header, image.data(), sizeof header);
  std::vector<Elf64_Shdr> sections(header.e_shnum);
  std::memcpy(sections.data(), image.data() + header.e_shoff, sections.size() * sizeof(Elf64_Shdr));
  U64 base = 0;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* context) {
        *static_cast<U64*>(context) = info->dlpi_addr;
        return 1;
      },
      &base);
  Section found;
  for (const Elf64_Shdr& section : sections) {
    if (std::strcmp(&image[sections[header.e_shstrndx].sh_offset + section.sh_name],
                    ".corvex_logmsg") != 0) {
      continue;
    }
    EXPECT_EQ(found.begin, nullptr) << "two sections of the name";
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the loader's addresses are numbers
    found = {reinterpret_cast<const void*>(base + section.sh_addr), section.sh_size,
             section.sh_addralign};
  }
  return found;
}

TEST(LogSection, HoldsTheDescriptorsBackToBack) {
  Section const section = logSection();
  ASSERT_NE(section.begin, nullptr);
  ASSERT_EQ(section.size, 3 * 40U);
  EXPECT_EQ(section.alignment, 8U);
  // Read from memory, as a tool reads it.
  LogDescriptor inSection[3];
  std::memcpy(inSection, section.begin, sizeof inSection);
  const LogDescriptor* const declared[] = {&messages[0], &messages[1], &moreMessages[0]};
  for (const LogDescriptor* wanted : declared) {
    int found = 0;
    for (const LogDescriptor& descriptor : inSection) {
      if (std::strcmp(descriptor.key, wanted->key) != 0) continue;
      ++found;
      EXPECT_STREQ(descriptor.format, wanted->format);
      EXPECT_STREQ(descriptor.explanation, wanted->explanation);
      EXPECT_STREQ(descriptor.codeString, wanted->codeString);
      EXPECT_EQ(descriptor.severity, wanted->severity);
    }
    EXPECT_EQ(found, 1) << wanted->key;
  }
  EXPECT_STREQ(messages[1].key, "TEST_CHANGE");
  EXPECT_EQ(&messages[1], &messages[0] + 1);
}

}  // namespace
