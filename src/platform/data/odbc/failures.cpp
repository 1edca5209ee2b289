#include "platform/data/odbc/failures.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace qrel::odbc {

namespace {

// FreeTDS's own numbers.
constexpr std::int32_t loginBroken = 20002, unreachable = 20009, unknownHost = 20013, lineClosed = 20017,
                       outOfStep = 20020;

bool has(const Records& records, std::int32_t native) {
  return std::any_of(records.begin(), records.end(), [&](const Record& each) { return each.native == native; });
}
bool hasState(const Records& records, std::string_view state) {
  return std::any_of(records.begin(), records.end(), [&](const Record& each) { return each.state == state; });
}
bool says(const Records& records, std::string_view words) {
  return std::any_of(records.begin(), records.end(),
                     [&](const Record& each) { return lowerCase(each.text).find(words) != std::string::npos; });
}
const Record* withNative(const Records& records, std::initializer_list<std::int32_t> natives) {
  for (const std::int32_t native : natives)
    for (const Record& each : records)
      if (each.native == native) return &each;
  return nullptr;
}

// All that was said, each sentence once.
std::string textOf(const Records& records) {
  std::string text;
  for (const Record& record : records) {
    if (record.text.empty() || text.find(record.text) != std::string::npos) continue;
    if (!text.empty()) text += ' ';
    text += record.text;
  }
  return text;
}

std::string stateOf(const Records& records, const char* otherwise) {
  return records.empty() ? otherwise : records.front().state;
}

std::string unreachableServer(const Attempt& attempt, const std::string& why) {
  return "SQL Server '" + attempt.server + "' does not exist or access denied: " + why;
}

std::string loginRefused(const Record& record, const Attempt& attempt) {
  std::string text = record.text;
  if (record.native == 18452)
    text += " Windows authentication wants a Kerberos ticket of a domain that the server trusts (kinit).";
  else if (record.native == 18486)
    text += " The login is locked: an administrator can unlock it.";
  else if (record.native == 18487 || record.native == 18488)
    text += " The password has expired or must be changed first.";
  else if (!attempt.login.empty())
    text += " Check the login's name and its password (the console reads it from QREL_PASSWORD).";
  return text;
}

std::string noTicket(const Attempt& attempt) {
  return unreachableServer(attempt,
                           "Windows authentication didn't succeed. Outside of Windows it is Kerberos: get a ticket "
                           "with \"kinit\", and name the server by its host name, not by an address; or use a login "
                           "(\"qrel servers add NAME --login LOGIN\").");
}

std::string cannotEncrypt(const Attempt& attempt) {
  return unreachableServer(
      attempt, "it ended the connection during the login. " +
                   std::string(attempt.encrypted ? "Encryption is asked for: if this server can't encrypt, and the "
                                                   "network in between is yours, add it with \"--encrypt no\" "
                                                   "(without \"Encrypted\" in the window). "
                                                 : "If it takes encrypted connections only, add it without "
                                                   "\"--encrypt no\". ") +
                   "Otherwise check that it is SQL Server that listens there.");
}

std::string certificateRefused(const Attempt& attempt, const Records& records) {
  return unreachableServer(
      attempt,
      "its certificate isn't trusted. Have the authority that issued it installed on this "
      "machine, name the server by the name in the certificate, or, if you are sure of the "
      "server, add it with \"--trust-certificate\" (\"Trust any certificate\" in the window). The driver "
      "says: " +
          textOf(records));
}

std::string connectSentence(const Records& records, const Attempt& attempt) {
  if (hasState(records, "IM002") || hasState(records, "IM003") || hasState(records, "IM004") ||
      says(records, "can't open lib"))
    return "The ODBC driver '" + attempt.driver +
           "' can't be loaded. \"odbcinst -q -d\" lists those that are installed; choose one by the option OdbcDriver "
           "or QREL_ODBC_DRIVER. The driver manager says: " +
           textOf(records);
  if (const Record* database = withNative(records, {4060, 4064, 911, 916, 945, 942, 927}))
    return database->text + " Choose one of the server's databases that login '" +
           (attempt.login.empty() ? "(Windows authentication)" : attempt.login) + "' may open.";
  if (const Record* login = withNative(records, {18456, 18452, 18486, 18487, 18488}))
    return loginRefused(*login, attempt);
  if (says(records, "certificate")) return certificateRefused(attempt, records);
  if (hasState(records, "HYT00") || hasState(records, "HYT01")) return silentServer(attempt).description;
  if (has(records, unknownHost) || says(records, "not known") || says(records, "unknown host"))
    return unreachableServer(attempt,
                             "there is no host of that name, and no embedded server either. Check the name; "
                             "\"qrel load " +
                                 attempt.server + "/DATABASE FILE\" makes an embedded server from a script.");
  if (attempt.login.empty() &&
      (has(records, loginBroken) || says(records, "kerberos") || says(records, "sspi") || says(records, "gss")))
    return noTicket(attempt);
  if (has(records, loginBroken) || has(records, lineClosed) || says(records, "ssl") || says(records, "encrypt"))
    return cannotEncrypt(attempt);
  if (has(records, unreachable) || hasState(records, "08001") || hasState(records, "08S01"))
    return unreachableServer(attempt,
                             "nothing answers at that address. Check that the server runs, that it takes TCP "
                             "connections, the port (\"NAME,PORT\", usually 1433), and the firewall in between. The "
                             "driver says: " +
                                 textOf(records));
  return unreachableServer(attempt, textOf(records));
}

// Of what the server says of a statement.
std::int32_t numberOf(const Records& records) {
  if (has(records, 208) || hasState(records, "42S02")) return errorNumber::invalidObjectName;
  // No permission, on a database (916), an object (229), a column (230), a statement or a view of the server.
  if (withNative(records, {229, 230, 262, 297, 300, 371, 916})) return errorNumber::permissionDenied;
  // Locks and memory that weren't to be had in time.
  if (withNative(records, {1222, 8645, 17197})) return errorNumber::timeout;
  // The server couldn't do what it could do another time: a deadlock, its memory, its disks.
  if (withNative(records, {1205, 701, 802, 823, 824, 825, 845, 926, 945, 9002, 1105}))
    return errorNumber::cannotConnect;
  return errorNumber::badSql;
}

}  // namespace

