#include "App/CommandLine.h"

#include "Platform/InputBackendChoice.h"
#include "Platform/WinUtils.h"
#include "Utils/AppConfig.h"
#include "Utils/AppVersion.h"
#include "Utils/Logging.h"

#include <QCommandLineParser>
#include <QFileInfo>

#include <cstdio>

namespace {

// What QGuiApplication and the xcb platform take from the command line, so that
// "zorvane -platform offscreen" still works although we parse first.
const char* const kQtValueOptions[] = {"platform",        "platformpluginpath",
                                       "platformtheme",   "plugin",
                                       "qwindowgeometry", "qwindowicon",
                                       "qwindowtitle",    "display",
                                       "geometry",        "name",
                                       "title",           "session",
                                       "style",           "stylesheet",
                                       "visual"};
const char* const kQtFlagOptions[] = {"reverse", "widgetcount", "nograb", "dograb", "sync"};

QString helpText()
{
    return QStringLiteral(
        "Usage: zorvane [options]\n"
        "The desktop companion of the voice mouse: dictation, voice commands, "
        "translation.\n"
        "\n"
        "Options:\n"
        "  -h, --help     Show this help and exit.\n"
        "  -v, --version  Show the version and exit.\n"
        "\n"
        "Only one Zorvane runs per user: starting it again brings the running one's "
        "window\n"
        "to the front. Settings: $ZORVANE_CONFIG or ~/.config/ZorvaneV2/zorvane.ini, "
        "then\n"
        "ZORVANE_* environment variables. Log: "
        "~/.local/share/ZorvaneV2/ZorvaneLog.txt\n");
}

}  // namespace

CommandLine::Outcome CommandLine::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption version(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    parser.addOption(help);
    parser.addOption(version);
    for (const char* name : kQtValueOptions) {
        parser.addOption(QCommandLineOption(QString::fromLatin1(name), QString(), QStringLiteral("value")));
    }
    for (const char* name : kQtFlagOptions) {
        parser.addOption(QCommandLineOption(QString::fromLatin1(name)));
    }

    Outcome outcome;
    // parse() rather than process(): no application object exists yet, and nothing may exit
    // behind our back.
    if (!parser.parse(arguments)) {
        outcome.exit = true;
        outcome.exitCode = 2;
        outcome.err =
            QStringLiteral("zorvane: ") + parser.errorText() + QStringLiteral("\nTry 'zorvane --help'.\n");
    } else if (parser.isSet(help)) {
        outcome.exit = true;
        outcome.out = helpText();
    } else if (parser.isSet(version)) {
        outcome.exit = true;
        outcome.out = QStringLiteral("zorvane ") + QString::fromLatin1(kAppVersion) + QLatin1Char('\n');
    }
    return outcome;
}

QByteArray CommandLine::platformFor(const QByteArray& chosen, const QByteArray& display)
{
    if (!display.isEmpty() && (chosen.isEmpty() || chosen.startsWith("wayland"))) {
        return QByteArrayLiteral("xcb");
    }
    return chosen;
}

CommandLine::Outcome CommandLine::handle(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    const Outcome outcome = parse(arguments);
    std::fputs(outcome.out.toLocal8Bit().constData(), stdout);
    std::fputs(outcome.err.toLocal8Bit().constData(), stderr);
    return outcome;
}

QString CommandLine::startLine(const AppConfig& config, const QString& configFile, const QString& typing)
{
    int fromFile = 0;
    QStringList environment;
    for (int i = 0; i < AppConfig::KeyCount; ++i) {
        const auto key = static_cast<AppConfig::Key>(i);
        if (config.origin(key) == QLatin1String("file")) {
            ++fromFile;
        } else if (config.origin(key) == QLatin1String("environment")) {
            environment << QString::fromLatin1(AppConfig::info(key).envName);
        }
    }
    const QString file =
        QFileInfo::exists(configFile)
            ? QStringLiteral("file %1 (%2 values)").arg(configFile, QString::number(fromFile))
            : QStringLiteral("no file at %1").arg(configFile);
    const QString env = environment.isEmpty()
                            ? QStringLiteral("no environment variables")
                            : QStringLiteral("environment ") + environment.join(QLatin1String(", "));
    const QString socket = config.deviceVirtualSocket();
    const QString device = socket.isEmpty() ? QStringLiteral("the receiver (hidraw) or Bluetooth")
                                            : QStringLiteral("the virtual device at ") + socket;
    const QString line =
        QStringLiteral("Zorvane %1 starting; configuration: build defaults, %2, %3; device: %4")
            .arg(QString::fromLatin1(kAppVersion), file, env, device);
    return typing.isEmpty() ? line : line + QStringLiteral("; typing into other windows: ") + typing;
}

QString CommandLine::typingState()
{
    return InputBackendChoice::describe(WinUtils::getInstance()->backend());
}

void CommandLine::logStart()
{
    qCInfo(lcApp).noquote() << startLine(*AppConfig::getInstance(), AppConfig::defaultFilePath(),
                                         typingState());
}
