#include "Fault.h"

#include <QStringList>

bool Fault::apply(const QString& text, QString* error)
{
    const int eq = text.indexOf(QLatin1Char('='));
    const QString kind = eq < 0 ? text : text.left(eq);
    const QString value = eq < 0 ? QString() : text.mid(eq + 1);
    bool ok = true;
    const int number = value.toInt(&ok);
    const bool needsNumber =
        kind == QLatin1String("delay") || kind == QLatin1String("error") || kind == QLatin1String("status");
    if (needsNumber && (value.isEmpty() || !ok)) {
        *error = QStringLiteral("fault %1 needs a number, as in %1=500").arg(kind);
        return false;
    }
    if (!needsNumber && eq >= 0) {
        *error = QStringLiteral("fault %1 takes no value").arg(kind);
        return false;
    }
    if (kind == QLatin1String("delay") && number >= 0) {
        delayMs = number;
    } else if (kind == QLatin1String("refuse")) {
        refuse = true;
    } else if (kind == QLatin1String("close")) {
        closeMidStream = true;
    } else if (kind == QLatin1String("error") && number != 0) {
        errorCode = number;
    } else if (kind == QLatin1String("status") && number >= 100 && number <= 599) {
        httpStatus = number;
    } else if (kind == QLatin1String("malformed")) {
        malformed = true;
    } else if (kind == QLatin1String("off")) {
        clear();
    } else {
        *error = QStringLiteral("unknown fault or value: %1").arg(text);
        return false;
    }
    return true;
}

void Fault::clear()
{
    delayMs = 0;
    refuse = false;
    closeMidStream = false;
    errorCode = 0;
    httpStatus = 0;
    malformed = false;
}

QString Fault::describe() const
{
    QStringList parts;
    if (delayMs > 0) {
        parts << QStringLiteral("delay=%1").arg(delayMs.load());
    }
    if (refuse) {
        parts << QStringLiteral("refuse");
    }
    if (closeMidStream) {
        parts << QStringLiteral("close");
    }
    if (errorCode != 0) {
        parts << QStringLiteral("error=%1").arg(errorCode.load());
    }
    if (httpStatus != 0) {
        parts << QStringLiteral("status=%1").arg(httpStatus.load());
    }
    if (malformed) {
        parts << QStringLiteral("malformed");
    }
    return parts.isEmpty() ? QStringLiteral("none") : parts.join(QLatin1Char(','));
}
