#include "platform/pulse_audio.h"

#include "platform/pulse_stream.h"

namespace tunebox {
namespace {

using Direction = PulseStream::Direction;

class PulseOutput final : public OutputDevice {
  public:
    explicit PulseOutput(std::string server) : stream_(std::move(server), Direction::playback) {}

    AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone) override {
        return stream_.open(format, std::move(onDone));
    }
    AudioResult prepare(WaveHeader& header) override { return prepareHeader(header); }
    AudioResult unprepare(WaveHeader& header) override { return unprepareHeader(header); }
    AudioResult write(WaveHeader& header) override { return stream_.queue(header); }
    AudioResult pause() override { return stream_.setCorked(true); }
    AudioResult restart() override { return stream_.setCorked(false); }
    AudioResult reset() override { return stream_.reset(); }
    AudioResult close() override { return stream_.close(); }
    AudioResult position(uint32_t& bytes) override { return stream_.position(bytes); }
    OutputStalls stalls(uint32_t first) override { return stream_.stalls(first); }
    std::string lastError() const override { return stream_.lastError(); }

  private:
    PulseStream stream_;
};

class PulseInput final : public InputDevice {
  public:
    explicit PulseInput(std::string server) : stream_(std::move(server), Direction::record) {}

    AudioResult open(const WaveFormat& format, DeviceDoneCallback onDone) override {
        return stream_.open(format, std::move(onDone));
    }
    AudioResult prepare(WaveHeader& header) override { return prepareHeader(header); }
    AudioResult unprepare(WaveHeader& header) override { return unprepareHeader(header); }
    AudioResult addBuffer(WaveHeader& header) override { return stream_.queue(header); }
    AudioResult start() override { return stream_.setCorked(false); }
    AudioResult stop() override { return stream_.stopRecording(); }
    AudioResult reset() override { return stream_.reset(); }
    AudioResult close() override { return stream_.close(); }
    AudioResult position(uint32_t& bytes) override { return stream_.position(bytes); }
    std::string lastError() const override { return stream_.lastError(); }

  private:
    PulseStream stream_;
};

template <class Info>
void countDevice(pa_context*, const Info* info, int endOfList, void* count) {
    if (endOfList == 0 && info != nullptr) {
        ++*static_cast<uint32_t*>(count);
    }
}

// Sinks or sources on the server; 0 when it cannot be reached.
template <class List>
uint32_t countDevices(const std::string& server, List list) {
    PulseConnection connection;
    if (!connection.connect(server, "Tunebox device count")) {
        return 0;
    }
    uint32_t count = 0;
    PulseConnection::Lock lock(connection);
    return connection.finish(list(connection.context(), &count), kPulseTimeout) ? count : 0;
}

}  // namespace

PulseAudio::PulseAudio(std::string server)
    : AudioBackend(std::make_unique<SteadyClock>()), server_(std::move(server)) {}

std::unique_ptr<OutputDevice> PulseAudio::makeOutput() {
    return std::make_unique<PulseOutput>(server_);
}

std::unique_ptr<InputDevice> PulseAudio::makeInput() {
    return std::make_unique<PulseInput>(server_);
}

uint32_t PulseAudio::outputDeviceCount() {
    return countDevices(server_, [](pa_context* context, uint32_t* count) {
        return pa_context_get_sink_info_list(context, countDevice<pa_sink_info>, count);
    });
}

uint32_t PulseAudio::inputDeviceCount() {
    return countDevices(server_, [](pa_context* context, uint32_t* count) {
        return pa_context_get_source_info_list(context, countDevice<pa_source_info>, count);
    });
}

}  // namespace tunebox
