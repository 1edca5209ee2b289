#include "embedded/types/decimals.h"

#include <algorithm>
#include <charconv>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

// Moves the point by an exponent as in 1.5e3.
void shift(DecimalParts& number, int exponent) {
  std::string& from = exponent > 0 ? number.fraction : number.whole;
  if (exponent > 0) {
    from.resize(std::max(from.size(), static_cast<std::size_t>(exponent)), '0');
    number.whole += from.substr(0, static_cast<std::size_t>(exponent));
    from.erase(0, static_cast<std::size_t>(exponent));
  } else {
    const auto places = static_cast<std::size_t>(-exponent);
    if (from.size() < places) from.insert(0, places - from.size(), '0');
    number.fraction.insert(0, from.substr(from.size() - places));
    from.resize(from.size() - places);
  }
}

void normalize(DecimalParts& number) {
  number.whole.erase(0, std::min(number.whole.find_first_not_of('0'), number.whole.size()));
  number.fraction.resize(number.fraction.find_last_not_of('0') + 1);
  if (number.whole.empty() && number.fraction.empty()) number.negative = false;
}

}  // namespace

std::optional<DecimalParts> readDecimal(std::string_view text, bool money) {
  text = trimBlanks(text);
  DecimalParts number;
  std::size_t i = 0;
  const auto skipSign = [&] {
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) number.negative = text[i++] == '-';
  };
  skipSign();
  if (money && i < text.size() && text[i] == '$') {
    ++i;
    skipSign();
  }
  bool digits = false;
  for (; i < text.size() && (isDigit(text[i]) || (money && text[i] == ',')); ++i) {
    if (text[i] == ',') continue;
    digits = true;
    number.whole += text[i];
  }
  if (i < text.size() && text[i] == '.') {
    for (++i; i < text.size() && isDigit(text[i]); ++i) {
      digits = true;
      number.fraction += text[i];
    }
  }
  if (!digits) return {};
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    if (++i < text.size() && text[i] == '+') ++i;
    int exponent = 0;
    const auto [end, error] = std::from_chars(text.data() + i, text.data() + text.size(), exponent);
    if (error != std::errc() || std::abs(exponent) > 400) return {};
    i = static_cast<std::size_t>(end - text.data());
    shift(number, exponent);
  }
  if (i != text.size()) return {};
  normalize(number);
  return number;
}

void roundDecimal(DecimalParts& number, int scale) {
  const auto places = static_cast<std::size_t>(scale);
  if (number.fraction.size() <= places) return;
  const bool up = number.fraction[places] >= '5';
  number.fraction.resize(places);
  if (up) {
    std::string digits = "0" + number.whole + number.fraction;
    auto i = digits.size() - 1;
    while (digits[i] == '9') digits[i--] = '0';
    ++digits[i];
    number.fraction = digits.substr(digits.size() - places);
    number.whole = digits.substr(0, digits.size() - places);
  }
  normalize(number);
}

std::string decimalText(const DecimalParts& number, int scale) {
  std::string out;
  out.reserve(number.whole.size() + static_cast<std::size_t>(scale) + 3);
  if (number.negative) out += '-';
  out += number.whole.empty() ? "0" : number.whole;
  if (scale <= 0) return out;
  out += '.';
  out += number.fraction.substr(0, static_cast<std::size_t>(scale));
  out.append(static_cast<std::size_t>(scale) - std::min(number.fraction.size(), static_cast<std::size_t>(scale)), '0');
  return out;
}

}  // namespace qrel::tsql
