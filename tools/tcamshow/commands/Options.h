// The options and arguments of a command, bound to its members.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}  // namespace CLI

namespace tcamshow {

/// Declares what a command takes. Values are written to the variables when the command line is
/// read; those that are not named keep what they hold. A value that is wrong ends the program with
/// a message and status 2.
///
///     options.flag("--detail", hasDetail_, "The entries of each feature too");
///     options.number("--limit", limit_, "N", "The first N entries alone");
class Options {
 public:
  /// Adds to `app`, which outlives this object.
  explicit Options(CLI::App& app) noexcept : app_(&app) {}

  /// An option without a value.
  void flag(std::string_view name, bool& value, std::string_view help);
  /// An option with a text; `placeholder` stands for it in the help.
  void text(std::string_view name, std::string& value, std::string_view placeholder,
            std::string_view help);
  /// As text(); an empty value is told from none.
  void text(std::string_view name, std::optional<std::string>& value, std::string_view placeholder,
            std::string_view help);
  /// As text(); `check` returns what is wrong with the value, or an empty text.
  void text(std::string_view name, std::string& value, std::string_view placeholder,
            std::string_view help, std::function<std::string(const std::string&)> check);
  /// An option with one of the words.
  void choice(std::string_view name, std::string& value, std::span<const std::string_view> words,
              std::string_view help);
  /// An option with a whole number from 0 to `most`.
  void number(std::string_view name, std::uint64_t& value, std::string_view placeholder,
              std::string_view help,
              std::uint64_t most = std::numeric_limits<std::uint64_t>::max());
  /// An option with a number of percent, 0 to 100, perhaps with a fraction.
  void percent(std::string_view name, std::optional<double>& value, std::string_view help);

  /// An argument that the command line must have.
  void argument(std::string_view name, std::string& value, std::string_view help);
  /// An argument that may be left out. It may not be empty.
  void word(std::string_view name, std::string& value, std::string_view help);
  /// The argument FILE: a path, or "-" for standard input, which it also is where it is absent. An
  /// empty path is wrong.
  void file(std::string& path);
  /// A path that the command line must have.
  void requiredFile(std::string_view name, std::string& path, std::string_view help);

  /// Whether the command line names the option.
  bool has(std::string_view name) const;
  CLI::App& app() const noexcept { return *app_; }

 private:
  CLI::App* app_;
};

}  // namespace tcamshow
