#pragma once

#include "Platform/InstalledApplication.h"
#include "Widget/Common/FramelessDialog.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

// The installed applications to pick from for an application command word: icon and name,
// narrowed by a filter box. Accepted, it gives the chosen entry's file.
class ApplicationPickerDialog : public FramelessDialog {
    Q_OBJECT

public:
    explicit ApplicationPickerDialog(const QList<InstalledApplication>& applications,
                                     QWidget* parent = nullptr);

    // The entry file of the chosen application, or empty.
    QString selectedPath() const;

    QLineEdit* filterBox() const { return mFilter; }
    QListWidget* list() const { return mList; }
    QPushButton* okButton() const { return mOk; }
    // The names still shown, in their order.
    QStringList visibleNames() const;

private:
    void applyFilter(const QString& text);
    void updateOk();

    QLineEdit* mFilter;
    QListWidget* mList;
    QLabel* mEmpty;
    QPushButton* mOk;
};
