#include "app/gui/main_dialog.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <tuple>

#include "app/gui/app_icon.h"
#include "app/gui/clip_light.h"
#include "app/gui/control_ids.h"
#include "app/gui/export_dialog.h"
#include "app/gui/image_button.h"
#include "app/gui/key_tempo_controls.h"
#include "app/gui/level_meter.h"
#include "app/gui/lyrics_dock.h"
#include "platform/settings.h"
#include "session/position_time.h"
#include "session/take_remix.h"

namespace tunebox::gui {
namespace {

const QColor kMediaText(0, 0, 255);
const QColor kLinkText(96, 96, 255);

QFont timeFont() {
    QFont font;
    // The gothic face the time was designed for, else an installed one.
    font.setFamilies({QStringLiteral("ＭＳ ゴシック"), QStringLiteral("MS Gothic"),
                      QStringLiteral("IPAGothic"), QStringLiteral("IPAゴシック"),
                      QStringLiteral("Noto Sans Mono CJK JP")});
    font.setPixelSize(16);
    font.setStyleHint(QFont::TypeWriter);
    return font;
}

template <class Widget>
Widget* named(Widget* widget, ControlId id) {
    widget->setObjectName(controlName(id));
    return widget;
}

QLabel* staticText(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setAttribute(Qt::WA_TranslucentBackground);
    return label;
}

QLabel* readout(ControlId id, QWidget* parent) {
    auto* label = named(staticText(QString(), parent), id);
    label->setMinimumWidth(70);
    return label;
}

}  // namespace

MainDialog::MainDialog(DialogServices services, QWidget* parent)
    : QDialog(parent), services_(std::move(services)) {
    setWindowTitle(QStringLiteral("Tunebox"));
    createControls();
    layOutControls();
    setUpWindowMenu();
    setUpShortcuts();
    setWindowIcon(appIcon());
    initialiseMembers();
}

MainDialog::~MainDialog() {
    destroy();
}

ImageButton* MainDialog::makeButton(int id, const QString& caption, const QString& tip) {
    auto* button = named(new ImageButton(caption, this), static_cast<ControlId>(id));
    button->setToolTip(tip);
    button->setAutoDefault(false);
    return button;
}

void MainDialog::createControls() {
    karaokePick_ = makeButton(kKaraokePick, tr("Karaoke file"),
                              tr("Pick the accompaniment to sing over (WAV or MP3)"));
    karaokePlay_ = makeButton(kKaraokePlay, QString(), tr("PLAY the accompaniment (Space)"));
    karaokeStop_ =
        makeButton(kKaraokeStop, QString(), tr("STOP the accompaniment and go back to its start"));
    karaokePause_ = makeButton(kKaraokePause, QString(),
                               tr("PAUSE the accompaniment, keeping its place (Space)"));
    leftButton_ = makeButton(kLeftButton, QStringLiteral("←"),
                             tr("Previous file (the list holds only the one picked)"));
    rightButton_ = makeButton(kRightButton, QStringLiteral("→"),
                              tr("Next file (the list holds only the one picked)"));
    recordedPick_ = makeButton(kRecordedPick, tr("Recording file"),
                               tr("Choose the WAV file the take is recorded into"));
    recordedPlay_ = makeButton(kRecordedPlay, QString(), tr("PLAY the take to hear it"));
    recorderStop_ = makeButton(kRecorderStop, QString(),
                               tr("STOP the take, the accompaniment and the recording (S)"));
    recordedPause_ = makeButton(kRecordedPause, QString(), tr("PAUSE the take's playback"));
    recordButton_ = makeButton(kRecord, QString(), tr("REC: sing over the accompaniment (R)"));
    monitorButton_ = makeButton(
        kMonitor, QString(), tr("Level monitor: show the microphone's level, recording nothing"));
    aboutButton_ = makeButton(kAboutButton, tr("About"), tr("Version and maker of Tunebox"));
    helpButton_ = makeButton(kHelpButton, tr("Help"), tr("Open the help page"));
    nudgeSave_ = makeButton(kNudgeSave, tr("Save nudge"),
                            tr("Write the sync nudge into the recording file"));

    listView_ = named(new QTreeWidget(this), kTrackListView);
    listView_->setColumnCount(2);
    listView_->setHeaderLabels({tr("No."), tr("File name")});
    listView_->setRootIsDecorated(false);
    listView_->hide();

    karaokeNameEdit_ = named(new QLineEdit(this), kKaraokeName);
    karaokeNameEdit_->setReadOnly(true);
    karaokeNameEdit_->setToolTip(tr("The accompaniment picked"));
    recordedNameEdit_ = named(new QLineEdit(this), kRecordedName);
    recordedNameEdit_->setToolTip(
        tr("The file the take is recorded into: type a name or choose one"));
    karaokeTrackbar_ = named(new PositionTrackbar(this), kKaraokeTrackbar);
    karaokeTrackbar_->setToolTip(tr("Where the accompaniment starts at the next PLAY or REC"));
    recordedTrackbar_ = named(new PositionTrackbar(this), kRecordedTrackbar);
    recordedTrackbar_->setToolTip(tr("Where the take's playback starts"));

    timeLabel_ = named(new QLabel(this), kTimeText);
    timeLabel_->setFont(timeFont());
    timeLabel_->setAlignment(Qt::AlignCenter);
    timeLabel_->setAutoFillBackground(true);
    QPalette timePalette = timeLabel_->palette();
    timePalette.setColor(QPalette::Window, Qt::black);
    timePalette.setColor(QPalette::WindowText, QColor(0, 255, 255));
    timeLabel_->setPalette(timePalette);
    timeLabel_->setToolTip(tr("Accompaniment position (minutes:seconds:hundredths)"));

    echoCheck_ = named(new QCheckBox(tr("Echo"), this), kEchoCheck);
    echoCheck_->setToolTip(tr("Echo on the voice"));
    manualDelayCheck_ = named(new QCheckBox(tr("Manual delay"), this), kManualDelayCheck);
    manualDelayCheck_->setToolTip(
        tr("Drop the fixed number of voice bytes below instead of the measured delay"));
    voiceFileCheck_ = named(new QCheckBox(tr("Save voice separately"), this), kVoiceFileCheck);
    voiceFileCheck_->setToolTip(
        tr("Also save the voice alone (.voice.wav) beside the recording file"));
    nudgeSpin_ = named(new QSpinBox(this), kNudgeSpin);
    const auto largest = static_cast<int>(kLargestNudgeMs);
    nudgeSpin_->setRange(-largest, largest);
    nudgeSpin_->setSuffix(QStringLiteral(" ms"));
    nudgeSpin_->setToolTip(tr("Move the voice later (+) or earlier (-); the take's PLAY hears it"));
    manualDelayEdit_ = named(new QLineEdit(this), kManualDelayEdit);
    manualDelayEdit_->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]*")), manualDelayEdit_));
    manualDelayEdit_->setMaximumWidth(90);
    manualDelayEdit_->setToolTip(tr("Voice bytes to drop when the manual delay is on"));
    manualDelayEdit_->installEventFilter(this);
    delayLabel_ = readout(kDelayReadout, this);
    delayLabel_->setToolTip(tr("How far the voice lags the accompaniment (bytes)"));
    calibrationLabel_ = named(staticText(QString(), this), kCalibrationNote);
    captureStartLabel_ = readout(kCaptureStartReadout, this);
    captureStartLabel_->setToolTip(tr("Capture position when the take started (bytes)"));
    playbackStartLabel_ = readout(kPlaybackStartReadout, this);
    playbackStartLabel_->setToolTip(tr("Playback position when the take started (bytes)"));
    for (QLabel* label : {captureStartLabel_, playbackStartLabel_}) {
        // Diagnostic figures: present but quieter than the controls.
        QPalette quiet = label->palette();
        quiet.setColor(QPalette::WindowText, QColor(110, 116, 130));
        label->setPalette(quiet);
    }
    meter_ = named(new LevelMeter(this), kMeterFrame);
    meter_->setToolTip(tr("Microphone level"));
    clipLight_ = named(new ClipLight(this), kClipLight);
    setUpLyrics();
    createKeyTempoControls();

