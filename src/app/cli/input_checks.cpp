#include "app/cli/input_checks.h"

#include <unistd.h>

#include <iostream>

#include "app/cli/commands.h"
#include "app/cli/opened_source.h"
#include "app/cli/overwrite_option.h"
#include "app/cli/path_kind.h"
#include "app/cli/source_settings.h"
#include "mp3/audio_file_kind.h"
#include "platform/file_identity.h"
#include "playback/source_opener.h"
#include "playback/wav_length.h"
#include "playback/wav_reader.h"
#include "playback/wav_refusal.h"

namespace tunebox::cli {

int refuse(const std::string& path, const std::string& reason, int status) {
    std::cerr << "tunebox: " << path << ": " << reason << "\n";
    return status;
}

std::optional<std::string> inputRefusal(const std::string& path) {
    return regularFileProblem(path);
}

std::string openRefusal(const std::string& path) {
    // An opener that refuses a file outright (an absurd format or length)
    // keeps its reason; otherwise the WAVE reader, run once more on its own,
    // tells where it stopped, and a file of another known kind is named.
    const SourceOpening opening = wavOpenSource(path, sourceOptionsFromSettings());
    if (!opening.source && !opening.refusal.empty()) {
        return opening.refusal;
    }
    RiffHandle file;
    uint32_t length = 0;
    ConversionState state;
    const WavOpenStatus status = wavExamineWaveFile(path, file, length, state);
    wavCloseSource(file, state);
    const WavRefusal refusal = classifyRefusal(pathKindOf(path), status);
    if (refusal == WavRefusal::notWave) {
        const std::string_view kind = audioFileKindName(audioFileKind(readFileHead(path)));
        if (!kind.empty()) {
            return std::string(kind) + " is not supported; Tunebox reads " +
                   std::string(kReadableFormats);
        }
    }
    return refusalText(refusal);
}

std::optional<std::string> accompanimentRefusal(const std::string& path, uint32_t& length) {
    if (auto problem = inputRefusal(path)) {
        return problem;
    }
    if (wavGetLength(path, length) != 1) {
        return openRefusal(path);
    }
    if (length == 0 || !yieldsAudio(path, sourceOptionsFromSettings())) {
        return kNoAudio;
    }
    return std::nullopt;
}

std::optional<std::string> outputRefusal(const std::string& input, const std::string& output) {
    const bool same =
        output == "-" ? sameFileAsDescriptor(input, STDOUT_FILENO) : sameFile(input, output);
    if (same) {
        return "is the input file; choose another output";
    }
    return std::nullopt;
}

int checkInputAndOutput(const std::string& input, const std::string& output, bool overwrite) {
    if (const auto problem = inputRefusal(input)) {
        return refuse(input, *problem, kExitBadInput);
    }
    if (const auto problem = outputRefusal(input, output)) {
        return refuse(output, *problem, kExitBadInput);
    }
    if (const auto problem = overwriteRefusal(output, overwrite)) {
        return refuse(output, *problem, kExitBadInput);
    }
    return 0;
}

}  // namespace tunebox::cli
