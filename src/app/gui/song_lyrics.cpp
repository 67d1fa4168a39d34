#include "app/gui/song_lyrics.h"

#include <QCoreApplication>
#include <QFile>

#include "lyrics/lyric_finder.h"
#include "lyrics/lyric_format.h"

namespace tunebox::gui {
LyricsReading readSongLyrics(const QString& path) {
    const auto format = lyricFormatOf(path.toStdString());
    if (!format) {
        return {std::nullopt,
                QCoreApplication::translate("SongLyrics",
                                            "Not a lyrics file (.lrc, UltraStar .txt or .cdg)")};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {std::nullopt,
                QCoreApplication::translate("SongLyrics", "The lyrics file cannot be read")};
    }
    const QByteArray bytes = file.readAll();
    if (*format == LyricFormat::kCdg) {
        return {SongLyrics{std::nullopt, std::vector<uint8_t>(bytes.begin(), bytes.end())}, {}};
    }
    LyricReading reading = parseLyricText(*format, {bytes.constData(), size_t(bytes.size())});
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
