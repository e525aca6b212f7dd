#pragma once

#include <QMetaType>
#include <QString>

// A command word of the user's: a spoken keyword that opens a web page (type 0), a file (1), a
// folder (2), or replays a key chord (3; pro holds its key codes joined by "#,#").
struct CommandWord {
    int id = 0;
    QString keyword;
    QString target;
    QString pro;
    int type = 0;
};
Q_DECLARE_METATYPE(CommandWord)
