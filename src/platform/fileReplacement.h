// The steps by which a new file takes another one's place, for those who write the new one in a way of their own;
// whoever has its bytes in hand takes files::writeAtomically. A step gives 0 or the errno of what went wrong: the words
// are the caller's, who knows what is lost by it.
#pragma once

#include <sys/stat.h>

#include <filesystem>

namespace qrel::files {

// The folder that a file lies in; "." for a bare name.
std::filesystem::path folderOf(const std::filesystem::path& file);

// Whether a file that is there (`facts` are its own) must not be written. Taking its place needs no such right, so that
// this is asked before; the superuser is held to it, too.
bool isReadOnly(const std::filesystem::path& file, const struct stat& facts);

// Gives an open file the read, write and execute permissions of the one whose place it takes, and its owner and group
// where this user may give them: the content matters more.
int takeAfter(int descriptor, const struct stat& before);

// Flushes an open file to the disk.
int flush(int descriptor);

// Gives a flushed file its place, in one step for everybody who looks.
int renameInto(const std::filesystem::path& from, const std::filesystem::path& target);

// Makes sure that a rename outlasts a power failure, where the file system can do that.
int flushFolder(const std::filesystem::path& folder);

// Flush, rename and the folder's flush of a file that is closed. What is in place stays there, whether or not the
// folder could be flushed.
int putInPlace(const std::filesystem::path& from, const std::filesystem::path& target);

}  // namespace qrel::files
