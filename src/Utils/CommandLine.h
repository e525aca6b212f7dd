#pragma once

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

    // The start line of the log: version, where the configuration came from and which device
    // the program talks to.
    static QString startLine(const AppConfig& config, const QString& configFile);
    static void logStart();  // startLine() of the process configuration, to the log
};
