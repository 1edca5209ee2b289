// Which files of an instance's folder are its databases: the .mdf files with a legal name. A database is called what
// its file is, without the ending; names compare without case, and the one in just the case that is asked for comes
// first.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

// How the names of lock files end, and of folders in which a server is being made.
inline constexpr std::string_view lockEnding = ".lock";
inline constexpr std::string_view loadingEnding = ".loading";

// Whether a server or a database can have this name: none that is empty, begins with a point, has over 128 bytes, or
// holds "/", "\", ":" or a control character.
bool isLegalName(std::string_view name);

// The name of the database that a file of this name is; empty for every other file.
std::string databaseNameOf(const std::filesystem::path& file);
// In order without case. Raises RuntimeError when the folder can't be read.
std::vector<std::string> databaseNames(const std::filesystem::path& folder);
// The file of a database; empty when there is none of that name. Raises RuntimeError when the folder can't be read.
std::filesystem::path findDatabaseFile(const std::filesystem::path& folder, std::string_view name);
// The same, or where a database of this name (a legal one) is to be made when there is none.
std::filesystem::path databaseFileFor(const std::filesystem::path& folder, std::string_view name);

// The copy that a load of this process works on. Belongs to the holder of the database's lock.
std::filesystem::path workCopyOf(const std::filesystem::path& databaseFile);
// The database file of a work copy or its journal, whichever process has made it; empty for every other file.
std::filesystem::path databaseFileOfWorkCopy(const std::filesystem::path& file);

// The entries of a folder. Raises RuntimeError when it can't be read or isn't there.
std::vector<std::filesystem::path> folderEntries(const std::filesystem::path& folder);

}  // namespace qrel
