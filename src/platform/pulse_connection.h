#pragma once
// One connection to the PulseAudio server on a threaded main loop. Every
// wait is bounded, so a server that is missing or stops answering gives an
// error instead of a hung caller.

#include <pulse/pulseaudio.h>

#include <chrono>
#include <functional>
#include <string>

namespace tunebox {

class PulseConnection {
  public:
    PulseConnection() = default;
    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    // Connects to `server` (empty: the environment's default, never
    // autospawned). False with error() set when it cannot.
    bool connect(const std::string& server, const std::string& clientName);
    const std::string& error() const { return error_; }

    pa_threaded_mainloop* loop() const { return loop_; }
    pa_context* context() const { return context_; }
    bool ready() const { return context_ && pa_context_get_state(context_) == PA_CONTEXT_READY; }
    // PipeWire's pulse server speaks the same protocol, but its timing
    // reports follow its graph's cycles (see PulseStream).
    bool servedByPipeWire() const { return serverName_.find("PipeWire") != std::string::npos; }
    // The server's last error, with what was being done.
    std::string describe(const std::string& doing) const;

    // Holds the loop's lock (never on the loop's own thread).
    class Lock {
      public:
        explicit Lock(const PulseConnection& connection) : loop_(connection.loop_) {
            pa_threaded_mainloop_lock(loop_);
        }
        ~Lock() { pa_threaded_mainloop_unlock(loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        pa_threaded_mainloop* loop_;
    };

    // With the lock held: waits until `done` holds or `timeout` passes;
    // returns done().
    bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) const;
    // With the lock held: runs the operation to its end within the timeout.
    bool finish(pa_operation* operation, std::chrono::milliseconds timeout) const;
    // Callbacks on the loop's thread wake whoever waits.
    void signal() const { pa_threaded_mainloop_signal(loop_, 0); }

  private:
    void disconnect();
    void learnServerName();

    pa_threaded_mainloop* loop_ = nullptr;
    pa_context* context_ = nullptr;
    std::string error_;
    std::string serverName_;
};

inline constexpr std::chrono::milliseconds kPulseTimeout{5000};

}  // namespace tunebox
