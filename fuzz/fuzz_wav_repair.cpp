// Inspects arbitrary bytes as a take cut off while it was recorded, then
// repairs them on the scratch copy. A file said to be unfinished and repaired
// must come out finished; anything else must be left exactly as it was.

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/scratch_file.h"
#include "playback/wav_repair.h"

namespace {

std::vector<uint8_t> contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const tunebox::fuzz::ScratchFile scratch("fuzz_wav_repair");
    scratch.store(data, size);

    const tunebox::WavInspection before = tunebox::inspectWav(scratch.path());
    const tunebox::RepairResult result = tunebox::repairWav(scratch.path());
    if (result.repaired) {
        if (before.condition != tunebox::WavCondition::kUnfinished ||
            tunebox::inspectWav(scratch.path()).condition != tunebox::WavCondition::kFinished) {
            std::abort();
        }
    } else if (contents(scratch.path()) != std::vector<uint8_t>(data, data + size)) {
        std::abort();
    }
    return 0;
}
