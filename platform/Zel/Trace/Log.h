// Log messages. A constant descriptor declares a message: tooling finds it in a library without
// running it. A handle logs the message.
//
//     ZEL_LOG_DESCRIPTORS(messages, {"LINK_DOWN", "Link of port %s went down",
//                                    "The port lost its carrier.", "\x02", 4});
//     Zel::LogHandle linkDown(messages[0], Halvo::Duration(), 1.0, 0, 0);
//
//     linkDown.log("Ethernet3");
//     // standard error: %LINK_DOWN-4: Link of port Ethernet3 went down
//
// Define descriptors in source files, outside of any function, class or template. Elsewhere
// compilers do not always keep to the section.
#pragma once

#include <cstddef>
#include <string_view>

#include "Halvo/Duration.h"
#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// One log message: five 8-byte words. Descriptors lie back to back in the section
/// `.corvex_logmsg`. Their pointers are relocated when the library is loaded. All texts are
/// NUL-terminated.
struct LogDescriptor {
  const char* key;          ///< the message's name: "LINK_DOWN"
  const char* format;       ///< its text, with one %s for the argument; %% is a percent sign
  const char* explanation;  ///< what it means, for readers of the log
  const char* codeString;   ///< bytes for the log tooling
  U64 severity;             ///< as in syslog: 0 emergency, 3 error, 4 warning, 6 information
};
static_assert(sizeof(LogDescriptor) == 40 && alignof(LogDescriptor) == 8);
static_assert(offsetof(LogDescriptor, key) == 0 && offsetof(LogDescriptor, format) == 8);
static_assert(offsetof(LogDescriptor, explanation) == 16);
static_assert(offsetof(LogDescriptor, codeString) == 24 && offsetof(LogDescriptor, severity) == 32);

/// Whether `format` takes exactly one %s and has no other conversion but %%.
constexpr bool isLogFormat(const char* format) noexcept {
  int arguments = 0;
  for (const char* at = format; *at != '\0'; ++at) {
    if (*at != '%') continue;
    ++at;
    if (*at == 's') {
      ++arguments;
    } else if (*at != '%') {
      return false;
    }
  }
  return arguments == 1;
}

template <std::size_t count>
constexpr bool areLogDescriptors(const LogDescriptor (&descriptors)[count]) noexcept {
  for (const LogDescriptor& d : descriptors) {
    if (d.key == nullptr || d.format == nullptr || d.explanation == nullptr ||
        d.codeString == nullptr || !isLogFormat(d.format)) {
      return false;
    }
  }
  return true;
}

/// Lets each message of one handle pass, or holds it back.
///
/// When no window is open, a message opens one. A window lets its first message and `burst` more
/// pass, and holds the rest back. It is `interval` long. If a window held something back, and the
/// next one opens within the same length of time after its end, the next one is `growth` times as
/// long. A window grows to an hour at most, or to `interval` if that is longer. `limit` is the
/// largest number of messages that pass in all.
///
/// Threads: one thread at a time; LogHandle takes care of that.
class VELMOR_PLATFORM_API LogLimiter {
 public:
  /// With an `interval` of 0 or less there are no windows: only `limit` holds messages back. A
  /// `growth` under 1 counts as 1, a negative `burst` as 0. A `limit` of 0 or less means no limit.
  constexpr LogLimiter(Halvo::Duration interval, double growth, int burst, int limit) noexcept
      : interval_(interval.nanoseconds()),
        growth_(growth >= 1 ? growth : 1),  // NaN counts as 1 too
        burst_(burst > 0 ? burst : 0),
        limit_(limit > 0 ? limit : 0) {}

  /// Whether a message at time `now` passes. `now` is in nanoseconds, of any clock that does not go
  /// back.
  bool admit(S64 now) noexcept;
  /// Returns how many messages were held back since the last call.
  U64 takeSuppressed() noexcept;

 private:
  S64 interval_;
  double growth_;
  int burst_;
  int limit_;
  bool opened_ = false;  // whether there ever was a window
  S64 windowBegin_ = 0;
  S64 windowSize_ = 0;
  int inWindow_ = 0;         // messages that passed in the window
  bool windowHeld_ = false;  // whether the window held something back
  int passed_ = 0;           // messages that passed in all, while there is a limit
  U64 suppressed_ = 0;
};

