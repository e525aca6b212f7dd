#pragma once

#include "Recorder/AudioSource.h"

#include <QAudioDeviceInfo>
#include <QAudioFormat>
#include <QAudioInput>

#include <memory>

// The system's audio inputs through QAudioInput.
class QtAudioSource : public AudioSource {
    Q_OBJECT

public:
    static constexpr int kMaxRead = 8192;

    explicit QtAudioSource(QObject* parent = nullptr);
    ~QtAudioSource() override;

    QStringList inputNames() override;
    bool open(const QString& name) override;
    bool isOpen() const override;
    State state() const override;
    void start() override;
    void stop() override;
    void close() override;

    static QAudioFormat buildAudioFormat();

private:
    void initializeAudio(const QAudioDeviceInfo& device);
    void onReadyRead();

    std::unique_ptr<QAudioInput> mInput;
    QIODevice* mDevice = nullptr;
};
