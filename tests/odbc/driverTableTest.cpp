// One connection in the words of each driver.
#include "platform/data/odbc/driverTable.h"

#include <gtest/gtest.h>

namespace qrel::odbc {
namespace {

std::string textFor(const std::string& driver, const std::string& text) {
  Target target;
  readTarget(ConnectionString::parse("Provider=SQLOLEDB.1;" + text), target);
  return driverText(chooseDriver(driver, {driver}), target);
}

TEST(DriverTable, EachDriverIsToldInItsOwnWords) {
  const std::string login = "User ID=sa;Password=\"a};b\";TrustServerCertificate=yes;";
  const std::string eighteen = "ODBC Driver 18 for SQL Server";
  EXPECT_EQ(textFor(eighteen, login + "Data Source=tcp:sql01,14330;Initial Catalog=My}Db"),
            "Driver={ODBC Driver 18 for SQL Server};Server={sql01,14330};Database={My}}Db};UID={sa};PWD={a}};b};"
            "Encrypt=yes;TrustServerCertificate=yes;APP=Quorrel;MARS_Connection=no;");
  EXPECT_EQ(textFor(eighteen, "Integrated Security=SSPI;Encrypt=strict;Data Source=(local)\\dev"),
            "Driver={ODBC Driver 18 for SQL Server};Server={localhost\\dev};Trusted_Connection=yes;"
            "Encrypt=strict;TrustServerCertificate=no;APP=Quorrel;MARS_Connection=no;");
  EXPECT_EQ(textFor("FreeTDS", "User ID=sa;Password=a;Encrypt=no;Data Source=sql01\\dev,14330;Initial Catalog=a b"),
            "Driver={FreeTDS};Server=sql01;Port=14330;Database=a b;UID=sa;PWD=a;"
            "Encryption=off;APP=Quorrel;TDS_Version=7.4;ClientCharset=UTF-8;");
  EXPECT_EQ(textFor("FreeTDS", "User ID=sa;Password=\"a;b\";TrustServerCertificate=true;Data Source=sql01\\dev"),
            "Driver={FreeTDS};Server=sql01\\dev;UID=sa;PWD={a;b};"
            "Encryption=require;APP=Quorrel;TDS_Version=7.4;ClientCharset=UTF-8;");
}

TEST(DriverTable, TheNewestDriverIsTaken) {
  const std::vector<std::string> installed = {"FreeTDS", "ODBC Driver 17 for SQL Server", "SQLite3",
                                              "ODBC Driver 18 for SQL Server"};
  EXPECT_EQ(chooseDriver("", installed).name, "ODBC Driver 18 for SQL Server");
  EXPECT_EQ(chooseDriver("", {"SQLite3", "FreeTDS"}).family, Family::FreeTds);
  EXPECT_EQ(chooseDriver("freetds", installed).name, "FreeTDS");
  EXPECT_EQ(chooseDriver("/usr/lib/libtdsodbc.so", {}).family, Family::FreeTds);
  EXPECT_THROW(chooseDriver("", {"SQLite3"}), DataError);
}

}  // namespace
}  // namespace qrel::odbc
