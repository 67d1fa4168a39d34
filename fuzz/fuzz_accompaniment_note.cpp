// Reads arbitrary bytes as a take's voice file for the accompaniment noted in
// it, and as the note's text alone.

#include <cstdint>
#include <string>

#include "capture/accompaniment_note.h"
#include "fuzz/scratch_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const tunebox::fuzz::ScratchFile scratch("fuzz_accompaniment_note");
    scratch.store(data, size);
    static_cast<void>(tunebox::readAccompanimentNote(scratch.path()));
    static_cast<void>(
        tunebox::decodeAccompanimentNote(std::string(reinterpret_cast<const char*>(data), size)));
    return 0;
}
