#pragma once
// The calibration saved for the devices a take runs on, if any.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/audio_backend.h"

namespace tunebox {

struct DeviceCalibration {
    std::string devicePair;  // as AudioBackend::devicePair names it
    int32_t correctionBytes = 0;
};

std::optional<DeviceCalibration> savedCalibration(AudioBackend& audio);

// One line for the singer: where a take's delay comes from.
std::string delaySourceNote(const DeviceCalibration& calibration);

}  // namespace tunebox
