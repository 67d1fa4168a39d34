#include "app/gui/lyrics_pane.h"

#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>

namespace tunebox::gui {
namespace {

const QColor kBackdrop(12, 14, 30);
const QColor kToSing(240, 240, 240);
const QColor kSung(255, 196, 32);
const QColor kNextLine(150, 156, 180);
// The next line is smaller: the eye stays on the one being sung.
constexpr double kNextLineScale = 0.7;
// Of the pane's width, kept clear at each side.
constexpr double kSideMargin = 0.03;

// A large face shrunk, if need be, until `text` fits `width`.
QFont fittedFont(double pixelSize, const QString& text, double width) {
    QFont font;
    font.setBold(true);
    font.setPixelSize(std::max(1, static_cast<int>(pixelSize)));
    const double wide = QFontMetricsF(font).horizontalAdvance(text);
    if (wide > width) {
        font.setPixelSize(std::max(1, static_cast<int>(pixelSize * width / wide)));
    }
    return font;
}

QString withoutLeadingSpaces(const QString& text) {
    const auto first = std::find_if(text.begin(), text.end(), [](QChar c) { return !c.isSpace(); });
    return text.mid(first - text.begin());
}

// 12-bit 0xRGB, each part 0-15, to full scale.
QRgb cdgColour(uint16_t colour) {
    return qRgb(((colour >> 8) & 0xF) * 17, ((colour >> 4) & 0xF) * 17, (colour & 0xF) * 17);
}

QImage cdgImage(const CdgScreen& screen) {
    QImage image(CdgScreen::kWidth, CdgScreen::kHeight, QImage::Format_Indexed8);
    for (int y = 0; y < CdgScreen::kHeight; ++y) {
        std::copy_n(screen.pixels.begin() + y * CdgScreen::kWidth, CdgScreen::kWidth,
                    image.scanLine(y));
    }
    QList<QRgb> colours;
    for (const uint16_t colour : screen.palette) {
        colours.append(cdgColour(colour));
    }
    image.setColorTable(colours);
    return image;
}

}  // namespace

LyricsPane::LyricsPane(QWidget* parent) : QWidget(parent) {
    setMinimumHeight(120);
    setToolTip(tr("The words of the song, in time with what you hear"));
}

void LyricsPane::setLyrics(std::optional<SongLyrics> lyrics) {
    sheet_.reset();
    cdg_.reset();
    due_.reset();
    progress_ = {};
    if (lyrics && lyrics->sheet) {
        sheet_ = std::move(lyrics->sheet);
    } else if (lyrics) {
        cdg_.emplace(std::move(lyrics->cdg));
        cdgImage_ = cdgImage(cdg_->screen());
    }
    update();
}

void LyricsPane::follow(double seconds) {
    if (cdg_) {
        if (cdg_->advanceTo(seconds)) {
            cdgImage_ = cdgImage(cdg_->screen());
            update();
        }
        return;
    }
    if (!sheet_) {
        return;
    }
    const std::optional<std::size_t> due = dueLyricLine(*sheet_, seconds);
    const LyricProgress progress =
        due ? lyricProgress(sheet_->lines[*due], seconds) : LyricProgress{};
    if (due != due_ || progress.sung != progress_.sung ||
        progress.partOfNext != progress_.partOfNext) {
        due_ = due;
        progress_ = progress;
        update();
    }
}

QString LyricsPane::lineText(std::size_t index) const {
    return sheet_ && index < sheet_->lines.size()
               ? QString::fromStdString(sheet_->lines[index].text)
               : QString();
}

QString LyricsPane::currentLine() const {
    return due_ ? lineText(*due_) : QString();
}

QString LyricsPane::nextLine() const {
    return lineText(due_ ? *due_ + 1 : 0);
}

void LyricsPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), kBackdrop);
    if (cdg_) {
        paintCdg(painter);
    } else if (sheet_) {
        paintLines(painter);
    } else {
        painter.setPen(kNextLine);
        painter.drawText(rect(), Qt::AlignCenter, tr("No lyrics for this song"));
    }
}

// Two rows: the current line takes the upper, larger one.
void LyricsPane::paintLines(QPainter& painter) const {
    const QRectF area = QRectF(rect()).adjusted(width() * kSideMargin, height() * 0.06,
                                                -width() * kSideMargin, -height() * 0.06);
    const double rowHeight = area.height() / (1 + kNextLineScale);
    const QRectF currentBox(area.left(), area.top(), area.width(), rowHeight);
    const QRectF nextBox(area.left(), currentBox.bottom(), area.width(), area.height() - rowHeight);

    const QFont currentFont = fittedFont(rowHeight * 0.8, currentLine(), area.width());
    painter.setFont(currentFont);
    painter.setPen(kToSing);
    painter.drawText(currentBox, Qt::AlignCenter, currentLine());
    paintWipe(painter, currentFont, currentBox);

    painter.setFont(fittedFont(rowHeight * 0.8 * kNextLineScale, nextLine(), area.width()));
    painter.setPen(kNextLine);
    painter.drawText(nextBox, Qt::AlignCenter, nextLine());
}

// The sung part of the current line drawn again in the sung colour, clipped
// to the syllables sung and to the share of the one being sung.
void LyricsPane::paintWipe(QPainter& painter, const QFont& font, const QRectF& box) const {
    if (!due_ || sheet_->lines[*due_].syllables.empty()) {
        return;
    }
    const std::vector<LyricSyllable>& syllables = sheet_->lines[*due_].syllables;
    QString sung;
    for (std::size_t i = 0; i < progress_.sung; ++i) {
        sung += QString::fromStdString(syllables[i].text);
    }
    // The line's text starts at its first letter; the syllables keep spaces.
    sung = withoutLeadingSpaces(sung);
    const QFontMetricsF metrics(font);
    double wiped = metrics.horizontalAdvance(sung);
    if (progress_.sung < syllables.size()) {
        QString singing = QString::fromStdString(syllables[progress_.sung].text);
        if (sung.isEmpty()) {
            singing = withoutLeadingSpaces(singing);
        }
        wiped += progress_.partOfNext * metrics.horizontalAdvance(singing);
    }
    const QString text = currentLine();
    const double left = box.center().x() - metrics.horizontalAdvance(text) / 2;
    painter.save();
    painter.setClipRect(QRectF(left, box.top(), wiped, box.height()));
    painter.setPen(kSung);
    painter.drawText(box, Qt::AlignCenter, text);
    painter.restore();
}

// The screen as large as the pane allows, the border colour around it.
void LyricsPane::paintCdg(QPainter& painter) const {
    painter.fillRect(rect(), QColor(cdgImage_.pixel(0, 0)));
    const QSize scaled = cdgImage_.size().scaled(size(), Qt::KeepAspectRatio);
    const QRect target(QPoint((width() - scaled.width()) / 2, (height() - scaled.height()) / 2),
                       scaled);
    painter.drawImage(target, cdgImage_);
}

}  // namespace tunebox::gui
