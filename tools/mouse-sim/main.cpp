#include "SimCommandLine.h"
#include "SimMouse.h"
#include "SimScript.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    SimCommandLine::guardStandardInput();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mouse-sim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The virtual mouse and USB receiver. Listens on SOCKET; point the application at\n"
                       "it with ZORVANE_DEVICE_SOCKET=SOCKET (or device/virtualSocket in zorvane.ini).\n\n") +
        SimScript::help());
    parser.addHelpOption();
    const SimCommandLine commandLine;
    commandLine.addTo(&parser);
    parser.process(app);

    QTextStream out(stdout);
    QTextStream err(stderr);
    SimMouse::Options options;
    QString error;
    if (!commandLine.read(parser, &options, &error)) {
        err << "mouse-sim: " << error << Qt::endl;
        return 2;
    }
    SimMouse mouse(options, &out);
    QObject::connect(mouse.script(), &SimScript::signalQuit, &app, &QCoreApplication::exit);
    if (!mouse.start(&error)) {
        err << "mouse-sim: " << error << Qt::endl;
        return 1;
    }
    return app.exec();
}
