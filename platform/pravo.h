// pravo: the interface of a structured printer.
#pragma once

#include <concepts>
#include <string_view>
#include <type_traits>

#include "VelmorPlatformExport.h"
#include "Zel/Base/Types.h"

namespace pravo {

using Halvo::S64;
using Halvo::U64;

/// A writer of structured output. A host implements it, for example for JSON, by overriding all
/// virtual operations; formatters call the public ones. The caller owns the printer: nobody keeps
/// it after the call that it was passed to. An exception that an operation throws passes through
/// the formatter.
///
/// A document is one object. Calls nest: each begin has its end. An attribute or a container
/// belongs to the innermost container that is open. `name` is the member's name inside an object;
/// it is empty for an element of an array and for the document itself. Names and texts are UTF-8.
/// The printer escapes them, and copies them if it needs them after the call. Calls that do not
/// nest are an error of the caller; the implementation decides what they do.
///
/// Threads: one thread at a time.
///
///     printer.objectBegin();
///     printer.attribute("shadowId", 17);
///     printer.arrayBegin("tables");
///     printer.attribute({}, "ip");
///     printer.arrayEnd();
///     printer.objectEnd();                       // {"shadowId":17,"tables":["ip"]}
class VELMOR_PLATFORM_API Printer {
 public:
  virtual ~Printer();

  virtual void objectBegin(std::string_view name = {}) = 0;
  virtual void objectEnd() = 0;
  virtual void arrayBegin(std::string_view name = {}) = 0;
  virtual void arrayEnd() = 0;

  void attribute(std::string_view name, std::string_view text) { printText(name, text); }
  void attribute(std::string_view name, const char* text) { printText(name, text); }
  /// Integers of every width are passed on exactly.
  template <std::integral Number>
  void attribute(std::string_view name, Number value) {
    if constexpr (std::is_same_v<Number, bool>) {
      printBool(name, value);
    } else if constexpr (std::is_signed_v<Number>) {
      printSigned(name, value);
    } else {
      printUnsigned(name, value);
    }
  }

 protected:
  Printer() = default;
  Printer(const Printer&) = default;
  Printer& operator=(const Printer&) = default;

 private:
  virtual void printText(std::string_view name, std::string_view text) = 0;
  virtual void printUnsigned(std::string_view name, U64 number) = 0;
  virtual void printSigned(std::string_view name, S64 number) = 0;
  virtual void printBool(std::string_view name, bool value) = 0;
};

}  // namespace pravo
