#include "app/gui/level_meter.h"

#include <QPainter>

namespace tunebox::gui {
namespace {

const QColor kBackground(128, 128, 128);
const QColor kGreenLit(0, 255, 0);
// Unlit segments are nearly black, only tinted by their zone, so that an
// idle meter never reads as lit.
const QColor kGreenUnlit(34, 48, 34);
const QColor kRedLit(255, 0, 0);
const QColor kRedUnlit(58, 34, 34);

// Rectangles are kept the way the meter was first laid out: right and
// bottom edges exclusive, bars and segments inset by one pixel.
QRect insetVertically(const QRect& rect) {
    return rect.adjusted(0, 1, 0, -1);
}

void drawBar(QPainter& painter, const QRect& bar, int level) {
    const double lit = level * double(kMeterSegments) / 32767.0;
    const int width = bar.width() / kMeterSegments;
    for (int i = 0; i < kMeterSegments; ++i) {
        const QRect segment =
            insetVertically(QRect(bar.left() + i * width, bar.top(), width - 1, bar.height()));
        const bool on = i < lit;
        const bool green = i < kMeterGreenSegments;
        painter.fillRect(segment,
                         green ? (on ? kGreenLit : kGreenUnlit) : (on ? kRedLit : kRedUnlit));
    }
}

}  // namespace

LevelMeter::LevelMeter(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void LevelMeter::draw(int first, int second) {
    first_ = first;
    second_ = second;
    const qreal ratio = devicePixelRatioF();
    QImage image(size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    QPainter painter(&image);
    painter.fillRect(rect(), kBackground);
    const int half = height() / 2;
    drawBar(painter, insetVertically(QRect(0, 0, width(), half)), first);
    drawBar(painter, insetVertically(QRect(0, half, width(), height() - half)), second);
    painter.end();
    frame_ = std::move(image);
    repaint();
}

void LevelMeter::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(QPoint(0, 0), frame_);
}

void LevelMeter::resizeEvent(QResizeEvent*) {
    draw(first_, second_);
}

}  // namespace tunebox::gui
