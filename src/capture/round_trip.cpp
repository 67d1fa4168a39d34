#include "capture/round_trip.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "capture/measurement_signal.h"
#include "capture/offset_finder.h"
#include "core/wave_format.h"

namespace tunebox {
namespace {

constexpr uint32_t kSignalFrames = 2 * kNativeSampleRate;
constexpr uint32_t kLeadInFrames = 4410;
constexpr uint32_t kCaptureBlocks = 8;  // 4.2 s: the signal and any sane round trip
constexpr int64_t kEarliestOffset = -int64_t{kNativeSampleRate};
constexpr int64_t kLatestOffset = 2 * int64_t{kNativeSampleRate};
constexpr std::size_t kStretchFrames = kNativeSampleRate / 10;
constexpr auto kPositionInterval = std::chrono::milliseconds(20);
// Two capture readings around the playback reading further apart than this
// straddle a step of the clock and are not used.
constexpr uint32_t kSteadyBytes = 176;
constexpr int kPositionReadTries = 4;
// On the backend's clock, so a simulation faster than real time gives up as
// soon, in its own time, as a sound card would; and in real time too, for a
// clock that stands still.
constexpr auto kReturnTimeout = std::chrono::seconds(10);
constexpr auto kRealTimeout = std::chrono::seconds(30);

class Deadline {
  public:
    explicit Deadline(Clock& clock)
        : clock_(clock),
          deviceTime_(clock.now() + kReturnTimeout),
          realTime_(std::chrono::steady_clock::now() + kRealTimeout) {}
    bool passed() const {
        return clock_.now() >= deviceTime_ || std::chrono::steady_clock::now() >= realTime_;
    }

  private:
    Clock& clock_;
    const Clock::Duration deviceTime_;
    const std::chrono::steady_clock::time_point realTime_;
};

// Counts the buffers a device handed back.
class Returns {
  public:
    DeviceDoneCallback callback() {
        return [this](WaveHeader&) {
            std::lock_guard lock(mutex_);
            ++count_;
            changed_.notify_all();
        };
    }
    bool waitFor(std::size_t count, const Deadline& deadline) {
        std::unique_lock lock(mutex_);
        while (count_ < count && !deadline.passed()) {
            changed_.wait_for(lock, std::chrono::milliseconds(5));
        }
        return count_ >= count;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t count_ = 0;
};

struct Buffers {
    std::vector<std::vector<uint8_t>> data;
    std::vector<WaveHeader> headers;

    // Engine-sized blocks holding `bytes` in all, zero-filled.
    explicit Buffers(std::size_t bytes) {
        for (std::size_t offset = 0; offset < bytes; offset += kEngineBlockBytes) {
            data.emplace_back(std::min<std::size_t>(kEngineBlockBytes, bytes - offset));
        }
        headers.resize(data.size());
        for (std::size_t i = 0; i < data.size(); ++i) {
            headers[i].data = data[i].data();
            headers[i].bufferLength = static_cast<uint32_t>(data[i].size());
        }
    }
    void copyIn(const std::vector<int16_t>& samples) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(samples.data());
        for (auto& block : data) {
            std::memcpy(block.data(), bytes, block.size());
            bytes += block.size();
        }
    }
    std::vector<int16_t> samples() const {
        std::vector<int16_t> all;
        for (const auto& block : data) {
            const auto* begin = reinterpret_cast<const int16_t*>(block.data());
            all.insert(all.end(), begin, begin + block.size() / 2);
        }
        return all;
    }
};

std::string failure(const char* what, const AudioDevice& device) {
    return std::string(what) + ": " + device.lastError();
}

// Both devices open; hands every buffer back and closes them however the
// measurement ends.
struct OpenDevices {
    std::unique_ptr<OutputDevice> output;
    std::unique_ptr<InputDevice> input;
    Buffers& played;
    Buffers& captured;

