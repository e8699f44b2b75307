#include "sources/JsonDocument.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "io/InputError.h"
#include "io/SafeText.h"
#include "snapshot/JsonSyntax.h"

namespace tcamshow {
namespace {

constexpr std::size_t padding = simdjson::SIMDJSON_PADDING;
constexpr std::string_view space = " \t\r\n";

// The text has been checked: only memory can be missing.
void checkParsed(simdjson::error_code error) {
  if (error == simdjson::SUCCESS) return;
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  throw simdjson::simdjson_error(error);
}

/// The text of a string that begins at `from`, behind its quote: a part of the document, or of
/// `unescaped` if it has escapes.
std::string_view readString(const char* from, ondemand::parser& parser, std::string& unescaped) {
  const char* end = plainEnd(from);
  if (*end == '"') return {from, static_cast<std::size_t>(end - from)};
  while (*end != '"') end += *end == '\\' ? 2 : 1;
  auto const raw = static_cast<std::size_t>(end - from);
  // The parser may write a little more than it needs.
  unescaped.resize(raw + padding);
  auto* out = reinterpret_cast<std::uint8_t*>(unescaped.data());
  std::string_view text;
  checkParsed(
      parser.unescape(ondemand::raw_json_string(reinterpret_cast<const std::uint8_t*>(from)), out)
          .get(text));
  return text;
}

}  // namespace

std::string JsonValue::shown() const {
  switch (kind_) {
    case Kind::object:
      return "an object";
    case Kind::array:
      return "an array";
    case Kind::string:
      return inQuotes(text_);
    case Kind::number:
    case Kind::other:
      break;
  }
  return tcamshow::shown(text_);
}

void JsonValue::eachMember(const UseMember& use) {
  for (auto result : object_) {
    JsonDocument::check(result.error());
    ondemand::field&& field = std::move(result).value_unsafe();
    std::string_view const name = document_->stringAt(field.key().raw());
    JsonValue value = document_->valueOf(field.value());
    use(name, value);
  }
}

void JsonValue::eachItem(const UseItem& use) {
  if (isObject()) {
    for (auto result : object_) {
      JsonDocument::check(result.error());
      JsonValue value = document_->valueOf(std::move(result).value_unsafe().value());
      use(value);
    }
    return;
  }
  ondemand::array items;
  JsonDocument::check(value_.get_array().get(items));
  for (auto result : items) {
    JsonDocument::check(result.error());
    JsonValue value = document_->valueOf(result.value_unsafe());
    use(value);
  }
}

JsonDocument::JsonDocument(InputFile file, std::size_t most) : file_(std::move(file)), most_(most) {
  prepareJsonParser();
  read();
  checkSyntax();
  parser_ = std::make_unique<ondemand::parser>();
  check(parser_->iterate(text_.get(), size_, size_ + padding).get(document_));
}

void JsonDocument::read() {
  std::size_t room = std::size_t{64} << 10;
  text_.reset(new char[room + padding]);
  bool isBegun = false;
  std::uint64_t line = 0;  // of the next byte, once there is one
  for (;;) {
    std::size_t const count = file_.read(text_.get() + size_, room - size_, line);
    if (count == 0) break;
    std::string_view const piece(text_.get() + size_, count);
    std::size_t const nul = piece.find('\0');
    if (nul != piece.npos) fail(size_ + nul, "the document holds a NUL byte");
    // A document that is not an object need not be read to its end.
    std::size_t const first = isBegun ? piece.npos : piece.find_first_not_of(space);
    if (first != piece.npos) {
      isBegun = true;
      if (piece[first] != '{') fail(size_ + first, "the document is not a JSON object");
    }
    if (line == 0) line = 1;
    line += static_cast<std::uint64_t>(std::count(piece.begin(), piece.end(), '\n'));
    size_ += count;
    if (size_ > most_) {
      fail(size_, "the document is larger than " + std::to_string(most_ >> 20) + " MiB");
    }
    if (size_ == room) {
      std::unique_ptr<char[]> larger(new char[2 * room + padding]);
      std::memcpy(larger.get(), text_.get(), size_);
      text_ = std::move(larger);
      room *= 2;
    }
  }
  if (!isBegun) fail(size_, "the document is empty");
  std::memset(text_.get() + size_, ' ', padding);
}

void JsonDocument::checkSyntax() const {
  std::string_view const text(text_.get(), size_);
  JsonFault const fault = findJsonFault(text, "document", deepest);
  if (fault.byte == 0) return;
  std::size_t const at = fault.byte - 1;
  // The byte is told as one of its line.
  std::size_t const before = at == 0 ? text.npos : text.rfind('\n', at - 1);
  std::string message =
      fault.what + ", at byte " + std::to_string(before == text.npos ? at + 1 : at - before);
  if (fault.hasMember) message += ", member \"" + shownName(fault.member) + '"';
  fail(at, message);
}

void JsonDocument::fail(std::size_t at, const std::string& message) const {
  throw InputError(file_.name(), lineOf(text_.get() + at), message);
}

void JsonDocument::check(simdjson::error_code error) { checkParsed(error); }

std::uint64_t JsonDocument::lineOf(const char* at) const noexcept {
  return 1 +
         static_cast<std::uint64_t>(std::count(static_cast<const char*>(text_.get()), at, '\n'));
}

JsonValue JsonDocument::root() {
  JsonValue value;
  value.document_ = this;
  value.kind_ = JsonValue::Kind::object;
  value.begin_ = text_.get();
  check(document_.get_object().get(value.object_));
  return value;
}

JsonValue JsonDocument::valueOf(ondemand::value from) {
  JsonValue value;
  value.document_ = this;
  value.value_ = from;
  std::string_view token = from.raw_json_token();
  token.remove_suffix(token.size() - 1 - token.find_last_not_of(space));
  value.begin_ = token.data();
  switch (token.front()) {
    case '{':
      value.kind_ = JsonValue::Kind::object;
      check(from.get_object().get(value.object_));
      break;
    case '[':
      value.kind_ = JsonValue::Kind::array;
      break;
    case '"':
      value.kind_ = JsonValue::Kind::string;
      value.text_ = stringAt(token.data() + 1);
      break;
    default:
      value.kind_ = token == "true" || token == "false" || token == "null"
                        ? JsonValue::Kind::other
                        : JsonValue::Kind::number;
      value.text_ = token;
  }
  return value;
}

void JsonDocument::eachWanted(const WantsMember& wants, const UseText& use) {
  ondemand::object members;
  check(document_.get_object().get(members));
  for (auto result : members) {
    check(result.error());
    ondemand::field&& field = std::move(result).value_unsafe();
    const char* const from = field.key().raw();
    const char* const end = plainEnd(from);
    if (!wants({from, static_cast<std::size_t>(end - from)}, *end == '"')) continue;
    std::string_view const name = stringAt(from);
    ondemand::value& value = field.value();
    std::string_view text = value.raw_json_token();
    if (text.front() == '{') {
      ondemand::object object;
      check(value.get_object().get(object));
      check(object.raw_json().get(text));
    }
    use(name, text.substr(0, text.find_last_not_of(space) + 1));
  }
}

std::string_view JsonDocument::stringAt(const char* from) {
  std::string_view const read = readString(from, *parser_, unescaped_);
  if (read.data() == from) return read;
  // lineOf() counts the line feeds of the document.
  if (read.find('\n') != read.npos) return keep(std::string(read));
  // No text is longer than it is written, and nobody reads it as it was written again.
  char* const place = text_.get() + (from - text_.get());
  std::memcpy(place, read.data(), read.size());
  return {place, read.size()};
}

// --- fields

void JsonFields::each(std::string_view text, const UseField& use) {
  texts_.clear();
  ondemand::document document;
  ondemand::object object;
  checkParsed(parser_.iterate(text.data(), text.size(), text.size() + padding).get(document));
  checkParsed(document.get_object().get(object));
  for (auto result : object) {
    checkParsed(result.error());
    ondemand::field&& member = std::move(result).value_unsafe();
    std::string_view const name = stringAt(member.key().raw());
    JsonField field;
    std::string_view const token = member.value().raw_json_token();
    field.begin = token.data();
    field.isText = token.front() != '{' && token.front() != '[';
    if (token.front() == '"') {
      field.text = stringAt(token.data() + 1);
    } else if (field.isText) {
      field.text = token.substr(0, token.find_last_not_of(space) + 1);
    } else if (token.front() == '[') {
      ondemand::array items;
      checkParsed(member.value().get_array().get(items));
      checkParsed(items.raw_json().get(field.text));
    }
    use(name, field);
  }
}

std::string_view JsonFields::objectAt(std::string_view text, std::string_view name) {
  ondemand::document document;
  ondemand::object object;
  ondemand::value value;
  checkParsed(parser_.iterate(text.data(), text.size(), text.size() + padding).get(document));
  checkParsed(document.get_object().get(object));
  simdjson::error_code const error = object.find_field(name).get(value);
  if (error == simdjson::NO_SUCH_FIELD) return {};
  checkParsed(error);
  if (value.raw_json_token().front() != '{') return {};
  ondemand::object found;
  std::string_view raw;
  checkParsed(value.get_object().get(found));
  checkParsed(found.raw_json().get(raw));
  return raw;
}

std::string_view JsonFields::stringAt(const char* from) {
  std::string_view const read = readString(from, parser_, unescaped_);
  return read.data() == from ? read : texts_.emplace_back(read);
}

}  // namespace tcamshow
