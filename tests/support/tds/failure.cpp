#include "tests/support/tds/failure.h"

#include <array>
#include <string_view>

namespace qrel::tds {

namespace {

struct Numbered {
  std::string_view words;  // that the text holds
  std::int32_t number;
  std::uint8_t severity;
  std::uint8_t state;
};

// The first one that fits counts.
constexpr std::array numbers = std::to_array<Numbered>({
    {"Invalid object name", 208, 16, 1},
    {"Invalid column name", 207, 16, 1},
    {"Ambiguous column name", 209, 16, 1},
    {"Incorrect syntax near the keyword", 156, 15, 1},
    {"Incorrect syntax near", 102, 15, 1},
    {"Unclosed quotation mark", 105, 15, 1},
    {"Missing end comment mark", 113, 15, 1},
    {"Must declare the scalar variable", 137, 15, 2},
    {"is not a recognized built-in function name", 195, 15, 10},
    {"Could not find stored procedure", 2812, 16, 62},
    {"isn't run", 2812, 16, 62},
    {"does not exist. Make sure that the name is entered correctly", 911, 16, 1},
    {"overflow error for data type", 220, 16, 2},
    {"argument(s).", 174, 15, 1},
    {"is not a recognized datepart option", 155, 15, 1},
    {"ORDER BY position number", 108, 16, 1},
    {"must have an equal number of expressions", 205, 16, 1},
    {"datediff function resulted in an overflow", 535, 16, 0},
    {"column caused an overflow", 517, 16, 1},
    {"Invalid length parameter passed", 537, 16, 3},
    {"Cannot construct data type", 289, 16, 1},
    {"Divide by zero", 8134, 16, 1},
    {"when converting date and/or time", 241, 16, 1},
    {"when converting from a character string to uniqueidentifier", 8169, 16, 2},
    {"Conversion failed", 245, 16, 1},
    {"out-of-range value", 242, 16, 3},
    {"Arithmetic overflow", 8115, 16, 2},
    {"would be truncated", 8152, 16, 2},
    {"Error converting", 8114, 16, 5},
    {"EXECUTE permission was denied", 229, 14, 5},
    {"permission denied in database", 262, 14, 1},
    {"Unable to open the physical file", 5120, 16, 101},
    {"is not a valid database file header", 5172, 16, 15},
    {"already exists. Choose a different database name", 1801, 16, 3},
    {"Cannot open database", 4060, 11, 1},
});

}  // namespace

ServerMessage messageOf(const RuntimeError& error) {
  ServerMessage message;
  message.text = error.description;
  for (const Numbered& each : numbers) {
    if (error.description.find(each.words) == std::string::npos) continue;
    message.number = each.number;
    message.severity = each.severity;
    message.state = each.state;
    return message;
  }
  // What a query isn't understood in has words of no server's.
  if (error.number == errorNumber::badSql) {
    message.number = 102;
    message.severity = 15;
  }
  return message;
}

}  // namespace qrel::tds
