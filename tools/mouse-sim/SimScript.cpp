#include "SimScript.h"

#include "SbcPacketizer.h"
#include "SimAudioStream.h"
#include "SimDevice.h"
#include "SimServer.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <unistd.h>

namespace {

constexpr int kDefaultClickHoldMs = 100;
constexpr int kDefaultDoubleClickGapMs = 100;
constexpr int kDefaultLongPressMs = 1000;

int argInt(const QStringList& words, int index, int fallback, bool* ok)
{
    if (words.size() <= index) {
        return fallback;
    }
    bool good = false;
    const int value = words.at(index).toInt(&good);
    *ok = *ok && good;
    return value;
}

}  // namespace

SimScript::SimScript(SimDevice* device, SimServer* server, SimAudioStream* audio, QTextStream* out,
                     QObject* parent)
    : QObject(parent), mDevice(device), mServer(server), mAudio(audio), mOut(out)
{
    connect(mServer, &SimServer::signalOutput, this,
            [this](const QByteArray& bytes) { *mOut << "out " << bytes.toHex(' ') << Qt::endl; });
    connect(mServer, &SimServer::signalOpened, this,
            [this](bool open) { *mOut << (open ? "open" : "closed") << Qt::endl; });
    connect(mServer, &SimServer::signalRecording, this,
            [this](bool recording) { *mOut << (recording ? "recording" : "not recording") << Qt::endl; });
    connect(mServer, &SimServer::signalBleAttached, this,
            [this](bool attached) { *mOut << (attached ? "ble attached" : "ble detached") << Qt::endl; });
    connect(mAudio, &SimAudioStream::signalDone, this, [this] { *mOut << "audio done" << Qt::endl; });
    connect(mAudio, &SimAudioStream::signalCut, this, [this] { *mOut << "audio cut" << Qt::endl; });
}

SimScript::~SimScript() = default;

QByteArray SimScript::loadPcm(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1").arg(path);
        return QByteArray();
    }
    const QByteArray bytes = file.readAll();
    if (!bytes.startsWith("RIFF") || bytes.mid(8, 4) != "WAVE") {
        if (bytes.isEmpty()) {
            *error = QStringLiteral("%1 is empty").arg(path);
        }
        return bytes;  // raw 16 kHz mono 16-bit PCM
    }
    const auto le = [&bytes](int at, int size) {
        quint32 value = 0;
        for (int i = size - 1; i >= 0; --i) {
            value = (value << 8) | static_cast<quint8>(bytes.at(at + i));
        }
        return value;
    };
    // The receiver's format only: another one would be heard as noise.
    bool formatOk = false;
    int at = 12;
    while (at + 8 <= bytes.size()) {
        const QByteArray id = bytes.mid(at, 4);
        const quint32 size = le(at + 4, 4);
        if (id == "fmt " && size >= 16 && at + 24 <= bytes.size()) {
            const quint32 tag = le(at + 8, 2);
            formatOk = (tag == 1 || tag == 0xFFFE) && le(at + 10, 2) == 1 && le(at + 12, 4) == 16000 &&
                       le(at + 22, 2) == 16;
        } else if (id == "data") {
            if (!formatOk) {
                break;
            }
            const QByteArray pcm = bytes.mid(at + 8, static_cast<int>(size));
            if (pcm.isEmpty()) {
                *error = QStringLiteral("%1 holds no audio").arg(path);
            }
            return pcm;
        }
        if (size > static_cast<quint32>(bytes.size())) {
            break;
        }
        at += 8 + static_cast<int>(size) + static_cast<int>(size & 1);
    }
    *error =
        QStringLiteral("%1 is not 16 kHz mono 16-bit PCM (sox IN -r 16000 -c 1 -b 16 OUT.wav converts it)")
            .arg(path);
    return QByteArray();
}

