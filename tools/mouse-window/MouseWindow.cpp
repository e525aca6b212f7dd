#include "MouseWindow.h"

#include "MouseControl.h"
#include "TalkButton.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kDictationKey = 6;
constexpr int kCommandKey = 5;
// The battery as the mouse reports it, in millivolts: below 3100 it is empty, above 4100 full.
constexpr int kBatteryMin = 3000;
constexpr int kBatteryMax = 4200;
constexpr int kBatteryStart = 3900;

template <typename W>
W* noFocus(W* widget)
{
    widget->setFocusPolicy(Qt::NoFocus);
    return widget;
}

QPushButton* button(const QString& text, const QString& name)
{
    QPushButton* made = noFocus(new QPushButton(text));
    made->setObjectName(name);
    return made;
}

}  // namespace

MouseWindow::MouseWindow(MouseControl* control, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus), mControl(control)
{
    setWindowTitle(QStringLiteral("Virtual mouse"));
    // Shown and clicked without becoming the active window, so the editor keeps the keyboard.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);

    mDictate = new TalkButton(QStringLiteral("Hold to dictate (key %1)").arg(kDictationKey));
    mCommand = new TalkButton(QStringLiteral("Hold for a voice command (key %1)").arg(kCommandKey));
    mDictate->setObjectName(QStringLiteral("dictate"));
    mCommand->setObjectName(QStringLiteral("command"));
    for (TalkButton* talk : {mDictate, mCommand}) {
        talk->setMinimumHeight(48);
        QFont font = talk->font();
        font.setBold(true);
        talk->setFont(font);
        const int key = talk == mDictate ? kDictationKey : kCommandKey;
        const QString idle = talk->text();
        connect(talk, &TalkButton::signalHeld, this, [this, talk, key, idle](bool held) {
            talk->setText(held ? QStringLiteral("Listening… let go to stop") : idle);
            mControl->setTalking(key, held);
        });
    }
    // One above the other: narrow enough to stand beside Zorvane's dialogs, not over them.
    auto* talkRow = new QVBoxLayout;
    talkRow->addWidget(mDictate);
    talkRow->addWidget(mCommand);

    mStatus = new QLabel;
    mStatus->setObjectName(QStringLiteral("status"));
    mStatus->setFrameShape(QFrame::StyledPanel);
    mStatus->setWordWrap(true);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(talkRow);
    layout->addWidget(buildKeys());
    layout->addWidget(buildDevice());
    layout->addWidget(buildSound());
    layout->addWidget(mStatus);

    connect(mControl, &MouseControl::signalStatusChanged, this, &MouseWindow::refreshStatus);
    connect(mControl, &MouseControl::signalProblemChanged, this, &MouseWindow::showSource);
    refreshStatus();
    showSource();
}

QWidget* MouseWindow::buildKeys()
{
    auto* box = new QGroupBox(QStringLiteral("Click a key"));
    mKey = noFocus(new QComboBox);
    for (int key = 3; key <= 6; ++key) {
        mKey->addItem(QString::number(key), key);
    }
    mKey->setCurrentIndex(mKey->findData(kDictationKey));
    mKey->setObjectName(QStringLiteral("key"));
    QPushButton* click = button(QStringLiteral("Click"), QStringLiteral("click"));
    QPushButton* doubleClick = button(QStringLiteral("Double click"), QStringLiteral("double-click"));
    QPushButton* longPress = button(QStringLiteral("Long press"), QStringLiteral("long-press"));
    connect(click, &QPushButton::clicked, this, [this] { mControl->click(chosenKey()); });
    connect(doubleClick, &QPushButton::clicked, this, [this] { mControl->doubleClick(chosenKey()); });
    connect(longPress, &QPushButton::clicked, this, [this] { mControl->longPress(chosenKey()); });
    auto* row = new QHBoxLayout(box);
    row->addWidget(mKey);
    row->addWidget(click);
    row->addWidget(doubleClick);
    row->addWidget(longPress);
    return box;
}

