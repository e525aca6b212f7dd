#include "DeviceClient.h"
#include "MicrophoneSource.h"
#include "MouseControl.h"
#include "MouseWindow.h"
#include "SimDevice.h"
#include "SimMouse.h"
#include "SimScript.h"
#include "SimServer.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QMouseEvent>
#include <QScreen>
#include <QSlider>
#include <QStandardPaths>
#include <QtEndian>
#include <QtTest>

#include <memory>

namespace {

using Channel = VirtualDeviceConnection::Channel;

QByteArray record(const st_small_base_com_msg& msg)
{
    return msg.toByteArray();
}

// A WAV file of the receiver's format (or another, to be refused) holding a ramp.
QByteArray wav(const QByteArray& pcm, int rate = 16000, int channels = 1)
{
    QByteArray bytes =
        "RIFF" + QByteArray(4, '\0') + "WAVEfmt " + QByteArray(20, '\0') + "data" + QByteArray(4, '\0');
    qToLittleEndian<quint32>(16, bytes.data() + 16);
    qToLittleEndian<quint16>(1, bytes.data() + 20);
    qToLittleEndian<quint16>(static_cast<quint16>(channels), bytes.data() + 22);
    qToLittleEndian<quint32>(static_cast<quint32>(rate), bytes.data() + 24);
    qToLittleEndian<quint32>(static_cast<quint32>(rate * channels * 2), bytes.data() + 28);
    qToLittleEndian<quint16>(static_cast<quint16>(channels * 2), bytes.data() + 32);
    qToLittleEndian<quint16>(16, bytes.data() + 34);
    qToLittleEndian<quint32>(static_cast<quint32>(pcm.size()), bytes.data() + 40);
    return bytes + pcm;
}

QByteArray ramp(int milliseconds)
{
    QByteArray pcm(milliseconds * 32, '\0');
    for (int i = 0; i < pcm.size() / 2; ++i) {
        qToLittleEndian(static_cast<qint16>(i * 7), pcm.data() + 2 * i);
    }
    return pcm;
}

}  // namespace

// The control window over the real socket: what its buttons make the mouse send, as the
// application's end of the socket receives it.
class TestMouseWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void talkButtonsHoldTheirKey();
    void keyButtonsClickTheChosenKey();
    void wavFileIsSpokenWhileTheKeyIsHeld();
    void wavFileGoesOverBluetoothAsSbcPackets();
    void foreignWavIsRefused();
    void missingMicrophoneIsToldAndTheKeyStillWorks();
    void receiverAndBluetoothFollowWindowAndCommands();
    void batteryReports();

private:
    QWidget* control(const QString& name) { return mWindow->control(name); }
    void press(const QString& name);
    void release(const QString& name, const QPoint& at = QPoint(4, 4));
    QString writeFile(const QString& name, const QByteArray& bytes);
    // The client opens the receiver, as the application does before anything else.
    void openReceiver();

    QString mDir;
    QString mOutput;
    std::unique_ptr<QTextStream> mOut;
    std::unique_ptr<SimMouse> mMouse;
    std::unique_ptr<MicrophoneSource> mMicrophone;
    std::unique_ptr<MouseControl> mControl;
    std::unique_ptr<MouseWindow> mWindow;
    std::unique_ptr<DeviceClient> mClient;
};