QString SimScript::help()
{
    return QStringLiteral(
               "Commands (one per line, from --script and then standard input; '#' starts a comment):\n"
               "  plug | unplug                 plug the receiver in or pull it out\n"
               "  press KEY | release KEY       a key event (voice keys are 3 to 6)\n"
               "  click KEY [HOLD_MS]           press, hold (default 100 ms), release\n"
               "  double-click KEY [GAP_MS]     two 80 ms clicks with a gap (default 100 ms)\n"
               "  long-press KEY [HOLD_MS]      press, hold (default 1000 ms), release\n"
               "  wait MS                       hold the following commands back\n"
               "  battery VALUE                 battery value event\n"
               "  lowbat 1 | lowbat 2           low battery, level 1 or 2\n"
               "  shutdown                      low battery level 2 with the shutdown bit\n"
               "  dpi-key LEVEL                 the resolution key was pressed on the mouse\n"
               "  lamplight VALUE               the lamplight was changed on the mouse\n"
               "  power-plug 0|1                charger unplugged or plugged in\n"
               "  active 0|1                    the mouse woke up or went to sleep\n"
               "  ble-on | ble-off              the mouse connects to the system over Bluetooth, or leaves\n"
               "                                (an attached application loses the link)\n"
               "  audio FILE [GROUP]            speak FILE (16 kHz mono 16-bit WAV or raw PCM) in real "
               "time:\n"
               "                                as SBC packets of GROUP (A, A64, A30, B, C, D; default D)\n"
               "                                when attached over Bluetooth, else into the receiver's\n"
               "                                audio input while it is recording\n"
               "  ble-lose [COUNT]              the next COUNT (default 1) Bluetooth audio packets are lost\n"
               "  set FIELD VALUE               change the device state; fields:\n"
               "      %1\n"
               "      levels takes V1,V2,V3 or 'none'; customer 6 and flash ids 16 hex digits\n"
               "  echo TEXT                     print TEXT (to synchronise a driving script)\n"
               "  quit                          leave\n"
               "Output: 'ready PATH' once listening, 'open'/'closed' as the application opens the\n"
               "receiver, 'recording'/'not recording' as it starts and stops its audio input, 'ble\n"
               "attached'/'ble detached' as it attaches over Bluetooth, 'out HEX' for every record the\n"
               "application writes, 'audio done' when a file has been spoken ('audio cut' when the link\n"
               "drops first), 'error: ...' for a bad\n"
               "command.\n")
        .arg(SimDevice::fieldNames().join(QLatin1Char(' ')));
}

void SimScript::append(const QString& line)
{
    mQueue.append(line);
    if (!mWaiting) {
        runNext();
    }
}

void SimScript::append(const QStringList& lines)
{
    mQueue.append(lines);
    if (!mWaiting) {
        runNext();
    }
}

void SimScript::readFrom(int fd)
{
    delete mInput;
    mInput = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(mInput, &QSocketNotifier::activated, this, &SimScript::readInput);
}

void SimScript::readInput()
{
    char chunk[4096];
    const ssize_t n = ::read(static_cast<int>(mInput->socket()), chunk, sizeof(chunk));
    if (n <= 0) {
        mInput->setEnabled(false);
        return;
    }
    mInputPending.append(chunk, static_cast<int>(n));
    int end = 0;
    while ((end = mInputPending.indexOf('\n')) >= 0) {
        append(QString::fromLocal8Bit(mInputPending.left(end)));
        mInputPending.remove(0, end + 1);
    }
}

void SimScript::runNext()
{
    while (!mQueue.isEmpty()) {
        const int waitMs = execute(mQueue.takeFirst());
        if (waitMs > 0) {
            mWaiting = true;
            QTimer::singleShot(waitMs, Qt::PreciseTimer, this, [this] {
                mWaiting = false;
                runNext();
            });
            return;
        }
    }
}

