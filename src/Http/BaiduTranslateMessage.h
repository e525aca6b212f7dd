#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

struct BaiduTranslateResult {
    QString src;
    QString dst;
};

// A reply of the translation service. error is set only by error_code or error_msg given
// as text.
struct BaiduTranslateMessage {
    bool error = false;
    QString errorCode;
    QString errorMsg;
    QString from;
    QString to;
    QList<BaiduTranslateResult> result;
};
Q_DECLARE_METATYPE(BaiduTranslateMessage)