    setUpImageButtons();

    connect(karaokePick_, &QPushButton::clicked, this, &MainDialog::pickKaraoke);
    connect(karaokePlay_, &QPushButton::clicked, this, &MainDialog::playKaraoke);
    connect(karaokeStop_, &QPushButton::clicked, this,
            [this] { controller_.stopAccompaniment(true); });
    connect(karaokePause_, &QPushButton::clicked, this,
            [this] { controller_.pauseAccompaniment(); });
    connect(recordedPick_, &QPushButton::clicked, this, &MainDialog::pickRecorded);
    connect(recordedNameEdit_, &QLineEdit::textChanged, this, &MainDialog::recordedNameChanged);
    connect(recordButton_, &QPushButton::clicked, this, &MainDialog::record);
    connect(recordedPlay_, &QPushButton::clicked, this, &MainDialog::playRecorded);
    connect(nudgeSave_, &QPushButton::clicked, this, &MainDialog::saveNudge);
    connect(voiceFileCheck_, &QCheckBox::clicked, this, &MainDialog::readFromControls);
    connect(recorderStop_, &QPushButton::clicked, this, [this] { controller_.stopRecorder(); });
    connect(recordedPause_, &QPushButton::clicked, this, [this] { controller_.pauseRecorded(); });
    connect(monitorButton_, &QPushButton::clicked, this, &MainDialog::toggleMonitor);
    connect(echoCheck_, &QCheckBox::clicked, this, &MainDialog::echoChanged);
    connect(manualDelayCheck_, &QCheckBox::clicked, this, &MainDialog::readFromControls);
    connect(aboutButton_, &QPushButton::clicked, this, &MainDialog::showAbout);
    connect(helpButton_, &QPushButton::clicked, this, &MainDialog::showHelp);
    karaokeTimer_.setObjectName(QStringLiteral("101"));
    recordedTimer_.setObjectName(QStringLiteral("102"));
    for (auto [trackbar, timer, player] :
         {std::tuple{karaokeTrackbar_, &karaokeTimer_, TakePlayer::kAccompaniment},
          {recordedTrackbar_, &recordedTimer_, TakePlayer::kRecorded}}) {
        // Named captures: Clang 14 refuses to capture a structured binding.
        connect(trackbar, &PositionTrackbar::scrolled, this,
                [this, which = player](TrackbarScroll kind, int value) {
                    trackbarScrolled(which, kind, value);
                });
        connect(timer, &QTimer::timeout, this, [this, which = player] { controller_.tick(which); });
    }
}

