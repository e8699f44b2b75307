// The structured printer that writes JSON Lines.
#pragma once

#include <string>
#include <string_view>

#include "io/OutputBuffer.h"
#include "pravo.h"

namespace tcamshow {

/// Writes each document as one line, after the end of the document. So an exception leaves no half
/// line. The calls must nest. Throws the errors of OutputBuffer::write.
///
///     JsonPrinter printer(out);
///     printer.objectBegin();
///     printer.attribute("hits", 5);
///     printer.objectEnd();                       // {"hits":5}
class JsonPrinter : public pravo::Printer {
 public:
  /// `out` must outlive the printer.
  explicit JsonPrinter(OutputBuffer& out) : out_(out) {}

  void objectBegin(std::string_view name = {}) override { begin(name, '{'); }
  void objectEnd() override { end('}'); }
  void arrayBegin(std::string_view name = {}) override { begin(name, '['); }
  void arrayEnd() override { end(']'); }
  /// A number that is not an integer. `digits` is its JSON text.
  void decimal(std::string_view name, std::string_view digits);

 private:
  void printText(std::string_view name, std::string_view text) override;
  void printUnsigned(std::string_view name, pravo::U64 number) override;
  void printSigned(std::string_view name, pravo::S64 number) override;
  void printBool(std::string_view name, bool value) override;

  void begin(std::string_view name, char bracket);
  void end(char bracket);
  void item(std::string_view name);

  OutputBuffer& out_;
  std::string line_;
  std::string open_;     ///< the brackets of the open containers, outermost first
  bool isFirst_ = true;  ///< the innermost container is still empty
};

}  // namespace tcamshow
