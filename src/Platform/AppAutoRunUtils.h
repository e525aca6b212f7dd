#pragma once

#include "Utils/Singleton.h"

#include <QObject>

// Start at login through the XDG autostart entry "zorvane.desktop": on means the entry exists.
// The entry starts the installed program when there is one, not whichever copy asked.
class AppAutoRunUtils : public QObject, public Singleton<AppAutoRunUtils> {
    Q_OBJECT

public:
    bool isAppAutoRun() const;
    // Writes or removes the entry; false when the folder cannot be written.
    bool setAppAutoRun(bool enable);

    static QString autostartPath();
    // The entry for an executable; the path is quoted and escaped as desktop entries require.
    static QByteArray desktopEntry(const QString& executable);
    // The Exec value that runs exactly this program.
    static QString execArgument(const QString& executable);

    // The program the packaged desktop entry starts, resolved to its path; empty when Zorvane
    // is not installed.
    static QString installedProgram();
    // What the entry starts at login: the installed program, else the running one.
    static QString loginProgram();

    // The first-start question answered with no: it is not asked again. Kept in a small file
    // of its own in the configuration folder.
    static bool isQuestionDeclined();
    static void declineQuestion();

signals:
    void signalChangeAutoRun(bool enable);

private:
    friend class Singleton<AppAutoRunUtils>;
    AppAutoRunUtils() = default;
};
