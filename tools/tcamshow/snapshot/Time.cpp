#include "snapshot/Time.h"

#include <chrono>
#include <cstddef>
#include <string_view>

namespace tcamshow {
namespace {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Takes `digits` digits from the front; false where others stand there.
bool takeNumber(std::string_view& text, std::size_t digits, unsigned& number) noexcept {
  if (text.size() < digits) return false;
  number = 0;
  for (char const c : text.substr(0, digits)) {
    if (!isDigit(c)) return false;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  text.remove_prefix(digits);
  return true;
}

bool take(std::string_view& text, std::string_view anyOf) noexcept {
  if (text.empty() || anyOf.find(text.front()) == anyOf.npos) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

bool timeFromText(std::string_view text, Time& time) noexcept {
  std::string_view rest = text;
  unsigned year = 0;
  unsigned month = 0;
  unsigned day = 0;
  unsigned hour = 0;
  unsigned minute = 0;
  unsigned second = 0;
  bool const hasForm = takeNumber(rest, 4, year) && take(rest, "-") && takeNumber(rest, 2, month) &&
                       take(rest, "-") && takeNumber(rest, 2, day) && take(rest, "Tt ") &&
                       takeNumber(rest, 2, hour) && take(rest, ":") &&
                       takeNumber(rest, 2, minute) && take(rest, ":") &&
                       takeNumber(rest, 2, second);
  if (!hasForm) return false;
  std::uint32_t nanoseconds = 0;
  if (take(rest, ".")) {
    if (rest.empty() || !isDigit(rest.front())) return false;
    for (std::uint32_t unit = 100'000'000; !rest.empty() && isDigit(rest.front()); unit /= 10) {
      nanoseconds += unit * static_cast<unsigned>(rest.front() - '0');
      rest.remove_prefix(1);
    }
  }
  if (rest != "Z" && rest != "z" && rest != "+00:00") return false;
  std::chrono::year_month_day const date(std::chrono::year(static_cast<int>(year)),
                                         std::chrono::month(month), std::chrono::day(day));
  // A leap second ends a day of UTC.
  bool const isLeap = second == 60 && hour == 23 && minute == 59;
  if (!date.ok() || hour > 23 || minute > 59 || (second > 59 && !isLeap)) return false;
  std::chrono::seconds const since = std::chrono::sys_days(date).time_since_epoch() +
                                     std::chrono::hours(hour) + std::chrono::minutes(minute) +
                                     std::chrono::seconds(second);
  time = {text, since.count(), nanoseconds};
  return true;
}

}  // namespace tcamshow
