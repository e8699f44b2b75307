// The errors that end a command.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tcamshow {

/// The input is bad, or cannot be read. what() is `FILE:LINE: MESSAGE`, or `FILE: MESSAGE` where
/// the line is 0: the file as a whole is meant.
class InputError : public std::runtime_error {
 public:
  InputError(std::string file, std::uint64_t line, std::string message);
  ~InputError() override;

  const std::string& file() const noexcept { return file_; }
  std::uint64_t line() const noexcept { return line_; }
  const std::string& message() const noexcept { return message_; }

 private:
  std::string file_;
  std::uint64_t line_;
  std::string message_;
};

/// The output cannot be written; what() says why.
class OutputError : public std::runtime_error {
 public:
  explicit OutputError(int errorNumber);
  ~OutputError() override;
};

/// Whoever read the output has gone. That is no fault: the program ends quietly.
class ClosedPipe : public std::runtime_error {
 public:
  ClosedPipe();
  ~ClosedPipe() override;
};

/// Text of the input as a message may show it: on one line, cut when it is longer than `longest`
/// bytes.
std::string shown(std::string_view text, std::size_t longest = 60);
/// The same, in double quotes.
std::string inQuotes(std::string_view text);

}  // namespace tcamshow
