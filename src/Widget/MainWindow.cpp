#include "Widget/MainWindow.h"

#include <QCloseEvent>

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent)
{
    setWindowTitle(QStringLiteral("Zorvane"));
    resize(880, 620);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    hide();
    event->ignore();
}
