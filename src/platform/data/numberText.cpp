#include "platform/data/numberText.h"

#include <array>
#include <charconv>
#include <cstdlib>

#include "platform/text.h"

namespace qrel {
namespace {

constexpr int largestExponent = 400;

// Takes the digits off the front of `text`.
std::string_view takeDigits(std::string_view& text) {
  std::size_t count = 0;
  while (count < text.size() && isDigit(text[count])) ++count;
  const std::string_view digits = text.substr(0, count);
  text.remove_prefix(count);
  return digits;
}

// The exponent "e5", "E-3" that is all of `text`; 0 for an empty text, empty for anything else.
std::optional<int> exponentOf(std::string_view text) {
  if (text.empty()) return 0;
  if (text.front() != 'e' && text.front() != 'E') return std::nullopt;
  text.remove_prefix(1);
  if (text.starts_with('+')) text.remove_prefix(1);
  int exponent = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error != std::errc() || end != text.data() + text.size() || std::abs(exponent) > largestExponent) {
    return std::nullopt;
  }
  return exponent;
}

}  // namespace

void appendCanonicalDecimal(std::string& out, std::string_view decimal) {
  const bool negative = decimal.starts_with('-');
  if (negative || decimal.starts_with('+')) decimal.remove_prefix(1);
  const std::size_t point = decimal.find('.');
  std::string_view whole = decimal.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? std::string_view{} : decimal.substr(point + 1);
  while (whole.starts_with('0')) whole.remove_prefix(1);
  while (fraction.ends_with('0')) fraction.remove_suffix(1);
  if (whole.empty() && fraction.empty()) {
    out += '0';
    return;
  }
  if (negative) out += '-';
  out.append(whole.empty() ? "0" : whole);
  if (!fraction.empty()) out.append(1, '.').append(fraction);
}

std::optional<std::string> plainDecimal(std::string_view text) {
  text = trimBlanks(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  std::string digits(takeDigits(text));
  while (!digits.empty() && text.size() > 1 && text.front() == ',' && isDigit(text[1])) {
    text.remove_prefix(1);
    digits += takeDigits(text);
  }
  auto point = static_cast<long>(digits.size());
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    digits += takeDigits(text);
  }
  const std::optional<int> exponent = exponentOf(text);
  if (digits.empty() || !exponent) return std::nullopt;
  point += *exponent;
  if (point < 0) {
    digits.insert(0, static_cast<std::size_t>(-point), '0');
    point = 0;
  }
  if (point > static_cast<long>(digits.size())) digits.resize(static_cast<std::size_t>(point), '0');
  digits.insert(static_cast<std::size_t>(point), 1, '.');
  if (negative) digits.insert(0, 1, '-');
  std::string plain;
  appendCanonicalDecimal(plain, digits);
  return plain;
}

std::optional<double> doubleOf(std::string_view text) {
  const std::optional<std::string> plain = plainDecimal(text);
  if (!plain) return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(plain->data(), plain->data() + plain->size(), number);
  if (error != std::errc()) return std::nullopt;
  return number;
}

std::optional<std::int64_t> wholeNumber(std::string_view plain) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(plain.data(), plain.data() + plain.size(), number);
  if (error != std::errc() || end != plain.data() + plain.size()) return std::nullopt;
  return number;
}

void appendShortest(std::string& out, double number) {
  std::array<char, 32> buffer{};
  const auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific);
  std::string_view text(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
  const std::size_t mark = text.find('e');
  if (mark == std::string_view::npos || number == 0) {  // "inf", "nan" and both zeros
    out.append(number == 0 ? "0" : text);
    return;
  }
  int exponent = 0;
  const std::size_t from = mark + (text[mark + 1] == '+' ? 2 : 1);
  std::from_chars(text.data() + from, text.data() + text.size(), exponent);
  if (exponent < -5 || exponent > 15) {
    out.append(text.substr(0, mark)).append(exponent < 0 ? "E-" : "E+");
    const std::string digits = std::to_string(std::abs(exponent));
    out.append(digits.size() < 2 ? "0" : "").append(digits);
    return;
  }
  if (text.starts_with('-')) {
    out += '-';
    text.remove_prefix(1);
  }
  std::string digits(1, text[0]);
  const std::size_t fractionEnd = text.find('e');
  if (fractionEnd > 1) digits.append(text.substr(2, fractionEnd - 2));
  if (exponent < 0) {
    out.append("0.").append(static_cast<std::size_t>(-exponent - 1), '0').append(digits);
    return;
  }
  const auto whole = static_cast<std::size_t>(exponent) + 1;
  if (digits.size() <= whole) {
    out.append(digits).append(whole - digits.size(), '0');
  } else {
    out.append(digits, 0, whole).append(1, '.').append(digits, whole, std::string::npos);
  }
}

}  // namespace qrel
