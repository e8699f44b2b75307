// pravo: the interface of a structured printer.
#pragma once

#include <string_view>

#include "Halvo/Types.h"
#include "VelmorPlatformExport.h"

namespace pravo {

using Halvo::S64;
using Halvo::U64;

/// What structured output is written to: a host implements it for JSON, say.
///
/// A document is one object. Calls nest: every begin has its end, attributes and containers stand
/// in the innermost open container. `name` is the member's name inside an object and is empty for
/// an element of an array or for the document itself. Names and texts are UTF-8 and are copied, if
/// need be, before the call returns; escaping is the printer's. Calls that do not nest are faults
/// of the caller; what they do is the implementation's. One thread at a time.
///
///     printer.objectBegin();
///     printer.attribute("shadowId", U64{17});
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

  virtual void attribute(std::string_view name, std::string_view text) = 0;
  /// Numbers are exact to all 64 bits.
  virtual void attribute(std::string_view name, U64 number) = 0;
  virtual void attribute(std::string_view name, S64 number) = 0;
  virtual void attribute(std::string_view name, bool value) = 0;

  /// Text literals would convert to bool before they convert to a view.
  void attribute(std::string_view name, const char* text) {
    attribute(name, std::string_view(text));
  }

 protected:
  Printer() = default;
  Printer(const Printer&) = default;
  Printer& operator=(const Printer&) = default;
};

}  // namespace pravo
