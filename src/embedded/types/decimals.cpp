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

// Whole numbers without sign as their digits, without zeros in front; empty: zero
// ---------------------------------------

void trimZeros(std::string& digits) { digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size())); }

int compareDigits(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

std::string addDigits(const std::string& a, const std::string& b) {
  std::string out(std::max(a.size(), b.size()) + 1, '0');
  int carry = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (i < a.size()) carry += a[a.size() - 1 - i] - '0';
    if (i < b.size()) carry += b[b.size() - 1 - i] - '0';
    out[out.size() - 1 - i] = static_cast<char>('0' + carry % 10);
    carry /= 10;
  }
  trimZeros(out);
  return out;
}

// `a` must not be the smaller one.
std::string subtractDigits(const std::string& a, const std::string& b) {
  std::string out = a;
  int borrow = 0;
  for (std::size_t i = 0; i < out.size(); ++i) {
    char& digit = out[out.size() - 1 - i];
    int value = digit - '0' - borrow - (i < b.size() ? b[b.size() - 1 - i] - '0' : 0);
    borrow = value < 0 ? 1 : 0;
    if (value < 0) value += 10;
    digit = static_cast<char>('0' + value);
  }
  trimZeros(out);
  return out;
}

std::string multiplyDigits(const std::string& a, const std::string& b) {
  std::string out(a.size() + b.size(), '0');
  for (std::size_t i = 0; i < a.size(); ++i) {
    int carry = 0;
    for (std::size_t j = 0; j <= b.size(); ++j) {
      char& digit = out[out.size() - 1 - i - j];
      carry += digit - '0';
      if (j < b.size()) carry += (a[a.size() - 1 - i] - '0') * (b[b.size() - 1 - j] - '0');
      digit = static_cast<char>('0' + carry % 10);
      carry /= 10;
    }
  }
  trimZeros(out);
  return out;
}

// The quotient, and in `a` what is left.
std::string divideDigits(std::string& a, const std::string& b) {
  std::string quotient, left;
  for (const char digit : a) {
    if (!left.empty() || digit != '0') left += digit;
    char times = '0';
    for (; compareDigits(left, b) >= 0; ++times) left = subtractDigits(left, b);
    quotient += times;
  }
  a = std::move(left);
  trimZeros(quotient);
  return quotient;
}

// The digits of a number with so many of them behind the point, which must be as many as it has or more.
std::string scaledDigits(const DecimalParts& number, std::size_t scale) {
  std::string digits = number.whole + number.fraction;
  digits.append(scale - std::min(scale, number.fraction.size()), '0');
  trimZeros(digits);
  return digits;
}

DecimalParts fromDigits(bool negative, std::string digits, std::size_t scale) {
  if (digits.size() < scale) digits.insert(0, scale - digits.size(), '0');
  DecimalParts out{negative, digits.substr(0, digits.size() - scale), digits.substr(digits.size() - scale)};
  normalize(out);
  return out;
}

}  // namespace

std::optional<DecimalParts> decimalResult(char operation, const DecimalParts& a, const DecimalParts& b, int scale) {
  const auto places = static_cast<std::size_t>(scale);
  const std::size_t common = std::max(a.fraction.size(), b.fraction.size());
  DecimalParts out;
  if (operation == '*') {
    out = fromDigits(a.negative != b.negative,
                     multiplyDigits(scaledDigits(a, a.fraction.size()), scaledDigits(b, b.fraction.size())),
                     a.fraction.size() + b.fraction.size());
  } else if (operation == '+' || operation == '-') {
    const bool negative = b.negative != (operation == '-');
    const std::string left = scaledDigits(a, common);
    const std::string right = scaledDigits(b, common);
    if (a.negative == negative) {
      out = fromDigits(negative, addDigits(left, right), common);
    } else {
      const bool leftIsMore = compareDigits(left, right) >= 0;
      out = fromDigits(leftIsMore ? a.negative : negative,
                       leftIsMore ? subtractDigits(left, right) : subtractDigits(right, left), common);
    }
  } else {
    const std::string divisor = scaledDigits(b, common);
    if (divisor.empty()) return {};
    std::string left = scaledDigits(a, common);
    if (operation == '/') {
      left.append(left.empty() ? 0 : places, '0');
      return fromDigits(a.negative != b.negative, divideDigits(left, divisor), places);
    }
    divideDigits(left, divisor);
    out = fromDigits(a.negative, left, common);
  }
  roundDecimal(out, scale);
  return out;
}

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
