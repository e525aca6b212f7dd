// A window with one line edit. Prints "ready WINID" once it has the keyboard focus; on "get"
// from standard input prints "text:" and what the line edit holds, on "quit" leaves. The test
// waits for each answer before it asks again.
#include <QApplication>
#include <QLineEdit>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <unistd.h>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QLineEdit edit;
    edit.setWindowTitle(QStringLiteral("typing receiver"));
    edit.resize(600, 40);
    edit.show();
    edit.activateWindow();
    edit.setFocus();

    QTextStream out(stdout);
    out.setCodec("UTF-8");
    QTimer focusWatch;
    focusWatch.setInterval(20);
    QObject::connect(&focusWatch, &QTimer::timeout, &app, [&] {
        if (edit.hasFocus() && edit.isActiveWindow()) {
            focusWatch.stop();
            out << "ready " << edit.winId() << Qt::endl;
        } else {
            edit.activateWindow();
        }
    });
    focusWatch.start();

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char chunk[256];
        const ssize_t n = ::read(STDIN_FILENO, chunk, sizeof(chunk));
        if (n <= 0 || QByteArray(chunk, static_cast<int>(n)).contains("quit")) {
            QCoreApplication::quit();
        } else {
            out << "text:" << edit.text() << Qt::endl;
        }
    });
    return app.exec();
}
