#include "embedded/load/sqlProject.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <system_error>

#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t namesInProjectRemark = 5;

std::string unescaped(std::string text) {
  for (const auto& [from, to] :
       {std::pair("&lt;", "<"), {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}})
    text = replaceAll(text, from, to);
  return text;
}

// A tag of an XML text; an item closes itself or has a text of its own.
struct Tag {
  std::string name;
  std::map<std::string, std::string> attributes;
  bool closing = false, empty = false;
  std::string text;  // what follows it up to the next tag

  std::string attribute(const char* wanted) const {
    const auto found = attributes.find(wanted);
    return found == attributes.end() ? "" : found->second;
  }
};

// The tags of an XML text, one after the other; comments, declarations and CDATA marks are passed over.
class TagReader {
 public:
  explicit TagReader(std::string_view text) : text_(text) {}

  bool next(Tag& tag) {
    for (;;) {
      at_ = text_.find('<', at_);
      if (at_ == std::string_view::npos) return false;
      if (text_.substr(at_, 4) == "<!--") {
        at_ = std::min(text_.find("-->", at_), text_.size());
      } else if (text_.substr(at_, 2) == "<?" || text_.substr(at_, 2) == "<!") {
        at_ = std::min(text_.find('>', at_), text_.size());
      } else {
        break;
      }
    }
    read(tag);
    return true;
  }

 private:
  static bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
  bool more() const { return at_ < text_.size(); }
  void skipSpace() {
    while (more() && isSpace(text_[at_])) ++at_;
  }
  std::string word() {
    const std::size_t begin = at_;
    while (more() && !isSpace(text_[at_]) && std::string_view("=/>").find(text_[at_]) == std::string_view::npos) ++at_;
    return std::string(text_.substr(begin, at_ - begin));
  }

