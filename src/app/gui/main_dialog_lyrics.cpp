// The lyrics of the accompaniment: found beside it when it is picked, or
// picked with "Lyrics...", and shown in the pane in time with what the
// singer hears.

#include <QFileInfo>
#include <QPushButton>

#include "app/gui/lyrics_dock.h"
#include "app/gui/lyrics_pane.h"
#include "app/gui/main_dialog.h"
#include "app/gui/song_lyrics.h"
#include "core/wave_format.h"
#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"

namespace tunebox::gui {
namespace {

const QString kLyricsFilter =
    QStringLiteral("Lyrics (*.lrc;*.txt;*.cdg)|*.lrc;*.txt;*.cdg|All Files (*.*)|*.*||");
// Often enough that the line changes within a frame or two of the sound.
constexpr int kLyricsFollowMilliseconds = 15;

}  // namespace

void MainDialog::setUpLyrics() {
    lyricsDock_ = new LyricsDock(this);
    lyricsPick_ = new QPushButton(tr("Lyrics..."), this);
    lyricsPick_->setObjectName(QStringLiteral("lyricsPick"));
    lyricsPick_->setToolTip(
        tr("Pick the lyrics to show (.lrc, UltraStar .txt or CD+G .cdg); by default those "
           "beside the accompaniment"));
    connect(lyricsPick_, &QPushButton::clicked, this, &MainDialog::pickLyrics);
    lyricsTimer_.setInterval(kLyricsFollowMilliseconds);
    connect(&lyricsTimer_, &QTimer::timeout, this, &MainDialog::followLyrics);
}

// An UltraStar song picked as the accompaniment plays the audio it names.
QString MainDialog::audioOfPick(const QString& picked) const {
    if (lyricFormatOf(picked.toStdString()) != LyricFormat::kUltraStar) {
        return picked;
    }
    const auto audio = ultraStarAudioFile(picked.toStdString());
    return audio ? QString::fromStdString(*audio) : picked;
}

// An UltraStar song brings its own words; any other accompaniment, those
// kept beside it.
void MainDialog::lookForLyrics(const QString& picked, const QString& audio) {
    const QString beside = picked != audio ? picked : lyricsBeside(audio);
    if (beside.isEmpty()) {
        showLyrics({});
        return;
    }
    showLyricsFile(beside);
}

void MainDialog::pickLyrics() {
    const QStringList picked = services_.pickOpen(
        this, {kLyricsFilter, QStringLiteral("lrc"), QFileInfo(karaokeName_).path(), false});
    if (!picked.isEmpty() && !picked.first().isEmpty()) {
        showLyricsFile(picked.first());
    }
}

// Unreadable lyrics are said once; the song plays all the same.
void MainDialog::showLyricsFile(const QString& path) {
    LyricsReading reading = readSongLyrics(path);
    if (!reading.lyrics) {
        services_.showNote(this, tr("No lyrics shown"),
                           path + QStringLiteral(":\n") + reading.problem);
    }
    showLyrics(std::move(reading.lyrics));
}

// The pane follows the song also while it is stopped, so that it shows the
// line at the start position as the trackbar moves; a look that changes
// nothing costs next to nothing.
void MainDialog::showLyrics(std::optional<SongLyrics> lyrics) {
    lyricsDock_->pane().setLyrics(std::move(lyrics));
    lyricsDock_->lyricsChanged();
    if (lyricsDock_->pane().hasLyrics()) {
        followLyrics();
        lyricsTimer_.start();
    } else {
        lyricsTimer_.stop();
    }
}

void MainDialog::followLyrics() {
    lyricsDock_->pane().follow(double(controller_.accompanimentHeard()) / kNativeBytesPerSecond);
}

}  // namespace tunebox::gui
