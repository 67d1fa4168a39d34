#pragma once
// Why a command refuses the files it was given, as one line each. Every
// command that reads or writes files asks these before it opens anything.

#include <cstdint>
#include <optional>
#include <string>

namespace tunebox::cli {

// Prints "tunebox: PATH: REASON" on stderr and returns `status`.
int refuse(const std::string& path, const std::string& reason, int status);

// Why `path` cannot be read at all (missing, a directory, a pipe or device,
// not permitted), asked without opening it: a pipe with no writer would
// block the opener for ever.
std::optional<std::string> inputRefusal(const std::string& path);

// What a file that opens but decodes to nothing is told.
inline constexpr const char* kNoAudio = "no audio could be decoded from it";

// After the openers refused `path`: the most specific cause they can name.
std::string openRefusal(const std::string& path);

// Why `path` cannot be played as an accompaniment: inputRefusal, then the
// openers' refusal, then kNoAudio. Nothing when it plays, with `length` its
// length in native-PCM bytes.
std::optional<std::string> accompanimentRefusal(const std::string& path, uint32_t& length);

// Refuses an output that is the input itself (also through a link, or as
// standard output, "-"): writing it would destroy what is being read.
std::optional<std::string> outputRefusal(const std::string& input, const std::string& output);

// The checks for a command that turns `input` into `output` (the input
// readable, the output not the input and not an existing file unless
// `overwrite`): 0, or the exit status after one line on stderr.
int checkInputAndOutput(const std::string& input, const std::string& output, bool overwrite);

}  // namespace tunebox::cli
