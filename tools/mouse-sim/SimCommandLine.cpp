#include "SimCommandLine.h"

#include <QCommandLineParser>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

SimCommandLine::SimCommandLine()
    : mScript(QStringLiteral("script"), QStringLiteral("Run the commands in FILE first."),
              QStringLiteral("FILE")),
      mVid(QStringLiteral("vid"), QStringLiteral("Vendor number (hex, default 3151)."), QStringLiteral("HEX"),
           QStringLiteral("3151")),
      mPid(QStringLiteral("pid"), QStringLiteral("Product number (hex, default 4011)."),
           QStringLiteral("HEX"), QStringLiteral("4011")),
      mUnplugged(QStringLiteral("unplugged"), QStringLiteral("Start with the receiver pulled out."))
{
}

void SimCommandLine::guardStandardInput()
{
    if (::fcntl(STDIN_FILENO, F_GETFD) == -1) {
        ::open("/dev/null", O_RDONLY);  // takes the lowest free number: 0
    }
}

void SimCommandLine::addTo(QCommandLineParser* parser) const
{
    parser->addPositionalArgument(QStringLiteral("SOCKET"),
                                  QStringLiteral("Path of the socket to listen on."));
    parser->addOptions({mScript, mVid, mPid, mUnplugged});
}

bool SimCommandLine::read(const QCommandLineParser& parser, SimMouse::Options* options, QString* error) const
{
    if (parser.positionalArguments().size() != 1) {
        *error = QStringLiteral("give the socket path (see --help)");
        return false;
    }
    options->socketPath = parser.positionalArguments().first();
    bool vidOk = false;
    bool pidOk = false;
    options->vid = parser.value(mVid).toInt(&vidOk, 16);
    options->pid = parser.value(mPid).toInt(&pidOk, 16);
    if (!vidOk || !pidOk || options->vid < 0 || options->vid > 0xFFFF || options->pid < 0 ||
        options->pid > 0xFFFF) {
        *error = QStringLiteral("--vid and --pid take four hex digits");
        return false;
    }
    options->unplugged = parser.isSet(mUnplugged);
    if (parser.isSet(mScript)) {
        QFile file(parser.value(mScript));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            *error = QStringLiteral("cannot read %1").arg(file.fileName());
            return false;
        }
        options->script = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    }
    return true;
}
