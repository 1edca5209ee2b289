// Numbers in text form: plain decimals, exactly, and the shortest form of doubles.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qrel {

// The one plain form of the number that a text holds, with blanks around it, a sign, thousands separators, a fraction
// or an exponent: "1,000.50" and "1.0005e3" give "1000.5", "-0" gives "0". Empty for a text that is no number or whose
// exponent is beyond 400.
std::optional<std::string> plainDecimal(std::string_view text);
// The same for a text that is a plain decimal already; appends only, for keys made by the million.
void appendCanonicalDecimal(std::string& out, std::string_view decimal);

// The double nearest to the number that a text holds; empty where plainDecimal is and beyond a double's range.
std::optional<double> doubleOf(std::string_view text);
// The whole number that a plain form is; empty with a fraction or beyond 64 bits.
std::optional<std::int64_t> wholeNumber(std::string_view plain);

// The shortest digits that read back the same, plain from 0.00001 to below 1E+16, else as 1.5E+20 or 1E-07.
void appendShortest(std::string& out, double number);

}  // namespace qrel
