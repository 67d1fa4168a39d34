#pragma once
// SIGTERM and SIGHUP, as a desktop session or a terminal sends them when it
// ends, brought onto the dialog's thread as a Qt signal. The handler itself
// only writes the signal's number into a socket pair; a notifier on the
// other end reads it from the event loop, where the take can be finished.
// One watch at a time: the previous handlers come back when it goes.

#include <QObject>
#include <QSocketNotifier>
#include <array>
#include <csignal>
#include <memory>

namespace tunebox::gui {

class TerminationSignals final : public QObject {
    Q_OBJECT

  public:
    TerminationSignals();
    ~TerminationSignals() override;
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

    // The last signal received, 0 before any.
    int received() const { return received_; }

  signals:
    void arrived(int signal);

  private:
    void drain();

    std::array<int, 2> sockets_{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier_;
    std::array<struct sigaction, 2> previous_{};
    int received_ = 0;
};

}  // namespace tunebox::gui