void MainDialog::setUpImageButtons() {
    for (ImageButton* button : findChildren<ImageButton*>()) {
        button->setFrames(kFrameNormal, kFrameHovered, kFramePressed, kFrameFocused,
                          kFrameDisabled);
        const bool link = button == aboutButton_ || button == helpButton_;
        button->setTextColour(link ? kLinkText : kMediaText);
        button->setOption(link ? 0 : 1);
    }
    for (auto [button, face] : {std::pair{karaokePlay_, kFacePlay},
                                {karaokeStop_, kFaceStop},
                                {karaokePause_, kFacePause},
                                {recordedPlay_, kFacePlay},
                                {recorderStop_, kFaceStop},
                                {recordedPause_, kFacePause},
                                {recordButton_, kFaceRecord},
                                {monitorButton_, kFaceMonitor}}) {
        setFace(button, face);
        button->setMinimumSize(48, 36);
    }
}

// Extra room goes to the path boxes, the trackbars and empty space: every
// row keeps its height, the time box, the meter and its clip light their
// size.
void MainDialog::layOutControls() {
    timeLabel_->setFixedSize(96, 26);
    meter_->setFixedSize(meter_->sizeHint());
    clipLight_->setFixedSize(clipLight_->sizeHint());
    auto* karaokeFile = new QHBoxLayout;
    karaokeFile->addWidget(karaokePick_);
    karaokeFile->addWidget(karaokeNameEdit_, 1);
    karaokeFile->addWidget(lyricsPick_);

    auto* karaokeTransport = new QHBoxLayout;
    for (QWidget* widget :
         {static_cast<QWidget*>(karaokePlay_), static_cast<QWidget*>(karaokeStop_),
          static_cast<QWidget*>(karaokePause_), static_cast<QWidget*>(leftButton_),
          static_cast<QWidget*>(rightButton_)}) {
        karaokeTransport->addWidget(widget);
    }
    karaokeTransport->addStretch(1);
    karaokeTransport->addWidget(timeLabel_);

    auto* recordedFile = new QHBoxLayout;
    recordedFile->addWidget(recordedPick_);
    recordedFile->addWidget(recordedNameEdit_, 1);

    auto* recorderTransport = new QHBoxLayout;
    for (QWidget* widget :
         {static_cast<QWidget*>(recordedPlay_), static_cast<QWidget*>(recorderStop_),
          static_cast<QWidget*>(recordedPause_), static_cast<QWidget*>(recordButton_),
          static_cast<QWidget*>(monitorButton_)}) {
        recorderTransport->addWidget(widget);
    }
    recorderTransport->addSpacing(8);
    recorderTransport->addWidget(meter_);
    recorderTransport->addWidget(clipLight_);
    recorderTransport->addStretch(1);

    // Beside the audition player: PLAY hears the nudge, Save nudge keeps it.
    auto* nudge = new QHBoxLayout;
    nudge->addStretch(1);
    nudge->addWidget(staticText(tr("Sync nudge:"), this));
    nudge->addWidget(nudgeSpin_);
    nudge->addWidget(nudgeSave_);
    auto* exportButton = new QPushButton(tr("Export..."), this);
    exportButton->setObjectName(QStringLiteral("exportButton"));
    connect(exportButton, &QPushButton::clicked, this, [this] {
        if (nudgeCanRun()) {
            offerExport(this, services_, recordedName_);
        }
    });
    nudge->addWidget(exportButton);

    auto* sync = new QGridLayout;
    sync->addWidget(echoCheck_, 0, 0);
    sync->addWidget(manualDelayCheck_, 0, 1);
    sync->addWidget(staticText(tr("Fixed delay:"), this), 0, 2, Qt::AlignRight);
    sync->addWidget(manualDelayEdit_, 0, 3);
    sync->addWidget(staticText(tr("Playback delay:"), this), 1, 2, Qt::AlignRight);
    sync->addWidget(delayLabel_, 1, 3);
    sync->addWidget(calibrationLabel_, 1, 4);
    // Spanning two columns, so that a long caption does not push the
    // manual-delay switch away from the echo switch.
    sync->addWidget(voiceFileCheck_, 2, 0, 1, 2);
    sync->addWidget(captureStartLabel_, 1, 0);
    sync->addWidget(playbackStartLabel_, 1, 1);
    sync->setColumnStretch(4, 1);

    auto* links = new QHBoxLayout;
    links->addStretch(1);
    links->addWidget(aboutButton_);
    links->addWidget(helpButton_);

    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(12, 12, 12, 10);
    page->setSpacing(8);
    page->addLayout(karaokeFile);
    page->addLayout(karaokeTransport);
    page->addWidget(karaokeTrackbar_);
    page->addWidget(keyTempoControls_);
    page->addWidget(lyricsDock_, 3);
    page->addSpacing(6);
    page->addLayout(recordedFile);
    page->addLayout(recorderTransport);
    page->addWidget(recordedTrackbar_);
    page->addLayout(nudge);
    page->addSpacing(4);
    page->addLayout(sync);
    page->addStretch(1);
    page->addLayout(links);
    page->addWidget(listView_);
}

