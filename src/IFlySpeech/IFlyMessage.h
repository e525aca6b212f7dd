#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// A reply of the dictation service. Only code, pgs, ls and the w texts have an effect; the
// rest is read and kept.
struct Cw {
    int sc = 0;
    QString w;
};

struct Ws {
    int bg = 0;
    int ed = 0;
    QList<Cw> cw;
};

struct HttpEntry {
    int code = 0;
    QString message;
    QString sid;
    int status = 0;
    int bg = 0;
    int ed = 0;
    QString pgs;
    int sn = 0;
    QList<Ws> ws;
    bool ls = false;
};

namespace IFlyMessage {

// False for text that is not a JSON object; members of the wrong kind keep their initial value.
bool parse(const QByteArray& text, HttpEntry* entry);

}  // namespace IFlyMessage
