#include "platform/staged_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace tunebox {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";

std::string systemReason() {
    return std::strerror(errno);
}

// New files get what the process would give them; a replaced file keeps its
// own permissions.
mode_t permissionsFor(const struct stat* existing) {
    if (existing != nullptr) {
        return existing->st_mode & 07777;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Makes a unique file in `directory` named after `name`.
std::string makeStagingFile(const fs::path& directory, const std::string& name, mode_t permissions,
                            std::string& error) {
    std::string pattern = (directory / ("." + name + ".XXXXXX")).string();
    const int descriptor = ::mkstemp(pattern.data());
    if (descriptor < 0) {
        error = "cannot be created (" + systemReason() + ")";
        return {};
    }
    ::fchmod(descriptor, permissions);
    ::close(descriptor);
    return pattern;
}

bool syncPath(const std::string& path, int flags) {
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

bool writeAll(int descriptor, const char* bytes, ssize_t count) {
    while (count > 0) {
        const ssize_t written = ::write(descriptor, bytes, static_cast<size_t>(count));
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes += written;
        count -= written;
    }
    return true;
}

bool copyBytes(int from, int to) {
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = ::read(from, block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        if (!writeAll(to, block.data(), count)) {
            return false;
        }
    }
}

}  // namespace

std::unique_ptr<StagedOutput> StagedOutput::create(const std::string& target, std::string& error) {
    struct stat status {};
    const bool exists = target != kStandardOutput && ::stat(target.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        error = "is a directory";
        return nullptr;
    }
    std::error_code ignored;
    std::string destination = target;
    fs::path folder = fs::temp_directory_path(ignored);
    std::string name = "tunebox";
    mode_t permissions = 0600;
    Delivery delivery = Delivery::copy;
    if (target != kStandardOutput && (!exists || S_ISREG(status.st_mode))) {
        // A symbolic link is written through: the file it names is replaced.
        const fs::path resolved = fs::weakly_canonical(target, ignored);
        const fs::path file = resolved.empty() ? fs::path(target) : resolved;
        destination = file.string();
        folder = file.parent_path().empty() ? fs::path(".") : file.parent_path();
        name = file.filename().string();
        permissions = permissionsFor(exists ? &status : nullptr);
        delivery = Delivery::rename;
    }
    std::string staging = makeStagingFile(folder, name, permissions, error);
    if (staging.empty()) {
        return nullptr;
    }
    return std::unique_ptr<StagedOutput>(
        new StagedOutput(std::move(destination), std::move(staging), delivery));
}

StagedOutput::StagedOutput(std::string target, std::string staging, Delivery delivery)
    : target_(std::move(target)), staging_(std::move(staging)), delivery_(delivery) {}

StagedOutput::~StagedOutput() {
    if (!committed_ || delivery_ == Delivery::copy) {
        ::unlink(staging_.c_str());
    }
}

bool StagedOutput::commit(std::string& error) {
    if (committed_) {
        return true;
    }
    committed_ = delivery_ == Delivery::rename ? renameIntoPlace(error) : copyOut(error);
    return committed_;
}

bool StagedOutput::renameIntoPlace(std::string& error) {
    if (!syncPath(staging_, O_RDONLY)) {
        error = "could not be stored (" + systemReason() + ")";
        return false;
    }
    if (::rename(staging_.c_str(), target_.c_str()) != 0) {
        error = "cannot be replaced (" + systemReason() + ")";
        return false;
    }
    // The rename itself lasts once the folder's entry is on disk; a folder
    // that cannot be synced still holds the complete file.
    syncPath(fs::path(target_).parent_path().string(), O_RDONLY | O_DIRECTORY);
    return true;
}

bool StagedOutput::copyOut(std::string& error) {
    const int from = ::open(staging_.c_str(), O_RDONLY | O_CLOEXEC);
    const bool toStandardOutput = target_ == kStandardOutput;
    const int to = toStandardOutput ? STDOUT_FILENO : ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    const bool copied = from >= 0 && to >= 0 && copyBytes(from, to);
    if (!copied) {
        error = "could not be written (" + systemReason() + ")";
    }
    if (from >= 0) {
        ::close(from);
    }
    if (to >= 0 && !toStandardOutput) {
        ::close(to);
    }
    return copied;
}

}  // namespace tunebox
