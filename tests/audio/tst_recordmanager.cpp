#include "Recorder/QtAudioSource.h"
#include "Recorder/RecordManager.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

// Inputs by name; records what the recorder does with them.
class FakeAudioSource : public AudioSource {
public:
    QStringList names;
    QString opened;
    State current = Stopped;
    int starts = 0;
    int stops = 0;

    QStringList inputNames() override { return names; }
    bool open(const QString& name) override
    {
        opened = name;
        current = Stopped;
        return true;
    }
    bool isOpen() const override { return !opened.isEmpty(); }
    State state() const override { return current; }
    void start() override
    {
        ++starts;
        current = Active;
    }
    void stop() override
    {
        ++stops;
        current = Stopped;
    }
    void close() override { opened.clear(); }
    void speak(const QByteArray& pcm) { emit signalData(pcm); }
};

}  // namespace

class TestRecordManager : public QObject {
    Q_OBJECT

private slots:
    void onlyTheReceiversInput();
    void startStopAndDestroy();
    void format();
};

void TestRecordManager::onlyTheReceiversInput()
{
    QCOMPARE(RecordManager::chooseInput(
                 {QStringLiteral("default"), QStringLiteral("Built-in Audio Analog Stereo")}),
             QString());
    QCOMPARE(
        RecordManager::chooseInput({QStringLiteral("default"), QStringLiteral("USB Pelnica Receiver Mono"),
                                    QStringLiteral("Sorbeta")}),
        QStringLiteral("USB Pelnica Receiver Mono"));
    QCOMPARE(RecordManager::chooseInput({QStringLiteral("pelnica lower case")}), QString());  // case counts

    FakeAudioSource source;
    source.names = QStringList{QStringLiteral("default"), QStringLiteral("Webcam Microphone")};
    RecordManager recorder(&source);
    QSignalSpy audio(&recorder, &RecordManager::signalAudioData);
    QVERIFY(!recorder.startRecorder());
    QCOMPARE(source.starts, 0);
    QVERIFY(source.opened.isEmpty());
    QCOMPARE(audio.size(), 0);
}

void TestRecordManager::startStopAndDestroy()
{
    FakeAudioSource source;
    source.names = QStringList{QStringLiteral("default"), QStringLiteral("Sorbeta Receiver")};
    RecordManager recorder(&source);
    QSignalSpy audio(&recorder, &RecordManager::signalAudioData);
    QVERIFY(recorder.startRecorder());
    QCOMPARE(source.opened, QStringLiteral("Sorbeta Receiver"));
    QCOMPARE(source.starts, 1);
    QVERIFY(recorder.startRecorder());  // already running: left alone
    QCOMPARE(source.starts, 1);
    source.speak(QByteArray(640, '\x01'));
    QCOMPARE(audio.size(), 1);
    recorder.stopRecorder();
    QCOMPARE(source.stops, 1);
    QVERIFY(source.isOpen());  // kept for the next start
    // A failed input is made again.
    source.current = AudioSource::Failed;
    QVERIFY(recorder.startRecorder());
    QCOMPARE(source.starts, 2);
    recorder.destroyRecorder();
    QVERIFY(!source.isOpen());
}

void TestRecordManager::format()
{
    const QAudioFormat f = QtAudioSource::buildAudioFormat();
    QCOMPARE(f.sampleRate(), 16000);
    QCOMPARE(f.channelCount(), 1);
    QCOMPARE(f.sampleSize(), 16);
    QCOMPARE(f.sampleType(), QAudioFormat::SignedInt);
    QCOMPARE(f.byteOrder(), QAudioFormat::LittleEndian);
    QCOMPARE(f.codec(), QStringLiteral("audio/pcm"));
}

QTEST_GUILESS_MAIN(TestRecordManager)
#include "tst_recordmanager.moc"
