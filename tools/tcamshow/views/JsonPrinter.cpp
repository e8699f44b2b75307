#include "views/JsonPrinter.h"

#include "io/JsonText.h"

namespace tcamshow {

void JsonPrinter::printText(std::string_view name, std::string_view text) {
  item(name);
  appendJsonString(line_, text);
}

void JsonPrinter::printUnsigned(std::string_view name, pravo::U64 number) {
  item(name);
  appendNumber(line_, number);
}

void JsonPrinter::printSigned(std::string_view name, pravo::S64 number) {
  item(name);
  appendNumber(line_, number);
}

void JsonPrinter::printBool(std::string_view name, bool value) {
  item(name);
  line_ += value ? "true" : "false";
}

void JsonPrinter::decimal(std::string_view name, std::string_view digits) {
  item(name);
  line_ += digits;
}

void JsonPrinter::begin(std::string_view name, char bracket) {
  item(name);
  line_ += bracket;
  open_ += bracket;
  isFirst_ = true;
}

void JsonPrinter::end(char bracket) {
  line_ += bracket;
  open_.pop_back();
  isFirst_ = false;
  if (!open_.empty()) return;
  line_ += '\n';
  out_.write(line_);
  line_.clear();
  isFirst_ = true;
}

// An element of an array, and the document itself, have no name.
void JsonPrinter::item(std::string_view name) {
  if (!isFirst_) line_ += ',';
  isFirst_ = false;
  if (open_.empty() || open_.back() == '[') return;
  appendJsonString(line_, name);
  line_ += ':';
}

}  // namespace tcamshow