    ~OpenDevices() {
        output->reset();
        input->reset();
        release(*output, played);
        release(*input, captured);
    }
    static void release(AudioDevice& device, Buffers& buffers) {
        for (WaveHeader& header : buffers.headers) {
            for (int tries = 0; tries < 200 && device.unprepare(header) == kAudioStillPlaying;
                 ++tries) {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        }
        device.close();
    }
};

template <class Queue>
bool queueAll(AudioDevice& device, Buffers& buffers, Queue queue) {
    return std::all_of(buffers.headers.begin(), buffers.headers.end(), [&](WaveHeader& header) {
        return device.prepare(header) == kAudioOk && queue(header) == kAudioOk;
    });
}

struct PositionReading {
    uint32_t played = 0;
    uint32_t captured = 0;  // whole frames, at the instant `played` was read
    bool steady = false;    // false when every try straddled a clock step
};

// The capture position read on both sides of the playback position; a try
// that straddles a step of the device clock is repeated. Empty when a device
// fails.
std::optional<PositionReading> readPositions(InputDevice& in, OutputDevice& out) {
    PositionReading reading;
    for (int attempt = 0; attempt < kPositionReadTries && !reading.steady; ++attempt) {
        uint32_t before = 0;
        uint32_t after = 0;
        if (in.position(before) != kAudioOk || out.position(reading.played) != kAudioOk ||
            in.position(after) != kAudioOk) {
            return std::nullopt;
        }
        reading.steady = after - before <= kSteadyBytes;
        reading.captured = (before + (after - before) / 2) & ~3u;
    }
    return reading;
}

int64_t median(std::vector<int64_t> values) {
    if (values.empty()) {
        return 0;
    }
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

}  // namespace

RoundTrip measureRoundTrip(AudioBackend& backend) {
    RoundTrip result;
    const std::vector<int16_t> signal = measurementNoise(kSignalFrames, kLeadInFrames);
    Buffers played(signal.size() * 2);
    played.copyIn(signal);
    Buffers captured(std::size_t(kCaptureBlocks) * kEngineBlockBytes);
    Returns playedBack, capturedBack;

    auto input = backend.makeInput();
    if (input->open(kNativeFormat, capturedBack.callback()) != kAudioOk) {
        result.deviceError = failure("cannot open the audio input", *input);
        return result;
    }
    auto output = backend.makeOutput();
    if (output->open(kNativeFormat, playedBack.callback()) != kAudioOk) {
        result.deviceError = failure("cannot open the audio output", *output);
        input->close();
        return result;
    }
    OpenDevices devices{std::move(output), std::move(input), played, captured};
    OutputDevice& out = *devices.output;
    InputDevice& in = *devices.input;
    const bool started =
        queueAll(in, captured, [&](WaveHeader& header) { return in.addBuffer(header); }) &&
        in.start() == kAudioOk && out.pause() == kAudioOk &&
        queueAll(out, played, [&](WaveHeader& header) { return out.write(header); }) &&
        out.restart() == kAudioOk;
    if (!started) {
        result.deviceError = failure("the audio devices did not start", out) + in.lastError();
        return result;
    }

    std::vector<int64_t> delays;
    uint32_t playedBytes = 0;
    const uint32_t signalBytes = static_cast<uint32_t>(signal.size() * 2);
    const Deadline deadline(backend.clock());
    while (playedBytes < signalBytes && !deadline.passed()) {
        std::this_thread::sleep_for(kPositionInterval);
        const std::optional<PositionReading> reading = readPositions(in, out);
        if (!reading) {
            break;
        }
        playedBytes = reading->played;
        if (reading->steady && playedBytes > 0 && playedBytes < signalBytes) {
            delays.push_back(int64_t(reading->captured) - int64_t(playedBytes));
        }
    }
    if (!playedBack.waitFor(played.headers.size(), deadline) ||
        !capturedBack.waitFor(captured.headers.size(), deadline)) {
        result.deviceError = "the audio devices stopped returning buffers";
        return result;
    }
    if (delays.empty()) {
        result.deviceError = "the device positions did not advance";
        return result;
    }
    result.positionDelayBytes = median(delays);
    result.search = findStretchOffsets(leftChannel(signal), leftChannel(captured.samples()),
                                       kEarliestOffset, kLatestOffset, kStretchFrames);
    return result;
}

}  // namespace tunebox
