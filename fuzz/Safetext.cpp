// Text of any bytes: what is shown of it is safe, and says which bytes it had.
#include <charconv>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "Snapshots.h"
#include "Target.h"
#include "io/JsonText.h"
#include "io/SafeText.h"

namespace {

void appendUtf8(std::string& out, std::uint32_t character) {
  if (character < 0x80) {
    out += static_cast<char>(character);
  } else if (character < 0x800) {
    out += static_cast<char>(0xC0 | character >> 6);
    out += static_cast<char>(0x80 | (character & 63));
  } else {
    // No character that is escaped needs four bytes.
    out += static_cast<char>(0xE0 | character >> 12);
    out += static_cast<char>(0x80 | (character >> 6 & 63));
    out += static_cast<char>(0x80 | (character & 63));
  }
}

/// The bytes that the escapes stand for.
std::string unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    bool const isCharacter = text.starts_with("\\u{");
    if (!isCharacter && !text.starts_with("\\x")) {
      bytes += text[0];
      text.remove_prefix(1);
      continue;
    }
    std::size_t const begin = isCharacter ? 3 : 2;
    std::size_t const end = isCharacter ? text.find('}') : 4;
    FUZZ_CHECK(end != text.npos && end <= text.size());
    std::string_view const digits = text.substr(begin, end - begin);
    FUZZ_CHECK(digits.find_first_not_of("0123456789ABCDEF") == digits.npos);
    FUZZ_CHECK(!isCharacter || digits == "0" || !digits.starts_with('0'));
    std::uint32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (isCharacter) {
      appendUtf8(bytes, number);
    } else {
      bytes += static_cast<char>(number);
    }
    text.remove_prefix(end + (isCharacter ? 1 : 0));
  }
  return bytes;
}

}  // namespace

FUZZ_TARGET(safetext) {
  bool const kept = in.flag();
  auto const lineBreaks = kept ? tcamshow::LineBreaks::kept : tcamshow::LineBreaks::escaped;
  std::string_view const text = in.rest();
  std::string const safe = tcamshow::safeText(text, lineBreaks);
  velmorfuzz::checkIsSafe(safe);
  FUZZ_CHECK(kept || safe.find('\n') == safe.npos);
  FUZZ_CHECK_TEXT(tcamshow::safeText(safe, lineBreaks), safe);
  // An escape in the text itself would be taken for one of ours.
  if (text.find('\\') == text.npos) FUZZ_CHECK_TEXT(unescaped(safe), text);

  std::string const quoted = tcamshow::inQuotes(text);
  velmorfuzz::checkIsSafe(quoted);
  FUZZ_CHECK(quoted.find('\n') == quoted.npos && quoted.size() <= 2 + 60 + 12 + 3);

  std::string json;
  tcamshow::appendJsonString(json, text);
  velmorfuzz::checkIsSafe(json);
  FUZZ_CHECK(json.find('\n') == json.npos);
  auto const read = nlohmann::json::parse(json, nullptr, false);
  FUZZ_CHECK(read.is_string());
  // Of bytes that are no UTF-8 JSON knows nothing.
  if (safe.find("\\x") == safe.npos) FUZZ_CHECK_TEXT(read.get<std::string>(), text);
}
