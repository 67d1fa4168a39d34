#include "playback/wav_repair.h"

#include <array>
#include <cstdio>
#include <optional>
#include <utility>

#include "platform/mpeg_codec.h"
#include "playback/wav_layout.h"

namespace tunebox {
namespace {

constexpr uint32_t kRiffSizeOffset = 8;  // the RIFF size counts from the form type on

std::string bytesText(uint64_t bytes) {
    return std::to_string(bytes) + " bytes";
}

// Tenths of a second, or bytes where that would round to nothing: "0 bytes"
// says plainly what a header never filled in holds.
std::string secondsText(uint64_t bytes, const WaveFormat& format) {
    if (bytes * 20 < format.avgBytesPerSec || format.avgBytesPerSec == 0) {
        return bytesText(bytes);
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f s",
                  static_cast<double>(bytes) / format.avgBytesPerSec);
    return text.data();
}

uint64_t wholeFrameBytes(const WavLayout& layout) {
    return layout.dataPresent - layout.dataPresent % layout.format.blockAlign;
}

// Why the sizes disagree with the file; empty when they agree.
std::string unfinishedReason(const WavLayout& layout) {
    if (layout.dataRunsToEnd && layout.data.size != layout.dataPresent) {
        std::string declared = secondsText(layout.data.size, layout.format);
        std::string present = secondsText(layout.dataPresent, layout.format);
        if (declared == present) {  // a few bytes apart
            declared = bytesText(layout.data.size);
            present = bytesText(layout.dataPresent);
        }
        return "the header says " + declared + " of audio but " + present + " follow";
    }
    // Compressed data (MPEG in a WAVE file) has frames of its own length, so
    // its block alignment says nothing about where a frame ends.
    const uint64_t partial = layout.dataPresent % layout.format.blockAlign;
    if (layout.dataRunsToEnd && partial != 0 && !isMpegFormatTag(layout.format.formatTag)) {
        return "the audio ends " + std::to_string(partial) + " bytes into a frame";
    }
    if (uint64_t{layout.riffSize} + kRiffSizeOffset != layout.fileLength) {
        return "the RIFF size says " + std::to_string(layout.riffSize) + " bytes but " +
               std::to_string(layout.fileLength - kRiffSizeOffset) + " follow";
    }
    return {};
}

WavInspection inspectLayout(const WavLayout& layout) {
    if (!layout.problem.empty()) {
        return {WavCondition::kNotWav, layout.problem};
    }
    std::string reason = unfinishedReason(layout);
    if (reason.empty()) {
        return {WavCondition::kFinished,
                "finished, " + secondsText(layout.data.size, layout.format) + " of audio"};
    }
    return {WavCondition::kUnfinished, std::move(reason)};
}

// Only plain PCM splits into frames that can be cut anywhere.
std::string unrepairableReason(const WavLayout& layout) {
    if (layout.tagFollows) {
        return "a tag follows the audio";
    }
    if (layout.format.formatTag != kFormatPcm) {
        return "format tag " + std::to_string(layout.format.formatTag) + " is not PCM";
    }
    if (layout.dataRunsToEnd && wholeFrameBytes(layout) == 0) {
        return "no whole frame of audio follows the header";
    }
    return {};
}

// The writer's own way of finishing a chunk: its size is where the file
// stands when it is left, and an odd size gets its pad byte.
bool finishChunk(RiffFile& file, ChunkInfo chunk, uint64_t end) {
    chunk.flags = kChunkDirty;
    return file.seek(static_cast<int64_t>(end), SEEK_SET) >= 0 && file.ascend(chunk) == 1;
}

bool rewrite(RiffFile& file, const WavLayout& layout) {
    if (layout.dataRunsToEnd &&
        !finishChunk(file, layout.data, layout.data.dataOffset + wholeFrameBytes(layout))) {
        return false;
    }
    const int64_t end =
        layout.dataRunsToEnd ? file.seek(0, SEEK_CUR) : static_cast<int64_t>(layout.fileLength);
    ChunkInfo riff;
    riff.id = kChunkRiff;
    riff.dataOffset = kRiffSizeOffset;
    if (end < 0 || !finishChunk(file, riff, static_cast<uint64_t>(end))) {
        return false;
    }
    const int64_t length = file.seek(0, SEEK_CUR);
    return length >= 0 && file.setLength(static_cast<uint64_t>(length)) == 1 && file.close() == 1;
}

RepairResult notRepaired(const std::string& reason) {
    return {false, "not repaired: " + reason, false};
}

// What repair says of a file it has nothing to write to.
std::optional<RepairResult> nothingToWrite(const WavInspection& inspection) {
    if (inspection.condition == WavCondition::kNotWav) {
        return notRepaired(inspection.detail);
    }
    if (inspection.condition == WavCondition::kFinished) {
        return RepairResult{false, "already finished, nothing changed", true};
    }
    return std::nullopt;
}

}  // namespace

WavInspection inspectWav(const std::string& path) {
    const RiffHandle file = RiffFile::openForRead(path);
    if (!file) {
        return {WavCondition::kNotWav, "cannot be opened"};
    }
    return inspectLayout(readWavLayout(*file));
}

RepairResult repairWav(const std::string& path) {
    // A finished file that may not be written to is still finished.
    if (auto settled = nothingToWrite(inspectWav(path))) {
        return *settled;
    }
    const RiffHandle file = RiffFile::openForUpdate(path);
    if (!file) {
        return notRepaired("cannot be opened for writing");
    }
    // Read again through the handle that writes, in case the file changed.
    const WavLayout layout = readWavLayout(*file);
    if (auto settled = nothingToWrite(inspectLayout(layout))) {
        return *settled;
    }
    const std::string unrepairable = unrepairableReason(layout);
    if (!unrepairable.empty()) {
        return notRepaired(unrepairable);
    }
    if (!rewrite(*file, layout)) {
        return notRepaired("the file could not be rewritten");
    }
    const uint64_t kept = layout.dataRunsToEnd ? wholeFrameBytes(layout) : layout.data.size;
    return {true, "repaired, " + secondsText(kept, layout.format) + " of audio kept", false};
}

}  // namespace tunebox
