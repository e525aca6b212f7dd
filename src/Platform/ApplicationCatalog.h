#pragma once

#include "Platform/InstalledApplication.h"

#include <QList>
#include <QString>
#include <QStringList>

// The applications installed for this user, read from the desktop entries in
// $XDG_DATA_HOME/applications and each $XDG_DATA_DIRS/applications, in that order of
// precedence: the first entry of an id hides the later ones, also when it is itself hidden
// (that is how a user removes a system entry).
class ApplicationCatalog {
public:
    // The folders searched, the one that wins first.
    static QStringList folders();
    // Every entry that can be started here and is meant to be listed, sorted by the name in
    // the locale ("zh_CN"; the one LC_ALL, LC_MESSAGES or LANG names when empty).
    static QList<InstalledApplication> applications(const QString& locale = QString());
    // The id of an entry file: its path below an applications folder, '/' made '-'
    // ("kde4/kate.desktop" is "kde4-kate.desktop"); for a file outside them, its name.
    static QString entryId(const QString& path);
    // The file of the entry with this id that wins, or empty.
    static QString locate(const QString& id);
    // A desktop entry that lies (symbolic links resolved) in one of the folders and can be
    // started here: what a path from outside must be before it is started.
    static bool isInstalledEntry(const QString& path);
    // The locale of messages the user asked for, or empty.
    static QString messagesLocale();

    // What the add page suggests for an application word: a word and, where one is
    // installed, the entry of a text editor (empty otherwise).
    struct Sample {
        QString word;
        QString path;
    };
    static Sample sampleApplication();
};