void MainDialog::setUpWindowMenu() {
    // Qt has no portable window (system) menu, so the About entry sits in
    // the dialog's own context menu.
    auto* separator = new QAction(this);
    separator->setSeparator(true);
    auto* about = new QAction(tr("&About Tunebox..."), this);
    about->setObjectName(QString::number(kAboutCommand));
    connect(about, &QAction::triggered, this, &MainDialog::showAbout);
    addAction(separator);
    addAction(about);
    setContextMenuPolicy(Qt::ActionsContextMenu);
}

void MainDialog::initialiseMembers() {
    karaokeTrackbar_->setValue(static_cast<int>(controller_.accompaniment().position));
    recordedTrackbar_->setValue(static_cast<int>(controller_.recorded().position));
    echoFlag_ = 1;
    controller_.setEcho(echoFlag_);
    manualDelayFlag_ = 0;
    SyncSettings settings;
    readSyncSettings(settings);
    manualDelayText_ = QString::fromStdString(settings.manualDelayText);
    manualDelayFlag_ = settings.manualDelayFlag;
    voiceFileFlag_ = readVoiceFileChoice();
    auditionFile_ = QDir::temp().filePath(
        QStringLiteral("tunebox-audition-%1.wav").arg(QCoreApplication::applicationPid()));
    controller_.setSourceOptions(SourceOptions{readDecoderChoice() == 1});
    timeText_ = QString::fromStdString(formatPositionTime(controller_.accompaniment().position));
    pushToControls();
    restoreLastTake();
}

