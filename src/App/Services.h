#pragma once

#include "WidgetPresenter/InputPresenter.h"
#include "WidgetPresenter/MainWindowPresenter.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class AppConfig;
class DeviceManager;
class MainWindow;
class QSocketNotifier;
class RecordManager;
class SpeechRecognizer;

// The program's parts as main() puts them together, and taken apart. build() makes the services
// in the order they depend on each other, with the backends the configuration names (the real
// receiver, Bluetooth and microphone, or the virtual mouse's), and routes the audio to the
// recognisers; later getInstance() calls find them made. Whatever ends the event loop (退出 in
// the console or the tray, the update hand-over, SIGTERM, SIGINT), the parts are then taken down
// in the reverse order of their making, each once. Singletons are never deleted, so their
// destructors never run: what they changed on the desktop (the keymap, the input method) and the
// threads they run are dealt with here.
class Services : public QObject {
    Q_OBJECT

public:
    using Stop = std::function<void()>;

    explicit Services(QObject* parent = nullptr);
    // Takes down what is still up and leaves the signals to their default.
    ~Services() override;

    // SIGTERM and SIGINT quit the event loop as 退出 does, instead of ending the process where it
    // stands. False when the signals cannot be watched (the process then dies on them as before).
    bool quitOnSignals();
    // Makes the services below the windows. Once, before the first window.
    void build(const AppConfig& config);
    // What build() made, as the console's and the voice panels' presenters take it.
    const MainWindowPresenter::Collaborators& console() const { return mConsole; }
    const InputPresenter::Collaborators& voice() const { return mVoice; }
    // Both roads of the audio (the mouse's Bluetooth frames, the receiver's microphone) reach every
    // recogniser, and the microphone runs while a recogniser asks for it.
    static void routeAudio(DeviceManager* device, RecordManager* recorder,
                           const std::vector<SpeechRecognizer*>& recognizers);
    // The parts of the running program behind the console, in the order they are made.
    void addProgram(MainWindow* window);
    // One part; its stop runs at shutDown(), after the stops of the parts added later.
    void add(const QString& name, Stop stop);

public slots:
    // Takes the parts down, last added first. Calls after the first do nothing.
    void shutDown();

private slots:
    void onSignal();

private:
    struct Part {
        QString name;
        Stop stop;
    };
    MainWindowPresenter::Collaborators mConsole;
    InputPresenter::Collaborators mVoice;
    std::vector<Part> mParts;
    std::unique_ptr<QSocketNotifier> mSignals;
};
