#include "Platform/ChineseConverter.h"

#include "Utils/Logging.h"

#include <opencc.h>

ChineseConverter::ChineseConverter() = default;

ChineseConverter::~ChineseConverter()
{
    if (mHandle != nullptr) {
        opencc_close(static_cast<opencc_t>(mHandle));
    }
}

QString ChineseConverter::simplifiedToTraditional(const QString& text)
{
    if (text.isEmpty()) {
        return text;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (!mTried) {
        mTried = true;
        opencc_t handle = opencc_open("s2t.json");
        if (handle == reinterpret_cast<opencc_t>(-1)) {
            qCWarning(lcX11) << "OpenCC cannot load s2t.json:" << opencc_error() << "- text stays simplified";
        } else {
            mHandle = handle;
        }
    }
    if (mHandle == nullptr) {
        return text;
    }
    const QByteArray utf8 = text.toUtf8();
    char* converted = opencc_convert_utf8(static_cast<opencc_t>(mHandle), utf8.constData(),
                                          static_cast<size_t>(utf8.size()));
    if (converted == nullptr) {
        return text;
    }
    const QString result = QString::fromUtf8(converted);
    opencc_convert_utf8_free(converted);
    return result;
}
