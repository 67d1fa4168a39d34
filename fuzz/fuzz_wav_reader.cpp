// Opens arbitrary bytes as an accompaniment file and reads it the way the
// player does: open (as WAVE, else as a kind libsndfile reads, else as MP3),
// read to the end, seek, read again, and read the head of the data chunk. The
// input's last byte chooses which MP3 decoder is preferred, so both converter
// paths are fuzzed.

#include <array>
#include <cstdint>

#include "fuzz/scratch_file.h"
#include "playback/source_opener.h"
#include "playback/wav_reader.h"

namespace {

void readThrough(tunebox::AudioSource& source) {
    std::array<uint8_t, 4096> buffer{};
    for (int blocks = 0; blocks < 64; ++blocks) {
        const tunebox::SourceBlock read = source.read(buffer.data(), buffer.size());
        if (read.ended || read.failed) {
            break;
        }
    }
    static_cast<void>(source.seek(source.length() / 2, 5000));
    static_cast<void>(source.read(buffer.data(), 16));
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

    const bool preferBuiltin = size > 0 && (data[size - 1] & 1) == 1;
    const auto source = tunebox::wavOpenSource(scratch.path(), {preferBuiltin}).source;
    if (source) {
        readThrough(*source);
    }
    readDataHead(scratch.path());
    return 0;
}
