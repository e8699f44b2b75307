// Tracing: lines about what the code does, by named handles, each level on or off while it runs.
//
// A library has a handle, made on its first use, and trace sites:
//
//     Zel::TraceHandle& traceHandle() {
//       static Zel::TraceHandle handle("VelmorTcamCliTypes", false);
//       return handle;
//     }
//
//     ZEL_TRACE(traceHandle(), 8, "VelmorTcamManagerBase/VelmorTcamCliTypes", 497,
//               "formatEntryRequest", "entry " << shadowId);
//
// Levels go from 0, the most important, to 9. They are independent: turning 8 on turns on 8 alone.
// A user turns them on by environment variable, as NAME/LEVELS parts joined by commas, where each
// digit of LEVELS is a level:
//
//     VELMOR_TRACE=VelmorTcamCliTypes/058,Agent/3
//
// or the program does, with TraceControl. A record that is on becomes one line on standard error:
//
//     TIME HANDLE/LEVEL SOURCE:LINE FUNCTION: TEXT
//     2024-05-01T12:34:56.123456Z Agent/3 AgentBase/Restart:41 restartIs: warm restart
//
// with the time in UTC to the microsecond. A control character in any of these is written as \n,
// \r, \t or \xNN, so that a record is always one line.
//
// Threads: all of it is safe from any thread; a record, and its stream, are for the thread that
// opened it. Tracing never changes errno and never throws.
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

/// The trace levels are 0 to this.
inline constexpr unsigned traceLevelMax = 9;

/// A name under which trace sites are turned on, with its levels.
///
/// While it lives it is on the list of handles; several handles may share a name, and are turned on
/// together. Meant to be a function's static local: made when the first site is reached, destroyed
/// at exit or when its library is unloaded. After that all its levels read as off for as long as
/// its memory is there.
class VELMOR_PLATFORM_API TraceHandle {
 public:
  /// `name` is kept, not copied. `enabledByDefault` turns level 0 on from the start, false none;
  /// levels that the environment or TraceControl has set for the name, on or off, come over that.
  /// The first handle of the process reads VELMOR_TRACE.
  TraceHandle(const char* name, bool enabledByDefault) noexcept;
  TraceHandle(const TraceHandle&) = delete;
  TraceHandle& operator=(const TraceHandle&) = delete;
  ~TraceHandle();

  const char* name() const noexcept { return name_; }
  /// Whether `level` is on: one load and a test. Levels over 9 are always off.
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
  std::string_view text;  ///< what was streamed, as it is
  std::string_view line;  ///< the whole line as standard error gets it, without its line break
};

/// Where trace records go instead of standard error. Must not throw.
using TraceSink = void (*)(const TraceRecord& record, void* context);

/// What turns tracing on and off.
class VELMOR_PLATFORM_API TraceControl {
 public:
  /// Turns one level of every handle called `name` on or off, of those that exist and of those that
  /// come later, over what VELMOR_TRACE says. A level over 9 stops the process. May throw
  /// std::bad_alloc, and then changes nothing.
  static void levelIs(std::string_view name, unsigned level, bool on);

  /// Sends the records to `sink`, one at a time, with `context`; null goes back to standard error.
  /// When it returns no thread is in the sink before. What the sink itself traces is dropped; it
  /// must not call sinkIs.
  static void sinkIs(TraceSink sink, void* context) noexcept;

  /// Calls `visit` for every handle that exists, with its name and its levels (bit n: level n is
  /// on). `visit` must not make, destroy or control handles.
  static void forEachHandle(void (*visit)(const char* name, U32 levels, void* context),
                            void* context);
};

/// Collects the text of a record, piece by piece. Memory running out cuts the text short.
class VELMOR_PLATFORM_API TraceStream {
 public:
  TraceStream() noexcept = default;
  TraceStream(const TraceStream&) = delete;
  TraceStream& operator=(const TraceStream&) = delete;

  std::string_view text() const noexcept { return text_.view(); }

  /// Halvo::String and std::string too.
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
  /// Every other integer, U8 too, is written as a decimal number.
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
  /// An address of memory, as 0x and hexadecimal digits.
  TraceStream& operator<<(const void* piece) noexcept;
  /// A value with a text of its own: an address, an enumeration.
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

/// One open trace record; closing it, or its destructor, emits it. Restores errno to what it was
/// when the record was opened. Does not ask whether the level is on: the site has.
///
///     if (traceHandle().enabled(8)) [[unlikely]] {
///       Zel::TraceHelper record(traceHandle(), 8, source, 524, "handleInitialized");
///       record.stream() << "IpEntryRequestCliFormat::" << "handleInitialized";
///     }
class VELMOR_PLATFORM_API TraceHelper {
 public:
  /// `source` and `function` are kept, not copied, until the record is closed.
  TraceHelper(const TraceHandle& handle, unsigned level, const char* source, U32 line,
              const char* function) noexcept;
  TraceHelper(const TraceHelper&) = delete;
  TraceHelper& operator=(const TraceHelper&) = delete;
  ~TraceHelper() { close(); }

  TraceStream& stream() noexcept { return stream_; }
  /// Emits the record; a second call does nothing.
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

/// A trace site. The last arguments are pieces joined by <<; they, and the others but `handle` and
/// `level`, are evaluated only when the level is on. Off, the site costs getting the handle, a load
/// and a branch.
#define ZEL_TRACE(handle, level, source, line, function, ...)                                     \
  do {                                                                                            \
    const ::Zel::TraceHandle& zelTraceHandle_ = (handle);                                         \
    if (zelTraceHandle_.enabled(level)) [[unlikely]] {                                            \
      ::Zel::TraceHelper zelTraceRecord_(zelTraceHandle_, (level), (source), (line), (function)); \
      zelTraceRecord_.stream() << __VA_ARGS__;                                                    \
    }                                                                                             \
  } while (false)
