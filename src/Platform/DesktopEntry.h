#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

// The parts of a freedesktop.org desktop entry that starting an application needs.
class DesktopEntry {
public:
    // Reads the [Desktop Entry] group of the file; false when it cannot be read or has none.
    bool load(const QString& path);

    // True when the entry is an application that can be started here: not hidden, meant for
    // the current desktop (OnlyShowIn, NotShowIn), with an Exec line, and its TryExec program
    // (if named) present.
    bool isLaunchable() const;
    // The program and its arguments, field codes expanded for a start with no files.
    QStringList command() const;
    // Name in the locale ("zh_CN", "sr_RS@latin"): the best Name[...] match, else Name.
    QString name(const QString& locale = QString()) const;
    QString icon() const { return mIcon; }
    // Meant to be started but not listed in menus (handlers, helpers).
    bool noDisplay() const { return mNoDisplay; }
    // Needs a terminal around it.
    bool terminal() const { return mTerminal; }

    // Splits an Exec value into arguments by the entry format's quoting rules and expands the
    // field codes; false for a value that is not well formed.
    static bool splitExec(const QString& exec, const QString& name, const QString& icon, const QString& path,
                          QStringList* arguments);
    // Undoes the string escapes of an entry value (\s \n \t \r \\).
    static QString unescapeValue(const QString& value);
    // The desktops named by XDG_CURRENT_DESKTOP, in its order.
    static QStringList currentDesktops();
    // The ';'-separated list of a key in a group of a file in the entry format (mimeapps.list
    // uses it), or empty.
    static QStringList readList(const QString& path, const QString& group, const QString& key);

private:
    QString mPath;
    QString mType;
    QString mName;
    QHash<QString, QString> mLocalizedNames;  // by the locale in brackets
    QString mIcon;
    QString mExec;
    QString mTryExec;
    QStringList mOnlyShowIn;
    QStringList mNotShowIn;
    bool mHidden = false;
    bool mNoDisplay = false;
    bool mTerminal = false;
};