DataError connectFailure(const Records& records, const Attempt& attempt) {
  return {errorNumber::cannotConnect, connectSentence(records, attempt), stateOf(records, "08001")};
}

DataError silentServer(const Attempt& attempt) {
  return {errorNumber::cannotConnect,
          unreachableServer(attempt, "there was no answer within " + std::to_string(attempt.seconds) +
                                         " seconds. Check the name, the port (\"NAME,PORT\"; an instance's name needs "
                                         "the SQL Server Browser, UDP port 1434), and the firewall in between."),
          "HYT00"};
}

bool tellLostLine(const Records& records) {
  constexpr std::array lost{loginBroken, lineClosed, outOfStep};
  return std::any_of(records.begin(), records.end(), [&](const Record& each) {
    return each.state == "08S01" || each.state == "08001" || each.state == "08003" || each.state == "08007" ||
           (each.state == "HY000" && each.native == 0) ||
           std::find(lost.begin(), lost.end(), each.native) != lost.end();
  });
}

DataError lostLine(const Attempt& attempt, const std::string& detail, const std::string& sql) {
  return {errorNumber::cannotConnect,
          "The connection to SQL Server '" + attempt.server +
              "' was lost while a query ran; what it had given so far isn't the whole. Check the server and the "
              "network, and start again." +
              (detail.empty() ? "" : " The driver says: " + detail),
          "08S01", sql};
}

DataError commandFailure(const Records& records, const Attempt& attempt, const std::string& sql) {
  if (hasState(records, "HYT00") || hasState(records, "HYT01")) return timedOut(sql, false);
  if (hasState(records, "HY008")) return cancelled(sql);
  const bool lost = tellLostLine(records);
  const bool serverSpoke = std::any_of(records.begin(), records.end(), [](const Record& each) {
    return each.native != 0 && (each.native < loginBroken - 2 || each.native > outOfStep + 50);
  });
  if ((lost && !serverSpoke) || records.empty()) return lostLine(attempt, textOf(records), sql);
  std::string text = textOf(records);
  if (has(records, 1205)) text += " The server chose this query as the victim of a deadlock: run it again.";
  if (withNative(records, {229, 230, 262, 297, 300, 371, 916}))
    text += " The login needs SELECT, and VIEW DEFINITION for the catalogue.";
  if (lost) text += " The connection was lost.";
  return {numberOf(records), text, stateOf(records, "42000"), sql};
}

DataError timedOut(const std::string& sql, bool abandoned) {
  return {
      errorNumber::timeout,
      std::string("Query timeout expired.") +
          (abandoned ? " The server doesn't answer the request to end it either, so its connection was given up." : ""),
      "HYT00", sql};
}

DataError cancelled(const std::string& sql) { return {errorNumber::cancelled, "Operation canceled.", "HY008", sql}; }

DataError cutValue(const std::string& column, const std::string& sql) {
  return {errorNumber::cannotConnect,
          "The ODBC driver gave only the beginning of a value in column '" + column +
              "': it is longer than the driver says that it can be. Nothing that rests on it is told. Another driver "
              "(option OdbcDriver) may do better.",
          "01004", sql};
}

}  // namespace qrel::odbc
