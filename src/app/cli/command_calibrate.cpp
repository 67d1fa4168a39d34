#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>

#include "app/cli/commands.h"
#include "capture/round_trip.h"
#include "platform/audio_backend.h"
#include "platform/settings.h"

namespace tunebox::cli {
namespace {

constexpr int kExitNoSignal = 1;

double milliseconds(int64_t bytes) {
    return double(bytes) * 1000.0 / kNativeBytesPerSecond;
}

void printDelay(const char* label, int64_t bytes) {
    std::printf("%-22s %8lld bytes  %9.3f ms\n", label, static_cast<long long>(bytes),
                milliseconds(bytes));
}

int calibrate(bool save) {
    if (isatty(STDOUT_FILENO)) {
        std::cout << "Measuring the round trip from the output to the input..." << std::endl;
    }
    const RoundTrip trip = measureRoundTrip(*makeAudioBackendFromEnvironment());
    if (!trip.deviceError.empty()) {
        std::cerr << "calibrate: " << trip.deviceError << "\n";
        return kExitBadInput;
    }
    if (!trip.search.found) {
        std::cerr << "calibrate: no measurement signal found: " << trip.search.reason
                  << "; nothing saved\n";
        return kExitNoSignal;
    }
    printDelay("true round trip:", trip.trueDelayBytes());
    printDelay("device positions give:", trip.positionDelayBytes);
    printDelay("difference:", trip.positionDelayBytes - trip.trueDelayBytes());
    if (save) {
        writeSyncSettings({std::to_string(trip.trueDelayBytes()), 1});
        std::cout << "Saved as the manual delay in " << settingsPath().string() << "\n";
    }
    return 0;
}

}  // namespace

void registerCalibrateCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "calibrate", "Measure the true delay from the output to the input with a click track");
    auto save = std::make_shared<bool>(false);
    command->add_flag("--save", *save, "Store the measured delay as the manual delay");
    command->callback([&status, save] { status = calibrate(*save); });
}

}  // namespace tunebox::cli
