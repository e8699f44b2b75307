#include "snapshot/JsonLines.h"

#include <algorithm>
#include <new>

#include "io/SafeText.h"
#include "snapshot/JsonSyntax.h"

namespace tcamshow {

static_assert(LineReader::padding >= simdjson::SIMDJSON_PADDING);

JsonLines::JsonLines(InputFile file) : lines_(std::move(file)) { prepareJsonParser(); }

bool JsonLines::next() {
  kind_ = {};
  for (std::string_view& part : path_) part = {};
  do {
    if (!lines_.next(line_)) return false;
  } while (line_.find_first_not_of(" \t\r") == line_.npos);
  std::size_t const needed = line_.size() + LineReader::padding;
  if (textsRoom_ < needed) {
    std::size_t const room = std::max(2 * textsRoom_, needed);
    textsRoom_ = 0;
    texts_.reset(new std::uint8_t[room]);
    textsRoom_ = room;
  }
  check(parser_.iterate(line_.data(), line_.size(), needed).get(document_));
  return true;
}

ondemand::object JsonLines::members() {
  textsEnd_ = texts_.get();
  document_.rewind();
  ondemand::object members;
  simdjson::error_code const error = document_.get_object().get(members);
  if (error == simdjson::INCORRECT_TYPE) fail("the line is not a JSON object");
  check(error);
  return members;
}

std::string_view JsonLines::textOf(std::string_view member) {
  for (auto result : members()) {
    check(result.error());
    ondemand::field&& field = std::move(result).value_unsafe();
    if (name(field) != member) continue;
    path_[0] = member;
    return text(field.value());
  }
  path_[0] = member;
  failMember(" is missing");
}

void JsonLines::ended() {
  // There is a location only where something is left.
  if (document_.current_location().error() != simdjson::OUT_OF_BOUNDS) {
    failSyntax("not valid JSON: something follows the object");
  }
}

void JsonLines::fail(std::string_view message) const {
  std::string text(kind_);
  if (!text.empty()) text += ": ";
  text += message;
  lines_.fail(text);
}

void JsonLines::failMember(std::string_view message) const {
  std::string text = "member \"" + shownName(path_[0]);
  for (std::size_t depth = 1; depth != std::size(path_); ++depth) {
    if (path_[depth].data() != nullptr) (text += '.') += shownName(path_[depth]);
  }
  text += '"';
  text += message;
  fail(text);
}

void JsonLines::failNumber(ondemand::value& value, std::string_view range) const {
  failMember(": " + described(value) + " is not a whole number from " + std::string(range));
}

// Names the byte of the line, and the member that was read last. The fault of the syntax counts,
// even if the parser met another one first. Without a fault of the syntax, the parser's own message
// is used.
void JsonLines::failSyntax(std::string message) const {
  JsonFault const found = findJsonFault(line_, "line");
  if (found.byte != 0) message = found.what + ", at byte " + std::to_string(found.byte);
  if (found.hasMember) message += ", member \"" + shownName(found.member) + '"';
  fail(message);
}

void JsonLines::failJson(simdjson::error_code error) const {
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  failSyntax(std::string("not valid JSON: ") + simdjson::error_message(error));
}

std::string_view JsonLines::printable(ondemand::value& value) const {
  bool isPlain = false;
  std::string_view const result = text(value, "a string", isPlain);
  if (isPlain) [[likely]]
    return result;
  std::size_t const control = findControl(result);
  if (control != result.npos) {
    constexpr const char* digits = "0123456789ABCDEF";
    auto const byte = static_cast<unsigned char>(result[control]);
    failMember(std::string(": holds the control character U+00") + digits[byte >> 4] +
               digits[byte & 15]);
  }
  return result;
}

}  // namespace tcamshow
