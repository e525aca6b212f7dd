#pragma once

#include <QString>

// An application the user can pick: one desktop entry.
struct InstalledApplication {
    QString id;    // the entry's id, "org.gnome.Calculator.desktop"
    QString name;  // in the user's language where the entry has it
    QString icon;  // a theme icon name or an absolute path, as the entry says
    QString path;  // the entry's file
};
