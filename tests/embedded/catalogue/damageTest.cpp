// What can't be read is an error in words, never an empty answer.
#include <gtest/gtest.h>

#include "embedded/sqlite/sqlite.h"
#include "embedded/types/collations.h"
#include "tests/embedded/embeddedServer.h"
#include "tests/thorough.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

// While it lives, one read of database files fails: the `failAt`-th from now on, from 1.
class FailingReads {
 public:
  explicit FailingReads(int failAt) {
    reads_ = 0;
    failAt_ = failAt;
    system_ = sqlite3_vfs_find(nullptr);
    mine_ = *system_;
    mine_.pNext = nullptr;
    mine_.zName = "failing";
    mine_.xOpen = open;
    sqlite3_vfs_register(&mine_, 1);
  }
  ~FailingReads() {
    sqlite3_vfs_register(system_, 1);
    sqlite3_vfs_unregister(&mine_);
    failAt_ = 0;
  }
  FailingReads(const FailingReads&) = delete;
  FailingReads& operator=(const FailingReads&) = delete;
  static bool failed() { return reads_ >= failAt_; }

 private:
  static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    const int code = system_->xOpen(system_, name, file, flags, outFlags);
    if (code != SQLITE_OK || !file->pMethods) return code;
    read_ = file->pMethods->xRead;
    methods_ = *file->pMethods;
    methods_.xRead = [](sqlite3_file* from, void* into, int size, sqlite3_int64 offset) {
      return ++reads_ == failAt_ ? SQLITE_IOERR_READ : read_(from, into, size, offset);
    };
    file->pMethods = &methods_;
    return code;
  }

  static inline int reads_, failAt_;
  static inline sqlite3_vfs* system_;
  static inline sqlite3_vfs mine_;
  static inline sqlite3_io_methods methods_;
  static inline int (*read_)(sqlite3_file*, void*, int, sqlite3_int64);
};

// Each question asks another part of the catalogue, most by way of a function or a view.
const char* const questions[] = {
    "SELECT name, xtype, id, OBJECTPROPERTY(id, N'IsUserTable'), OBJECTPROPERTY(id, 'TableHasPrimaryKey'), "
    "OBJECTPROPERTY(id, 'TableHasIdentity'), USER_NAME(uid) FROM sysobjects ORDER BY id",
    "SELECT c.name, t.name, c.length, c.cdefault, c.iscomputed FROM syscolumns c JOIN systypes t ON c.xusertype = "
    "t.xusertype ORDER BY c.id, c.colid",
    "SELECT o.name, c.text FROM syscomments c JOIN sysobjects o ON o.id = c.id ORDER BY c.id, c.colid",
    "SELECT i.name, i.indid, INDEXPROPERTY(i.id, i.name, 'IsUnique'), c.name FROM sysindexes i JOIN sysindexkeys k ON "
    "k.id = i.id AND k.indid = i.indid JOIN syscolumns c ON c.id = k.id AND c.colid = k.colid ORDER BY i.id, i.indid",
    "SELECT constid, fkeyid, rkeyid, fkey1, rkey1, keycnt FROM sysreferences",
    "SELECT IDENT_SEED('Parent'), IDENT_INCR('Parent'), IDENT_CURRENT('Parent'), COL_LENGTH('Child', 'note'), "
    "OBJECT_NAME(OBJECT_ID('Child')), OBJECT_SCHEMA_NAME(OBJECT_ID('s.Other')), TYPE_ID('Phone'), SCHEMA_ID('s')",
    "SELECT permission_name, state FROM sys.database_permissions ORDER BY 1",
    "SELECT name FROM sys.sequences",
    "SELECT definition FROM sys.sql_modules ORDER BY object_id",
    "SELECT id, note FROM Child ORDER BY id",
    "SELECT COUNT(*) FROM Parent",
};

std::vector<std::string> answersOf(EmbeddedServer& server, EmbeddedProvider& provider) {
  std::vector<std::string> answers;
  for (const char* sql : questions) {
    try {
      const auto connection =
          provider.open(ConnectionString::parse("Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=shop"));
      const CommandResult result = connection->execute({sql, 30, {}});
      ColumnStore store(result.rows->columns());
      while (result.rows->fetch(store, 3) > 0) {
      }
      std::string& answer = answers.emplace_back();
      for (std::size_t row = 0; row < store.rowCount(); ++row)
        for (std::size_t column = 0; column < store.columnCount(); ++column)
          answer += textOf(store.cell(column, row)) + "|";
    } catch (const DataError& error) {
      answers.push_back("error");
      EXPECT_EQ(error.number, errorNumber::cannotConnect) << error.description;
      EXPECT_NE(error.description.find(server.servers.databaseFile("S", "shop").string()), std::string::npos)
          << error.description;
      for (const char* internal : {"SQLite", "sqlite_master", "cat_", "malformed", "q_"})
        EXPECT_EQ(error.description.find(internal), std::string::npos) << error.description;
    }
  }
  return answers;
}

std::vector<std::string> freshAnswers(EmbeddedServer& server) {
  EmbeddedProvider provider(server.servers);
  return answersOf(server, provider);
}

// Every answer is right or an error; returns how many are errors.
int errorsAmong(const std::vector<std::string>& answers, const std::vector<std::string>& right,
                const std::string& what) {
  int errors = 0;
  for (std::size_t i = 0; i < right.size(); ++i) {
    if (answers[i] == "error") {
      ++errors;
      continue;
    }
    EXPECT_EQ(answers[i], right[i]) << what << ": " << questions[i];
  }
  return errors;
}

