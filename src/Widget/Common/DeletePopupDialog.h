#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"
#include "WidgetPresenter/DeletePopupPresenter.h"

class QPushButton;

// Asks before the selected command words are deleted; accepted means delete.
class DeletePopupDialog : public FramelessDialog,
                          public DeletePopupView,
                          public Singleton<DeletePopupDialog> {
    Q_OBJECT

public:
    explicit DeletePopupDialog(QWidget* parent = nullptr);

    void accept() override { QDialog::accept(); }
    void reject() override { QDialog::reject(); }
    int toExec() { return exec(); }

    QPushButton* submitButton() const { return mSubmit; }
    QPushButton* cancelButton() const { return mCancel; }

private:
    DeletePopupPresenter* mPresenter;
    QPushButton* mSubmit;
    QPushButton* mCancel;
};
