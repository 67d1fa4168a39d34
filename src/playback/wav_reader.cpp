#include "playback/wav_reader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "core/little_endian.h"
#include "mp3/first_frame.h"
#include "mp3/mp3_open.h"
#include "platform/format_plausibility.h"
#include "platform/mpeg_codec.h"
#include "platform/native_length.h"
#include "playback/wav_length.h"
#include "playback/wave_extensible.h"

namespace tunebox {
namespace {

// The converter sees this much of the data before it commits to a path.
constexpr int64_t kDataHeadBytes = 10240;

WavOpenStatus refuse(RiffHandle& file, WavOpenStatus status) {
    file.reset();
    return status;
}

WavOpenStatus refuseOutright(RiffHandle& file, ConversionState& source, std::string reason) {
    wavCloseSource(file, source);
    source.refusal = std::move(reason);
    return WavOpenStatus::refused;
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

// A Layer I or II record keeps the head mode where a Layer III record keeps
// its block size (one frame), and its block alignment is 1 when frames are
// padded. The converter is handed the record an MP3 file's first confirmed
// frame gives instead, with the file's own tag. False when the data's first
// bytes hold no stream of frames.
bool recordFromFirstFrame(std::span<const uint8_t> head, bool wholeData, FormatChunk& record) {
    MpegLayer3Format format;
    MpegHeader header;
    uint32_t offset = 0;
    const BufferEnd end = wholeData ? BufferEnd::endOfAudio : BufferEnd::moreFollows;
    if (mp3GetHeader(head, format, header, offset, end) != 1) {
        return false;
    }
    format.wave.formatTag = kFormatMpegLayers12;
    const auto bytes = encodeLayer3Format(format);
    std::copy(bytes.begin(), bytes.end(), record.begin());
    return true;
}

// Non-native PCM, A-law, mu-law and MPEG data inside WAVE files go through
// the converter, which is handed the format chunk and the data's first bytes.
WavOpenStatus openThroughConverter(RiffHandle& file, const FormatChunk& formatBytes,
                                   ConversionState& source) {
    std::vector<uint8_t> head(kDataHeadBytes);
    int64_t headBytes = kDataHeadBytes;
    if (wavReadDataHead(*file, head.data(), headBytes) != 1) {
        wavCloseSource(file, source);
        return WavOpenStatus::damaged;
    }
    head.resize(static_cast<std::size_t>(headBytes));
    source.sourceFormat = formatBytes;
    if (source.outputFormat.formatTag == kFormatMpegLayers12 &&
        !recordFromFirstFrame(head, headBytes < kDataHeadBytes, source.sourceFormat)) {
        wavCloseSource(file, source);
        return WavOpenStatus::damaged;
    }
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

// The converted length: the data's playing time in native-PCM bytes, before
// the check that it fits the 32-bit byte count.
double prepareConvertedData(const ChunkInfo& data, ConversionState& source) {
    source.sourceBytesBound = source.sourceDataSize;
    return convertedNativeBytes(data.size, source.outputFormat.avgBytesPerSec);
}

}  // namespace

WavOpenStatus wavExamineWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                                 ConversionState& source) {
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
    const WavOpenStatus formatRead = wavReadFormatChunk(*file, riff, formatBytes);
    if (formatRead != WavOpenStatus::opened) {
        return refuse(file, formatRead);
    }
    source.outputFormat = parseWaveFormat(formatBytes);
    const uint16_t tag = source.outputFormat.formatTag;
    const bool pcmFamily = tag == kFormatPcm || tag == kFormatALaw || tag == kFormatMuLaw;
    const bool mpeg = tag == kFormatMpegLayer3 || tag == kFormatMpegLayers12;
    if (!pcmFamily && !mpeg) {
        return WavOpenStatus::unsupported;  // left open: the next opener takes over
    }
    std::string implausible = implausibleFormatReason(source.outputFormat);
    if (!implausible.empty()) {
        return refuseOutright(file, source, std::move(implausible));
    }
    if (mpeg || !sameFormat(source.outputFormat, kNativeFormat)) {
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
    if (!isConverting(source)) {
        length = data.size;
        return WavOpenStatus::opened;
    }
    const double nativeBytes = prepareConvertedData(data, source);
    const std::optional<uint32_t> fitting = fittingNativeLength(nativeBytes);
    if (!fitting) {
        return refuseOutright(file, source, tooLongReason(nativeBytes));
    }
    length = *fitting;
    return WavOpenStatus::opened;
}

WavOpenStatus wavReadFormatChunk(RiffFile& file, const ChunkInfo& riff, FormatChunk& bytes) {
    ChunkInfo chunk;
    chunk.id = kChunkFormat;
    if (file.descend(chunk, &riff, ChunkSearch::findChunk) != DescendResult::found ||
        chunk.size == 0) {
        return WavOpenStatus::damaged;
    }
    std::array<uint8_t, kExtensibleFormatBytes> whole{};
    if (chunk.size > whole.size()) {
        return WavOpenStatus::unsupported;
    }
    if (file.read(whole.data(), chunk.size) != chunk.size || file.ascend(chunk) != 1) {
        return WavOpenStatus::damaged;
    }
    // An MPEG Layer I or II record runs to 40 bytes; what passes the 32 kept
    // is a presentation time stamp, of no use here.
    const bool mpegRecord = loadLe16(whole.data()) == kFormatMpegLayers12;
    if (!plainPcmFromExtensible(whole, chunk.size) && !mpegRecord && chunk.size > bytes.size()) {
        return WavOpenStatus::unsupported;
    }
    std::copy_n(whole.begin(), bytes.size(), bytes.begin());
    return WavOpenStatus::opened;
}

int wavOpenWaveFile(const std::string& path, RiffHandle& file, uint32_t& length,
                    ConversionState& source) {
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

void wavCloseSource(RiffHandle& file, ConversionState& source) {
    file.reset();
    mp3ReleaseSource(source);
}

}  // namespace tunebox
