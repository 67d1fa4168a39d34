#pragma once
// A position trackbar: 0..10,000 ten-thousandths of a file, page 100. It
// reports each scroll with the kind of move, which decides whether the thumb
// is being dragged.

#include <QSlider>

namespace tunebox::gui {

enum class TrackbarScroll { kLine, kPage, kThumbPosition, kThumbTrack };

class PositionTrackbar : public QSlider {
    Q_OBJECT

  public:
    explicit PositionTrackbar(QWidget* parent = nullptr);
    QSize sizeHint() const override { return QSize(300, 22); }

  signals:
    // `value` is where the thumb now stands.
    void scrolled(TrackbarScroll kind, int value);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void onAction(int action);
};

}  // namespace tunebox::gui
