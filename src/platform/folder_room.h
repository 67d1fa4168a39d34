#pragma once
// What a folder offers a file about to be written in it: whether it is
// there, whether this process may create files in it, and how many bytes its
// file system still gives an unprivileged writer.

#include <cstdint>
#include <string>

namespace tunebox {

struct FolderRoom {
    bool exists = false;    // something is at the path
    bool isFolder = false;  // and it is a directory
    bool writable = false;  // a file can be created in it (also false on a read-only mount)
    uint64_t freeBytes = 0;
};

// Asks the file system about `folder` ("" means the working directory).
FolderRoom examineFolder(const std::string& folder);

}  // namespace tunebox