/// One logged message, as a sink gets it. The texts live until the sink returns.
struct LogRecord {
  const char* key;
  U64 severity;
  std::string_view text;  ///< the format with the argument in it
  const char* explanation;
  const char* codeString;
  U64 suppressed;  ///< messages of this handle that were held back before this one
};

/// Receives log records in place of standard error. Must not throw.
using LogSink = void (*)(const LogRecord& record, void* context);

/// Logs one message.
///
/// A handle is in the list of handles as long as it lives. The list is in the order of
/// construction. Declare a handle as a static object: its construction is cheap, a lock and a few
/// stores.
///
/// Threads: safe from any thread. A handle must outlive the calls of its log().
class VELMOR_PLATFORM_API LogHandle {
 public:
  /// Keeps a reference to `descriptor`. The other arguments limit the rate, as LogLimiter
  /// describes. In `interval`, at most 1 + `burst` messages pass. As long as messages are held
  /// back, `interval` grows by the factor `growth`. In all, at most `limit` messages pass.
  /// `(descriptor, Halvo::Duration(), 1.0, 0, 0)` has no limit.
  LogHandle(const LogDescriptor& descriptor, Halvo::Duration interval, double growth, int burst,
            int limit) noexcept;
  LogHandle(const LogHandle&) = delete;
  LogHandle& operator=(const LogHandle&) = delete;
  ~LogHandle();

  const LogDescriptor& descriptor() const noexcept { return descriptor_; }

  /// Logs the message, with `argument` in place of its %s. Without a sink, it writes one line to
  /// standard error with one write(2):
  ///
  ///     %KEY-SEVERITY: TEXT
  ///
  /// If the limits have held messages back, " (N more like it suppressed)" follows in that line.
  /// Control characters are written as \n, \r, \t or \xNN. A format that does not take exactly one
  /// %s stops the process. errno is unchanged. Throws std::bad_alloc when memory runs out; the
  /// message is then not logged, and does not count against the limits.
  void log(const Halvo::String& argument) const;

  /// Sends the messages of all handles to `sink`, one at a time, with `context`. Null sends them to
  /// standard error again. When this returns, no thread is still in the previous sink. A sink must
  /// not log, and must not call sinkIs.
  static void sinkIs(LogSink sink, void* context) noexcept;

  /// The list of handles, oldest first; null behind the last. Walking the list is safe as long as
  /// no handle is created or destroyed.
  static const LogHandle* first() noexcept;
  const LogHandle* next() const noexcept;
  /// The handle of the message with this key: the oldest if there are several, null if there is
  /// none. A program uses it to log a message that a library declares:
  ///
  ///     auto* const handle = Zel::LogHandle::find("VELMOR_CONFIG_CHANGE");
  ///     if (handle != nullptr) handle->log("tcam-agent");
  static const LogHandle* find(std::string_view key) noexcept;

 private:
  const LogDescriptor& descriptor_;
  mutable LogLimiter limiter_;  // log() changes only these counts of the handle
  LogHandle* next_ = nullptr;
};

}  // namespace Zel

#if defined(__clang__)
// clang's AddressSanitizer would put a red zone behind the array: a hole in the section.
#define ZEL_LOG_SECTION_NO_SANITIZE __attribute__((no_sanitize("address")))
#else
#define ZEL_LOG_SECTION_NO_SANITIZE
#endif

/// Defines the constant array `name` of LogDescriptors in the section `.corvex_logmsg`. Each
/// further argument is an initialiser in braces. `used` stops the compiler from dropping the array,
/// and `retain` stops a linker that drops unreferenced sections. The alignment is set on the
/// variable: otherwise a compiler may align large arrays further and leave holes.
#define ZEL_LOG_DESCRIPTORS(name, ...)                                                      \
  __attribute__((section(".corvex_logmsg"), used, retain, aligned(8)))                      \
  ZEL_LOG_SECTION_NO_SANITIZE static constexpr ::Zel::LogDescriptor name[] = {__VA_ARGS__}; \
  static_assert(::Zel::areLogDescriptors(name),                                             \
                "every text is there and every format takes exactly one %s")
