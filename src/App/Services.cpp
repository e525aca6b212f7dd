#include "App/Services.h"

#include "BaiduSpeech/BaiduSpeech.h"
#include "Database/DBManager.h"
#include "Hid/BLEManager.h"
#include "Hid/DeviceManager.h"
#include "Hid/HidApiBackend.h"
#include "Hid/HidManager.h"
#include "Hid/HookManager.h"
#include "Hid/QtBleTransport.h"
#include "Hid/VirtualBleTransport.h"
#include "Hid/VirtualHidBackend.h"
#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "IFlySpeech/IFlyWebSpeech.h"
#include "Platform/AppAutoRunUtils.h"
#include "Platform/InputBackend.h"
#include "Platform/InputBackendChoice.h"
#include "Platform/InternetUtils.h"
#include "Platform/SleepNotification.h"
#include "Platform/WinUtils.h"
#include "Recorder/QtAudioSource.h"
#include "Recorder/RecordManager.h"
#include "Recorder/VirtualAudioSource.h"
#include "SpeechRec/SpeechRecognizer.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/AppConfig.h"
#include "Utils/Logging.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/Panels/InputDialog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSocketNotifier>
#include <QThread>

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

// The signal handler's only way out: one byte per signal, read by the event loop.
int gSignalPipe[2] = {-1, -1};

void onTerminationSignal(int number)
{
    const int saved = errno;
    const unsigned char byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = ::write(gSignalPipe[1], &byte, 1);
    errno = saved;
}

constexpr int kSignals[] = {SIGTERM, SIGINT};

// The names of the process's threads but the calling one: a thread of ours still there at the
// end of the quit was not stopped.
QStringList otherThreads()
{
    QStringList names;
    const QString self = QString::number(static_cast<long>(::syscall(SYS_gettid)));
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(tasks.filePath(task) + QStringLiteral("/comm"));
        if (task != self && comm.open(QIODevice::ReadOnly)) {
            names << QString::fromUtf8(comm.readAll().trimmed());
        }
    }
    names.sort();
    return names;
}

// The same once it has settled: a QThread's wait() returns before its kernel thread is gone.
QStringList threadsLeft()
{
    QStringList names = otherThreads();
    for (int i = 0; i < 40; ++i) {
        QThread::msleep(5);
        const QStringList now = otherThreads();
        if (now == names) {
            break;
        }
        names = now;
    }
    return names;
}

}  // namespace

Services::Services(QObject* parent) : QObject(parent) {}

Services::~Services()
{
    shutDown();
    if (mSignals) {
        for (const int number : kSignals) {
            ::signal(number, SIG_DFL);
        }
        mSignals.reset();
        ::close(gSignalPipe[0]);
        ::close(gSignalPipe[1]);
        gSignalPipe[0] = gSignalPipe[1] = -1;
    }
}

bool Services::quitOnSignals()
{
    if (mSignals || gSignalPipe[0] >= 0) {
        return mSignals != nullptr;
    }
    if (::pipe2(gSignalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        qCWarning(lcApp) << "no pipe for the termination signals:" << std::strerror(errno);
        return false;
    }
    mSignals = std::make_unique<QSocketNotifier>(gSignalPipe[0], QSocketNotifier::Read);
    connect(mSignals.get(), &QSocketNotifier::activated, this, &Services::onSignal);
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int number : kSignals) {
        ::sigaction(number, &action, nullptr);
    }
    return true;
}

