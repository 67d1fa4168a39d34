#include "app/gui/termination_signals.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "core/diagnostic_log.h"

namespace tunebox::gui {
namespace {

constexpr std::array<int, 2> kWatched{SIGTERM, SIGHUP};

// The write end, for the handler, which can reach nothing else.
volatile std::sig_atomic_t writeEnd = -1;

void onSignal(int signal) {
    const int savedErrno = errno;
    const auto number = static_cast<unsigned char>(signal);
    // Non-blocking: with the pipe full, one more notice adds nothing.
    [[maybe_unused]] const ssize_t written = ::write(writeEnd, &number, 1);
    errno = savedErrno;
}

}  // namespace

TerminationSignals::TerminationSignals() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets_.data()) != 0) {
        logAlways(std::string("termination signals not watched: ") + std::strerror(errno));
        sockets_ = {-1, -1};
        return;
    }
    ::fcntl(sockets_[0], F_SETFL, O_NONBLOCK);
    ::fcntl(sockets_[1], F_SETFL, O_NONBLOCK);
    writeEnd = sockets_[0];
    notifier_ = std::make_unique<QSocketNotifier>(sockets_[1], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &TerminationSignals::drain);
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < kWatched.size(); ++i) {
        sigaction(kWatched[i], &action, &previous_[i]);
    }
}

TerminationSignals::~TerminationSignals() {
    if (sockets_[0] < 0) {
        return;
    }
    for (std::size_t i = 0; i < kWatched.size(); ++i) {
        sigaction(kWatched[i], &previous_[i], nullptr);
    }
    writeEnd = -1;
    notifier_.reset();
    ::close(sockets_[0]);
    ::close(sockets_[1]);
}

void TerminationSignals::drain() {
    unsigned char number = 0;
    while (::read(sockets_[1], &number, 1) == 1) {
        received_ = number;
        emit arrived(number);
    }
}

}  // namespace tunebox::gui
