#pragma once

#include "WidgetPresenter/PathPicker.h"

class QWidget;

// The browse button's dialogs as windows: the desktop's file and folder dialogs, and the
// list of installed applications.
class WidgetPathPicker : public PathPicker {
public:
    // parent: the window the dialogs belong to (may be null).
    explicit WidgetPathPicker(QWidget* parent = nullptr) : mParent(parent) {}

    QString pickFile(const QString& title, const QString& folder, const QString& filter) override;
    QString pickFolder(const QString& title, const QString& folder) override;
    QString pickApplication(const QList<InstalledApplication>& applications) override;

private:
    QWidget* mParent;
};
