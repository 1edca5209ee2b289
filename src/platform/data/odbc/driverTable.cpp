#include "platform/data/odbc/driverTable.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/text.h"

namespace qrel::odbc {

namespace {

// The drivers that are known, the best first.
constexpr std::array<std::string_view, 4> preferred = {"ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server",
                                                       "ODBC Driver 13 for SQL Server", "FreeTDS"};

// What a family calls things; a value in braces where `braces` says so.
struct Words {
  const char* always;                      // said to every server
  const char* port;                        // key of the port; null: it stands behind the server, with a comma
  const char* windows;                     // key and value of Windows authentication
  const char* encryptionKey;               // and its values
  const char *encrypted, *plain, *strict;  // null: there is no such thing
  const char *trusted, *validated;         // null: the driver has no such key word
};

constexpr Words wordsOf(Family family) {
  // Both log in as ODBC does, for which a server sets TEXTSIZE to what there is: nothing is cut at 4,096 bytes.
  if (family == Family::Microsoft)
    return {"APP=Quorrel;MARS_Connection=no;",
            nullptr,
            "Trusted_Connection=yes;",
            "Encrypt",
            "yes",
            "no",
            "strict",
            "TrustServerCertificate=yes;",
            "TrustServerCertificate=no;"};
  return {"APP=Quorrel;TDS_Version=7.4;ClientCharset=UTF-8;",
          "Port",
          "Trusted_Connection=yes;",
          "Encryption",
          "require",
          "off",
          nullptr,
          nullptr,
          nullptr};
}

[[noreturn]] void refuse(const std::string& message) { throw DataError(errorNumber::cannotConnect, message, "08001"); }

bool isYes(const std::string& value) {
  const std::string lower = lowerCase(value);
  return lower == "yes" || lower == "true" || lower == "1" || lower == "sspi" || lower == "mandatory";
}

// A value as the driver reads it back. FreeTDS knows braces, but no doubled one inside: its value ends at "};".
std::string escaped(Family family, const std::string& key, const std::string& value) {
  for (const char c : value)
    if (static_cast<unsigned char>(c) < 0x20) refuse(key + " holds a control character, which no ODBC driver takes.");
  if (family == Family::Microsoft) return '{' + replaceAll(value, "}", "}}") + '}';
  if (value.find(';') == std::string::npos && !value.starts_with('{')) return value;
  if (value.find("};") != std::string::npos)
    refuse(key +
           " has a closing brace in front of a semicolon, which FreeTDS can't take: use Microsoft's driver "
           "(docs/servers.md), or change it.");
  return '{' + value + '}';
}

void append(std::string& text, Family family, const std::string& key, const std::string& value) {
  text += key + '=' + escaped(family, key, value) + ';';
}

void readServer(Target& target) {
  std::string name = target.server;
  for (const std::string_view prefix : {"tcp:", "np:", "lpc:", "admin:"}) {
    if (!equalNoCase(std::string_view(name).substr(0, prefix.size()), prefix)) continue;
    if (prefix != "tcp:")
      refuse("SQL Server '" + target.server + "': only TCP connections are possible; write \"NAME,PORT\".");
    name.erase(0, prefix.size());
  }
  if (const std::size_t comma = name.find(','); comma != std::string::npos) {
    target.port = std::string(trimBlanks(std::string_view(name).substr(comma + 1)));
    name.resize(comma);
    const bool digits = !target.port.empty() && target.port.find_first_not_of("0123456789") == std::string::npos;
    if (!digits || target.port.size() > 5 || std::stoi(target.port) < 1 || std::stoi(target.port) > 65535)
      refuse("SQL Server '" + target.server + "': a port from 1 to 65535 has to stand behind the comma.");
  }
  if (const std::size_t slash = name.find('\\'); slash != std::string::npos) {
    // A port says it all.
    if (target.port.empty()) target.instance = name.substr(slash + 1);
    name.resize(slash);
  }
  name = std::string(trimBlanks(name));
  target.host = name == "." || equalNoCase(name, "(local)") ? "localhost" : name;
  if (target.host.empty()) refuse("SQL Server '" + target.server + "' has no host's name in it.");
}

}  // namespace

Driver chooseDriver(const std::string& asked, const std::vector<std::string>& installed) {
  const auto familyOf = [](const std::string& name) {
    const std::string lower = lowerCase(name);
    const bool free = lower.find("freetds") != std::string::npos || lower.find("tdsodbc") != std::string::npos;
    return free ? Family::FreeTds : Family::Microsoft;
  };
  if (!asked.empty()) {
    if (asked.find('/') != std::string::npos) return {asked, familyOf(asked)};
    for (const std::string& name : installed)
      if (equalNoCase(name, asked)) return {name, familyOf(name)};
    std::string list;
    for (const std::string& name : installed) list += (list.empty() ? "\"" : ", \"") + name + '"';
    refuse(
        "The ODBC driver \"" + asked + "\" (option OdbcDriver or QREL_ODBC_DRIVER) is not installed. " +
        (list.empty() ? "There is none at all: docs/servers.md says how to install one." : "Installed: " + list + "."));
  }
  for (const std::string_view name : preferred)
    for (const std::string& each : installed)
      if (equalNoCase(each, name)) return {each, familyOf(each)};
  refuse(
      "No ODBC driver for SQL Server is installed. Install FreeTDS (Debian and Ubuntu: \"apt-get install tdsodbc\") or "
      "Microsoft's \"ODBC Driver 18 for SQL Server\"; docs/servers.md has the steps.");
}

void readTarget(const ConnectionString& connectionString, Target& target) {
  target.server = std::string(trimBlanks(connectionString.server()));
  readServer(target);
  target.database = connectionString.database();
  target.windows = connectionString.has("Integrated Security");
  target.login = connectionString.get("User ID");
  target.password = connectionString.get("Password");
  target.driver = connectionString.get("OdbcDriver");
  if (connectionString.has("Encrypt")) {
    const std::string encrypt = lowerCase(connectionString.get("Encrypt"));
    target.encrypt = encrypt == "strict" ? encrypt : isYes(encrypt) ? "yes" : "no";
  }
  target.trustCertificate = isYes(connectionString.get("TrustServerCertificate"));
}

std::string driverText(const Driver& driver, const Target& target) {
  const Family family = driver.family;
  const Words words = wordsOf(family);
  std::string text =
      "Driver=" + (driver.name.find('/') == std::string::npos ? '{' + driver.name + '}' : driver.name) + ';';
  std::string server = target.host;
  if (!target.instance.empty()) server += '\\' + target.instance;
  if (!target.port.empty() && !words.port) server += ',' + target.port;
  append(text, family, "Server", server);
  if (words.port && target.instance.empty())
    append(text, family, words.port, target.port.empty() ? "1433" : target.port);
  if (!target.database.empty()) append(text, family, "Database", target.database);
  if (!target.windows) {
    append(text, family, "UID", target.login);
    append(text, family, "PWD", target.password);
  } else if (target.token.empty()) {
    text += words.windows;
  }
  const char* encryption = target.encrypt == "strict" ? words.strict
                           : target.encrypt == "no"   ? words.plain
                                                      : words.encrypted;
  if (!encryption)
    refuse("Encryption \"strict\" is known to Microsoft's driver 18 only; " + driver.name + " has \"yes\" and \"no\".");
  text += std::string(words.encryptionKey) + '=' + encryption + ';';
  // It reads what to check certificates by from its own file, and only for servers that stand there by name.
  if (!words.validated && target.encrypt == "yes" && !target.trustCertificate)
    refuse("SQL Server '" + target.server + "' can't be told from somebody who passes for it: " + driver.name +
           " encrypts, but checks no certificate. If you trust the network in between, add the server with "
           "\"--trust-certificate\" (with \"--encrypt no\" when it can't encrypt): \"qrel servers add\"; in the "
           "window, \"Trust "
           "any certificate\" and \"Encrypted\". Otherwise "
           "install Microsoft's driver (docs/servers.md).");
  if (words.trusted) text += target.trustCertificate ? words.trusted : words.validated;
  return text + words.always;
}

Attempt attemptOf(const Driver& driver, const Target& target, int seconds) {
  return {target.server,
          target.database,
          target.windows ? "" : target.login,
          driver.name,
          driver.family == Family::FreeTds,
          target.encrypt != "no",
          seconds};
}

}  // namespace qrel::odbc
