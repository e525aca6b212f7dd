#include "RecordingInputBackend.h"

#include <X11/Xlib.h>

void RecordingInputBackend::sendKey(unsigned long keysym, bool down)
{
    const char* name = XKeysymToString(keysym);
    log << QStringLiteral("%1 %2").arg(
        down ? QStringLiteral("down") : QStringLiteral("up"),
        name != nullptr ? QString::fromLatin1(name) : QString::number(keysym, 16));
}

void RecordingInputBackend::typeText(const QString& text)
{
    log << QStringLiteral("text ") + text;
}

void RecordingInputBackend::toggleShowingDesktop()
{
    log << QStringLiteral("desktop");
}

QString RecordingInputBackend::typedText() const
{
    QString box;
    for (const QString& entry : log) {
        if (entry.startsWith(QLatin1String("text "))) {
            box += entry.mid(5);
        } else if (entry == QLatin1String("down BackSpace")) {
            // One character back, a surrogate pair as one.
            if (box.size() >= 2 && box.at(box.size() - 1).isLowSurrogate()) {
                box.chop(2);
            } else {
                box.chop(1);
            }
        }
    }
    return box;
}

QStringList RecordingInputBackend::takeLog()
{
    QStringList taken = log;
    log.clear();
    return taken;
}
