// Tracing: prints lines about what the code does. Each named handle has levels, which can be turned
// on and off while the program runs.
//
// A library has a handle, created at its first use, and trace sites:
//
//     Zel::TraceHandle& traceHandle() {
//       static Zel::TraceHandle handle("VelmorTcamCliTypes", false);
//       return handle;
//     }
//
//     ZEL_TRACE(traceHandle(), 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", 497,
//               "formatEntryRequest", "entry " << shadowId);
//
// Levels go from 0, the most important, to 9. They are independent: turning on 8 turns on only 8. A
// user turns levels on with an environment variable. It holds parts of the form NAME/LEVELS,
// separated by commas; each digit of LEVELS is a level:
//
//     VELMOR_TRACE=VelmorTcamCliTypes/058,Agent/3
//
// A program turns levels on and off with TraceControl. A record whose level is on becomes one line
// on standard error:
//
//     TIME HANDLE/LEVEL SOURCE:LINE FUNCTION: TEXT
//     2024-05-01T12:34:56.123456Z Agent/3 AgentBase/Restart:41 restartIs: warm restart
//
// The time is in UTC, with microseconds. A control character in any part is written as \n, \r, \t
// or \xNN, so that a record is always one line.
//
// Threads: everything is safe from any thread, but a record and its stream belong to the thread
// that opened the record. Tracing never changes errno and never throws.
#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace Zel {

/// The highest trace level. The lowest is 0.
inline constexpr unsigned traceLevelMax = 9;

/// A name under which trace sites are turned on, and its levels.
///
/// A handle is in the list of handles as long as it lives. Handles with the same name are turned on
/// together. Declare a handle as a function-local static: it is created when the first site is
/// reached, and destroyed at exit or when its library is unloaded. After that, all its levels read
/// as off as long as its memory is there.
class VELMOR_PLATFORM_API TraceHandle {
 public:
  /// Keeps `name`, without a copy. With `enabledByDefault`, level 0 is on from the start; otherwise
  /// no level is. Levels that VELMOR_TRACE or TraceControl has set for the name take precedence.
  /// The first handle of the process reads VELMOR_TRACE.
  TraceHandle(const char* name, bool enabledByDefault) noexcept;
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;
  ~TraceHandle();

  const char* name() const noexcept { return name_; }
  /// Whether `level` is on; this costs one load and a test. Levels over 9 are always off.
  bool enabled(unsigned level) const noexcept {
    return level <= traceLevelMax && (levels_.load(std::memory_order_relaxed) >> level & 1U) != 0;
  }

 private:
  friend class TraceControl;

  std::atomic<U32> levels_{0};  // bit n: level n is on
  const char* name_;
  TraceHandle* next_ = nullptr;
};

/// One trace record, as a sink gets it. The texts live until the sink returns.
struct TraceRecord {
  S64 time;  ///< nanoseconds since 1970-01-01 00:00 UTC
  const char* handle;
  unsigned level;
  const char* source;
  U32 sourceLine;
  const char* function;
  std::string_view text;  ///< the streamed text, unchanged
  std::string_view line;  ///< the whole line for standard error, without the line break
};

/// Receives trace records in place of standard error. Must not throw.
using TraceSink = void (*)(const TraceRecord& record, void* context);

/// Turns tracing on and off.
class VELMOR_PLATFORM_API TraceControl {
 public:
  /// Turns one level on or off for all handles called `name`, also for those made later. Takes
  /// precedence over VELMOR_TRACE. A level over 9 stops the process. May throw std::bad_alloc;
  /// nothing has changed then.
  static void levelIs(std::string_view name, unsigned level, bool on);

  /// Sends all records to `sink`, one at a time, with `context`. Null sends them to standard error
  /// again. When this returns, no thread is still in the previous sink. Records that the sink
  /// itself traces are dropped. The sink must not call sinkIs.
  static void sinkIs(TraceSink sink, void* context) noexcept;

  /// Calls `visit` for every handle, with its name and its levels (bit n: level n is on). `visit`
  /// must not create or destroy handles, nor call TraceControl.
  static void forEachHandle(void (*visit)(const char* name, U32 levels, void* context),
                            void* context);
};

