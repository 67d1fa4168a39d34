#include "platform/folder_room.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace tunebox {

FolderRoom examineFolder(const std::string& folder) {
    const std::string path = folder.empty() ? "." : folder;
    FolderRoom room;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return room;
    }
    room.exists = true;
    room.isFolder = S_ISDIR(status.st_mode);
    if (!room.isFolder) {
        return room;
    }
    // access() rather than the mode bits: it knows about read-only mounts
    // and about privileges that override the bits.
    room.writable = ::access(path.c_str(), W_OK | X_OK) == 0;
    struct statvfs space {};
    if (::statvfs(path.c_str(), &space) == 0) {
        // Blocks for unprivileged users: the reserve kept for root is not
        // room a take can count on.
        room.freeBytes = static_cast<uint64_t>(space.f_bavail) * space.f_frsize;
    }
    return room;
}

}  // namespace tunebox
