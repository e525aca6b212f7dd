// A window with one line edit. Prints "ready WINID" once it has the keyboard focus; on "get"
// from standard input prints "text:" and what the line edit holds.
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
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char chunk[256];
        const ssize_t n = ::read(STDIN_FILENO, chunk, sizeof(chunk));
        if (n <= 0) {
            QCoreApplication::quit();
            return;
        }
        pending.append(chunk, static_cast<int>(n));
        int end = 0;
        while ((end = pending.indexOf('\n')) >= 0) {
            const QByteArray line = pending.left(end);
            pending.remove(0, end + 1);
            if (line == "get") {
                out << "text:" << edit.text() << Qt::endl;
            } else if (line == "quit") {
                QCoreApplication::quit();
            }
        }
    });
    return app.exec();
}