int SimScript::execute(const QString& rawLine)
{
    const QString line = rawLine.section(QLatin1Char('#'), 0, 0).trimmed();
    if (line.isEmpty()) {
        return 0;
    }
    const QStringList w = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QString& cmd = w.first();
    bool ok = true;
    auto fail = [this, &line](const char* why) {
        *mOut << "error: " << why << ": " << line << Qt::endl;
        return 0;
    };
    auto send = [this](const st_small_base_com_msg& msg) { mServer->sendRecord(msg); };
    auto expand = [this](const QStringList& steps) {
        // Runs before whatever was queued after this command.
        mQueue = steps + mQueue;
    };

    if (cmd == QLatin1String("plug") || cmd == QLatin1String("unplug")) {
        mServer->setPlugged(cmd == QLatin1String("plug"));
    } else if (cmd == QLatin1String("ble-on") || cmd == QLatin1String("ble-off")) {
        mServer->setBleConnected(cmd == QLatin1String("ble-on"));
    } else if (cmd == QLatin1String("press") || cmd == QLatin1String("release")) {
        const int key = argInt(w, 1, -1, &ok);
        if (!ok || key < 0 || key > 255) {
            return fail("expected a key number");
        }
        send(SimDevice::keyEvent(key, cmd == QLatin1String("press") ? 1 : 0));
    } else if (cmd == QLatin1String("click") || cmd == QLatin1String("long-press")) {
        const int key = argInt(w, 1, -1, &ok);
        const int hold =
            argInt(w, 2, cmd == QLatin1String("click") ? kDefaultClickHoldMs : kDefaultLongPressMs, &ok);
        if (!ok || key < 0 || hold < 0) {
            return fail("expected a key number and a hold time");
        }
        const QString k = QString::number(key);
        expand({QStringLiteral("press ") + k, QStringLiteral("wait %1").arg(hold),
                QStringLiteral("release ") + k});
    } else if (cmd == QLatin1String("double-click")) {
        const int key = argInt(w, 1, -1, &ok);
        const int gap = argInt(w, 2, kDefaultDoubleClickGapMs, &ok);
        if (!ok || key < 0 || gap < 0) {
            return fail("expected a key number and a gap");
        }
        const QString k = QString::number(key);
        expand({QStringLiteral("click ") + k + QStringLiteral(" 80"), QStringLiteral("wait %1").arg(gap),
                QStringLiteral("click ") + k + QStringLiteral(" 80")});
    } else if (cmd == QLatin1String("wait")) {
        const int ms = argInt(w, 1, -1, &ok);
        if (!ok || ms < 0) {
            return fail("expected milliseconds");
        }
        return ms;
    } else if (cmd == QLatin1String("battery")) {
        const int value = argInt(w, 1, -1, &ok);
        if (!ok || value < 0 || value > 0xFFFF) {
            return fail("expected a value");
        }
        send(SimDevice::batteryValue(value));
    } else if (cmd == QLatin1String("lowbat")) {
        const int level = argInt(w, 1, -1, &ok);
        if (!ok || level < 0 || level > 0xFFFF) {
            return fail("expected a level");
        }
        send(SimDevice::lowBattery(level, false));
    } else if (cmd == QLatin1String("shutdown")) {
        send(SimDevice::lowBattery(2, true));
    } else if (cmd == QLatin1String("dpi-key") || cmd == QLatin1String("lamplight")) {
        const int value = argInt(w, 1, -1, &ok);
        if (!ok || value < 0 || value > 255) {
            return fail("expected a value");
        }
        send(cmd == QLatin1String("dpi-key") ? SimDevice::dpiKey(value) : SimDevice::lamplightChange(value));
    } else if (cmd == QLatin1String("power-plug") || cmd == QLatin1String("active")) {
        const int value = argInt(w, 1, -1, &ok);
        if (!ok || (value != 0 && value != 1)) {
            return fail("expected 0 or 1");
        }
        if (cmd == QLatin1String("power-plug")) {
            mDevice->state().powerPlugged = value == 1;
            send(SimDevice::powerPlug(value == 1));
        } else {
            send(SimDevice::activeNotice(value == 1));
        }
    } else if (cmd == QLatin1String("set")) {
        if (w.size() != 3 || !mDevice->set(w.at(1), w.at(2))) {
            return fail("unknown field or bad value");
        }
    } else if (cmd == QLatin1String("audio")) {
        SbcPacketizer::Group group = SbcPacketizer::GroupD;
        if (w.size() < 2 || w.size() > 3 ||
            (w.size() == 3 && !SbcPacketizer::groupFromName(w.at(2), &group))) {
            return fail("expected a WAV or PCM file and a group A, A64, A30, B, C or D");
        }
        QString error;
        const QByteArray pcm = loadPcm(w.at(1), &error);
        if (pcm.isEmpty()) {
            *mOut << "error: " << error << Qt::endl;
            return 0;
        }
        mAudio->play(pcm, group);
    } else if (cmd == QLatin1String("ble-lose")) {
        const int count = argInt(w, 1, 1, &ok);
        if (!ok || count < 0) {
            return fail("expected a packet count");
        }
        mAudio->losePackets(count);
    } else if (cmd == QLatin1String("echo")) {
        *mOut << line.mid(5) << Qt::endl;
    } else if (cmd == QLatin1String("quit")) {
        emit signalQuit(0);
    } else if (!mExtension || !mExtension(w)) {
        return fail("unknown command");
    }
    return 0;
}