/// Collects the text of a record piece by piece. When memory runs out, the text is cut short.
class VELMOR_PLATFORM_API TraceStream {
 public:
  TraceStream() noexcept = default;
  TraceStream(const TraceStream&) = delete;
  TraceStream& operator=(const TraceStream&) = delete;

  std::string_view text() const noexcept { return text_.view(); }

  /// Takes Halvo::String and std::string too.
  TraceStream& operator<<(std::string_view piece) noexcept {
    append(piece);
    return *this;
  }
  /// Null is written as "(null)".
  TraceStream& operator<<(const char* piece) noexcept {
    append(piece == nullptr ? std::string_view("(null)") : std::string_view(piece));
    return *this;
  }
  TraceStream& operator<<(char piece) noexcept {
    append({&piece, 1});
    return *this;
  }
  TraceStream& operator<<(bool piece) noexcept {
    append(piece ? "true" : "false");
    return *this;
  }
  /// All other integers, also U8, are written as decimal numbers.
  template <std::integral T>
  TraceStream& operator<<(T piece) noexcept {
    if constexpr (std::is_signed_v<T>) {
      appendSigned(piece);
    } else {
      appendUnsigned(piece);
    }
    return *this;
  }
  /// The shortest text that reads back as the same number.
  TraceStream& operator<<(double piece) noexcept;
  /// A memory address, as 0x and hexadecimal digits.
  TraceStream& operator<<(const void* piece) noexcept;
  /// A value that has a stringValue(): an address, an enumeration.
  template <class T>
  requires requires(const T& piece) {
    { piece.stringValue() } -> std::convertible_to<std::string_view>;
  }
  TraceStream& operator<<(const T& piece) noexcept {
    try {
      append(piece.stringValue());
    } catch (...) {
      append("(no text)");
    }
    return *this;
  }
  template <class T>
  requires std::is_enum_v<T> && requires(const T& piece) {
    { stringValue(piece) } -> std::convertible_to<std::string_view>;
  }
  TraceStream& operator<<(const T& piece) noexcept {
    try {
      append(stringValue(piece));
    } catch (...) {
      append("(no text)");
    }
    return *this;
  }

 private:
  void append(std::string_view piece) noexcept;
  void appendSigned(S64 number) noexcept;
  void appendUnsigned(U64 number) noexcept;

  Halvo::String text_;
};

/// One open trace record. close() or the destructor emits it, and sets errno back to its value at
/// the opening of the record. It does not test whether the level is on: the trace site has done so.
///
///     if (traceHandle().enabled(8)) [[unlikely]] {
///       Zel::TraceHelper record(traceHandle(), 8, source, 524, "handleInitialized");
///       record.stream() << "IpEntryRequestCliFormat::" << "handleInitialized";
///     }
class VELMOR_PLATFORM_API TraceHelper {
 public:
  /// Keeps `source` and `function`, without a copy, until the record is closed.
  TraceHelper(const TraceHandle& handle, unsigned level, const char* source, U32 line,
              const char* function) noexcept;
  TraceHelper(const TraceHelper&) = delete;
  TraceHelper& operator=(const TraceHelper&) = delete;
  ~TraceHelper() { close(); }

  TraceStream& stream() noexcept { return stream_; }
  /// Emits the record. A second call does nothing.
  void close() noexcept;

 private:
  const TraceHandle& handle_;
  unsigned level_;
  const char* source_;
  U32 line_;
  const char* function_;
  int errno_;
  bool open_ = true;
  TraceStream stream_;
};

}  // namespace Zel

/// A trace site. The last arguments are pieces, joined by <<. `handle` and `level` are always
/// evaluated, all other arguments only when the level is on. When it is off, the site costs getting
/// the handle, a load and a branch.
#define ZEL_TRACE(handle, level, source, line, function, ...)                                     \
  do {                                                                                            \
    const ::Zel::TraceHandle& zelTraceHandle_ = (handle);                                         \
    if (zelTraceHandle_.enabled(level)) [[unlikely]] {                                            \
      ::Zel::TraceHelper zelTraceRecord_(zelTraceHandle_, (level), (source), (line), (function)); \
      zelTraceRecord_.stream() << __VA_ARGS__;                                                    \
    }                                                                                             \
  } while (false)
