#pragma once
// A file the fuzz targets rewrite with every input, for parsers that read
// from a path. Memory-backed when the system offers it: a disk file
// rewritten for every input slows the fuzzer down many times over.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace tunebox::fuzz {

class ScratchFile {
  public:
    explicit ScratchFile(const std::string& name) {
        std::error_code error;
        const std::filesystem::path shared = "/dev/shm";
        const auto directory = std::filesystem::is_directory(shared, error)
                                   ? shared
                                   : std::filesystem::temp_directory_path();
        path_ = (directory / (name + "-XXXXXX")).string();
        const int descriptor = ::mkstemp(path_.data());
        if (descriptor < 0) {
            std::abort();
        }
        ::close(descriptor);
    }
    ~ScratchFile() { std::remove(path_.c_str()); }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& path() const { return path_; }

    void store(const uint8_t* data, size_t size) const {
        std::FILE* stream = std::fopen(path_.c_str(), "wb");
        if (stream == nullptr) {
            std::abort();
        }
        if (size > 0) {  // an empty input may come without a buffer
            std::fwrite(data, 1, size, stream);
        }
        std::fclose(stream);
    }

  private:
    std::string path_;
};

}  // namespace tunebox::fuzz
