// Values of every type: equal ones are equal however they were written, different ones differ, as values and as keys.
#include "platform/text.h"
#include "tests/compare/data/twoTables.h"

namespace qrel {
namespace {

struct TypeCase {
  std::string type;
  std::string value;                // as SQL
  std::string same;                 // the same value written in another way
  std::vector<std::string> others;  // each of them different from `value`
};

const std::vector<TypeCase> typeCases = {
    {"tinyint", "255", "0255", {"254", "NULL"}},
    {"smallint", "-32768", "-032768", {"32767"}},
    {"int", "-2147483648", "-2147483648", {"2147483647", "0"}},
    {"bigint", "9223372036854775807", "9223372036854775807", {"9223372036854775806", "-9223372036854775808"}},
    {"bit", "1", "'true'", {"0", "NULL"}},
    {"decimal(38,0)",
     "99999999999999999999999999999999999999",
     "99999999999999999999999999999999999999",
     {"99999999999999999999999999999999999998", "9999999999999999999999999999999999999"}},
    {"decimal(38,10)",
     "-1234567890123456789012345678.0123456789",
     "-1234567890123456789012345678.0123456789",
     {"-1234567890123456789012345678.0123456788", "1234567890123456789012345678.0123456789"}},
    {"numeric(9,3)", "1.5", "01.500", {"1.501", "-1.5"}},
    {"money", "12.3400", "12.34", {"12.3401"}},
    {"float", "0.1", "1e-1", {"0.10000000000000002", "-0.1"}},
    {"real", "2.5", "25e-1", {"2.25"}},
    {"date", "'2024-02-29'", "'20240229'", {"'2024-02-28'"}},
    {"datetime", "'2024-02-29 13:14:15.997'", "'20240229 13:14:15.997'", {"'2024-02-29 13:14:15.993'"}},
    {"datetime2(7)",
     "'2024-02-29 13:14:15.1234567'",
     "'2024-02-29T13:14:15.1234567'",
     {"'2024-02-29 13:14:15.1234566'"}},
    {"time(7)", "'13:14:15.1234567'", "'13:14:15.1234567'", {"'13:14:15.1234568'"}},
    {"datetimeoffset(3)",
     "'2024-02-29 13:14:15.123 +01:00'",
     "'2024-02-29T13:14:15.123+01:00'",
     {"'2024-02-29 13:14:15.123 +02:00'"}},
    {"varchar(20)", "'a  '", "'a'", {"'b'", "'a' + CHAR(9)", "NULL", "''"}},
    {"nvarchar(20)", "N'Łódź ß'", "N'Łódź ß   '", {"N'Lódź ß'", "N'Łodź ß'"}},
    {"char(5)", "'ab'", "'ab   '", {"'abc'"}},
    {"nchar(5)", "N'ä'", "N'ä    '", {"N'a'"}},
    {"text", "'it''s'", "'it''s'", {"'its'"}},
    {"ntext", "N'日本'", "N'日本'", {"N'日木'"}},
    {"varbinary(20)", "0x00ff10", "0x00FF10", {"0x00ff11", "0x00ff", "0x"}},
    {"uniqueidentifier",
     "'6F9619FF-8B86-D011-B42D-00C04FC964FF'",
     "'6f9619ff-8b86-d011-b42d-00c04fc964ff'",
     {"'6F9619FF-8B86-D011-B42D-00C04FC964FE'"}},
};

// A table of two columns per comparison: equal values E, different ones D, the value as key K.
TEST_F(TwoTables, EqualValuesAreEqualAndOthersAreNot) {
  std::string source, target;
  for (std::size_t i = 0; i < typeCases.size(); ++i) {
    const TypeCase& each = typeCases[i];
    const std::string number = std::to_string(i);
    const auto table = [&](const std::string& name, const std::string& rows) {
      return "CREATE TABLE " + name + number + " (V " + each.type + " NULL, n int)\nGO\nINSERT " + name + number +
             " VALUES " + rows + "\nGO\n";
    };
    std::string values, others, reversed = "(" + each.same + ", 1)";
    std::string keys = "(" + each.value + ", 1)";
    for (std::size_t other = 0; other < each.others.size(); ++other) {
      const std::string n = std::to_string(other + 2);
      values += (other == 0 ? "(" : ", (") + each.value + ", " + n + ")";
      others += (other == 0 ? "(" : ", (") + each.others[other] + ", " + n + ")";
      keys += ", (" + each.others[other] + ", " + n + ")";
      reversed.insert(0, "(" + each.others[other] + ", " + n + "), ");
    }
    source += table("E", "(" + each.value + ", 1), (NULL, 2)") + table("D", values) + table("K", keys);
    target += table("E", "(" + each.same + ", 1), (NULL, 2)") + table("D", others) + table("K", reversed);
  }
  load(source, target);
  program.settings.gblnDataCaseSensitive = true;
  for (std::size_t i = 0; i < typeCases.size(); ++i) {
    SCOPED_TRACE(typeCases[i].type);
    const std::string number = std::to_string(i);
    EXPECT_EQ(differences("E" + number), 0);
    EXPECT_EQ(differences("D" + number), static_cast<std::int32_t>(typeCases[i].others.size()));
    // One Null among the keys is looked for as a text, which ends the walk for a number's column.
    const auto& others = typeCases[i].others;
    if (std::find(others.begin(), others.end(), "NULL") != others.end()) continue;
    EXPECT_EQ(differences("K" + number, {"V"}), 0) << "each finds its partner";
    EXPECT_EQ(differences("K" + number, {"V", "n"}), 0);
    EXPECT_EQ(differences("E" + number, {"V", "n"}), 0) << "several keys find a Null";
  }
}

TEST_F(TwoTables, NumbersAreEqualByValueWhateverTheirColumns) {
  struct NumberCase {
    const char* type1;
    const char* type2;
    const char* values;  // the same numbers as both types
  };
  const NumberCase cases[] = {{"decimal(9,2)", "decimal(18,4)", "1.50,-0.01,100"},
                              {"money", "decimal(12,2)", "1.5,-3,922337203.25"},
                              {"float", "decimal(18,6)", "0.1,-2.5,1e7,0.000001"},
                              {"decimal(38,0)", "float", "1e20,7"},
                              {"int", "numeric(9,3)", "5,-6"},
                              {"bigint", "float", "10000000000000000,3"},
                              {"real", "money", "2.25,-7"}};
  std::string source, target;
  int number = 0;
  for (const NumberCase& each : cases) {
    std::string rows, reversed;
    for (const std::string& value : splitAt(each.values, ',')) {
      rows += (rows.empty() ? "(" : ", (") + value + ")";
      reversed = "(" + value + (reversed.empty() ? ")" : "), ") + reversed;
    }
    const std::string name = std::to_string(++number);
    const auto table = [&](const std::string& kind, const std::string& type, const std::string& values) {
      return "CREATE TABLE " + kind + name + " (V " + type + ")\nGO\nINSERT " + kind + name + " VALUES " + values +
             "\nGO\n";
    };
    source += table("E", each.type1, rows) + table("K", each.type1, rows);
    target += table("E", each.type2, rows) + table("K", each.type2, reversed);
  }
  load(source, target);
  for (number = 1; number <= static_cast<int>(std::size(cases)); ++number) {
    SCOPED_TRACE(std::string(cases[number - 1].type1) + " and " + cases[number - 1].type2);
    EXPECT_EQ(differences("E" + std::to_string(number)), 0);
    EXPECT_EQ(differences("K" + std::to_string(number), {"V"}), 0);
  }
}

TEST_F(TwoTables, NullIsTheTextNullAndNothingElse) {
  load("CREATE TABLE t (a nvarchar(9))\nGO\nINSERT t VALUES (NULL), (NULL), (NULL), (N''), (N' x ')",
       "CREATE TABLE t (a nvarchar(9))\nGO\nINSERT t VALUES (N'Null'), (N'NULL'), (N''), (N'  '), (N'X')");
  program.settings.gblnDataCaseSensitive = true;
  EXPECT_EQ(differences("t"), 3) << "'NULL', '' and 'X' differ";
  program.settings.gblnDataCaseSensitive = false;
  EXPECT_EQ(differences("t"), 1) << "'' differs";
}

}  // namespace
}  // namespace qrel
