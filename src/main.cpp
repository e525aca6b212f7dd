#include "App/CommandLine.h"
#include "App/Services.h"
#include "Platform/DesktopLauncher.h"
#include "Platform/DesktopNotifications.h"
#include "Platform/InputBackendChoice.h"
#include "Platform/WinUtils.h"
#include "Utils/AppConfig.h"
#include "Utils/AppPaths.h"
#include "Utils/Logging.h"
#include "Utils/MessageHandler.h"
#include "Utils/PreferencesUtils.h"
#include "Utils/Trace.h"
#include "Widget/Common/Pictures.h"
#include "Widget/Console/MainWindow.h"
#include "Widget/SingleApplication.h"
#include "Widget/Translations.h"
#include "Widget/WidgetNoticeSink.h"

#include <QWindow>

namespace {

// Marks the console's first expose for the start-up benchmark, then steps aside.
class FirstExposeMark : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Expose) {
            Trace::mark("console-exposed");
            watched->removeEventFilter(this);
        }
        return false;
    }
};

}  // namespace

int main(int argc, char* argv[])
{
    Trace::mark("main");
    // First: --help and --version are answered without the log or a running instance.
    const CommandLine::Outcome options = CommandLine::handle(argc, argv);
    if (options.exit) {
        return options.exitCode;
    }
    // Names the folders (…/ZorvaneV2) before anything resolves a path.
    QCoreApplication::setApplicationName(QString::fromLatin1(AppPaths::kApplicationName));
    // Before anything opens them: the files an earlier version kept in the data folder.
    const QStringList moved = AppPaths::moveEarlierFiles();
    MessageHandler::install(AppPaths::stateFile(QStringLiteral("/ZorvaneLog.txt")));
    for (const QString& line : moved) {
        qCInfo(lcApp).noquote() << line;
    }

    const QByteArray platform = CommandLine::platformFor(qgetenv("QT_QPA_PLATFORM"), qgetenv("DISPLAY"));
    if (!platform.isEmpty()) {
        DesktopLauncher::setOwnVariable("QT_QPA_PLATFORM", platform);
    }
    // Every window is drawn by the raster engine: without this the X11 platform loads the GL
    // driver at start (Mesa's pulls in LLVM), tens of megabytes resident for nothing.
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION")) {
        DesktopLauncher::setOwnVariable("QT_XCB_GL_INTEGRATION", "none");
    }
    Pictures::enableHighDpiScaling();
    SingleApplication app(argc, argv);
    if (app.isRunning()) {
        return 0;
    }
    // Before any window or text is made.
    Translations::install(PreferencesUtils::getInstance()->getUserPreferences().interfaceLanguage);
    // From here a logout's SIGTERM or a Ctrl+C ends the program as 退出 does.
    Services services;
    services.quitOnSignals();
    services.build(*AppConfig::getInstance());
    CommandLine::logStart();
    // The console only hides on close; the process lives on for the mouse.
    app.setQuitOnLastWindowClosed(false);

    WidgetNoticeSink notices;
    Notice::setSink(&notices);
    InputBackendChoice::tellIfNoRoute(WinUtils::getInstance()->backend(),
                                      DesktopNotifications::getInstance());

    MainWindow* window = MainWindow::getInstance(nullptr, &services.console(), &services.voice());
    app.mainWindow = window;
    FirstExposeMark exposed;
    if (Trace::enabled()) {
        window->winId();  // the native window now, shown or not, so that its expose is seen
        window->windowHandle()->installEventFilter(&exposed);
    }
    window->showAtStart();
    services.addProgram(window);
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &services, &Services::shutDown);
    return app.exec();
}
