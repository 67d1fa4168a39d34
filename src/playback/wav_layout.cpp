#include "playback/wav_layout.h"

#include <algorithm>
#include <array>

#include "platform/format_plausibility.h"
#include "playback/wav_reader.h"

namespace tunebox {
namespace {

constexpr uint64_t kChunkHeaderBytes = 8;
constexpr uint64_t kFirstChunk = 12;  // after "RIFF", its size and "WAVE"

uint64_t declaredEnd(const ChunkInfo& chunk) {
    return uint64_t{chunk.dataOffset} + chunk.size;
}

uint64_t paddedEnd(const ChunkInfo& chunk) {
    return declaredEnd(chunk) + (chunk.size & 1);
}

// Whether whole chunks, each with a proper id, lie from `position` to exactly
// `end` (the last one may lack its pad byte). Audio that a stale "data" size
// left outside its chunk practically never passes for that.
bool chunksFill(RiffFile& file, uint64_t position, uint64_t end) {
    while (position < end) {
        ChunkInfo chunk;
        if (file.readChunkHeader(position, chunk) != DescendResult::found || !isChunkId(chunk.id) ||
            declaredEnd(chunk) > end) {
            return false;
        }
        position = std::min(paddedEnd(chunk), end);
    }
    return true;
}

void placeData(RiffFile& file, const ChunkInfo& data, WavLayout& layout) {
    const uint64_t end = layout.fileLength;
    layout.data = data;
    if (declaredEnd(data) <= end && chunksFill(file, std::min(paddedEnd(data), end), end)) {
        layout.dataPresent = data.size;
        layout.dataRunsToEnd = paddedEnd(data) >= end;
        return;
    }
    layout.dataPresent = end - data.dataOffset;
    layout.dataRunsToEnd = true;
}

// The reader's own parsing of the format chunk, bounded by the file instead
// of by a RIFF size that may be stale.
std::string readFormat(RiffFile& file, uint64_t position, WavLayout& layout) {
    ChunkInfo wholeFile;
    wholeFile.id = kChunkRiff;
    wholeFile.dataOffset = kChunkHeaderBytes;
    wholeFile.size = static_cast<uint32_t>(layout.fileLength - kChunkHeaderBytes);
    FormatChunk bytes{};
    if (file.seek(static_cast<int64_t>(position), SEEK_SET) < 0 ||
        wavReadFormatChunk(file, wholeFile, bytes) != WavOpenStatus::opened) {
        return "its \"fmt \" chunk cannot be read";
    }
    layout.format = parseWaveFormat(bytes);
    // The readers' own check: a format no recording has cannot be read, so
    // neither can its frames be counted.
    std::string implausible = implausibleFormatReason(layout.format);
    if (implausible.empty() && layout.format.blockAlign == 0) {
        return "its format gives a block align of 0";
    }
    return implausible;
}

std::string walkChunks(RiffFile& file, WavLayout& layout) {
    bool formatFound = false;
    bool dataFound = false;
    std::string formatProblem;
    uint64_t position = kFirstChunk;
    while (position < layout.fileLength && !(dataFound && layout.dataRunsToEnd)) {
        ChunkInfo chunk;
        if (file.readChunkHeader(position, chunk) != DescendResult::found || !isChunkId(chunk.id)) {
            break;
        }
        if (chunk.id == kChunkData && !dataFound) {
            placeData(file, chunk, layout);
            dataFound = true;
        } else if (declaredEnd(chunk) > layout.fileLength) {
            break;
        } else if (chunk.id == kChunkFormat && !formatFound) {
            formatProblem = readFormat(file, position, layout);
            formatFound = true;
        }
        position = paddedEnd(chunk);
    }
    if (!formatFound) {
        return "no \"fmt \" chunk";
    }
    if (!formatProblem.empty()) {
        return formatProblem;
    }
    return dataFound ? std::string{} : "no \"data\" chunk";
}

// Some tools append an ID3 tag ("ID3", or "TAG" for the old fixed form) after
// the RIFF form. It is no audio the form's sizes left out.
bool tagAt(RiffFile& file, uint64_t position) {
    std::array<char, 3> mark{};
    if (file.seek(static_cast<int64_t>(position), SEEK_SET) < 0 ||
        file.read(mark.data(), mark.size()) != static_cast<int64_t>(mark.size())) {
        return false;
    }
    const std::string text(mark.begin(), mark.end());
    return text == "ID3" || text == "TAG";
}

}  // namespace

WavLayout readWavLayout(RiffFile& file) {
    WavLayout layout;
    const int64_t length = file.seek(0, SEEK_END);
    ChunkInfo riff;
    if (length < 0 || file.readChunkHeader(0, riff) != DescendResult::found ||
        riff.id != kChunkRiff || riff.formType != kFormWave) {
        layout.problem = "not a RIFF/WAVE file";
        return layout;
    }
    layout.fileLength = static_cast<uint64_t>(length);
    layout.riffSize = riff.size;
    const uint64_t formEnd = paddedEnd(riff);
    if (formEnd < layout.fileLength && tagAt(file, formEnd)) {
        layout.fileLength = formEnd;
        layout.tagFollows = true;
    }
    layout.problem = walkChunks(file, layout);
    return layout;
}

}  // namespace tunebox
