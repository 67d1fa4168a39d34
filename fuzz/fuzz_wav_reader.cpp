// Opens arbitrary bytes as an accompaniment file and reads it the way the
// player does: open (as WAVE, else as MP3), read to the end, seek, read again,
// and read the head of the data chunk. The input's last byte chooses which
// MP3 decoder is preferred, so both converter paths are fuzzed.

#include <array>
#include <cstdint>

#include "fuzz/scratch_file.h"
#include "playback/source_reader.h"
#include "playback/wav_reader.h"

namespace {

void readThrough(tunebox::RiffFile& file, uint32_t length, tunebox::AudioSource& source) {
    std::array<uint8_t, 4096> buffer{};
    uint32_t count = 0;
    uint32_t endOfSource = 0;
    for (int blocks = 0; blocks < 64 && endOfSource == 0; ++blocks) {
        if (tunebox::sourceRead(file, buffer.data(), buffer.size(), count, endOfSource, source) !=
            1) {
            break;
        }
    }
    tunebox::sourceSeek(file, length / 2, 5000, source);
    tunebox::sourceRead(file, buffer.data(), 16, count, endOfSource, source);
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
    static const tunebox::fuzz::ScratchFile scratch("fuzz_wav_reader");
    scratch.store(data, size);

    tunebox::AudioSource source;
    tunebox::RiffHandle file;
    uint32_t length = 0;
    const uint32_t preferBuiltin = size > 0 ? data[size - 1] & 1 : 0;
    if (tunebox::wavOpenSource(scratch.path(), file, length, source, preferBuiltin) == 1) {
        readThrough(*file, length, source);
    }
    tunebox::wavCloseSource(file, source);
    readDataHead(scratch.path());
    return 0;
}
