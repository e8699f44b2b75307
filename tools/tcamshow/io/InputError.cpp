#include "io/InputError.h"

#include <system_error>
#include <utility>

namespace tcamshow {

namespace {

std::string located(const std::string& file, std::uint64_t line, const std::string& message) {
  // A line break in a file's name must not break the message in two.
  std::string const name = shown(file, file.size());
  if (line == 0) return name + ": " + message;
  return name + ":" + std::to_string(line) + ": " + message;
}

}  // namespace

InputError::InputError(std::string file, std::uint64_t line, std::string message)
    : std::runtime_error(located(file, line, message)),
      file_(std::move(file)),
      line_(line),
      message_(std::move(message)) {}
InputError::~InputError() = default;

OutputError::OutputError(int errorNumber)
    : std::runtime_error("cannot write the output: " +
                         std::generic_category().message(errorNumber)) {}
OutputError::~OutputError() = default;

ClosedPipe::ClosedPipe() : std::runtime_error("the output is closed") {}
ClosedPipe::~ClosedPipe() = default;

std::string shown(std::string_view text, std::size_t longest) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string out;
  for (char const byte : text) {
    auto const c = static_cast<unsigned char>(byte);
    if (out.size() >= longest && (c & 0xC0) != 0x80) return out + "...";
    if (c < 0x20 || c == 0x7F) {
      out += "\\x";
      out += digits[c >> 4];
      out += digits[c & 15];
    } else {
      out += byte;
    }
  }
  return out;
}

std::string inQuotes(std::string_view text) { return '"' + shown(text) + '"'; }

}  // namespace tcamshow
