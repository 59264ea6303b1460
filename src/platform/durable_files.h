#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <system_error>

namespace platform {

// Changes of files that survive a power cut: when a call returns without error, file and folder are on the disk.

// Gives a file a new name in the same folder. Never replaces an existing file (errc::file_exists).
std::error_code renameDurably(const std::filesystem::path& from, const std::filesystem::path& to);

// Deletes a file; a missing one is errc::no_such_file_or_directory.
std::error_code removeDurably(const std::filesystem::path& file);

// Returns when the names in a folder are on the disk; renameDurably() and removeDurably() do it themselves. Nothing
// where the file system cannot do it.
std::error_code syncFolder(const std::filesystem::path& folder);
// Returns when the content of a file is on the disk.
std::error_code syncFile(const std::filesystem::path& file);

// Makes `bytes` the end of the file, from `offset` on; what was there is replaced. Makes the file when there is none.
// Never writes through a link.
std::error_code writeDurably(const std::filesystem::path& file, std::int64_t offset,
                             std::span<const unsigned char> bytes);

// Makes `bytes` the whole content of the file, there before or not, at once: a program that opens it sees the old or
// the new content whole, also after a power cut. The new file is private to this process's user unless `giveRights`,
// which gets its descriptor before it takes the old one's place, says otherwise. A link is replaced, not followed.
std::error_code replaceDurably(const std::filesystem::path& file, std::span<const unsigned char> bytes,
                               const std::function<void(int)>& giveRights);

// Makes the bytes of `from`, from `offset` to its end, the whole content of `to`, as writeDurably does.
std::error_code copyRestDurably(const std::filesystem::path& from, std::int64_t offset,
                                const std::filesystem::path& to);

}  // namespace platform