  void read(Tag& tag) {
    tag = {};
    ++at_;
    if (more() && text_[at_] == '/') tag.closing = true, ++at_;
    tag.name = word();
    for (skipSpace(); more() && text_[at_] != '>'; skipSpace()) {
      if (text_[at_] == '/') {
        tag.empty = true;
        ++at_;
        continue;
      }
      const std::string name = word();
      skipSpace();
      if (!more() || text_[at_] != '=') {
        if (name.empty()) ++at_;
        continue;
      }
      ++at_;
      skipSpace();
      if (!more()) return;
      const char quote = text_[at_++];
      const std::size_t end = std::min(text_.find(quote, at_), text_.size());
      tag.attributes[name] = unescaped(std::string(text_.substr(at_, end - at_)));
      at_ = std::min(end + 1, text_.size());
    }
    const std::size_t begin = std::min(at_ + 1, text_.size());
    at_ = std::min(text_.find('<', begin), text_.size());
    tag.text = unescaped(std::string(trimBlanks(text_.substr(begin, at_ - begin))));
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// Whether a name fits a pattern of * and ?, both in lower case.
bool fits(std::string_view name, std::string_view pattern) {
  std::size_t n = 0, p = 0, star = std::string_view::npos, from = 0;
  while (n < name.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
      ++n, ++p;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      from = n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++from;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

// Parts of a path against parts of a pattern, in which ** is any number of folders.
bool fitsPath(const std::vector<std::string>& path, std::size_t at, const std::vector<std::string>& pattern,
              std::size_t part) {
  if (part == pattern.size()) return at == path.size();
  if (pattern[part] == "**") {
    for (std::size_t i = at; i <= path.size(); ++i)
      if (fitsPath(path, i, pattern, part + 1)) return true;
    return false;
  }
  return at < path.size() && fits(path[at], pattern[part]) && fitsPath(path, at + 1, pattern, part + 1);
}

bool isWild(std::string_view written) { return written.find_first_of("*?") != std::string_view::npos; }

std::vector<std::string> listOf(std::string_view written) {
  std::vector<std::string> list;
  for (std::size_t at = 0; at <= written.size();) {
    const std::size_t end = std::min(written.find(';', at), written.size());
    std::string_view one = written.substr(at, end - at);
    while (!one.empty() && std::isspace(static_cast<unsigned char>(one.front())) != 0) one.remove_prefix(1);
    while (!one.empty() && std::isspace(static_cast<unsigned char>(one.back())) != 0) one.remove_suffix(1);
    if (!one.empty()) list.emplace_back(one);
    at = end + 1;
  }
  return list;
}

class ProjectReader {
 public:
  ProjectReader(fs::path file, ScriptPaths& paths, std::vector<LoadRemark>& remarks)
      : file_(std::move(file)), paths_(paths), remarks_(remarks) {}

  SqlProject read() {
    const std::string text = readScript(file_, {}, remarks_);
    collect(text);
    if (!isProject_) throw RuntimeError(errorNumber::pathAccess, "'" + file_.string() + "' is no database project.");
    const std::set<fs::path> deployed = deployments();
    if (sdk_ && defaults_) take(listOf("**/*.sql"), listOf("bin/**;obj/**"), nullptr);
    for (const Item& item : build_) {
      if (item.removes)
        remove(item.paths);
      else
        take(item.paths, item.exclude, &missing_);
    }
    std::erase_if(project_.build, [&](const fs::path& each) { return deployed.count(each) != 0; });
    for (auto& [name, value] : values_) project_.variables.emplace_back(name, value);
    tell();
    return std::move(project_);
  }

 private:
  struct Item {
    std::vector<std::string> paths, exclude;
    bool removes = false;
  };

  void collect(std::string_view text) {
    TagReader reader(text);
    std::string variable;
    for (Tag tag; reader.next(tag);) {
      if (tag.closing) {
        if (tag.name == "SqlCmdVariable") variable.clear();
        continue;
      }
      if (!tag.attribute("Condition").empty() && tag.name != "Import" && tag.name != "PropertyGroup") conditions_ += 1;
      if (tag.name == "Project") isProject_ = true, sdk_ = sdk_ || !tag.attribute("Sdk").empty();
      if (tag.name == "Sdk" || (tag.name == "Import" && !tag.attribute("Sdk").empty())) sdk_ = true;
      if (tag.name == "EnableDefaultSqlItems" || tag.name == "EnableDefaultItems")
        defaults_ = defaults_ && !equalNoCase(tag.text, "false");
      if (tag.name == "Build") {
        if (!tag.attribute("Include").empty())
          build_.push_back({listOf(tag.attribute("Include")), listOf(tag.attribute("Exclude")), false});
        if (!tag.attribute("Remove").empty()) build_.push_back({listOf(tag.attribute("Remove")), {}, true});
      }
      if (tag.name == "PreDeploy") pre_.push_back(tag.attribute("Include"));
      if (tag.name == "PostDeploy") post_.push_back(tag.attribute("Include"));
      if (tag.name == "ArtifactReference" || tag.name == "ProjectReference" || tag.name == "PackageReference")
        references_.push_back(tag.attribute("Include"));
      if (tag.name == "SqlCmdVariable") values_[variable = tag.attribute("Include")];
      // "$(SqlCmdVar__1)" is where whoever deploys would put a value in.
      const bool value = (tag.name == "DefaultValue" || tag.name == "Value") && !variable.empty();
      if (value && !tag.text.starts_with("$(") && values_[variable].empty()) values_[variable] = tag.text;
    }
    std::erase_if(values_, [](const auto& each) { return each.first.empty() || each.second.empty(); });
  }

  std::set<fs::path> deployments() {
    std::set<fs::path> all;
    for (const auto& [written, into] : {std::pair(&pre_, &project_.preDeploy), {&post_, &project_.postDeploy}}) {
      for (const std::string& each : *written)
        for (const std::string& path : listOf(each))
          if (const fs::path found = single(path, &missing_); !found.empty() && all.insert(found).second)
            into->push_back(found);
    }
    return all;
  }

  // The path as written, or empty; what isn't there goes to `missing`.
  fs::path single(const std::string& written, std::vector<std::string>* missing) {
    std::string why;
    fs::path found = paths_.find(paths_.root(), written, why);
    if (found.empty() && missing) missing->push_back(written + (why == "isn't there" ? "" : " (" + why + ")"));
    return found;
  }

  void take(const std::vector<std::string>& include, const std::vector<std::string>& exclude,
            std::vector<std::string>* missing) {
    const auto add = [&](const fs::path& path) {
      const bool excluded =
          std::any_of(exclude.begin(), exclude.end(), [&](const std::string& each) { return matches(path, each); });
      if (!excluded && taken_.insert(path).second) project_.build.push_back(path);
    };
    for (const std::string& written : include) {
      if (isWild(written)) {
        for (const fs::path& path : below())
          if (matches(path, written)) add(path);
      } else if (const fs::path found = single(written, missing); !found.empty()) {
        add(found);
      }
    }
  }

  void remove(const std::vector<std::string>& written) {
    std::erase_if(project_.build, [&](const fs::path& path) {
      const bool goes =
          std::any_of(written.begin(), written.end(), [&](const std::string& each) { return matches(path, each); });
      if (goes) taken_.erase(path);
      return goes;
    });
  }

  bool matches(const fs::path& path, const std::string& written) const {
    const fs::path relative = path.lexically_relative(paths_.root().lexically_normal());
    return fitsPath(pathParts(lowerCase(relative.string())), 0, pathParts(lowerCase(written)), 0);
  }

  // All files below the project, in the order in which a folder is read.
  const std::vector<fs::path>& below() {
    if (!walked_) {
      walked_ = true;
      try {
        std::vector<LoadRemark> ignored;
        for (const fs::path& each : scriptFiles({paths_.root()}, ignored)) below_.push_back(each.lexically_normal());
        for (LoadRemark& each : ignored)
          if (each.lost) remarks_.push_back(std::move(each));
      } catch (const RuntimeError&) {  // no file there: the project will be told to hold none
      }
    }
    return below_;
  }

  void tell() {
    const auto remark = [&](std::string what, bool lost) {
      remarks_.push_back({file_.string(), std::move(what), lost});
    };
    const auto names = [](const std::vector<std::string>& list) {
      std::string text;
      for (std::size_t i = 0; i < std::min(list.size(), namesInProjectRemark); ++i)
        text += (text.empty() ? "" : ", ") + list[i];
      if (list.size() > namesInProjectRemark)
        text += ", and " + std::to_string(list.size() - namesInProjectRemark) + " more";
      return text;
    };
    if (!missing_.empty())
      remark(std::to_string(missing_.size()) + " of its files could not be read: " + names(missing_), true);
    if (conditions_ > 0)
      remark(std::to_string(conditions_) + " of its elements have a condition, which is taken to hold", false);
    if (!references_.empty()) remark("references are not followed: " + names(references_), false);
    if (project_.build.empty() && missing_.empty()) remark("it names no script file", true);
  }

  fs::path file_;
  ScriptPaths& paths_;
  std::vector<LoadRemark>& remarks_;
  SqlProject project_;
  bool isProject_ = false, sdk_ = false, defaults_ = true, walked_ = false;
  std::vector<Item> build_;
  std::vector<std::string> pre_, post_, references_, missing_;
  std::map<std::string, std::string> values_;
  std::size_t conditions_ = 0;
  std::set<fs::path> taken_;
  std::vector<fs::path> below_;
};

}  // namespace

bool isSqlProject(const fs::path& path) { return equalNoCase(path.extension().string(), ".sqlproj"); }

SqlProject readSqlProject(const fs::path& file, ScriptPaths& paths, std::vector<LoadRemark>& remarks) {
  return ProjectReader(file, paths, remarks).read();
}

}  // namespace qrel
