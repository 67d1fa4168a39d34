#pragma once
// The two-bar microphone meter: twelve segments per bar, ten green and two
// red, lit up to the level given. Each frame is drawn off-screen and shown
// in one copy, so a meter updated many times a second never flickers.

#include <QImage>
#include <QWidget>

namespace tunebox::gui {

inline constexpr int kMeterSegments = 12;
inline constexpr int kMeterGreenSegments = 10;

class LevelMeter : public QWidget {
    Q_OBJECT

  public:
    explicit LevelMeter(QWidget* parent = nullptr);

    // Levels are sample magnitudes, 0..32767; draw(0, 0) clears the meter.
    void draw(int first, int second);
    // The frame on screen, for inspection.
    const QImage& frame() const { return frame_; }
    QSize sizeHint() const override { return QSize(240, 26); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QImage frame_;
    int first_ = 0;
    int second_ = 0;
};

}  // namespace tunebox::gui
