#include "app/gui/export_dialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QEventLoop>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <thread>

#include "core/diagnostic_log.h"
#include "platform/settings.h"
#include "session/take_export.h"

namespace tunebox::gui {
namespace {

constexpr double kSuggestedTargetLufs = -14.0;
constexpr int kBusyNoteAfterMs = 400;

struct FormatEntry {
    ExportFormat format;
    const char* name;
    const char* suffix;
};

constexpr FormatEntry kFormats[] = {
    {ExportFormat::kFlac, "FLAC", "flac"},
    {ExportFormat::kMp3, "MP3", "mp3"},
    {ExportFormat::kOgg, "Ogg Vorbis", "ogg"},
    {ExportFormat::kOpus, "Opus", "opus"},
};

const FormatEntry& entryFor(ExportFormat format) {
    for (const FormatEntry& entry : kFormats) {
        if (entry.format == format) {
            return entry;
        }
    }
    return kFormats[0];
}

QString qualityMeaning(ExportFormat format) {
    switch (format) {
        case ExportFormat::kMp3:
            return ExportDialog::tr("0 is best (about 245 kbit/s), 9 smallest");
        case ExportFormat::kOgg:
        case ExportFormat::kOpus:
            return ExportDialog::tr("0 is smallest, 1 best");
        case ExportFormat::kFlac:
            break;
    }
    return ExportDialog::tr("0 is fastest, 1 smallest; lossless either way");
}

QString gainText(const NormalizeGain& gain, double target) {
    const QString decibels = QString::asprintf("%+.1f", gain.decibels);
    const QString lufs = QString::number(target, 'f', 1);
    switch (gain.reason) {
        case GainReason::kReachesTarget:
            return ExportDialog::tr("Gain %1 dB brings it to %2 LUFS.").arg(decibels, lufs);
        case GainReason::kPeakLimited:
            return ExportDialog::tr("Gain %1 dB: the true peak keeps it short of %2 LUFS.")
                .arg(decibels, lufs);
        case GainReason::kUnmeasurable:
            break;
    }
    return ExportDialog::tr("Not normalized: too quiet or too short to measure.");
}

// The picked name with the format's extension, added when the user typed
// another: the extension is what tells players the format.
QString withSuffix(const QString& picked, const FormatEntry& entry) {
    if (QFileInfo(picked).suffix().compare(entry.suffix, Qt::CaseInsensitive) == 0) {
        return picked;
    }
    return picked + '.' + entry.suffix;
}

// Encoding a long take takes seconds. A worker exports while the window goes
// on answering (a repaint, the meters, the tickers of a running take); a
// busy note, modal, says why nothing can be pressed meanwhile.
ExportResult exportServingTheWindow(QWidget* parent, const ExportRequest& request) {
    QProgressDialog busy(ExportDialog::tr("Exporting the take..."), QString(), 0, 0, parent);
    busy.setWindowModality(Qt::ApplicationModal);
    busy.setMinimumDuration(kBusyNoteAfterMs);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QEventLoop loop;
    ExportResult result;
    std::thread worker([&] {
        result = exportTake(request);
        // Queued: it waits for the loop if the export was done before it ran.
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    worker.join();
    QApplication::restoreOverrideCursor();
    return result;
}

}  // namespace

ExportDialog::ExportDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Export the take"));
    format_ = new QComboBox(this);
    format_->setObjectName(QStringLiteral("format"));
    for (const FormatEntry& entry : kFormats) {
        format_->addItem(QString::fromLatin1(entry.name), static_cast<int>(entry.format));
    }
    quality_ = new QDoubleSpinBox(this);
    quality_->setObjectName(QStringLiteral("quality"));
    quality_->setDecimals(1);
    quality_->setSingleStep(0.1);
    qualityMeaning_ = new QLabel(this);
    normalize_ = new QCheckBox(tr("Normalize to"), this);
    normalize_->setObjectName(QStringLiteral("normalize"));
    target_ = new QDoubleSpinBox(this);
    target_->setObjectName(QStringLiteral("target"));
    target_->setRange(-70.0, 0.0);
    target_->setDecimals(1);
    target_->setValue(kSuggestedTargetLufs);
    target_->setSuffix(QStringLiteral(" LUFS"));
    target_->setToolTip(
        tr("By gain only: the true peak stays at or below -1 dBTP. "
           "-14 LUFS suits most players."));
    artist_ = new QLineEdit(QString::fromStdString(readExportArtist()), this);
    artist_->setObjectName(QStringLiteral("artist"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(format_, &QComboBox::currentIndexChanged, this, &ExportDialog::formatChanged);

    auto* form = new QFormLayout(this);
    form->addRow(tr("Format:"), format_);
    form->addRow(tr("Quality:"), quality_);
    form->addRow(QString(), qualityMeaning_);
    form->addRow(normalize_, target_);
    form->addRow(tr("Artist:"), artist_);
    form->addRow(buttons);
    formatChanged();
}

void ExportDialog::formatChanged() {
    const auto format = static_cast<ExportFormat>(format_->currentData().toInt());
    const QualityScale scale = exportQualityScale(format);
    quality_->setRange(scale.lowest, scale.highest);
    quality_->setSingleStep(scale.highest > 1.0 ? 1.0 : 0.1);
    quality_->setValue(scale.standard);
    qualityMeaning_->setText(qualityMeaning(format));
}

ExportChoices ExportDialog::choices() const {
    ExportChoices chosen{.format = static_cast<ExportFormat>(format_->currentData().toInt()),
                         .quality = quality_->value(),
                         .normalizeLufs = std::nullopt,
                         .artist = artist_->text()};
    if (normalize_->isChecked()) {
        chosen.normalizeLufs = target_->value();
    }
    return chosen;
}

bool exportTakeAs(QWidget* parent, const DialogServices& services, const QString& take,
                  const ExportChoices& choices) {
    const FormatEntry& entry = entryFor(choices.format);
    const QString suffix = QString::fromLatin1(entry.suffix);
    const QString picked = services.pickSave(
        parent, {.filter = QStringLiteral("%1|*.%2||").arg(QString::fromLatin1(entry.name), suffix),
                 .defaultSuffix = suffix,
                 .initialFolder = QFileInfo(take).absolutePath()});
    if (picked.isEmpty()) {
        return false;
    }
    const QString output = withSuffix(picked, entry);
    const ExportResult result =
        exportServingTheWindow(parent, {.take = take.toStdString(),
                                        .output = output.toStdString(),
                                        .format = choices.format,
                                        .quality = choices.quality,
                                        .artist = choices.artist.toStdString(),
                                        .normalizeLufs = choices.normalizeLufs,
                                        .options = SourceOptions{readDecoderChoice() == 1}});
    const QString caption = ExportDialog::tr("Export");
    if (!result.problem.empty()) {
        logAlways(result.problem);
        services.showStop(parent, caption,
                          ExportDialog::tr("The take could not be exported:\n%1")
                              .arg(QString::fromStdString(result.problem)));
        return false;
    }
    QString text = ExportDialog::tr("Saved as %1").arg(output);
    if (result.gain) {
        text += '\n' + gainText(*result.gain, *choices.normalizeLufs);
    }
    services.showNote(parent, caption, text);
    return true;
}

void offerExport(QWidget* parent, const DialogServices& services, const QString& take) {
    ExportDialog dialog(parent);
    if (dialog.exec() == QDialog::Accepted) {
        exportTakeAs(parent, services, take, dialog.choices());
    }
}

}  // namespace tunebox::gui
