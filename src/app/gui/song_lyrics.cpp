#include "app/gui/song_lyrics.h"

#include <QCoreApplication>
#include <QFile>

#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"

namespace tunebox::gui {

LyricsReading readSongLyrics(const QString& path) {
    const auto said = [](const char* text) {
        return LyricsReading{std::nullopt, QCoreApplication::translate("SongLyrics", text)};
    };
    const auto format = lyricFormatOf(path.toStdString());
    if (!format) {
        return said(
            QT_TRANSLATE_NOOP("SongLyrics", "Not a lyrics file (.lrc, UltraStar .txt or .cdg)"));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return said(QT_TRANSLATE_NOOP("SongLyrics", "The lyrics file cannot be read"));
    }
    if (file.size() > qint64(largestLyricFile(*format))) {
        return said(QT_TRANSLATE_NOOP("SongLyrics", "The file is too large to be lyrics"));
    }
    const QByteArray bytes = file.readAll();
    if (*format == LyricFormat::kCdg) {
        return {SongLyrics{std::nullopt, std::vector<uint8_t>(bytes.begin(), bytes.end())}, {}};
    }
    LyricReading reading =
        parseLyricText(*format, {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    if (!reading.sheet) {
        return {std::nullopt, QString::fromStdString(reading.problem)};
    }
    return {SongLyrics{std::move(reading.sheet), {}}, {}};
}

QString lyricsBeside(const QString& accompaniment) {
    const auto found = findLyricsFor(accompaniment.toStdString());
    return found ? QString::fromStdString(*found) : QString();
}

}  // namespace tunebox::gui
