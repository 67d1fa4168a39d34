// Opens arbitrary bytes as an accompaniment file and reads it the way the
// player does: open, read to the end, seek, read the head of the data chunk.

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "playback/direct_source.h"
#include "playback/wav_reader.h"

namespace {

// Memory-backed when the system offers it: a disk file rewritten for every
// input slows the fuzzer down many times over.
std::filesystem::path scratchDirectory() {
    std::error_code error;
    const std::filesystem::path shared = "/dev/shm";
    return std::filesystem::is_directory(shared, error) ? shared
                                                        : std::filesystem::temp_directory_path();
}

// One scratch file per process, removed when the process ends normally.
class ScratchFile {
  public:
    ScratchFile() {
        path_ = (scratchDirectory() / "fuzz_wav_reader-XXXXXX").string();
        const int descriptor = ::mkstemp(path_.data());
        if (descriptor < 0) {
            std::abort();
        }
        ::close(descriptor);
    }
    ~ScratchFile() { std::remove(path_.c_str()); }
    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

void store(const std::string& path, const uint8_t* data, size_t size) {
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    if (stream == nullptr) {
        std::abort();
    }
    if (size > 0) {  // an empty input may come without a buffer
        std::fwrite(data, 1, size, stream);
    }
    std::fclose(stream);
}

void readThrough(tunebox::RiffFile& file, uint32_t length) {
    std::array<uint8_t, 4096> buffer{};
    uint32_t count = 0;
    uint32_t endOfSource = 0;
    for (int blocks = 0; blocks < 64 && endOfSource == 0; ++blocks) {
        tunebox::wavReadDirect(file, buffer.data(), buffer.size(), count, endOfSource);
    }
    tunebox::wavSeekDirect(file, length / 2);
    tunebox::wavReadDirect(file, buffer.data(), 16, count, endOfSource);
}

void readDataHead(const std::string& path) {
    auto file = tunebox::RiffFile::openForRead(path);
    if (file && file->seek(12, SEEK_SET) == 12) {
        std::array<uint8_t, 10240> head{};
        int64_t size = head.size();
        tunebox::wavReadDataHead(*file, head.data(), size);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ScratchFile scratch;
    store(scratch.path(), data, size);

    tunebox::AudioSource source;
    tunebox::RiffHandle file;
    uint32_t length = 0;
    if (tunebox::wavOpenSource(scratch.path(), file, length, source, 0) == 1) {
        readThrough(*file, length);
    }
    tunebox::wavCloseSource(file, source);
    readDataHead(scratch.path());
    return 0;
}
