#include "Widget/Console/WidgetPathPicker.h"

#include "Widget/Console/ApplicationPickerDialog.h"

#include <QFileDialog>

QString WidgetPathPicker::pickFile(const QString& title, const QString& folder, const QString& filter)
{
    return QFileDialog::getOpenFileName(mParent, title, folder, filter);
}

QString WidgetPathPicker::pickFolder(const QString& title, const QString& folder)
{
    return QFileDialog::getExistingDirectory(mParent, title, folder);
}

QString WidgetPathPicker::pickApplication(const QList<InstalledApplication>& applications)
{
    ApplicationPickerDialog dialog(applications, mParent);
    dialog.centreOver(mParent != nullptr ? mParent->window() : nullptr);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedPath() : QString();
}
