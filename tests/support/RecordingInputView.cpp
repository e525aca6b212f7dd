#include "RecordingInputView.h"

QStringList RecordingInputView::callsOf(const QString& name) const
{
    QStringList matching;
    for (const QString& call : calls) {
        if (call.startsWith(name + QLatin1Char('('))) {
            matching << call;
        }
    }
    return matching;
}

QStringList RecordingInputView::takeCalls()
{
    QStringList taken;
    taken.swap(calls);
    return taken;
}
