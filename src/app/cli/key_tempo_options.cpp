#include "app/cli/key_tempo_options.h"

namespace tunebox::cli {

void addKeyTempoOptions(CLI::App& command, KeyTempo& keyTempo) {
    command.add_option("--key", keyTempo.semitones, "Move the key by N semitones (-6 to +6)")
        ->check(CLI::Range(-kMaxSemitones, kMaxSemitones));
    command.add_option("--cents", keyTempo.cents, "Fine key change in cents (-50 to +50)")
        ->check(CLI::Range(-kMaxCents, kMaxCents));
    command
        .add_option("--tempo", keyTempo.tempoPercent,
                    "Tempo in percent of the original (70 to 130)")
        ->check(CLI::Range(kSlowestTempo, kFastestTempo));
    command.add_flag("--keep-formants", keyTempo.preserveFormants,
                     "Keep the timbre of voices in the accompaniment when the key moves");
}

}  // namespace tunebox::cli
