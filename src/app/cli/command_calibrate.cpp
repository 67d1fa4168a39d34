#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "app/cli/commands.h"
#include "capture/round_trip.h"
#include "platform/audio_backend.h"
#include "platform/settings.h"

namespace tunebox::cli {
namespace {

constexpr int kExitNoSignal = 1;
// Each run starts the streams afresh, so their start offsets differ; the
// correction must not.
constexpr int kRuns = 3;

double milliseconds(int64_t bytes) {
    return double(bytes) * 1000.0 / kNativeBytesPerSecond;
}

void printDelay(const char* label, int64_t bytes) {
    std::printf("%-22s %8lld bytes  %9.3f ms\n", label, static_cast<long long>(bytes),
                milliseconds(bytes));
}

void printRun(int run, const RoundTrip& trip) {
    const StretchOffsets& found = trip.search;
    std::printf(
        "run %d: round trip %.3f ms (stretches %d of %d, spread %.3f ms), positions %.3f ms, "
        "correction %.3f ms\n",
        run, milliseconds(trip.trueDelayBytes()), found.stretchesFound, found.stretches,
        milliseconds((found.latestFrames - found.earliestFrames) * 4),
        milliseconds(trip.positionDelayBytes), milliseconds(trip.correctionBytes()));
}

int save(AudioBackend& backend, int64_t correctionBytes) {
    const std::string pair = backend.devicePair();
    if (pair.empty()) {
        std::cerr << "calibrate: the devices cannot be named; nothing saved\n";
        return kExitBadInput;
    }
    writeCalibration(pair, static_cast<int32_t>(correctionBytes));
    std::cout << "Saved as the calibration of " << pair << " in " << settingsPath().string()
              << "\n";
    return 0;
}

int calibrate(bool saving) {
    if (isatty(STDOUT_FILENO)) {
        std::cout << "Measuring the round trip from the output to the input..." << std::endl;
    }
    const std::shared_ptr<AudioBackend> backend = makeAudioBackendFromEnvironment();
    std::vector<RoundTrip> found;
    std::string notFound;
    for (int run = 1; run <= kRuns; ++run) {
        RoundTrip trip = measureRoundTrip(*backend);
        if (!trip.deviceError.empty()) {
            std::cerr << "calibrate: " << trip.deviceError << "\n";
            return kExitBadInput;
        }
        if (!trip.search.found) {
            notFound = trip.search.reason;
            std::printf("run %d: no measurement signal found: %s\n", run, notFound.c_str());
            continue;
        }
        printRun(run, trip);
        found.push_back(std::move(trip));
    }
    if (2 * found.size() < kRuns) {
        std::cerr << "calibrate: no measurement signal found: " << notFound << "; nothing saved\n";
        return kExitNoSignal;
    }
    std::sort(found.begin(), found.end(), [](const RoundTrip& a, const RoundTrip& b) {
        return a.correctionBytes() < b.correctionBytes();
    });
    const RoundTrip& median = found[found.size() / 2];
    const int64_t spread = found.back().correctionBytes() - found.front().correctionBytes();
    printDelay("true round trip:", median.trueDelayBytes());
    printDelay("device positions give:", median.positionDelayBytes);
    printDelay("correction:", median.correctionBytes());
    printDelay("spread of corrections:", spread);
    return saving ? save(*backend, median.correctionBytes()) : 0;
}

}  // namespace

void registerCalibrateCommand(CLI::App& app, int& status) {
    auto* command = app.add_subcommand(
        "calibrate", "Measure the true delay from the output to the input with a noise signal");
    auto save = std::make_shared<bool>(false);
    command->add_flag("--save", *save,
                      "Store what the device positions miss as these devices' calibration, added "
                      "to each take's measured delay");
    command->callback([&status, save] { status = calibrate(*save); });
}

}  // namespace tunebox::cli
