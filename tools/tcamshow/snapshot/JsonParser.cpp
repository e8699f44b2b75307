#include "snapshot/JsonParser.h"

#include <algorithm>
#include <cstdlib>
#include <exception>

#include "io/Complaints.h"
#include "io/ExitStatus.h"
#include "io/SafeText.h"

namespace tcamshow {

// Without memory, functions of simdjson that cannot throw end in std::terminate.
void prepareJsonParser() {
  auto const before = std::set_terminate([] {
    complain("out of memory");
    std::exit(static_cast<int>(ExitStatus::failure));
  });
  static_cast<void>(simdjson::get_active_implementation()->name());
  std::set_terminate(before);
}

std::string described(ondemand::value& value) {
  std::string_view token = value.raw_json_token();
  while (!token.empty() && (token.back() == ' ' || token.back() == '\t' || token.back() == '\r' ||
                            token.back() == '\n')) {
    token.remove_suffix(1);
  }
  if (token.starts_with('{')) return "an object";
  if (token.starts_with('[')) return "an array";
  return shown(token);
}

std::size_t findControl(std::string_view text) noexcept {
  auto const* const found = std::find_if(text.begin(), text.end(), [](char c) {
    auto const byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
  return found == text.end() ? text.npos : static_cast<std::size_t>(found - text.begin());
}

}  // namespace tcamshow
