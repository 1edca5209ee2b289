// Cases of the embedded server as text: each file of tests/embedded/cases begins with an empty database. A file is
// blocks, parted by empty lines; a line that begins with # is a comment. The first line of a block says what is to
// become of the rest of it:
//   statement ok               a script that loads whole, GO lines and all: nothing failed, nothing was skipped
//   statement error TEXT       one statement of the script fails and the others run; its reason holds TEXT
//   statement skipped TEXT     one statement isn't understood and the others run; its reason holds TEXT
//   query                      SQL, a line ----, its rows: cells joined with |, Null as -, line ends as \r and \n
//   query error TEXT           SQL that is refused, asked as any query of the program is; the error holds TEXT
// "version 8.00.2039" in front of the first block makes the server an older one. Expectations come from what SQL Server
// documents and from the limits that README.md tells, never from what this server has answered.
#include <algorithm>
#include <cctype>
#include <fstream>

#include "platform/text.h"
#include "tests/embedded/embeddedServer.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

struct Block {
  std::size_t line = 0;  // of its first line, 1-based
  std::string head;
  std::string sql;
  std::vector<std::string> rows;
  bool parted = false;  // has a line ----
};

struct CaseFile {
  std::string version = defaultProductVersion;
  std::vector<Block> blocks;
};

CaseFile readCases(const fs::path& path) {
  CaseFile file;
  std::ifstream stream(path, std::ios::binary);
  bool inside = false;
  std::string line;
  for (std::size_t number = 1; std::getline(stream, line); ++number) {
    if (line.empty()) {
      inside = false;
    } else if (line[0] == '#') {
      continue;
    } else if (file.blocks.empty() && line.rfind("version ", 0) == 0) {
      file.version = line.substr(8);
    } else if (!inside) {
      file.blocks.push_back({number, line, {}, {}, false});
      inside = true;
    } else if (Block& block = file.blocks.back(); block.parted) {
      block.rows.push_back(line);
    } else if (line == "----") {
      block.parted = true;
    } else {
      block.sql += line + '\n';
    }
  }
  return file;
}

std::vector<fs::path> caseFiles() {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(QREL_EMBEDDED_CASES))
    if (entry.path().extension() == ".test") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "  " + line + '\n';
  return text.empty() ? "  (nothing)\n" : text;
}

// What a head asks for behind its word: "statement error TEXT", "error" gives TEXT.
bool asksFor(const std::string& head, const std::string& word, std::string& text) {
  if (head.rfind(word, 0) != 0) return false;
  text = head.size() > word.size() ? head.substr(word.size() + 1) : std::string();
  return true;
}

class EmbeddedCases : public ::testing::TestWithParam<fs::path> {
 protected:
  void run(EmbeddedServer& server, const Block& block) {
    std::string text;
    if (block.head == "statement ok") {
      expect(block, {}, told(server, block.sql));
    } else if (asksFor(block.head, "statement error", text) && !text.empty()) {
      expectOne(block, "failed: ", text, told(server, block.sql));
    } else if (asksFor(block.head, "statement skipped", text) && !text.empty()) {
      expectOne(block, "skipped: ", text, told(server, block.sql));
    } else if (block.head == "query" && block.parted) {
      expect(block, block.rows, answered(server, block.sql));
    } else if (asksFor(block.head, "query error", text) && !text.empty()) {
      expectOne(block, "error: ", text, answered(server, block.sql));
    } else {
      report(block, "a block as told at the top of casesTest.cpp", block.head + '\n');
    }
  }

 private:
  // What a load tells: a line for each statement that has failed or was skipped.
  static std::vector<std::string> told(EmbeddedServer& server, const std::string& sql) {
    const LoadReport load = loadScripts(server.servers, "S", "shop", {server.folder.write("script.sql", sql)}, {});
    std::vector<std::string> lines;
    for (const SkippedStatement& each : load.failed) lines.push_back("failed: " + each.reason);
    for (const SkippedStatement& each : load.skipped) lines.push_back("skipped: " + each.reason);
    return lines;
  }
  static std::vector<std::string> answered(EmbeddedServer& server, const std::string& sql) {
    try {
      std::vector<std::string> rows = server.rows(sql);
      for (std::string& row : rows) row = replaceAll(replaceAll(row, "\r", "\\r"), "\n", "\\n");
      return rows;
    } catch (const RuntimeError& error) {
      return {"error: " + error.description};
    }
  }
  static void expect(const Block& block, const std::vector<std::string>& expected,
                     const std::vector<std::string>& actual) {
    if (expected != actual) report(block, joined(expected), joined(actual));
  }
  static void expectOne(const Block& block, const std::string& kind, const std::string& text,
                        const std::vector<std::string>& actual) {
    if (actual.size() != 1 || actual[0].rfind(kind, 0) != 0 || actual[0].find(text) == std::string::npos)
      report(block, "  " + kind + "..." + text + "...\n", joined(actual));
  }
  static void report(const Block& block, const std::string& expected, const std::string& actual) {
    ADD_FAILURE_AT(GetParam().c_str(), static_cast<int>(block.line)) << block.head << '\n'
                                                                     << block.sql << "expected:\n"
                                                                     << expected << "actual:\n"
                                                                     << actual;
  }
};

TEST_P(EmbeddedCases, ComeOutAsWritten) {
  const CaseFile file = readCases(GetParam());
  EXPECT_FALSE(file.blocks.empty());
  EmbeddedServer server(file.version);
  for (const Block& block : file.blocks) run(server, block);
}

INSTANTIATE_TEST_SUITE_P(Files, EmbeddedCases, ::testing::ValuesIn(caseFiles()), [](const auto& each) {
  std::string name = each.param.stem().string();
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
});

}  // namespace
}  // namespace qrel
