#pragma once

#include "Platform/AppLauncher.h"

#include <QList>
#include <QString>
#include <QStringList>

// One row of the built-in voice commands: spoken phrases (synonyms, matched whole and case
// sensitive), and what they do.
struct LocalCommand {
    enum Action { BackDesktop, SelectAll, Backspace, DeleteFile, ShowMainView, ShowExplain, OpenApplication };

    QStringList phrases;
    Action action = OpenApplication;
    // Rows 1 to 4 show this text (translated where shown); application rows show "正在打开" and the spoken
    // text.
    QString message;
    // Application rows: the application the phrases name, and the desktop entries that stand
    // for it here, the first installed one being started. No entries: nothing opens.
    QString application;
    QStringList desktopEntries;
    // The user's own default comes before the entries: the handler of this MIME type, then
    // this Debian alternative.
    // (Initialised here, so that rows without them need not name them.)
    QString defaultFor{};
    QString alternative{};
    QStringList arguments{};
    // Nothing installed: the Print key, which the desktop's shell answers with a screenshot.
    bool printKeyWhenNone = false;

    AppChoice choice() const { return {defaultFor, alternative, desktopEntries, arguments}; }
    bool opensSomething() const
    {
        return !desktopEntries.isEmpty() || !defaultFor.isEmpty() || !alternative.isEmpty() ||
               printKeyWhenNone;
    }
};

// The fixed table of built-in voice commands, in its order: six control rows, then the
// applications. It is the one place that maps each named application to its Linux
// counterparts (docs/voice-commands.md explains the choice).
class LocalCommandTable {
public:
    static const QList<LocalCommand>& rows();
    // The row with a phrase equal to the text, or null.
    static const LocalCommand* match(const QString& text);
};
