#pragma once

#include "Widget/Common/FramelessDialog.h"
#include "WidgetPresenter/MessageBoxView.h"

class QLabel;
class QPushButton;

// A plain box with a title line and two buttons: "确定" ends it with 1, "取消" with 0.
class MessageDialog : public FramelessDialog, public MessageBoxView {
    Q_OBJECT

public:
    explicit MessageDialog(QWidget* parent = nullptr);

    void setTitle(QString title) override;
    void setSubmitHidden(bool hidden) override;
    void setCancelHidden(bool hidden) override;
    void show() override { QDialog::show(); }
    void close() override { QDialog::close(); }

    QString title() const;
    QPushButton* submitButton() const { return mSubmit; }
    QPushButton* cancelButton() const { return mCancel; }

private:
    QLabel* mTitle;
    QPushButton* mSubmit;
    QPushButton* mCancel;
};
