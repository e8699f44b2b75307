#include "Zel/Trace/Trace.h"

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "Zel/Base/Assert.h"
#include "Zel/Format/LineText.h"

namespace Zel {

namespace {

// The levels that were set for all handles of one name.
struct Setting {
  std::string name;
  U32 decided = 0;  // levels that TraceControl has turned on or off
  U32 on = 0;       // the decided levels that are on
  U32 byEnvironment = 0;
  Setting* next = nullptr;
};

constinit std::mutex listLock;  // guards the handles, the settings and `environmentRead`
constinit TraceHandle* handles = nullptr;
constinit Setting* settings = nullptr;
constinit bool environmentRead = false;

constinit std::mutex sinkLock;  // held while a sink runs
constinit std::atomic<TraceSink> sink{nullptr};
constinit void* sinkContext = nullptr;
constinit thread_local bool inSink = false;

Setting* findSetting(std::string_view name) noexcept {
  for (Setting* s = settings; s != nullptr; s = s->next) {
    if (s->name == name) return s;
  }
  return nullptr;
}

Setting& settingOf(std::string_view name) {
  Setting* setting = findSetting(name);
  if (setting == nullptr) {
    setting = new Setting{.name = std::string(name), .next = settings};
    settings = setting;
  }
  // cppcheck-suppress nullPointerRedundantCheck  // it was made
  return *setting;
}

// The levels of a handle whose name has this setting. `byDefault` are its levels without one.
U32 levelsOf(const Setting* setting, U32 byDefault) noexcept {
  if (setting == nullptr) return byDefault;
  return (setting->on & setting->decided) |
         ((setting->byEnvironment | byDefault) & ~setting->decided);
}

void reportMalformed(std::string_view part) {
  Halvo::String line("VELMOR_TRACE: ignored ");
  line.append(quotedForMessage(part));
  line += ", which is not NAME/LEVELS with the digits of levels\n";
  writeToStandardError(line);
}

void readPart(std::string_view part) {
  std::size_t const slash = part.rfind('/');
  if (slash == std::string_view::npos || slash == 0 || slash + 1 == part.size()) {
    return reportMalformed(part);
  }
  U32 levels = 0;
  for (char const c : part.substr(slash + 1)) {
    if (c < '0' || c > '9') return reportMalformed(part);
    levels |= U32{1} << (c - '0');
  }
  settingOf(part.substr(0, slash)).byEnvironment |= levels;
}

void readEnvironment() noexcept {
  if (environmentRead) return;
  environmentRead = true;
  const char* const text = std::getenv("VELMOR_TRACE");
  if (text == nullptr || *text == '\0') return;
  try {
    std::string_view rest(text);
    for (;;) {
      std::size_t const comma = rest.find(',');
      readPart(rest.substr(0, comma));
      if (comma == std::string_view::npos) return;
      rest.remove_prefix(comma + 1);
    }
  } catch (const std::bad_alloc&) {
    // The parts that were read stay. Tracing is no reason to stop an agent.
  }
}

// Frees the settings at unload or exit. This is not an object's destructor: registering one would
// be code that runs at load. Other libraries may still make handles afterwards, which then have no
// settings.
[[gnu::destructor]] void releaseSettings() {
  std::lock_guard<std::mutex> const guard(listLock);
  while (settings != nullptr) delete std::exchange(settings, settings->next);
}

// 2024-05-01T12:34:56.123456Z
void appendTime(Halvo::String& out, std::chrono::nanoseconds sinceEpoch) {
  namespace chrono = std::chrono;
  auto const days = chrono::floor<chrono::days>(sinceEpoch);
  chrono::year_month_day const date{chrono::sys_days(days)};
  chrono::hh_mm_ss const time(chrono::floor<chrono::microseconds>(sinceEpoch - days));
  // The clock's nanoseconds reach from 1677 to 2262: the year is positive.
  appendDecimal(out, static_cast<U64>(static_cast<int>(date.year())), 4);
  out += '-';
  appendDecimal(out, static_cast<unsigned>(date.month()), 2);
  out += '-';
  appendDecimal(out, static_cast<unsigned>(date.day()), 2);
  out += 'T';
  appendDecimal(out, static_cast<U64>(time.hours().count()), 2);
  out += ':';
  appendDecimal(out, static_cast<U64>(time.minutes().count()), 2);
  out += ':';
  appendDecimal(out, static_cast<U64>(time.seconds().count()), 2);
  out += '.';
  appendDecimal(out, static_cast<U64>(time.subseconds().count()), 6);
  out += 'Z';
}

void emit(TraceRecord& record) {
  Halvo::String line;
  line.reserve(256);
  appendTime(line, std::chrono::nanoseconds(record.time));
  line += ' ';
  appendOneLine(line, record.handle);
  line += '/';
  appendDecimal(line, record.level);
  line += ' ';
  appendOneLine(line, record.source);
  line += ':';
  appendDecimal(line, record.sourceLine);
  line += ' ';
  appendOneLine(line, record.function);
  line += ": ";
  appendOneLine(line, record.text);
  record.line = line;

  if (sink.load(std::memory_order_relaxed) != nullptr) {
    std::lock_guard<std::mutex> const guard(sinkLock);
    if (TraceSink const current = sink.load(std::memory_order_relaxed)) {
      inSink = true;
      current(record, sinkContext);
      inSink = false;
      return;
    }
  }
  line += '\n';
  writeToStandardError(line);
}

}  // namespace

TraceHandle::TraceHandle(const char* name, bool enabledByDefault) noexcept : name_(name) {
  assertThat(name != nullptr, {"name != nullptr", "platform/Zel/Trace", 0,
                               "Zel::TraceHandle::TraceHandle(const char*, bool)"});
  int const before = errno;
  {
    std::lock_guard<std::mutex> const guard(listLock);
    readEnvironment();
    levels_.store(levelsOf(findSetting(name), enabledByDefault ? 1 : 0), std::memory_order_relaxed);
    next_ = handles;
    handles = this;
  }
  errno = before;
}

TraceHandle::~TraceHandle() {
  std::lock_guard<std::mutex> const guard(listLock);
  TraceHandle** link = &handles;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  levels_.store(0, std::memory_order_relaxed);
}

void TraceControl::levelIs(std::string_view name, unsigned level, bool on) {
  assertThat(level <= traceLevelMax,
             {"level <= traceLevelMax", "platform/Zel/Trace", 0,
              "static void Zel::TraceControl::levelIs(std::string_view, unsigned int, bool)"});
  U32 const bit = U32{1} << level;
  std::lock_guard<std::mutex> const guard(listLock);
  Setting& setting = settingOf(name);
  setting.decided |= bit;
  setting.on = on ? setting.on | bit : setting.on & ~bit;
  for (TraceHandle* handle = handles; handle != nullptr; handle = handle->next_) {
    if (handle->name_ != name) continue;
    U32 const levels = handle->levels_.load(std::memory_order_relaxed);
    handle->levels_.store(on ? levels | bit : levels & ~bit, std::memory_order_relaxed);
  }
}

void TraceControl::sinkIs(TraceSink newSink, void* context) noexcept {
  std::lock_guard<std::mutex> const guard(sinkLock);
  sinkContext = context;
  sink.store(newSink, std::memory_order_relaxed);
}

void TraceControl::forEachHandle(void (*visit)(const char*, U32, void*), void* context) {
  std::lock_guard<std::mutex> const guard(listLock);
  for (const TraceHandle* handle = handles; handle != nullptr; handle = handle->next_) {
    visit(handle->name_, handle->levels_.load(std::memory_order_relaxed), context);
  }
}

void TraceStream::append(std::string_view piece) noexcept {
  try {
    text_ += piece;
  } catch (...) {
    // The text so far stays.
  }
}

void TraceStream::appendSigned(S64 number) noexcept {
  if (number < 0) append("-");
  // Negated as unsigned: the smallest number has no positive counterpart.
  appendUnsigned(number < 0 ? U64{0} - static_cast<U64>(number) : static_cast<U64>(number));
}

void TraceStream::appendUnsigned(U64 number) noexcept {
  char digits[maxDecimalSize];
  append({digits, static_cast<std::size_t>(writeDecimal(digits, number) - digits)});
}

TraceStream& TraceStream::operator<<(double piece) noexcept {
  char digits[32];
  char* const end = std::to_chars(std::begin(digits), std::end(digits), piece).ptr;
  append({digits, static_cast<std::size_t>(end - digits)});
  return *this;
}

TraceStream& TraceStream::operator<<(const void* piece) noexcept {
  auto number = reinterpret_cast<std::uintptr_t>(piece);
  char digits[2 + 2 * sizeof number];
  char* begin = std::end(digits);
  do {
    *--begin = "0123456789abcdef"[number & 15];
    number >>= 4;
  } while (number != 0);
  *--begin = 'x';
  *--begin = '0';
  append({begin, static_cast<std::size_t>(std::end(digits) - begin)});
  return *this;
}

TraceHelper::TraceHelper(const TraceHandle& handle, unsigned level, const char* source, U32 line,
                         const char* function) noexcept
    : handle_(handle),
      level_(level),
      source_(source),
      line_(line),
      function_(function),
      errno_(errno) {}

void TraceHelper::close() noexcept {
  if (!open_) return;
  open_ = false;
  if (!inSink) {
    try {
      TraceRecord record{.time = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                     std::chrono::system_clock::now().time_since_epoch())
                                     .count(),
                         .handle = handle_.name(),
                         .level = level_,
                         .source = source_,
                         .sourceLine = line_,
                         .function = function_,
                         .text = stream_.text(),
                         .line = {}};
      emit(record);
    } catch (...) {
      // No memory for the line: this record is lost, and the program goes on.
    }
  }
  errno = errno_;
}

}  // namespace Zel
