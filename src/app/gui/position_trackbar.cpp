#include "app/gui/position_trackbar.h"

#include <QPainter>
#include <QStyleOptionSlider>

#include "session/position_time.h"

namespace tunebox::gui {

PositionTrackbar::PositionTrackbar(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
    setRange(0, kTrackbarMax);
    setPageStep(kTrackbarPage);
    setSingleStep(1);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QAbstractSlider::actionTriggered, this, &PositionTrackbar::onAction);
    connect(this, &QAbstractSlider::sliderReleased, this,
            [this] { emit scrolled(TrackbarScroll::kThumbPosition, sliderPosition()); });
}

void PositionTrackbar::onAction(int action) {
    // The slider has moved when the action is announced; its value follows.
    switch (action) {
        case SliderSingleStepAdd:
        case SliderSingleStepSub:
        case SliderToMinimum:
        case SliderToMaximum:
            emit scrolled(TrackbarScroll::kLine, sliderPosition());
            break;
        case SliderPageStepAdd:
        case SliderPageStepSub:
            emit scrolled(TrackbarScroll::kPage, sliderPosition());
            break;
        case SliderMove:
            emit scrolled(
                isSliderDown() ? TrackbarScroll::kThumbTrack : TrackbarScroll::kThumbPosition,
                sliderPosition());
            break;
        default:
            break;
    }
}

void PositionTrackbar::paintEvent(QPaintEvent*) {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal grooveHeight = 6;
    const QRectF groove(handle.width() / 2.0, height() / 2.0 - grooveHeight / 2,
                        width() - handle.width(), grooveHeight);
    painter.setPen(QPen(QColor(110, 118, 140), 1));
    painter.setBrush(QColor(222, 226, 236));
    painter.drawRoundedRect(groove, 3, 3);
    QRectF played = groove;
    played.setRight(handle.center().x());
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? QColor(60, 100, 230) : QColor(170, 170, 170));
    painter.drawRoundedRect(played, 3, 3);
    const qreal radius = qMin(handle.width(), height()) / 2.0 - 1.5;
    const QColor ring = hasFocus() ? QColor(60, 100, 230) : QColor(110, 118, 140);
    painter.setPen(QPen(ring, isSliderDown() ? 2.5 : 1.5));
    painter.setBrush(isSliderDown() ? QColor(226, 234, 252) : QColor(Qt::white));
    painter.drawEllipse(QPointF(handle.center().x() + 0.5, height() / 2.0), radius, radius);
}

}  // namespace tunebox::gui