void TestMouseWindow::initTestCase()
{
    // No sound server: the machine has no microphone, whatever the test host has.
    qputenv("PULSE_SERVER", "unix:/nonexistent/socket");
    mDir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

void TestMouseWindow::init()
{
    mOutput.clear();
    mOut = std::make_unique<QTextStream>(&mOutput);
    SimMouse::Options options;
    options.socketPath = mDir + QStringLiteral("/mouse");
    mMouse = std::make_unique<SimMouse>(options, mOut.get());
    mMicrophone = std::make_unique<MicrophoneSource>();
    mControl = std::make_unique<MouseControl>(mMouse.get(), mMicrophone.get());
    mWindow = std::make_unique<MouseWindow>(mControl.get());
    QString error;
    QVERIFY2(mMouse->start(&error), qPrintable(error));
    mWindow->show();
    mClient = std::make_unique<DeviceClient>();
    QVERIFY(mClient->connectTo(options.socketPath));
    QTRY_VERIFY(mControl->statusText().contains(QLatin1String("Zorvane connected")));
}

void TestMouseWindow::cleanup()
{
    mClient.reset();
    mWindow.reset();
    mControl.reset();
    mMicrophone.reset();
    mMouse.reset();
}

void TestMouseWindow::press(const QString& name)
{
    QTest::mousePress(control(name), Qt::LeftButton, Qt::NoModifier, QPoint(4, 4));
}

void TestMouseWindow::release(const QString& name, const QPoint& at)
{
    QTest::mouseRelease(control(name), Qt::LeftButton, Qt::NoModifier, at);
}

QString TestMouseWindow::writeFile(const QString& name, const QByteArray& bytes)
{
    const QString path = mDir + QLatin1Char('/') + name;
    QFile file(path);
    file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    file.write(bytes);
    return path;
}

void TestMouseWindow::openReceiver()
{
    mClient->send(Channel::HidOpen, "sim:receiver:vendor");
    QTRY_VERIFY(mOutput.contains(QLatin1String("open\n")));
}

void TestMouseWindow::talkButtonsHoldTheirKey()
{
    // Always on top, it stays clear of Zorvane's strip and notices (bottom right) and of its
    // dialogs, 460 pixels wide at most in the middle of a 1440 pixel screen.
    mWindow->placeAside();
    QCOMPARE(mWindow->x(), mWindow->screen()->availableGeometry().left());
    QVERIFY2(mWindow->width() <= (1440 - 460) / 2, qPrintable(QString::number(mWindow->width())));
    openReceiver();
    for (const auto& [name, key] :
         {std::pair{QStringLiteral("dictate"), 6}, {QStringLiteral("command"), 5}}) {
        press(name);
        QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(key, 1))));
        // The pointer wanders off the button while it is held: the key stays down until the
        // button is let go, wherever that happens.
        QMouseEvent away(QEvent::MouseMove, QPointF(-200, -200), QPointF(-200, -200), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(control(name), &away);
        QTest::qWait(50);
        QVERIFY(mClient->drain(Channel::HidInput).isEmpty());
        release(name, QPoint(-200, -200));
        QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(key, 0))));
    }

    // One talk key at a time: the other button does nothing while the first is held.
    press(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 1))));
    press(QStringLiteral("command"));
    release(QStringLiteral("command"));
    release(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 0))));
    QTest::qWait(50);
    QVERIFY(mClient->drain(Channel::HidInput).isEmpty());
}

void TestMouseWindow::keyButtonsClickTheChosenKey()
{
    openReceiver();
    auto* key = qobject_cast<QComboBox*>(control(QStringLiteral("key")));
    QVERIFY(key != nullptr);
    QCOMPARE(key->currentText(), QStringLiteral("6"));
    key->setCurrentIndex(key->findText(QStringLiteral("4")));
    qobject_cast<QAbstractButton*>(control(QStringLiteral("double-click")))->click();
    for (int status : {1, 0, 1, 0}) {
        QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(4, status))));
    }
    // A long press holds the key about a second.
    QElapsedTimer held;
    qobject_cast<QAbstractButton*>(control(QStringLiteral("long-press")))->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(4, 1))));
    held.start();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(4, 0)), 3000));
    QVERIFY2(held.elapsed() >= 900, qPrintable(QString::number(held.elapsed())));
}

void TestMouseWindow::wavFileIsSpokenWhileTheKeyIsHeld()
{
    const QByteArray pcm = ramp(300);
    QVERIFY(mControl->useWavFile(writeFile(QStringLiteral("ramp.wav"), wav(pcm))));
    QCOMPARE(mControl->source(), MouseControl::WavFile);
    openReceiver();
    mClient->send(Channel::AudioStart, mMouse->server()->audioInputName().toUtf8());
    QTRY_VERIFY(mControl->statusText().contains(QLatin1String("recording")));

    press(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 1))));
    QTRY_VERIFY(mOutput.contains(QLatin1String("audio done")));
    QCOMPARE(mClient->drain(Channel::AudioPcm), pcm);
    release(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 0))));

    // Let go early, the rest of the file is not spoken.
    press(QStringLiteral("dictate"));
    QTest::qWait(100);
    release(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 0))));
    const int heard = mClient->drain(Channel::AudioPcm).size();
    QVERIFY2(heard > 0 && heard < pcm.size(), qPrintable(QString::number(heard)));
    QTest::qWait(100);
    QVERIFY(mClient->drain(Channel::AudioPcm).isEmpty());
}

void TestMouseWindow::wavFileGoesOverBluetoothAsSbcPackets()
{
    QVERIFY(mControl->useWavFile(writeFile(QStringLiteral("ramp.wav"), wav(ramp(200)))));
    qobject_cast<QAbstractButton*>(control(QStringLiteral("ble")))->click();
    const QByteArray connect = SimServer::bleAddress().toUtf8() + "\n1";
    mClient->send(Channel::BleConnect, connect);
    QVERIFY(mClient->takePayload(Channel::BleLinkUp, connect));
    mClient->send(Channel::BleEnableNotify, QByteArray());
    QTRY_VERIFY(mControl->statusText().contains(QLatin1String("Bluetooth attached")));

    press(QStringLiteral("dictate"));
    DeviceClient::Frame frame;
    QVERIFY(mClient->take(Channel::BleNotify, &frame));
    QCOMPARE(frame.payload, SimDevice::keyEvent(6, 1).toByteArray(20));
    QTRY_VERIFY(mOutput.contains(QLatin1String("audio done")));
    release(QStringLiteral("dictate"));
    // Group D: fragments 0, 1 and 2 of 20 bytes per two SBC frames; 200 ms is 25 frames.
    int packets = 0;
    while (mClient->take(Channel::BleNotify, &frame, 300)) {
        if ((frame.payload.at(0) & 0x1F) == 14) {
            QCOMPARE(frame.payload.size(), 20);
            QCOMPARE((static_cast<quint8>(frame.payload.at(0)) >> 5), packets % 3);
            ++packets;
        }
    }
    QCOMPARE(packets, 12 * 3);
    QVERIFY(mClient->drain(Channel::AudioPcm).isEmpty());
}

