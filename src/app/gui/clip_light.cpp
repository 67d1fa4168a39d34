#include "app/gui/clip_light.h"

#include <QPainter>

namespace tunebox::gui {
namespace {

// Unlit as the meter's unlit segments are: plainly off.
const QColor kUnlit(52, 52, 52);
const QColor kLit(255, 0, 0);
const QColor kUnlitText(150, 150, 150);
const QColor kLitText(255, 255, 255);

}  // namespace

ClipLight::ClipLight(QWidget* parent)
    : QWidget(parent), clock_([] { return std::chrono::steady_clock::now(); }) {
    setToolTip(tr("Lights for two seconds when the recording reaches full scale (clips)"));
    holdTimer_.setSingleShot(true);
    holdTimer_.setTimerType(Qt::PreciseTimer);
    connect(&holdTimer_, &QTimer::timeout, this, &ClipLight::refresh);
}

void ClipLight::clipped() {
    lastClip_ = clock_();
    refresh();
}

bool ClipLight::lit() const {
    return lastClip_ && clock_() - *lastClip_ < kClipHold;
}

// A timer may fire a little early; the light then waits out the rest.
void ClipLight::refresh() {
    if (lit()) {
        const auto held = clock_() - *lastClip_;
        holdTimer_.start(std::chrono::ceil<std::chrono::milliseconds>(kClipHold - held));
    }
    update();
}

void ClipLight::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool on = lit();
    painter.fillRect(rect(), on ? kLit : kUnlit);
    painter.setPen(on ? kLitText : kUnlitText);
    painter.drawText(rect(), Qt::AlignCenter, tr("CLIP"));
}

}  // namespace tunebox::gui
