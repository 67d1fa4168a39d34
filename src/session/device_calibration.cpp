#include "session/device_calibration.h"

#include "platform/settings.h"

namespace tunebox {

std::optional<DeviceCalibration> savedCalibration(AudioBackend& audio) {
    DeviceCalibration calibration{audio.devicePair()};
    const std::optional<int32_t> correction = readCalibration(calibration.devicePair);
    if (!correction) {
        return std::nullopt;
    }
    calibration.correctionBytes = *correction;
    return calibration;
}

std::string delaySourceNote(const DeviceCalibration& calibration) {
    return "delay from positions + calibration of " + calibration.devicePair + " (" +
           std::to_string(calibration.correctionBytes) + " bytes)";
}

}  // namespace tunebox
