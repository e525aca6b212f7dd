#include "Utils/TextUtils.h"

#include <QByteArray>

namespace TextUtils {

bool isEmpty(const QString& text)
{
    return text.isEmpty();
}

bool equals(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseSensitive) == 0;
}

QString base64Encode(const QString& text)
{
    return QString::fromLatin1(text.toUtf8().toBase64());
}

QString base64Decode(const QString& text)
{
    return QString::fromUtf8(QByteArray::fromBase64(text.toUtf8()));
}

}  // namespace TextUtils
