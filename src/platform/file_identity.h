#pragma once
// What a path names on the file system, asked without opening it: a FIFO
// with no writer would block an open, so a reader checks first.

#include <optional>
#include <string>

namespace tunebox {

// Why `path` cannot be read as a regular file: "no such file", "is a
// directory", "not a regular file (a pipe, socket or device)" or the
// system's reason; nothing when it can. Symbolic links are followed.
std::optional<std::string> regularFileProblem(const std::string& path);

// True when both paths name the same file (device and inode, symbolic links
// followed). A path that does not exist names no file.
bool sameFile(const std::string& first, const std::string& second);

// The same for a path and an open descriptor (standard output, say).
bool sameFileAsDescriptor(const std::string& path, int descriptor);

}  // namespace tunebox
