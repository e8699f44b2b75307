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

void Options::flag(const std::string& name, bool& value, const std::string& help) {
  app_->add_flag(name, value, help);
}

void Options::text(const std::string& name, std::string& value, const std::string& placeholder,
                   const std::string& help) {
  app_->add_option(name, value, help)->option_text(placeholder);
}

void Options::text(const std::string& name, std::optional<std::string>& value,
                   const std::string& placeholder, const std::string& help) {
  app_->add_option_function<std::string>(
          name, [&value](const std::string& text) { value = text; }, help)
      ->option_text(placeholder);
}

void Options::text(const std::string& name, std::string& value, const std::string& placeholder,
                   const std::string& help, std::function<std::string(const std::string&)> check) {
  app_->add_option(name, value, help)->option_text(placeholder)->check(std::move(check));
}

void Options::choice(const std::string& name, std::string& value,
                     std::span<const std::string_view> words, const std::string& help) {
  text(name, value, joined(words), help, [words](const std::string& word) {
    for (std::string_view const known : words) {
      if (word == known) return std::string();
    }
    std::string const near = suggestion(word, words);
    return inQuotes(word) + " is not known" + (near.empty() ? "; expected " + joined(words) : near);
  });
}

void Options::number(const std::string& name, std::uint64_t& value, const std::string& placeholder,
                     const std::string& help, std::uint64_t most) {
  auto const read = [&value, most](const std::string& word) {
    std::uint64_t number = 0;
    if (!isNumber(word, number) || number > most) return false;
    value = number;
    return true;
  };
  app_->add_option_function<std::string>(
          name, [read](const std::string& word) { static_cast<void>(read(word)); }, help)
      ->option_text(placeholder)
      ->check([read, most](const std::string& word) {
        return read(word) ? std::string()
                          : inQuotes(word) + " is not a number from 0 to " + std::to_string(most);
      });
}

void Options::percent(const std::string& name, std::optional<double>& value,
                      const std::string& help) {
  auto const read = [&value](const std::string& word) {
    double number = 0;
    if (!isNumber(word, number) || !(number >= 0 && number <= 100)) return false;
    value = number;
    return true;
  };
  app_->add_option_function<std::string>(
          name, [read](const std::string& word) { static_cast<void>(read(word)); }, help)
      ->option_text("N")
      ->check([read](const std::string& word) {
        return read(word) ? std::string() : inQuotes(word) + " is not a number from 0 to 100";
      });
}

void Options::argument(const std::string& name, std::string& value, const std::string& help) {
  app_->add_option(name, value, help)->option_text(" ")->required();
}

void Options::word(const std::string& name, std::string& value, const std::string& help) {
  app_->add_option(name, value, help)->option_text(" ")->check(checkPath);
}

void Options::file(std::string& path) {
  path = "-";
  app_->add_option("FILE", path, "The file to read; standard input when absent or -")
      ->option_text(" ")
      ->check(checkPath);
}

void Options::requiredFile(const std::string& name, std::string& path, const std::string& help) {
  app_->add_option(name, path, help)->option_text(" ")->required()->check(checkPath);
}

bool Options::has(const std::string& name) const { return app_->count(name) != 0; }

}  // namespace tcamshow
