// The errors that end a command.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tcamshow {

/// The input is bad, or cannot be read. what() is `FILE:LINE: MESSAGE`. If the line is 0, the error
/// is about the whole file, and what() is `FILE: MESSAGE`. Both what() and message() are safe text
/// on one line.
class InputError : public std::runtime_error {
 public:
  InputError(std::string file, std::uint64_t line, std::string_view message);
  ~InputError() override;

  /// The file's name, as it was given.
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

/// The reader of the output has gone. That is not an error: the program ends quietly.
class ClosedPipe : public std::runtime_error {
 public:
  ClosedPipe();
  ~ClosedPipe() override;
};

}  // namespace tcamshow
