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

/// What structured output is written to: a host implements it for JSON, say, by overriding all
/// virtual operations; formatters call the public ones. The printer is the caller's: nobody keeps
/// it after the call it was given to. What an operation throws passes through the formatter.
///
/// A document is one object. Calls nest: every begin has its end, attributes and containers stand
/// in the innermost open container. `name` is the member's name inside an object and is empty for
/// an element of an array or for the document itself. Names and texts are UTF-8 and are copied, if
/// need be, before the call returns; escaping is the printer's. Calls that do not nest are faults
/// of the caller; what they do is the implementation's.
///
/// Threads: one at a time.
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
  /// Numbers of every width are exact.
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
