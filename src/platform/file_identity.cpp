#include "platform/file_identity.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace tunebox {
namespace {

bool sameIdentity(const struct stat& first, const struct stat& second) {
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

std::optional<std::string> regularFileProblem(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return errno == ENOENT ? "no such file" : std::strerror(errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return "is a directory";
    }
    if (!S_ISREG(status.st_mode)) {
        return "not a regular file (a pipe, socket or device)";
    }
    if (::access(path.c_str(), R_OK) != 0) {
        return std::strerror(errno);
    }
    return std::nullopt;
}

bool sameFile(const std::string& first, const std::string& second) {
    struct stat a {};
    struct stat b {};
    return ::stat(first.c_str(), &a) == 0 && ::stat(second.c_str(), &b) == 0 && sameIdentity(a, b);
}

bool sameFileAsDescriptor(const std::string& path, int descriptor) {
    struct stat a {};
    struct stat b {};
    return ::stat(path.c_str(), &a) == 0 && ::fstat(descriptor, &b) == 0 && sameIdentity(a, b);
}

}  // namespace tunebox
