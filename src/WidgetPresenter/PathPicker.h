#pragma once

#include "Platform/InstalledApplication.h"

#include <QList>
#include <QString>

// The dialogs behind the command pages' browse button. The console presenter links no
// widgets, so the window hands it an implementation; tests hand in a scripted one.
// Each call is modal and returns the chosen path, or an empty string on cancel.
class PathPicker {
public:
    virtual ~PathPicker() = default;

    // filter as a file dialog takes it ("*.*").
    virtual QString pickFile(const QString& title, const QString& folder, const QString& filter) = 0;
    virtual QString pickFolder(const QString& title, const QString& folder) = 0;
    // The desktop entry file of one of these applications.
    virtual QString pickApplication(const QList<InstalledApplication>& applications) = 0;
};
