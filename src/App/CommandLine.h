#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class AppConfig;

// The program's own options, read before anything else starts: --help and --version are
// answered here and never reach a running instance. Options Qt itself understands
// (-platform, -display, -style, ...) and plain arguments pass through to the application.
class CommandLine {
public:
    struct Outcome {
        bool exit = false;  // answered here: the program ends with exitCode
        int exitCode = 0;
        QString out;  // for stdout
        QString err;  // for stderr
    };

    static Outcome parse(const QStringList& arguments);

    // Same, from main's arguments; writes the answer to stdout/stderr.
    static Outcome handle(int argc, char** argv);

    // The Qt platform to run on, given QT_QPA_PLATFORM and DISPLAY: typing, the panels' places
    // and the selection all need X11, so a Wayland session runs us through XWayland when it
    // offers one. A -platform option on the command line still wins over this.
    static QByteArray platformFor(const QByteArray& chosen, const QByteArray& display);

    // The start line of the log: version, where the configuration came from, which device
    // the program talks to and, when given, whether it can type into other windows.
    static QString startLine(const AppConfig& config, const QString& configFile,
                             const QString& typing = QString());
    // "available", or "off (" and the reason ")": the desktop's typing backend asked now.
    static QString typingState();
    static void logStart();  // startLine() of the process configuration, to the log
};
