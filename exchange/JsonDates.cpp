#include "exchange/JsonDates.h"

#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace tavlin {

namespace {

using std::chrono::sys_days;

constexpr int64_t kSecondsOfDay = 86400;
constexpr sys_days kReference{std::chrono::year{2001} / 1 / 1};
constexpr sys_days kFirstDay{std::chrono::year{1} / 1 / 1};
constexpr sys_days kLastDay{std::chrono::year{9999} / 12 / 31};

/// What is missing in a decimal fraction to one, with as many digits: "75" for "25".  Not for
/// zeros alone.
std::string complement(std::string_view digits) {
  std::string result;
  for (const char digit : digits) result += static_cast<char>('9' - (digit - '0'));
  for (size_t i = result.size(); i-- > 0;) {
    if (result[i] != '9') {
      ++result[i];
      break;
    }
    result[i] = '0';
  }
  return result;
}

/// Reads so many digits at the front, and takes them away.
std::optional<int64_t> takeDigits(std::string_view& text, size_t count) {
  if (text.size() < count) return std::nullopt;
  int64_t number = 0;
  for (size_t i = 0; i < count; ++i) {
    if (text[i] < '0' || text[i] > '9') return std::nullopt;
    number = 10 * number + (text[i] - '0');
  }
  text.remove_prefix(count);
  return number;
}

bool take(std::string_view& text, std::string_view anyOf) {
  if (text.empty() || anyOf.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

/// Whole seconds and decimals, of a time from there on, as one number.
double joined(int64_t whole, std::string_view decimals) {
  while (!decimals.empty() && decimals.back() == '0') decimals.remove_suffix(1);
  std::string number;
  if (whole < 0 && !decimals.empty()) {
    number = "-" + std::to_string(-whole - 1) + "." + complement(decimals);
  } else {
    number = std::to_string(whole) + "." + (decimals.empty() ? "0" : std::string(decimals));
  }
  double seconds = 0;
  std::from_chars(number.data(), number.data() + number.size(), seconds);
  return seconds;
}

/// Seconds since the reference of "2026-11-22T18:00:00", which is taken away.
std::optional<int64_t> takeDateAndTime(std::string_view& text) {
  const auto year = takeDigits(text, 4);
  if (!year || !take(text, "-")) return std::nullopt;
  const auto month = takeDigits(text, 2);
  if (!month || !take(text, "-")) return std::nullopt;
  const auto day = takeDigits(text, 2);
  if (!day || !take(text, "Tt ")) return std::nullopt;
  const auto hour = takeDigits(text, 2);
  if (!hour || !take(text, ":")) return std::nullopt;
  const auto minute = takeDigits(text, 2);
  if (!minute || !take(text, ":")) return std::nullopt;
  const auto second = takeDigits(text, 2);
  const std::chrono::year_month_day date{std::chrono::year{static_cast<int>(*year)},
                                         std::chrono::month{static_cast<unsigned>(*month)},
                                         std::chrono::day{static_cast<unsigned>(*day)}};
  if (!second || !date.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  const int64_t days = (sys_days(date) - kReference).count();
  return days * kSecondsOfDay + *hour * 3600 + *minute * 60 + *second;
}

}  // namespace

std::optional<std::string> isoTime(double seconds) {
  const auto earliest = static_cast<double>((kFirstDay - kReference).count() * kSecondsOfDay);
  const auto latest = static_cast<double>((kLastDay - kReference).count() * kSecondsOfDay);
  if (!(seconds >= earliest && seconds < latest)) return std::nullopt;
  std::array<char, 400> digits{};  // the smallest numbers have many zeros
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), std::fabs(seconds),
                                 std::chars_format::fixed);
  if (end.ec != std::errc()) return std::nullopt;
  const std::string_view number(digits.data(), static_cast<size_t>(end.ptr - digits.data()));
  const size_t point = number.find('.');
  int64_t whole = 0;
  std::from_chars(number.data(), number.data() + std::min(point, number.size()), whole);
  std::string decimals;
  if (point != std::string_view::npos) decimals = number.substr(point + 1);
  if (seconds < 0) {
    whole = decimals.empty() ? -whole : -whole - 1;
    if (!decimals.empty()) decimals = complement(decimals);
  }
  const int64_t ofDay = ((whole % kSecondsOfDay) + kSecondsOfDay) % kSecondsOfDay;
  const std::chrono::year_month_day date(kReference +
                                         std::chrono::days((whole - ofDay) / kSecondsOfDay));
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(ofDay / 3600),
                static_cast<int>(ofDay / 60 % 60), static_cast<int>(ofDay % 60));
  std::string result = text.data();
  if (!decimals.empty()) result += "." + decimals;
  result += "Z";
  const auto back = secondsOfIsoTime(result);
  if (!back || std::bit_cast<uint64_t>(*back) != std::bit_cast<uint64_t>(seconds)) {
    return std::nullopt;  // the negative zero
  }
  return result;
}

std::optional<double> secondsOfIsoTime(std::string_view text) {
  const auto local = takeDateAndTime(text);
  if (!local) return std::nullopt;
  std::string_view decimals;
  if (take(text, ".,")) {
    decimals = text.substr(0, text.find_first_not_of("0123456789"));
    if (decimals.empty()) return std::nullopt;
    text.remove_prefix(decimals.size());
  }
  int64_t offset = 0;
  if (text == "Z" || text == "z") return joined(*local, decimals);
  const bool isEast = text.starts_with("+");
  if (!take(text, "+-")) return std::nullopt;
  const auto hours = takeDigits(text, 2);
  if (!hours) return std::nullopt;
  (void)take(text, ":");
  const auto minutes = takeDigits(text, 2);
  if (!minutes || !text.empty() || *hours > 23 || *minutes > 59) return std::nullopt;
  offset = (*hours * 60 + *minutes) * 60;
  return joined(isEast ? *local - offset : *local + offset, decimals);
}

}  // namespace tavlin
