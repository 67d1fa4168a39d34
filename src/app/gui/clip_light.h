#pragma once
// The clip light beside the meter: red while a block reached full scale in
// the last two seconds, so that a clip too short to see on the meter still
// catches the singer's eye. It reads time from a clock that a test can set.

#include <QTimer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <optional>

namespace tunebox::gui {

inline constexpr std::chrono::milliseconds kClipHold{2000};

class ClipLight : public QWidget {
    Q_OBJECT

  public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit ClipLight(QWidget* parent = nullptr);

    void setClock(Clock clock) { clock_ = std::move(clock); }
    // A block clipped now: lit for kClipHold from here.
    void clipped();
    bool lit() const;
    // Repaints as the clock now reads and, while lit, sets the hold timer
    // to call again when the hold runs out.
    void refresh();
    QSize sizeHint() const override { return QSize(34, 26); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Clock clock_;
    std::optional<std::chrono::steady_clock::time_point> lastClip_;
    QTimer holdTimer_;
};

}  // namespace tunebox::gui