class Damage : public ::testing::Test {
 protected:
  Damage() {
    std::string script =
        "CREATE SCHEMA s\nGO\nCREATE TYPE Phone FROM varchar(20)\nGO\nCREATE SEQUENCE Numbers START WITH 5\nGO\n"
        "CREATE TABLE Parent (id int IDENTITY(3,2) CONSTRAINT pk PRIMARY KEY, name varchar(50) CONSTRAINT df DEFAULT "
        "('x'), phone Phone, CONSTRAINT ck CHECK (id > 0))\nGO\nCREATE TABLE Child (id int REFERENCES Parent (id), "
        "note "
        "varchar(2000))\nCREATE INDEX ix ON Child (note)\nGO\nCREATE TABLE s.Other (a int)\nGO\n"
        "GRANT SELECT ON Parent TO public\nGO\nCREATE VIEW v AS SELECT 1 AS a\nGO\nCREATE PROCEDURE p AS SELECT '" +
        std::string(9000, 'x') + "'\nGO\nINSERT Parent (name) VALUES ('a')\n";
    for (int i = 0; i < 40; ++i)
      script += "INSERT Child VALUES (3, '" + std::string(900, static_cast<char>('a' + i % 26)) + "')\n";
    server.load(script);
    file = server.servers.databaseFile("S", "shop");
    right = freshAnswers(server);
    for (const std::string& answer : right) {
      EXPECT_NE(answer, "error");
      EXPECT_NE(answer, "");
    }
    whole = server.folder.path() / "whole";
    fs::copy_file(file, whole);
  }

  void restore() const { fs::copy_file(whole, file, fs::copy_options::overwrite_existing); }
  void change(const std::string& sql) const {
    sqlite::Database writer(file, sqlite::OpenMode::ReadWrite);
    tsql::registerCollations(writer);
    writer.execute(sql);
  }

  EmbeddedServer server;
  fs::path file, whole;
  std::vector<std::string> right;
};

TEST_F(Damage, AMissingPartOfTheCatalogueIsNoEmptyOne) {
  const char* const tables[] = {"cat_schemas",  "cat_types",     "cat_objects",    "cat_columns",
                                "cat_indexes",  "cat_indexkeys", "cat_references", "cat_referencekeys",
                                "cat_comments", "cat_sequences", "cat_permissions"};
  for (const std::string table : tables) {
    restore();
    change("drop table " + table);
    EXPECT_EQ(errorsAmong(freshAnswers(server), right, table), static_cast<int>(right.size())) << table;
    EXPECT_EQ(errorsAmong(answersOf(server, server.provider), right, table), static_cast<int>(right.size())) << table;
  }
  restore();
  EXPECT_EQ(errorsAmong(freshAnswers(server), right, "restored"), 0);
}

TEST_F(Damage, NorIsAnEmptyOne) {
  for (const char* table :
       {"cat_schemas", "cat_columns", "cat_indexes", "cat_references", "cat_referencekeys", "cat_comments"}) {
    restore();
    change("delete from " + std::string(table));
    EXPECT_EQ(errorsAmong(freshAnswers(server), right, table), static_cast<int>(right.size())) << table << " emptied";
  }
  restore();
  change("drop table \"dbo.Child\"");
  EXPECT_EQ(errorsAmong(freshAnswers(server), right, "rows"), 1);
}

// Also a part that goes while the file is open.
TEST_F(Damage, APartThatGoesMeanwhileIsMissed) {
  EXPECT_EQ(errorsAmong(answersOf(server, server.provider), right, "before"), 0);
  change("drop table cat_references");
  EXPECT_GT(errorsAmong(answersOf(server, server.provider), right, "after"), 0);
}

TEST_F(Damage, ZeroedPagesAndCutFiles) {
  constexpr std::uintmax_t page = 4096;
  const std::uintmax_t pages = fs::file_size(whole) / page;
  int noticed = 0;
  std::uintmax_t tried = 0;
  for (std::uintmax_t i = 0; i < pages; i += thorough() ? 1 : 3, ++tried) {
    restore();
    {
      std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
      out.seekp(static_cast<std::streamoff>(i * page));
      out << std::string(page, '\0');
    }
    noticed += errorsAmong(freshAnswers(server), right, "page " + std::to_string(i)) > 0;
    restore();
    fs::resize_file(file, i * page + 100);
    EXPECT_GT(errorsAmong(freshAnswers(server), right, "cut at page " + std::to_string(i)), 0);
  }
  EXPECT_GT(noticed, static_cast<int>(tried) / 2);
}

TEST_F(Damage, NoFailedReadPassesForAnAnswer) {
  int failAt = 1;
  int told = 0, tried = 0;
  for (bool reached = true; reached; failAt = static_cast<int>(nextPlace(failAt)), ++tried) {
    EmbeddedProvider provider(server.servers);
    std::vector<std::string> answers;
    {
      const FailingReads failing(failAt);
      answers = answersOf(server, provider);
      reached = FailingReads::failed();
    }
    const std::string what = "read " + std::to_string(failAt);
    // One that SQLite itself makes good shows nowhere.
    told += errorsAmong(answers, right, what) > 0;
    EXPECT_EQ(errorsAmong(answersOf(server, provider), right, what + ", afterwards"), 0);
  }
  EXPECT_GT(failAt, 40);
  EXPECT_GT(told, tried * 8 / 10);
}

}  // namespace
}  // namespace qrel
