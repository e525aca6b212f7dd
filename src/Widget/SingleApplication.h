#pragma once

#include <QApplication>

class QLocalServer;
class QWidget;

// One instance per user: the start that holds the lock file beside the local socket "Zorvane"
// listens on it; any other start pokes it (the first raises its window) and leaves with 0.
// Two starts at the same moment are told apart by the lock, never by a failed connect.
class SingleApplication : public QApplication {
    Q_OBJECT

public:
    SingleApplication(int& argc, char** argv);

    bool isRunning();

    // The full path of the socket behind the name "Zorvane": in the user's runtime folder,
    // which nobody else can enter, so one user's instance never blocks another's.
    static QString socketPath();

    // Brings a hidden, minimised or covered window to the front. Null does nothing.
    static void bringToFront(QWidget* window);

    QWidget* mainWindow = nullptr;

private slots:
    void newLocalConnection();

private:
    void initLocalConnection();
    // Asks the running instance to come to the front; false when nobody answered.
    bool pokeRunningInstance(int waitMs);
    void newLocalServer();

    bool mIsRunning = false;
    QLocalServer* mLocalServer = nullptr;
    QString mServerName;
    int mLock = -1;  // held open (and locked) for the life of the instance
};
