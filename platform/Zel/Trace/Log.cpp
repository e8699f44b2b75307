#include "Zel/Trace/Log.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <utility>

#include "Zel/Base/Assert.h"
#include "Zel/Format/LineText.h"

namespace Zel {

namespace {

constinit std::mutex listLock;  // guards the list of handles
constinit LogHandle* firstHandle = nullptr;
constinit LogHandle* lastHandle = nullptr;

constinit std::mutex logLock;  // guards the limiters and the sink; held while the sink runs
constinit LogSink sink = nullptr;
constinit void* sinkContext = nullptr;

constexpr AssertionSite badFormat{"isLogFormat(descriptor.format)", "platform/Zel/Log", 0,
                                  "void Zel::LogHandle::log(const Halvo::String&) const"};

Halvo::String filled(const char* format, std::string_view argument) {
  Halvo::String text;
  text.reserve(std::strlen(format) + argument.size());
  for (const char* at = format; *at != '\0'; ++at) {
    if (*at != '%') {
      text += *at;
    } else if (*++at == 's') {
      text += argument;
    } else {
      text += '%';
    }
  }
  return text;
}

Halvo::String lineOf(const LogDescriptor& descriptor, std::string_view text, U64 suppressed) {
  Halvo::String line;
  line.reserve(text.size() + 100);
  line += '%';
  appendOneLine(line, descriptor.key);
  line += '-';
  appendDecimal(line, descriptor.severity);
  line += ": ";
  appendOneLine(line, text);
  if (suppressed != 0) {
    line += " (";
    appendDecimal(line, suppressed);
    line += " more like it suppressed)";
  }
  line += '\n';
  return line;
}

S64 steadyNow() noexcept {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

class ErrnoKeeper {
 public:
  ErrnoKeeper() noexcept : kept_(errno) {}
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
  ~ErrnoKeeper() { errno = kept_; }

 private:
  int kept_;
};

}  // namespace

bool LogLimiter::admit(S64 now) noexcept {
  if (limit_ != 0 && passed_ == limit_) {
    ++suppressed_;
    return false;
  }
  if (interval_ > 0) {
    if (opened_ && now - windowBegin_ < windowSize_) {
      if (inWindow_ > burst_) {
        windowHeld_ = true;
        ++suppressed_;
        return false;
      }
      ++inWindow_;
    } else {
      constexpr S64 hour = 3'600'000'000'000;
      // A message long after the window shows that it was quiet: the next window starts small
      // again.
      bool const grows = opened_ && windowHeld_ && now - windowBegin_ - windowSize_ < windowSize_;
      S64 const largest = std::max(interval_, hour);
      double const grown = static_cast<double>(windowSize_) * growth_;
      if (!grows) {
        windowSize_ = interval_;
      } else if (grown < static_cast<double>(largest)) {
        windowSize_ = static_cast<S64>(grown);
      } else {
        windowSize_ = largest;
      }
      opened_ = true;
      windowBegin_ = now;
      inWindow_ = 1;
      windowHeld_ = false;
    }
  }
  if (limit_ != 0) ++passed_;
  return true;
}

U64 LogLimiter::takeSuppressed() noexcept { return std::exchange(suppressed_, 0); }

LogHandle::LogHandle(const LogDescriptor& descriptor, Halvo::Duration interval, double growth,
                     int burst, int limit) noexcept
    : descriptor_(descriptor), limiter_(interval, growth, burst, limit) {
  std::lock_guard<std::mutex> const guard(listLock);
  (lastHandle == nullptr ? firstHandle : lastHandle->next_) = this;
  lastHandle = this;
}

LogHandle::~LogHandle() {
  std::lock_guard<std::mutex> const guard(listLock);
  LogHandle* before = nullptr;
  LogHandle** link = &firstHandle;
  while (*link != this) {
    before = *link;
    link = &before->next_;
  }
  *link = next_;
  if (lastHandle == this) lastHandle = before;
}

void LogHandle::log(const Halvo::String& argument) const {
  assertThat(isLogFormat(descriptor_.format), badFormat);
  ErrnoKeeper const keeper;
  std::lock_guard<std::mutex> const guard(logLock);
  // Decides on a copy: if memory runs out below, the message must not count.
  LogLimiter limiter = limiter_;
  if (!limiter.admit(steadyNow())) {
    limiter_ = limiter;
    return;
  }
  U64 const suppressed = limiter.takeSuppressed();
  Halvo::String const text = filled(descriptor_.format, argument);
  if (sink != nullptr) {
    limiter_ = limiter;
    sink({.key = descriptor_.key,
          .severity = descriptor_.severity,
          .text = text,
          .explanation = descriptor_.explanation,
          .codeString = descriptor_.codeString,
          .suppressed = suppressed},
         sinkContext);
  } else {
    Halvo::String const line = lineOf(descriptor_, text, suppressed);
    limiter_ = limiter;
    writeToStandardError(line);
  }
}

void LogHandle::sinkIs(LogSink newSink, void* context) noexcept {
  std::lock_guard<std::mutex> const guard(logLock);
  sink = newSink;
  sinkContext = context;
}

const LogHandle* LogHandle::first() noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  return firstHandle;
}

const LogHandle* LogHandle::find(std::string_view key) noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  const LogHandle* handle = firstHandle;
  while (handle != nullptr && key != handle->descriptor_.key) handle = handle->next_;
  return handle;
}

const LogHandle* LogHandle::next() const noexcept {
  std::lock_guard<std::mutex> const guard(listLock);
  return next_;
}

}  // namespace Zel
