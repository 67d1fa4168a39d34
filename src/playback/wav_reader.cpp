#include "playback/wav_reader.h"

#include <algorithm>
#include <array>

#include "platform/little_endian.h"

namespace tunebox {
namespace {

constexpr uint32_t kFormWave = fourCc("WAVE");
constexpr uint32_t kChunkFormat = fourCc("fmt ");
constexpr uint32_t kChunkData = fourCc("data");

using FormatChunk = std::array<uint8_t, kSourceFormatBytes>;

WaveFormat decodeFormat(const FormatChunk& bytes) {
    WaveFormat format;
    format.formatTag = loadLe16(&bytes[0]);
    format.channels = loadLe16(&bytes[2]);
    format.samplesPerSec = loadLe32(&bytes[4]);
    format.avgBytesPerSec = loadLe32(&bytes[8]);
    format.blockAlign = loadLe16(&bytes[12]);
    format.bitsPerSample = loadLe16(&bytes[14]);
    format.extraSize = loadLe16(&bytes[16]);
    return format;
}

WavOpenStatus refuse(RiffHandle& file, WavOpenStatus status) {
    file.reset();
    return status;
}

// A search for the WAVE form fails the same way on a damaged WAVE file as on
// a file of another kind; its first twelve bytes tell them apart.
WavOpenStatus missingWaveForm(RiffFile& file) {
    std::array<uint8_t, 12> head{};
    const bool looksLikeWave = file.seek(0, SEEK_SET) == 0 &&
                               file.read(head.data(), head.size()) == 12 &&
                               loadLe32(&head[0]) == kChunkRiff && loadLe32(&head[8]) == kFormWave;
    return looksLikeWave ? WavOpenStatus::damaged : WavOpenStatus::notWave;
}

// Non-native PCM, A-law, mu-law and MPEG data inside WAVE files all go
// through the converter, which does not exist yet: such files are refused.
WavOpenStatus openThroughConverter(RiffHandle& file) {
    return refuse(file, WavOpenStatus::unsupported);
}

// Where the MP3 opener goes: until it exists, a file that did not open as a
// WAVE file is refused.
int openNonWaveFile(RiffHandle& file, uint32_t& length) {
    file.reset();
    length = 0;
    return 0;
}

// Reads the "fmt " chunk into `bytes` and leaves the file after it.
WavOpenStatus readFormatChunk(RiffFile& file, const ChunkInfo& riff, FormatChunk& bytes) {
    ChunkInfo chunk;
    chunk.id = kChunkFormat;
    if (file.descend(chunk, &riff, ChunkSearch::findChunk) != DescendResult::found ||
        chunk.size == 0) {
        return WavOpenStatus::damaged;
    }
    if (chunk.size > bytes.size()) {
        return WavOpenStatus::unsupported;
    }
    if (file.read(bytes.data(), chunk.size) != chunk.size || file.ascend(chunk) != 1) {
        return WavOpenStatus::damaged;
    }
    return WavOpenStatus::opened;
}

}  // namespace

WavOpenStatus wavExamineWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                                 AudioSource& source) {
    length = 0;
    file = RiffFile::openForRead(path);
    if (!file) {
        return WavOpenStatus::cannotOpen;
    }
    ChunkInfo riff;
    riff.formType = kFormWave;
    if (file->descend(riff, nullptr, ChunkSearch::findRiff) != DescendResult::found) {
        return refuse(file, missingWaveForm(*file));
    }
    FormatChunk formatBytes{};
    const WavOpenStatus formatRead = readFormatChunk(*file, riff, formatBytes);
    if (formatRead != WavOpenStatus::opened) {
        return refuse(file, formatRead);
    }
    source.outputFormat = decodeFormat(formatBytes);
    source.conversionFlag = 0;
    switch (source.outputFormat.formatTag) {
        case kFormatPcm:
        case kFormatALaw:
        case kFormatMuLaw:
            if (!sameFormat(source.outputFormat, kNativeFormat)) {
                return openThroughConverter(file);
            }
            break;
        case kFormatMpegLayer3:
            return openThroughConverter(file);
        default:
            return WavOpenStatus::unsupported;
    }
    ChunkInfo data;
    data.id = kChunkData;
    if (file->descend(data, &riff, ChunkSearch::findChunk) != DescendResult::found) {
        return refuse(file, WavOpenStatus::damaged);
    }
    length = data.size;
    return WavOpenStatus::opened;
}

int wavOpenWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                    AudioSource& source) {
    return wavExamineWaveFile(path, file, length, source) == WavOpenStatus::opened ? 1 : 0;
}

int wavReadDataHead(RiffFile& file, uint8_t* buffer, int64_t& size) {
    const int64_t start = file.seek(0, SEEK_CUR);
    ChunkInfo data;
    data.id = kChunkData;
    if (start < 0 || file.descend(data, nullptr, ChunkSearch::findChunk) != DescendResult::found) {
        size = 0;
        return 0;
    }
    size = file.read(buffer, std::min<int64_t>(size, data.size));
    file.seek(start, SEEK_SET);
    return size > 0 ? 1 : 0;
}

int wavOpenSource(const std::string& path, RiffHandle& file, uint32_t& length, AudioSource& source,
                  uint32_t forceOwnDecoder) {
    audioSourceReset(source);
    if (forceOwnDecoder == 1) {
        source.ownDecoderFlag = 1;
    }
    int result = wavOpenWaveFile(path, file, length, source);
    if (result != 1) {
        result = openNonWaveFile(file, length);
    }
    source.outputLength = length;
    return result;
}

void wavCloseSource(RiffHandle& file, AudioSource& /*source: no decoder state yet*/) {
    file.reset();
}

}  // namespace tunebox
