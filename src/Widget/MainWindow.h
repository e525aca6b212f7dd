#pragma once

#include "Utils/Singleton.h"

#include <QMainWindow>

// The console window. Closing it only hides it: the process, the device link and every
// timer go on until the user quits.
class MainWindow : public QMainWindow, public Singleton<MainWindow> {
    Q_OBJECT

public:
    using Singleton<MainWindow>::getInstance;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    friend class Singleton<MainWindow>;
    explicit MainWindow(QWidget* parent = nullptr);
};
