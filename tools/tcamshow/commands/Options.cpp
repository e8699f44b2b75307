#include "commands/Options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <utility>

#include "io/Nearest.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

std::string checkPath(const std::string& path) {
  return path.empty() ? "the name is empty; standard input is -" : "";
}

/// The words with blanks and bars between them.
std::string joined(std::span<const std::string_view> words) {
  std::string result;
  for (std::string_view const word : words) {
    if (!result.empty()) result += '|';
    result += word;
  }
  return result;
}

template <class Number>
bool isNumber(const std::string& text, Number& number) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

void Options::flag(std::string_view name, bool& value, std::string_view help) {
  app_->add_flag(std::string(name), value, std::string(help));
}

void Options::text(std::string_view name, std::string& value, std::string_view placeholder,
                   std::string_view help) {
  app_->add_option(std::string(name), value, std::string(help))
      ->option_text(std::string(placeholder));
}

void Options::text(std::string_view name, std::optional<std::string>& value,
                   std::string_view placeholder, std::string_view help) {
  app_->add_option_function<std::string>(
          std::string(name), [&value](const std::string& text) { value = text; }, std::string(help))
      ->option_text(std::string(placeholder));
}

void Options::text(std::string_view name, std::string& value, std::string_view placeholder,
                   std::string_view help, std::function<std::string(const std::string&)> check) {
  app_->add_option(std::string(name), value, std::string(help))
      ->option_text(std::string(placeholder))
      ->check(std::move(check));
}

void Options::choice(std::string_view name, std::string& value,
                     std::span<const std::string_view> words, std::string_view help) {
  text(name, value, joined(words), help, [words](const std::string& word) {
    for (std::string_view const known : words) {
      if (word == known) return std::string();
    }
    std::string const near = suggestion(word, words);
    return inQuotes(word) + " is not known" + (near.empty() ? "; expected " + joined(words) : near);
  });
}

void Options::number(std::string_view name, std::uint64_t& value, std::string_view placeholder,
                     std::string_view help, std::uint64_t most) {
  auto const read = [&value, most](const std::string& word) {
    std::uint64_t number = 0;
    if (!isNumber(word, number) || number > most) return false;
    value = number;
    return true;
  };
  app_->add_option_function<std::string>(
          std::string(name), [read](const std::string& word) { static_cast<void>(read(word)); },
          std::string(help))
      ->option_text(std::string(placeholder))
      ->check([read, most](const std::string& word) {
        return read(word) ? std::string()
                          : inQuotes(word) + " is not a number from 0 to " + std::to_string(most);
      });
}

void Options::percent(std::string_view name, std::optional<double>& value, std::string_view help) {
  auto const read = [&value](const std::string& word) {
    double number = 0;
    if (!isNumber(word, number) || !(number >= 0 && number <= 100)) return false;
    value = number;
    return true;
  };
  app_->add_option_function<std::string>(
          std::string(name), [read](const std::string& word) { static_cast<void>(read(word)); },
          std::string(help))
      ->option_text("N")
      ->check([read](const std::string& word) {
        return read(word) ? std::string() : inQuotes(word) + " is not a number from 0 to 100";
      });
}

void Options::argument(std::string_view name, std::string& value, std::string_view help) {
  app_->add_option(std::string(name), value, std::string(help))->option_text(" ")->required();
}

void Options::word(std::string_view name, std::string& value, std::string_view help) {
  app_->add_option(std::string(name), value, std::string(help))->option_text(" ")->check(checkPath);
}

void Options::file(std::string& path) {
  path = "-";
  app_->add_option("FILE", path, "The file to read; standard input when absent or -")
      ->option_text(" ")
      ->check(checkPath);
}

void Options::requiredFile(std::string_view name, std::string& path, std::string_view help) {
  app_->add_option(std::string(name), path, std::string(help))
      ->option_text(" ")
      ->required()
      ->check(checkPath);
}

bool Options::has(std::string_view name) const { return app_->count(std::string(name)) != 0; }

}  // namespace tcamshow
