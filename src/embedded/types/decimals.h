// Exact decimal numbers as text.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace qrel::tsql {

// A decimal taken apart: no leading zeros in `whole`, no trailing zeros in `fraction`; both empty for zero.
struct DecimalParts {
  bool negative = false;
  std::string whole;
  std::string fraction;
};

// Reads "12", "-1.50", ".5", "1e3"; with `money` also a currency sign and thousands separators. Empty: no number.
std::optional<DecimalParts> readDecimal(std::string_view text, bool money = false);
// Rounds half away from zero to `scale` digits behind the point.
void roundDecimal(DecimalParts& number, int scale);
// With exactly `scale` digits behind the point.
std::string decimalText(const DecimalParts& number, int scale);

// "a op b" for + - * / %, exact but for what goes beyond `scale` digits behind the point: that is rounded, of a
// quotient cut. Nothing: a division by zero.
std::optional<DecimalParts> decimalResult(char operation, const DecimalParts& a, const DecimalParts& b, int scale);

}  // namespace qrel::tsql