void Services::build(const AppConfig& config)
{
    // Typing into other windows: the backend the session calls for (X11, or a Wayland virtual
    // keyboard).
    WinUtils::getInstance(InputBackendChoice::create());

    // The device: its two links and the receiver's microphone, real or the virtual mouse's.
    const QString virtualMouse = config.deviceVirtualSocket();
    std::unique_ptr<HidBackend> hidBackend;
    std::unique_ptr<BleTransport> bleTransport;
    std::unique_ptr<AudioSource> microphone;
    if (virtualMouse.isEmpty()) {
        hidBackend = std::make_unique<HidApiBackend>();
        bleTransport = std::make_unique<QtBleTransport>();
        microphone = std::make_unique<QtAudioSource>();
    } else {
        qCInfo(lcDeviceHid) << "using the virtual receiver at" << virtualMouse;
        hidBackend = std::make_unique<VirtualHidBackend>(virtualMouse);
        bleTransport = std::make_unique<VirtualBleTransport>(virtualMouse);
        microphone = std::make_unique<VirtualAudioSource>(virtualMouse);
    }
    HidManager* hid = HidManager::getInstance(std::move(hidBackend));
    BLEManager* ble = BLEManager::getInstance(std::move(bleTransport), std::make_unique<SleepNotification>());
    RecordManager* recorder = RecordManager::getInstance(std::move(microphone));
    DeviceManager* device = DeviceManager::getInstance(hid, ble);

    // The stores and the network under the recognisers and the console: the command words, the
    // backend's client, the network watch.
    DBManager* db = DBManager::getInstance();
    HttpManager* http = HttpManager::getInstance();
    InternetUtils* internet = InternetUtils::getInstance();

    BaiduSpeech* baidu = BaiduSpeech::getInstance();
    IFlyWebSpeech* ifly = IFlyWebSpeech::getInstance();
    ifly->setDeviceType([device] { return device->getDeviceType(); });
    routeAudio(device, recorder, {baidu, ifly});

    // What the presenters act through: the key hook, the login entry, translation, reading aloud.
    HookManager* hook = HookManager::getInstance();
    AppAutoRunUtils* autoRun = AppAutoRunUtils::getInstance();
    BaiduTranslate* translator = BaiduTranslate::getInstance();
    SpeechSynthesisUtils* synthesis = SpeechSynthesisUtils::getInstance();

    mConsole.device = device;
    mConsole.db = db;
    mConsole.http = http;
    mConsole.hook = hook;
    mConsole.internet = internet;
    mConsole.autoRun = autoRun;
    mConsole.record = recorder;
    mVoice = InputPresenter::Collaborators{device, baidu, ifly, hook, http, translator, synthesis};
}

void Services::routeAudio(DeviceManager* device, RecordManager* recorder,
                          const std::vector<SpeechRecognizer*>& recognizers)
{
    for (SpeechRecognizer* recognizer : recognizers) {
        connect(device, &DeviceManager::signalAudioData, recognizer, &SpeechRecognizer::onAudioData);
        connect(recorder, &RecordManager::signalAudioData, recognizer, &SpeechRecognizer::onAudioData);
        connect(recognizer, &SpeechRecognizer::signalMicrophone, recorder, [recorder](bool on) {
            if (on) {
                recorder->startRecorder();
            } else {
                recorder->stopRecorder();
            }
        });
    }
}

void Services::onSignal()
{
    unsigned char byte = 0;
    while (::read(gSignalPipe[0], &byte, 1) == 1) {
        qCInfo(lcApp).noquote() << "quitting on" << (byte == SIGINT ? "SIGINT" : "SIGTERM");
    }
    QCoreApplication::quit();
}

void Services::addProgram(MainWindow* window)
{
    // Before any other part, so that its line is the last one.
    add(QStringLiteral("log"), [] {
        qCInfo(lcApp).noquote() << "quit done; threads left:" << threadsLeft().join(QStringLiteral(", "));
        std::fflush(stderr);
    });
    // The link closed, its read loop and the plug detector's thread joined.
    add(QStringLiteral("device"), [] {
        if (DeviceManager* device = DeviceManager::existingInstance()) {
            device->close();
        }
        if (HidManager* hid = HidManager::existingInstance()) {
            hid->shutDown();
        }
    });
    // Before the link: the controller's thread opens it.
    add(QStringLiteral("device controller"), [window] { window->presenter()->shutDown(); });
    add(QStringLiteral("reading aloud"), [] {
        if (SpeechSynthesisUtils* synthesis = SpeechSynthesisUtils::existingInstance()) {
            synthesis->shutDown();
        }
    });
    // The keymap and the input method given back once the session types no more.
    add(QStringLiteral("typing"), [] {
        if (WinUtils* win = WinUtils::existingInstance()) {
            win->shutDown();
        }
    });
    add(QStringLiteral("voice session"), [window] {
        if (window->inputDialog() != nullptr) {
            window->inputDialog()->presenter()->endForQuit();
        }
    });
}

void Services::add(const QString& name, Stop stop)
{
    mParts.push_back(Part{name, std::move(stop)});
}

void Services::shutDown()
{
    while (!mParts.empty()) {
        // Taken off first: a stop that quits again finds nothing left to run twice.
        const Part part = std::move(mParts.back());
        mParts.pop_back();
        qCDebug(lcApp).noquote() << "quit:" << part.name;
        part.stop();
    }
}
