#include "app/CCommandArgs.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "platform/text.h"

namespace qrel {

namespace {

std::optional<double> numberOf(std::string_view text) {
  text = trimBlanks(text);
  double number = 0;
  const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (failed != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace

void CCommandArgs::Parse() {
  if (TestString.empty() || Delim.empty()) return;
  arguments_.clear();
  const std::string_view text = TestString;
  std::size_t start = text.find(Delim);
  while (start != std::string_view::npos) {
    const std::size_t next = text.find(Delim, start + 1);
    toInt16(arguments_.count() + 1);
    arguments_.add(split(text.substr(start, next - start)));
    start = next;
  }
}

CCommandArgs::Argument CCommandArgs::split(std::string_view strArg) const {
  const std::string_view text = strArg.substr(std::min(Delim.size(), strArg.size()));
  const std::size_t blank = std::min(text.find(' '), text.size());
  Argument argument{std::string(trimBlanks(text.substr(0, blank))), std::string(trimBlanks(text.substr(blank)))};
  if (argument.value.empty()) argument.value = argument.key;
  return argument;
}

std::string CCommandArgs::Item(std::string_view k) const {
  if (const auto number = numberOf(k)) {
    const double index = std::nearbyint(*number);
    return index >= 1 && index <= static_cast<double>(arguments_.count()) ? Value(static_cast<long>(index))
                                                                          : std::string();
  }
  for (const Argument& argument : arguments_) {
    if (upperCase(argument.key) == upperCase(k)) return argument.value;
  }
  return {};
}

}  // namespace qrel