QWidget* MouseWindow::buildDevice()
{
    auto* box = new QGroupBox(QStringLiteral("Mouse"));
    mPlugged = noFocus(new QCheckBox(QStringLiteral("Receiver plugged in")));
    mBle = noFocus(new QCheckBox(QStringLiteral("Joined over Bluetooth")));
    mPlugged->setObjectName(QStringLiteral("plug"));
    mBle->setObjectName(QStringLiteral("ble"));
    connect(mPlugged, &QCheckBox::toggled, mControl, &MouseControl::setPlugged);
    connect(mBle, &QCheckBox::toggled, mControl, &MouseControl::setBleOn);

    mBattery = noFocus(new QSlider(Qt::Horizontal));
    mBattery->setObjectName(QStringLiteral("battery"));
    mBattery->setRange(kBatteryMin, kBatteryMax);
    mBattery->setSingleStep(10);
    mBattery->setPageStep(100);
    mBattery->setValue(kBatteryStart);
    // One report when the slider is let go, not one per pixel.
    mBattery->setTracking(false);
    mBatteryValue = new QLabel;
    const auto showBattery = [this](int value) {
        mBatteryValue->setText(QStringLiteral("%1 mV").arg(value));
    };
    showBattery(kBatteryStart);
    connect(mBattery, &QSlider::sliderMoved, this, showBattery);
    connect(mBattery, &QSlider::valueChanged, this, [this, showBattery](int value) {
        showBattery(value);
        mControl->setBattery(value);
    });
    mCharging = noFocus(new QCheckBox(QStringLiteral("Charging")));
    mCharging->setObjectName(QStringLiteral("charging"));
    connect(mCharging, &QCheckBox::toggled, mControl, &MouseControl::setCharging);

    auto* links = new QHBoxLayout;
    links->addWidget(mPlugged);
    links->addWidget(mBle);
    links->addStretch();
    auto* battery = new QHBoxLayout;
    battery->addWidget(new QLabel(QStringLiteral("Battery")));
    battery->addWidget(mBattery, 1);
    battery->addWidget(mBatteryValue);
    auto* low = new QHBoxLayout;
    const QString lowNames[] = {QStringLiteral("Low battery"), QStringLiteral("Very low"),
                                QStringLiteral("Shutting down")};
    const QString lowIds[] = {QStringLiteral("lowbat-1"), QStringLiteral("lowbat-2"),
                              QStringLiteral("shutdown")};
    for (int level = 1; level <= 3; ++level) {
        QPushButton* report = button(lowNames[level - 1], lowIds[level - 1]);
        connect(report, &QPushButton::clicked, this, [this, level] { mControl->lowBattery(level); });
        low->addWidget(report);
    }
    low->addWidget(mCharging);
    auto* column = new QVBoxLayout(box);
    column->addLayout(links);
    column->addLayout(battery);
    column->addLayout(low);
    return box;
}

QWidget* MouseWindow::buildSound()
{
    auto* box = new QGroupBox(QStringLiteral("The mouse hears"));
    mMicrophone = noFocus(new QRadioButton(QStringLiteral("The microphone")));
    mFile = noFocus(new QRadioButton(QStringLiteral("A WAV file")));
    auto* group = new QButtonGroup(box);
    group->addButton(mMicrophone);
    group->addButton(mFile);
    mMicrophone->setObjectName(QStringLiteral("microphone"));
    mFile->setObjectName(QStringLiteral("file"));
    QPushButton* choose = button(QStringLiteral("Choose…"), QStringLiteral("choose"));
    mHearing = new QLabel;
    mHearing->setObjectName(QStringLiteral("hearing"));
    mHearing->setWordWrap(true);
    connect(mMicrophone, &QRadioButton::clicked, this, [this] {
        mControl->useMicrophone();
        showSource();
    });
    connect(mFile, &QRadioButton::clicked, this, [this] {
        if (mControl->wavFile().isEmpty() || !mControl->useWavFile(mControl->wavFile())) {
            chooseFile();
        }
        showSource();
    });
    connect(choose, &QPushButton::clicked, this, &MouseWindow::chooseFile);
    auto* row = new QHBoxLayout;
    row->addWidget(mMicrophone);
    row->addWidget(mFile);
    row->addWidget(choose);
    row->addStretch();
    auto* column = new QVBoxLayout(box);
    column->addLayout(row);
    column->addWidget(mHearing);
    return box;
}

void MouseWindow::chooseFile()
{
    const QString path = QFileDialog::getOpenFileName(
        this, QStringLiteral("What the mouse hears"),
        mControl->wavFile().isEmpty() ? QDir::homePath() : QFileInfo(mControl->wavFile()).path(),
        QStringLiteral("WAV files, 16 kHz mono 16-bit (*.wav);;All files (*)"));
    if (!path.isEmpty()) {
        mControl->useWavFile(path);
    }
    showSource();
}

void MouseWindow::showSource()
{
    const bool file = mControl->source() == MouseControl::WavFile;
    mMicrophone->setChecked(!file);
    mFile->setChecked(file);
    // What went wrong, else what the mouse hears now.
    const QString problem = mControl->problem();
    mHearing->setStyleSheet(problem.isEmpty() ? QString() : QStringLiteral("color: #b00020;"));
    mHearing->setText(problem.isEmpty() ? mControl->sourceText() : problem);
}

void MouseWindow::refreshStatus()
{
    mStatus->setText(mControl->statusText());
    // The state may have been changed by a command from standard input.
    const QSignalBlocker plugBlock(mPlugged);
    const QSignalBlocker bleBlock(mBle);
    mPlugged->setChecked(mControl->isPlugged());
    mBle->setChecked(mControl->isBleOn());
}

void MouseWindow::placeAside()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) {
        return;
    }
    adjustSize();
    // The bottom left corner: Zorvane's questions and dialogs stand in the middle of the screen
    // (440 pixels wide at most), its strip and notices at the bottom right, and this window
    // stays on top of them all. Room for the window manager's frame, not known before it shows.
    constexpr int kFrameRoom = 32;
    const QRect area = screen->availableGeometry();
    move(area.left(), std::max(area.top(), area.bottom() - height() - kFrameRoom));
}

int MouseWindow::chosenKey() const
{
    return mKey->currentData().toInt();
}

QWidget* MouseWindow::control(const QString& name) const
{
    return findChild<QWidget*>(name);
}
