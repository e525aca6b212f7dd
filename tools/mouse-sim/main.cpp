#include "SimDevice.h"
#include "SimScript.h"
#include "SimServer.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>
#include <QTextStream>

#include <unistd.h>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mouse-sim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The virtual mouse and USB receiver. Listens on SOCKET; point the application at\n"
                       "it with ZORVANE_DEVICE_SOCKET=SOCKET (or device/virtualSocket in zorvane.ini).\n\n") +
        SimScript::help());
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("SOCKET"),
                                 QStringLiteral("Path of the socket to listen on."));
    const QCommandLineOption scriptOption(
        QStringLiteral("script"), QStringLiteral("Run the commands in FILE first."), QStringLiteral("FILE"));
    const QCommandLineOption vidOption(QStringLiteral("vid"),
                                       QStringLiteral("Vendor number (hex, default 3151)."),
                                       QStringLiteral("HEX"), QStringLiteral("3151"));
    const QCommandLineOption pidOption(QStringLiteral("pid"),
                                       QStringLiteral("Product number (hex, default 4011)."),
                                       QStringLiteral("HEX"), QStringLiteral("4011"));
    const QCommandLineOption unpluggedOption(QStringLiteral("unplugged"),
                                             QStringLiteral("Start with the receiver pulled out."));
    parser.addOptions({scriptOption, vidOption, pidOption, unpluggedOption});
    parser.process(app);

    QTextStream out(stdout);
    QTextStream err(stderr);
    if (parser.positionalArguments().size() != 1) {
        err << "mouse-sim: give the socket path (see --help)" << Qt::endl;
        return 2;
    }
    bool vidOk = false;
    bool pidOk = false;
    const int vid = parser.value(vidOption).toInt(&vidOk, 16);
    const int pid = parser.value(pidOption).toInt(&pidOk, 16);
    if (!vidOk || !pidOk || vid < 0 || vid > 0xFFFF || pid < 0 || pid > 0xFFFF) {
        err << "mouse-sim: --vid and --pid take four hex digits" << Qt::endl;
        return 2;
    }

    SimDevice device;
    SimServer server(&device, vid, pid);
    if (parser.isSet(unpluggedOption)) {
        server.setPlugged(false);
    }
    const QString socketPath = parser.positionalArguments().first();
    if (!server.listen(socketPath)) {
        err << "mouse-sim: cannot listen on " << socketPath << ": " << server.errorString() << Qt::endl;
        return 1;
    }
    QObject::connect(&server, &SimServer::signalOutput, &app,
                     [&out](const QByteArray& bytes) { out << "out " << bytes.toHex(' ') << Qt::endl; });
    QObject::connect(&server, &SimServer::signalOpened, &app,
                     [&out](bool open) { out << (open ? "open" : "closed") << Qt::endl; });

    QObject::connect(&server, &SimServer::signalRecording, &app, [&out](bool recording) {
        out << (recording ? "recording" : "not recording") << Qt::endl;
    });

    QObject::connect(&server, &SimServer::signalBleAttached, &app, [&out](bool attached) {
        out << (attached ? "ble attached" : "ble detached") << Qt::endl;
    });

    SimScript script(&device, &server, &out);
    QObject::connect(&script, &SimScript::signalQuit, &app, &QCoreApplication::exit);
    out << "ready " << socketPath << Qt::endl;

    if (parser.isSet(scriptOption)) {
        QFile file(parser.value(scriptOption));
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
            err << "mouse-sim: cannot read " << file.fileName() << Qt::endl;
            return 2;
        }
        script.append(QString::fromUtf8(file.readAll()).split(QLatin1Char('\n')));
    }

    // Commands typed or piped in; the end of input leaves the simulator running.
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&input, &script, &pending] {
        char chunk[4096];
        const ssize_t n = ::read(STDIN_FILENO, chunk, sizeof(chunk));
        if (n <= 0) {
            input.setEnabled(false);
            return;
        }
        pending.append(chunk, static_cast<int>(n));
        int end = 0;
        while ((end = pending.indexOf('\n')) >= 0) {
            script.append(QString::fromLocal8Bit(pending.left(end)));
            pending.remove(0, end + 1);
        }
    });
    return app.exec();
}
