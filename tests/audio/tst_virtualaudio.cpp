#include "Recorder/RecordManager.h"
#include "Recorder/VirtualAudioSource.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtEndian>
#include <QtTest>

class TestVirtualAudio : public QObject {
    Q_OBJECT

private slots:
    void receiverSpeaksIntoTheRecorder();

private:
    bool waitForLine(QProcess& sim, const QString& line, int timeoutMs = 5000);
    QStringList mLines;
};

bool TestVirtualAudio::waitForLine(QProcess& sim, const QString& line, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs) {
        while (sim.canReadLine()) {
            mLines << QString::fromUtf8(sim.readLine()).trimmed();
        }
        if (mLines.removeOne(line)) {
            return true;
        }
        sim.waitForReadyRead(20);
        QCoreApplication::processEvents();
    }
    return false;
}

void TestVirtualAudio::receiverSpeaksIntoTheRecorder()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString socket = dir + QStringLiteral("/mouse-sim-audio");
    // 0.3 s of a ramp as a WAV file.
    QByteArray pcm(16000 * 2 * 3 / 10, '\0');
    for (int i = 0; i < pcm.size() / 2; ++i) {
        qToLittleEndian(static_cast<qint16>(i), pcm.data() + 2 * i);
    }
    QByteArray wav = "RIFF" + QByteArray(4, '\0') + "WAVEfmt " +
                     QByteArray::fromHex(
                         "10000000"
                         "0100"
                         "0100"
                         "803e0000"
                         "007d0000"
                         "0200"
                         "1000") +
                     "data";
    wav.append(static_cast<char>(pcm.size() & 0xFF));
    wav.append(static_cast<char>((pcm.size() >> 8) & 0xFF));
    wav.append(QByteArray(2, '\0'));
    wav.append(pcm);
    const QString wavPath = dir + QStringLiteral("/ramp.wav");
    {
        QFile file(wavPath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(wav);
    }

    QProcess sim;
    sim.start(QStringLiteral(MOUSE_SIM_BINARY), {socket});
    QVERIFY(waitForLine(sim, QStringLiteral("ready ") + socket));

    VirtualAudioSource source(socket);
    RecordManager recorder(&source);
    QByteArray heard;
    connect(&recorder, &RecordManager::signalAudioData, this, [&](const QByteArray& data) { heard += data; });
    QVERIFY(recorder.startRecorder());
    QVERIFY(waitForLine(sim, QStringLiteral("recording")));
    sim.write("audio " + wavPath.toLocal8Bit() + "\n");
    QVERIFY(waitForLine(sim, QStringLiteral("audio done")));
    QTRY_COMPARE(heard.size(), pcm.size());
    QCOMPARE(heard, pcm);

    recorder.stopRecorder();
    QVERIFY(waitForLine(sim, QStringLiteral("not recording")));

    // Pulled out: the input is gone and a start fails.
    sim.write("unplug\necho unplugged\n");
    QVERIFY(waitForLine(sim, QStringLiteral("unplugged")));
    QTRY_VERIFY(source.inputNames().isEmpty());
    recorder.destroyRecorder();
    QVERIFY(!recorder.startRecorder());

    sim.write("quit\n");
    QVERIFY(sim.waitForFinished(3000));
}

QTEST_GUILESS_MAIN(TestVirtualAudio)
#include "tst_virtualaudio.moc"
