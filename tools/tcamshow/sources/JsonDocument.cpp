#include "sources/JsonDocument.h"

#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <unordered_set>
#include <utility>

#include "io/InputError.h"

namespace tcamshow {
namespace {

constexpr std::size_t deepest = 64;
constexpr std::size_t largestDocument = std::size_t{64} << 20;

/// The document's characters, one after the other; it knows the line of the one taken last.
class Characters {
 public:
  explicit Characters(InputFile& file) : file_(file), buffer_(new char[bufferSize]) {}

  bool atEnd() {
    if (at_ != end_) return false;
    if (ended_) return true;
    at_ = 0;
    end_ = file_.read(buffer_.get(), bufferSize, total_ == 0 ? 0 : line_);
    ended_ = end_ == 0;
    total_ += end_;
    if (total_ > largestDocument) fail("the document is larger than 64 MiB");
    return ended_;
  }
  char front() const noexcept { return buffer_[at_]; }
  void advance() noexcept {
    lastLine_ = line_;
    if (buffer_[at_++] == '\n') ++line_;
  }
  std::uint64_t lastLine() const noexcept { return lastLine_; }
  [[noreturn]] void fail(std::string message) const {
    throw InputError(file_.name(), lastLine_, std::move(message));
  }

 private:
  static constexpr std::size_t bufferSize = std::size_t{64} << 10;

  InputFile& file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::size_t total_ = 0;
  std::uint64_t line_ = 1;
  std::uint64_t lastLine_ = 1;
  bool ended_ = false;
};

/// The parser's view of them. The end is an iterator without characters.
class CharacterIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  explicit CharacterIterator(Characters* characters = nullptr) : characters_(characters) {}
  char operator*() const noexcept { return characters_->front(); }
  CharacterIterator& operator++() noexcept {
    characters_->advance();
    return *this;
  }
  CharacterIterator operator++(int) noexcept {
    CharacterIterator const before = *this;
    ++*this;
    return before;
  }
  friend bool operator==(const CharacterIterator& a, const CharacterIterator& b) {
    return a.ended() == b.ended();
  }
  friend bool operator!=(const CharacterIterator& a, const CharacterIterator& b) {
    return !(a == b);
  }

 private:
  bool ended() const { return characters_ == nullptr || characters_->atEnd(); }

  Characters* characters_;
};

/// Builds the tree as the parser meets the values. The open objects and arrays stand on a stack,
/// each with the member that is being read.
class Builder : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit Builder(const Characters& characters) : characters_(characters) {}

  JsonValue& root() noexcept { return root_; }

  bool null() override { return scalar(JsonValue::Kind::null, "null"); }
  bool boolean(bool value) override {
    return scalar(JsonValue::Kind::boolean, value ? "true" : "false");
  }
  bool number_integer(number_integer_t value) override {
    return scalar(JsonValue::Kind::number, std::to_string(value));
  }
  bool number_unsigned(number_unsigned_t value) override {
    return scalar(JsonValue::Kind::number, std::to_string(value));
  }
  bool number_float(number_float_t, const string_t& text) override {
    return scalar(JsonValue::Kind::number, text);
  }
  bool string(string_t& text) override { return scalar(JsonValue::Kind::string, std::move(text)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return open(JsonValue::Kind::object); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(JsonValue::Kind::array); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    Open& object = open_.back();
    object.name = std::move(name);
    if (!object.names.insert(object.name).second) {
      characters_.fail("member " + inQuotes(path()) + " stands twice");
    }
    return true;
  }

  bool parse_error(std::size_t, const std::string&,
                   const nlohmann::json::exception& error) override {
    // The text begins with the position, which the message already has.
    std::string_view text = error.what();
    std::size_t const column = text.find("column ");
    std::size_t const colon = column == text.npos ? text.npos : text.find(": ", column);
    if (colon != text.npos) text.remove_prefix(colon + 2);
    characters_.fail("not valid JSON: " + tcamshow::shown(text, 200));
  }

 private:
  struct Open {
    JsonValue value;
    std::string name;
    std::unordered_set<std::string> names;
  };

  std::string path() const {
    std::string result;
    for (const Open& open : open_) {
      if (!open.value.isObject()) continue;
      if (!result.empty()) result += '.';
      result += open.name;
    }
    return result;
  }

  bool scalar(JsonValue::Kind kind, std::string text) {
    JsonValue value;
    value.kind = kind;
    value.line = characters_.lastLine();
    value.text = std::move(text);
    add(std::move(value));
    return true;
  }
  bool open(JsonValue::Kind kind) {
    if (open_.size() == deepest) characters_.fail("nested deeper than 64 values");
    Open& open = open_.emplace_back();
    open.value.kind = kind;
    open.value.line = characters_.lastLine();
    return true;
  }
  bool close() {
    JsonValue value = std::move(open_.back().value);
    open_.pop_back();
    add(std::move(value));
    return true;
  }
  void add(JsonValue value) {
    if (open_.empty()) {
      root_ = std::move(value);
      return;
    }
    Open& open = open_.back();
    if (open.value.isObject()) {
      open.value.members.push_back({std::move(open.name), std::move(value)});
    } else {
      open.value.items.push_back(std::move(value));
    }
  }

  const Characters& characters_;
  std::vector<Open> open_;
  JsonValue root_;
};

}  // namespace

const JsonValue* JsonValue::find(std::string_view name) const noexcept {
  for (const JsonMember& member : members) {
    if (member.name == name) return &member.value;
  }
  return nullptr;
}

std::string JsonValue::shown() const {
  switch (kind) {
    case Kind::object:
      return "an object";
    case Kind::array:
      return "an array";
    case Kind::string:
      return inQuotes(text);
    default:
      return tcamshow::shown(text);
  }
}

JsonValue readJsonDocument(InputFile& file) {
  Characters characters(file);
  Builder builder(characters);
  nlohmann::json::sax_parse(CharacterIterator(&characters), CharacterIterator(), &builder);
  return std::move(builder.root());
}

}  // namespace tcamshow
