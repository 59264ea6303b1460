#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>

namespace platform {

// Opens a file as open(2) does, with `flags` and O_CLOEXEC, but only a regular one, and without ever waiting: opening a
// FIFO would wait for its other end. The descriptor, or -1 with errno (ENODEV for what is no regular file).
[[nodiscard]] int openRegularFile(const std::filesystem::path& file, int flags, mode_t mode = 0);

// The whole content; nothing when there is no such regular file or when it cannot be read.
[[nodiscard]] std::optional<std::string> readRegularFile(const std::filesystem::path& file);

// The content of an open file from its current position; nothing after a fault.
[[nodiscard]] std::optional<std::string> readToEnd(int descriptor);

// Whether the name is there but names no regular file: a folder, a FIFO, a device, a socket.
[[nodiscard]] bool isOtherThanFile(const std::filesystem::path& file);

}  // namespace platform
