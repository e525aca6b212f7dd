#pragma once

#include <QHash>
#include <QStringList>
#include <QVariant>

// A recording view's operations, one line each; the recorded name is the method's own, so
// it cannot drift from it.
// clang-format off
#define RECORDS(name) void name() override { record(QStringLiteral(#name)); }
#define RECORDS_ARG(name, Type) void name(Type value) override { record(QStringLiteral(#name), value); }
#define ANSWERS(Type, name, unset, convert) \
    Type name() override { return ask(QStringLiteral(#name), unset).convert(); }
// clang-format on

// The bookkeeping of a recording view: every call in order as "name(arg,arg)", and the
// answers a test sets for the questions, keyed by operation name. Queries are recorded too.
class CallRecorder {
public:
    QStringList calls;
    QHash<QString, QVariant> answers;

    // The calls of one operation, in order, with their arguments.
    QStringList callsOf(const QString& name) const
    {
        QStringList matching;
        for (const QString& call : calls) {
            if (call.startsWith(name + QLatin1Char('('))) {
                matching << call;
            }
        }
        return matching;
    }
    // The recorded calls so far, leaving the record empty.
    QStringList takeCalls()
    {
        QStringList taken;
        taken.swap(calls);
        return taken;
    }

protected:
    template <typename... Args>
    void record(const QString& name, const Args&... args)
    {
        QStringList texts{text(args)...};
        calls << name + QLatin1Char('(') + texts.join(QLatin1Char(',')) + QLatin1Char(')');
    }
    QVariant ask(const QString& name, const QVariant& unset)
    {
        record(name);
        return answers.value(name, unset);
    }
    static QString text(const QString& value) { return value; }
    static QString text(bool value) { return value ? QStringLiteral("true") : QStringLiteral("false"); }
    static QString text(int value) { return QString::number(value); }
};
