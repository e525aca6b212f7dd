// Another application: a line edit holding the first argument, and the user's clipboard
// (owned here) holding the second. Prints "ready X Y W H" (the line edit on the screen) once
// it has the keyboard focus. On any line from standard input prints, separated by tabs, the
// key presses that reached it, 1 if it still owns the clipboard, the line edit's text and the
// clipboard's.
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <unistd.h>

namespace {

class KeyCounter : public QObject {
public:
    int presses = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
            ++presses;
        }
        return QObject::eventFilter(watched, event);
    }
};

}  // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    KeyCounter keys;
    app.installEventFilter(&keys);
    QGuiApplication::clipboard()->setText(args.value(2), QClipboard::Clipboard);

    QLineEdit edit(args.value(1));
    edit.setWindowTitle(QStringLiteral("selection source"));
    edit.setFont(QFont(edit.font().family(), 24));
    edit.resize(700, 60);
    edit.move(100, 100);
    edit.show();
    edit.activateWindow();
    edit.setFocus();
    edit.setCursorPosition(0);

    QTextStream out(stdout);
    out.setCodec("UTF-8");
    QTimer focusWatch;
    focusWatch.setInterval(20);
    QObject::connect(&focusWatch, &QTimer::timeout, &app, [&] {
        if (edit.hasFocus() && edit.isActiveWindow()) {
            focusWatch.stop();
            const QPoint at = edit.mapToGlobal(QPoint(0, 0));
            out << "ready " << at.x() << ' ' << at.y() << ' ' << edit.width() << ' ' << edit.height()
                << Qt::endl;
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
            return;
        }
        QClipboard* clipboard = QGuiApplication::clipboard();
        out << keys.presses << '\t' << (clipboard->ownsClipboard() ? 1 : 0) << '\t' << edit.text() << '\t'
            << clipboard->text(QClipboard::Clipboard) << Qt::endl;
    });
    return app.exec();
}
