// Log messages: declared as constant descriptors that tooling finds in a library without running
// it, and logged through handles.
//
//     ZEL_LOG_DESCRIPTORS(messages, {"LINK_DOWN", "Link of port %s went down",
//                                    "The port lost its carrier.", "\x02", 4});
//     Zel::LogHandle linkDown(messages[0], Halvo::Duration(), 1.0, 0, 0);
//
//     linkDown.log("Ethernet3");   // standard error: %LINK_DOWN-4: Link of port Ethernet3 went
//     down
//
// Descriptors are for source files, outside of any function, class or template: only there do the
// compilers keep to the section.
#pragma once

#include <cstddef>
#include <string_view>

#include "Halvo/Duration.h"
#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// One log message. Five 8-byte words that lie back to back in the section `.corvex_logmsg`, the
/// pointers relocated as the library is loaded. All texts are NUL-terminated.
struct LogDescriptor {
  const char* key;          ///< the message's name: "LINK_DOWN"
  const char* format;       ///< its text, with one %s for the argument; %% is a percent sign
  const char* explanation;  ///< what it means, for the one who reads it
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

/// Lets the messages of one handle through, or holds them back.
///
/// Time falls into windows: a message that comes when no window is open opens one. A window lets
/// its first message through and `burst` more, and holds the rest back. It is `interval` long;
/// after a window that held something back, the next, when it opens within the same length of time,
/// is `growth` times as long as it was, up to an hour or `interval` if that is more. `limit` bounds
/// the messages that are let through in all.
///
/// Threads: one at a time; a LogHandle sees to that.
class VELMOR_PLATFORM_API LogLimiter {
 public:
  /// An `interval` of 0 or less: no windows, everything passes. A `growth` under 1 counts as 1, a
  /// negative `burst` as 0, a `limit` of 0 or less as none.
  constexpr LogLimiter(Halvo::Duration interval, double growth, int burst, int limit) noexcept
      : interval_(interval.nanoseconds()),
        growth_(growth >= 1 ? growth : 1),  // not a number counts as 1 too
        burst_(burst > 0 ? burst : 0),
        limit_(limit > 0 ? limit : 0) {}

  /// Whether a message at `now` passes; nanoseconds of any clock that does not go back.
  bool admit(S64 now) noexcept;
  /// How many messages were held back since this was last asked.
  U64 takeSuppressed() noexcept;

 private:
  S64 interval_;
  double growth_;
  int burst_;
  int limit_;
  bool opened_ = false;  // whether there has been a window
  S64 windowBegin_ = 0;
  S64 windowSize_ = 0;
  int inWindow_ = 0;         // let through in the window
  bool windowHeld_ = false;  // whether the window held something back
  int passed_ = 0;           // let through in all, while there is a limit
  U64 suppressed_ = 0;
};

/// One message that was logged, as a sink gets it. The texts live until the sink returns.
struct LogRecord {
  const char* key;
  U64 severity;
  std::string_view text;  ///< the format with the argument in it
  const char* explanation;
  const char* codeString;
  U64 suppressed;  ///< messages of this handle that were held back before this one
};

/// Where log records go instead of standard error. Must not throw.
using LogSink = void (*)(const LogRecord& record, void* context);

/// What a program logs one message through.
///
/// While it lives it is on the list of handles, in the order of construction. Constructing one is
/// cheap, a lock and a few stores, and meant for a static object.
///
/// Threads: safe from any thread. A handle must outlive the calls of its log().
class VELMOR_PLATFORM_API LogHandle {
 public:
  /// `descriptor` is kept, not copied. The others limit the rate, as LogLimiter says: at most
  /// 1 + `burst` messages in `interval`, which grows by the factor `growth` while messages keep
  /// being held back; at most `limit` in all. `(descriptor, Halvo::Duration(), 1.0, 0, 0)` has no
  /// limit.
  LogHandle(const LogDescriptor& descriptor, Halvo::Duration interval, double growth, int burst,
            int limit) noexcept;
  LogHandle(const LogHandle&) = delete;
  LogHandle& operator=(const LogHandle&) = delete;
  ~LogHandle();

  const LogDescriptor& descriptor() const noexcept { return descriptor_; }

  /// Logs the message with `argument` in the place of its %s. Without a sink, one line goes to
  /// standard error in one write(2):
  ///
  ///     %KEY-SEVERITY: TEXT
  ///
  /// with " (N more like it suppressed)" after it when the limits have held some back, and control
  /// characters written as \n, \r, \t or \xNN. A format that does not take exactly one %s stops
  /// the process. Leaves errno as it was. Throws std::bad_alloc when memory runs out; the message
  /// is then not logged, and not counted against the limits.
  void log(const Halvo::String& argument) const;

  /// Sends every handle's messages to `sink`, one at a time, with `context`; null goes back to
  /// standard error. When it returns no thread is in the sink before. A sink must not log, nor call
  /// sinkIs.
  static void sinkIs(LogSink sink, void* context) noexcept;

  /// The handles, the oldest first; null behind the last. Walking the list is safe as long as no
  /// handle is being made or destroyed.
  static const LogHandle* first() noexcept;
  const LogHandle* next() const noexcept;
  /// The handle of the message with this key; the oldest where there are several, null where there
  /// is none. A program logs a message that a library declares by it:
  ///
  ///     if (auto* handle = Zel::LogHandle::find("VELMOR_CONFIG_CHANGE"))
  ///     handle->log("tcam-agent");
  static const LogHandle* find(std::string_view key) noexcept;

 private:
  const LogDescriptor& descriptor_;
  mutable LogLimiter limiter_;  // logging counts, and changes nothing else of the handle
  LogHandle* next_ = nullptr;
};

}  // namespace Zel

#if defined(__clang__)
// clang's AddressSanitizer would put a red zone behind the array, and so a hole into the section.
#define ZEL_LOG_SECTION_NO_SANITIZE __attribute__((no_sanitize("address")))
#else
#define ZEL_LOG_SECTION_NO_SANITIZE
#endif

/// Defines the constant array `name` of LogDescriptors, one brace-enclosed initialiser each, in the
/// section `.corvex_logmsg`. `retain` keeps it from a linker that drops unreferenced sections,
/// `used` from the compiler; the alignment is the variable's own, since a compiler may align large
/// arrays further and leave holes.
#define ZEL_LOG_DESCRIPTORS(name, ...)                                                      \
  __attribute__((section(".corvex_logmsg"), used, retain, aligned(8)))                      \
  ZEL_LOG_SECTION_NO_SANITIZE static constexpr ::Zel::LogDescriptor name[] = {__VA_ARGS__}; \
  static_assert(::Zel::areLogDescriptors(name),                                             \
                "every text is there and every format takes exactly one %s")
