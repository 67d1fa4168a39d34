#include "playback/wav_reader.h"

#include <algorithm>
#include <array>
#include <vector>

#include "mp3/mp3_open.h"
#include "platform/little_endian.h"

namespace tunebox {
namespace {

constexpr uint32_t kFormWave = fourCc("WAVE");
constexpr uint32_t kChunkFormat = fourCc("fmt ");
constexpr uint32_t kChunkData = fourCc("data");

using FormatChunk = std::array<uint8_t, kSourceFormatBytes>;

// The converter sees this much of the data before it commits to a path.
constexpr int64_t kDataHeadBytes = 10240;

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

// Non-native PCM, A-law, mu-law and MPEG data inside WAVE files go through
// the converter, which is handed the format chunk and the data's first bytes.
WavOpenStatus openThroughConverter(RiffHandle& file, const FormatChunk& formatBytes,
                                   AudioSource& source) {
    std::vector<uint8_t> head(kDataHeadBytes);
    int64_t headBytes = kDataHeadBytes;
    if (wavReadDataHead(*file, head.data(), headBytes) != 1) {
        wavCloseSource(file, source);
        return WavOpenStatus::damaged;
    }
    head.resize(static_cast<std::size_t>(headBytes));
    source.conversionFlag = 1;
    source.sourceFormat = formatBytes;
    if (mp3SelectDecoder(source, source.sourceFormat, kNativeFormat, head) != 1) {
        wavCloseSource(file, source);
        return WavOpenStatus::unsupported;
    }
    return WavOpenStatus::opened;
}

// Where the data chunk ends in the file. No read goes past it, converted or
// direct: every sample of the chunk is played, and a chunk after it (LIST,
// cue) is never taken for audio. A chunk that claims more than the file
// holds ends with the file.
uint32_t dataChunkEnd(RiffFile& file, const ChunkInfo& data) {
    const int64_t firstDataByte = file.seek(0, SEEK_CUR);
    const int64_t end = file.seek(0, SEEK_END);
    file.seek(firstDataByte, SEEK_SET);
    const int64_t dataEnd = std::min({end, firstDataByte + data.size, int64_t{UINT32_MAX}});
    return static_cast<uint32_t>(std::max<int64_t>(dataEnd, 0));
}

// The converted length: the data's playing time in native-PCM bytes.
uint32_t prepareConvertedData(const ChunkInfo& data, AudioSource& source) {
    source.sourceBytesBound = source.sourceDataSize;
    const double seconds = static_cast<double>(data.size) / source.outputFormat.avgBytesPerSec;
    return static_cast<uint32_t>(seconds * kNativeBytesPerSecond + 0.5);
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
    source.outputFormat = parseWaveFormat(formatBytes);
    source.conversionFlag = 0;
    const uint16_t tag = source.outputFormat.formatTag;
    const bool pcmFamily = tag == kFormatPcm || tag == kFormatALaw || tag == kFormatMuLaw;
    if (!pcmFamily && tag != kFormatMpegLayer3) {
        return WavOpenStatus::unsupported;  // left open: the next opener takes over
    }
    if (tag == kFormatMpegLayer3 || !sameFormat(source.outputFormat, kNativeFormat)) {
        const WavOpenStatus converted = openThroughConverter(file, formatBytes, source);
        if (converted != WavOpenStatus::opened) {
            return converted;
        }
    }
    ChunkInfo data;
    data.id = kChunkData;
    if (file->descend(data, &riff, ChunkSearch::findChunk) != DescendResult::found) {
        return refuse(file, WavOpenStatus::damaged);
    }
    source.sourceDataSize = dataChunkEnd(*file, data);
    length = source.conversionFlag == 1 ? prepareConvertedData(data, source) : data.size;
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
    mp3ResetSource(source);
    if (forceOwnDecoder == 1) {
        source.ownDecoderFlag = 1;
    }
    return wavOpenResetSource(path, file, length, source);
}

int wavOpenResetSource(const std::string& path, RiffHandle& file, uint32_t& length,
                       AudioSource& source) {
    int result = wavOpenWaveFile(path, file, length, source);
    if (result != 1) {
        result = mp3OpenFile(path, file, length, source);
    }
    source.outputLength = length;
    return result;
}

void wavCloseSource(RiffHandle& file, AudioSource& source) {
    file.reset();
    mp3ReleaseSource(source);
}

}  // namespace tunebox
