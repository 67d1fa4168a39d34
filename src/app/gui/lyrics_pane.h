#pragma once
// The words on screen while the singer sings: the line due now, large, with
// a wipe across the syllables already sung, and the next line below it; or
// for CD+G the disc's own screen, scaled, inside its border colour. The
// owner says where the song is; the pane draws only what that changes.

#include <QImage>
#include <QWidget>
#include <cstddef>
#include <optional>

#include "app/gui/song_lyrics.h"
#include "lyrics/cdg_screen.h"
#include "lyrics/lyric_timing.h"

namespace tunebox::gui {

class LyricsPane : public QWidget {
    Q_OBJECT

  public:
    explicit LyricsPane(QWidget* parent = nullptr);

    // Shows `lyrics` from the start of the song; nothing clears the pane.
    void setLyrics(std::optional<SongLyrics> lyrics);
    bool hasLyrics() const { return sheet_ || cdg_; }
    // The song is `seconds` in.
    void follow(double seconds);

    // What is on show.
    QString currentLine() const;
    QString nextLine() const;
    LyricProgress progress() const { return progress_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintLines(QPainter& painter) const;
    void paintWipe(QPainter& painter, const QFont& font, const QRectF& box) const;
    void paintCdg(QPainter& painter) const;
    QString lineText(std::size_t index) const;

    std::optional<LyricSheet> sheet_;
    std::optional<CdgPlayback> cdg_;
    // The CD+G screen in its palette, remade when a packet changed it.
    QImage cdgImage_;
    std::optional<std::size_t> due_;
    LyricProgress progress_;
};

}  // namespace tunebox::gui
