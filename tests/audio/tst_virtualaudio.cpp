#include "MouseSimulator.h"
#include "Recorder/RecordManager.h"
#include "Recorder/VirtualAudioSource.h"

#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtEndian>
#include <QtTest>

class TestVirtualAudio : public QObject {
    Q_OBJECT

private slots:
    void receiverSpeaksIntoTheRecorder();
};

void TestVirtualAudio::receiverSpeaksIntoTheRecorder()
{
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    const QString socket = dir + QStringLiteral("/mouse-sim-audio");
    // 0.3 s of a ramp as a WAV file.
    QByteArray pcm(16000 * 2 * 3 / 10, '\0');
    for (int i = 0; i < pcm.size() / 2; ++i) {
        qToLittleEndian(static_cast<qint16>(i), pcm.data() + 2 * i);
    }
    // The format chunk: PCM, mono, 16 kHz, 32000 bytes a second, 2-byte frames of 16 bits.
    QByteArray wav = "RIFF" + QByteArray(4, '\0') + "WAVEfmt " +
                     QByteArray::fromHex("1000000001000100803e0000007d000002001000") + "data" +
                     QByteArray(4, '\0');
    qToLittleEndian(static_cast<quint32>(pcm.size()), wav.data() + wav.size() - 4);
    wav.append(pcm);
    const QString wavPath = dir + QStringLiteral("/ramp.wav");
    {
        QFile file(wavPath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(wav);
    }

    MouseSimulator sim(QStringLiteral(MOUSE_SIM_BINARY), socket);
    QVERIFY(sim.waitReady());

    VirtualAudioSource source(socket);
    RecordManager recorder(&source);
    QByteArray heard;
    connect(&recorder, &RecordManager::signalAudioData, this, [&](const QByteArray& data) { heard += data; });
    QVERIFY(recorder.startRecorder());
    QVERIFY(sim.waitForLine(QStringLiteral("recording")));
    sim.command("audio " + wavPath.toLocal8Bit());
    QVERIFY(sim.waitForLine(QStringLiteral("audio done")));
    QTRY_COMPARE(heard.size(), pcm.size());
    QCOMPARE(heard, pcm);

    recorder.stopRecorder();
    QVERIFY(sim.waitForLine(QStringLiteral("not recording")));

    // Pulled out: the input is gone and a start fails.
    sim.command("unplug\necho unplugged");
    QVERIFY(sim.waitForLine(QStringLiteral("unplugged")));
    QTRY_VERIFY(source.inputNames().isEmpty());
    recorder.destroyRecorder();
    QVERIFY(!recorder.startRecorder());
}

QTEST_GUILESS_MAIN(TestVirtualAudio)
#include "tst_virtualaudio.moc"