void TestMouseWindow::foreignWavIsRefused()
{
    auto* problem = qobject_cast<QLabel*>(control(QStringLiteral("hearing")));
    QVERIFY(!mControl->useWavFile(writeFile(QStringLiteral("cd.wav"), wav(ramp(100), 44100, 2))));
    QVERIFY(problem->text().contains(QLatin1String("16 kHz mono")));
    QVERIFY(!mControl->useWavFile(mDir + QStringLiteral("/missing.wav")));
    QVERIFY(problem->text().contains(QLatin1String("cannot read")));
    QCOMPARE(mControl->source(), MouseControl::Microphone);

    // From standard input the same file is refused with the same reason.
    mMouse->script()->append(QStringLiteral("audio ") + mDir + QStringLiteral("/cd.wav"));
    QVERIFY(mOutput.contains(QLatin1String("error: ")));
    QVERIFY(mOutput.contains(QLatin1String("not 16 kHz mono")));
}

void TestMouseWindow::missingMicrophoneIsToldAndTheKeyStillWorks()
{
    if (!mMicrophone->deviceName().isEmpty()) {
        QSKIP("this audio back end offers an input without a sound server");
    }
    openReceiver();
    press(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 1))));
    QVERIFY(qobject_cast<QLabel*>(control(QStringLiteral("hearing")))
                ->text()
                .contains(QLatin1String("microphone")));
    release(QStringLiteral("dictate"));
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::keyEvent(6, 0))));
}

void TestMouseWindow::receiverAndBluetoothFollowWindowAndCommands()
{
    openReceiver();
    auto* plug = qobject_cast<QAbstractButton*>(control(QStringLiteral("plug")));
    auto* ble = qobject_cast<QAbstractButton*>(control(QStringLiteral("ble")));
    auto* status = qobject_cast<QLabel*>(control(QStringLiteral("status")));
    QVERIFY(plug->isChecked());
    mClient->clear();

    plug->click();
    QVERIFY(mClient->takePayload(Channel::HidGone, QByteArray()));
    QVERIFY(mClient->takePayload(Channel::HidInterfaces, QByteArray(1, '\0')));
    QVERIFY(mClient->takePayload(Channel::AudioInputs, QByteArray()));
    QVERIFY(status->text().contains(QLatin1String("Receiver pulled out")));

    // A command from standard input moves the window's switches along.
    mMouse->script()->append(QStringLiteral("plug"));
    QVERIFY(plug->isChecked());
    QVERIFY(mClient->takePayload(Channel::HidInterfaces, mMouse->server()->interfacesPayload()));
    QVERIFY(status->text().contains(QLatin1String("Receiver plugged in")));

    ble->click();
    QVERIFY(mClient->takePayload(Channel::BleSystemDevices, SimServer::bleAddress().toUtf8()));
    QVERIFY(status->text().contains(QLatin1String("Bluetooth on")));
    mMouse->script()->append(QStringLiteral("ble-off"));
    QVERIFY(!ble->isChecked());
    QVERIFY(mClient->takePayload(Channel::BleSystemDevices, QByteArray()));
    QVERIFY(status->text().contains(QLatin1String("Bluetooth off")));

    mClient.reset();
    QTRY_VERIFY(status->text().contains(QLatin1String("Zorvane not connected")));
}

void TestMouseWindow::batteryReports()
{
    openReceiver();
    auto* battery = qobject_cast<QSlider*>(control(QStringLiteral("battery")));
    battery->setValue(3420);
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::batteryValue(3420))));
    qobject_cast<QAbstractButton*>(control(QStringLiteral("lowbat-1")))->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::lowBattery(1, false))));
    qobject_cast<QAbstractButton*>(control(QStringLiteral("lowbat-2")))->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::lowBattery(2, false))));
    qobject_cast<QAbstractButton*>(control(QStringLiteral("shutdown")))->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::lowBattery(2, true))));

    auto* charging = qobject_cast<QAbstractButton*>(control(QStringLiteral("charging")));
    charging->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::powerPlug(true))));
    // The device answers the charger question as it is now.
    QVERIFY(mMouse->device()->state().powerPlugged);
    charging->click();
    QVERIFY(mClient->takePayload(Channel::HidInput, record(SimDevice::powerPlug(false))));
}

QTEST_MAIN(TestMouseWindow)
#include "tst_mousewindow.moc"
