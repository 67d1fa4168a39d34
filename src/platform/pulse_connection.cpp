#include "platform/pulse_connection.h"

#include <pulse/rtclock.h>

namespace tunebox {
namespace {

void wakeWaiter(pa_context*, void* connection) {
    static_cast<const PulseConnection*>(connection)->signal();
}

void wakeAfterTimeout(pa_mainloop_api*, pa_time_event*, const struct timeval*, void* connection) {
    static_cast<const PulseConnection*>(connection)->signal();
}

void wakeOnOperation(pa_operation*, void* connection) {
    static_cast<const PulseConnection*>(connection)->signal();
}

void storeServerName(pa_context*, const pa_server_info* info, void* name) {
    if (info != nullptr && info->server_name != nullptr) {
        *static_cast<std::string*>(name) = info->server_name;
    }
}

bool finalState(pa_context_state_t state) {
    return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
}

}  // namespace

PulseConnection::~PulseConnection() {
    disconnect();
}

bool PulseConnection::connect(const std::string& server, const std::string& clientName) {
    loop_ = pa_threaded_mainloop_new();
    if (loop_ == nullptr || pa_threaded_mainloop_start(loop_) < 0) {
        error_ = "cannot start the sound server connection";
        return false;
    }
    Lock lock(*this);
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), clientName.c_str());
    if (context_ == nullptr) {
        error_ = "cannot create a sound server context";
        return false;
    }
    pa_context_set_state_callback(context_, wakeWaiter, this);
    if (pa_context_connect(context_, server.empty() ? nullptr : server.c_str(),
                           PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        error_ = describe("cannot connect to the sound server");
        return false;
    }
    waitUntil([this] { return finalState(pa_context_get_state(context_)); }, kPulseTimeout);
    if (!ready()) {
        error_ = describe("cannot connect to the sound server");
        return false;
    }
    learnServerName();
    return true;
}

// With the lock held. A server that does not answer stays nameless, which
// only means its reports are taken as PulseAudio's.
void PulseConnection::learnServerName() {
    finish(pa_context_get_server_info(context_, storeServerName, &serverName_), kPulseTimeout);
}

std::string PulseConnection::describe(const std::string& doing) const {
    const int code = context_ ? pa_context_errno(context_) : PA_ERR_UNKNOWN;
    return doing + ": " + pa_strerror(code == PA_OK ? PA_ERR_TIMEOUT : code);
}

bool PulseConnection::waitUntil(const std::function<bool()>& done,
                                std::chrono::milliseconds timeout) const {
    const pa_usec_t deadline = pa_rtclock_now() + pa_usec_t(timeout.count()) * PA_USEC_PER_MSEC;
    pa_mainloop_api* api = pa_threaded_mainloop_get_api(loop_);
    pa_time_event* alarm = pa_context_rttime_new(context_, deadline, wakeAfterTimeout,
                                                 const_cast<PulseConnection*>(this));
    while (!done() && pa_rtclock_now() < deadline) {
        pa_threaded_mainloop_wait(loop_);
    }
    if (alarm != nullptr) {
        api->time_free(alarm);
    }
    return done();
}

bool PulseConnection::finish(pa_operation* operation, std::chrono::milliseconds timeout) const {
    if (operation == nullptr) {
        return false;
    }
    pa_operation_set_state_callback(operation, wakeOnOperation, const_cast<PulseConnection*>(this));
    const bool finished = waitUntil(
        [&] { return pa_operation_get_state(operation) != PA_OPERATION_RUNNING; }, timeout);
    if (!finished) {
        pa_operation_cancel(operation);
    }
    const bool succeeded = pa_operation_get_state(operation) == PA_OPERATION_DONE;
    pa_operation_unref(operation);
    return finished && succeeded;
}

void PulseConnection::disconnect() {
    if (loop_ == nullptr) {
        return;
    }
    if (context_ != nullptr) {
        {
            Lock lock(*this);
            pa_context_set_state_callback(context_, nullptr, nullptr);
            pa_context_disconnect(context_);
            pa_context_unref(context_);
        }
        context_ = nullptr;
    }
    pa_threaded_mainloop_stop(loop_);
    pa_threaded_mainloop_free(loop_);
    loop_ = nullptr;
}

}  // namespace tunebox
