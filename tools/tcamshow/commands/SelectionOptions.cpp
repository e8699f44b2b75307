#include "commands/SelectionOptions.h"

#include <charconv>

#include "commands/CommandLineError.h"
#include "io/SafeText.h"

namespace tcamshow {
namespace {

/// What `read` makes of the text of an option; a fault in it names its column, from 1.
template <class Read>
auto valueOf(const char* option, const std::string& text, const Read& read) {
  try {
    return read(text);
  } catch (const TextFault& fault) {
    throw CommandLineError(std::string(option) + ": column " + std::to_string(fault.at() + 1) +
                           ": " + fault.what());
  }
}

}  // namespace

void SelectionOptions::declareWhere(Options& options) {
  options.text("--where", where_, "EXPR", "The entries of which it is true, such as 'dport = 443'");
}

void SelectionOptions::declareAll(Options& options) {
  declareWhere(options);
  options.text("--sort", sort_, "KEY,...", "In this order; -KEY for a falling one");
  options.text("--limit", limit_, "N", "The first N entries", [](const std::string& text) {
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? std::string() : inQuotes(text) + " is not a number";
  });
  options.flag("--count", isCount_, "Their number alone");
}

Selection SelectionOptions::read() const {
  Selection selection;
  if (where_) {
    selection.where =
        valueOf("--where", *where_, [](const std::string& text) { return Where(text); });
  }
  if (sort_) selection.keys = valueOf("--sort", *sort_, sortKeysFromText);
  // A number has no order.
  if (isCount_) selection.keys.clear();
  if (!limit_.empty() && !isCount_) {
    std::uint64_t number = 0;
    std::from_chars(limit_.data(), limit_.data() + limit_.size(), number);
    selection.limit = number;
  }
  return selection;
}

}  // namespace tcamshow
