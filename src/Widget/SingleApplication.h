#pragma once

#include <QApplication>

class QLocalServer;
class QWidget;

// One instance per user: the first start listens on the local socket "Zorvane", a
// second start pokes it (the first raises its window) and leaves with 0.
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
    void newLocalServer();

    bool mIsRunning = false;
    QLocalServer* mLocalServer = nullptr;
    QString mServerName;
};