void MainDialog::pushToControls() {
    karaokeNameEdit_->setText(karaokeName_);
    timeLabel_->setText(timeText_);
    if (recordedNameEdit_->text() != recordedName_) {
        recordedNameEdit_->setText(recordedName_);
    }
    echoCheck_->setChecked(echoFlag_ == 1);
    manualDelayCheck_->setChecked(manualDelayFlag_ == 1);
    voiceFileCheck_->setChecked(voiceFileFlag_ == 1);
    delayLabel_->setText(delayReadout_);
    manualDelayEdit_->setText(manualDelayText_);
    captureStartLabel_->setText(captureStartText_);
    playbackStartLabel_->setText(playbackStartText_);
}

void MainDialog::readFromControls() {
    karaokeName_ = karaokeNameEdit_->text();
    recordedName_ = recordedNameEdit_->text();
    echoFlag_ = echoCheck_->isChecked() ? 1 : 0;
    manualDelayFlag_ = manualDelayCheck_->isChecked() ? 1 : 0;
    voiceFileFlag_ = voiceFileCheck_->isChecked() ? 1 : 0;
    manualDelayText_ = manualDelayEdit_->text();
}

void MainDialog::setFace(ImageButton* button, int face) {
    button->setFace(face);
    button->update();
}

void MainDialog::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QLinearGradient backdrop(0, 0, 0, height());
    backdrop.setColorAt(0, QColor(244, 246, 252));
    backdrop.setColorAt(1, QColor(222, 228, 240));
    painter.fillRect(rect(), backdrop);
}

bool MainDialog::eventFilter(QObject* watched, QEvent* event) {
    if (watched == manualDelayEdit_ && event->type() == QEvent::FocusOut) {
        manualDelayLeft();
    }
    return QDialog::eventFilter(watched, event);
}

void MainDialog::destroy() {
    // Unlike the players, a take still running is finished, not dropped:
    // what was sung up to the close is kept.
    finishTake();
    controller_.close();
    SyncSettings settings;
    settings.manualDelayText = manualDelayEdit_->text().toStdString();
    settings.manualDelayFlag = manualDelayCheck_->isChecked() ? 1 : 0;
    writeSyncSettings(settings);
    writeVoiceFileChoice(voiceFileCheck_->isChecked() ? 1 : 0);
    QFile::remove(auditionFile_);
}

}  // namespace tunebox::gui
