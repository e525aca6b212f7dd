#include "MicrophoneSource.h"
#include "MouseControl.h"
#include "MouseWindow.h"
#include "SimCommandLine.h"
#include "SimMouse.h"
#include "SimScript.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QTextStream>

int main(int argc, char* argv[])
{
    SimCommandLine::guardStandardInput();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("mouse-window"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral(
            "The virtual mouse and USB receiver in a small window: hold a talk button and the mouse\n"
            "hears the microphone (or a WAV file) while its voice key is down; click its keys, plug the\n"
            "receiver in or out, join over Bluetooth, set the battery. The window never takes the\n"
            "keyboard, so the text goes to the window you were typing in. Listens on SOCKET; point the\n"
            "application at it with ZORVANE_DEVICE_SOCKET=SOCKET. Standard input takes the commands of\n"
            "mouse-sim and writes the same lines.\n\n") +
        SimScript::help() +
        QStringLiteral(
            "Also:\n"
            "  where NAME                    print 'at NAME X Y W H': where a control of the\n"
            "                                window is on the screen (dictate, command, click, ...)\n"));
    parser.addHelpOption();
    const SimCommandLine commandLine;
    commandLine.addTo(&parser);
    const QCommandLineOption wavOption(
        QStringLiteral("wav"), QStringLiteral("Hear FILE (16 kHz mono 16-bit) instead of the microphone."),
        QStringLiteral("FILE"));
    parser.addOption(wavOption);
    parser.process(app);

    QTextStream out(stdout);
    QTextStream err(stderr);
    SimMouse::Options options;
    QString error;
    if (!commandLine.read(parser, &options, &error)) {
        err << "mouse-window: " << error << Qt::endl;
        return 2;
    }
    SimMouse mouse(options, &out);
    MicrophoneSource microphone;
    MouseControl control(&mouse, &microphone);
    if (parser.isSet(wavOption) && !control.useWavFile(parser.value(wavOption))) {
        err << "mouse-window: " << control.problem() << Qt::endl;
        return 2;
    }
    MouseWindow window(&control);
    mouse.script()->setExtension([&window, &out](const QStringList& words) {
        if (words.size() != 2 || words.first() != QLatin1String("where")) {
            return false;
        }
        const QWidget* widget = window.control(words.at(1));
        if (widget == nullptr) {
            out << "error: no control " << words.at(1) << Qt::endl;
            return true;
        }
        const QPoint at = widget->mapToGlobal(QPoint(0, 0));
        out << "at " << words.at(1) << ' ' << at.x() << ' ' << at.y() << ' ' << widget->width() << ' '
            << widget->height() << Qt::endl;
        return true;
    });
    QObject::connect(mouse.script(), &SimScript::signalQuit, &app, &QCoreApplication::exit);
    if (!mouse.start(&error)) {
        err << "mouse-window: " << error << Qt::endl;
        return 1;
    }
    window.placeAside();
    window.show();
    return app.exec();
}
