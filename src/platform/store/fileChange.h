// The right to change a file that several processes share.
#pragma once

#include <cstdint>
#include <filesystem>

#include "platform/fileLock.h"
#include "platform/files.h"

namespace qrel {

// Files larger than this are none that the program keeps settings in.
inline constexpr std::uintmax_t mostStoreBytes = 64'000'000;

// Takes the lock that goes with the file, a hidden file beside it that lasts as long as the lock: whoever reads the
// file with the lock in hand and writes it before letting go loses no other process's change. Missing folders are made,
// and what killed writers left is removed. Raises RuntimeError when others hold the lock for more than ten seconds and
// when nothing can be written there.
FileLock lockForChange(const std::filesystem::path& file, files::Access access);

// Removes what killed writers left of a file that is only written under its lock; does nothing while somebody holds it,
// and where nothing can be written.
void removeLeftovers(const std::filesystem::path& file);

}  // namespace qrel
