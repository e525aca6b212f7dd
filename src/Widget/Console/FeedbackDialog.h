#pragma once

#include "Widget/Common/FramelessDialog.h"
#include "WidgetPresenter/FeedbackView.h"

class FeedbackPresenter;
class HttpManager;
class MessageDialog;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

// A title and a text for the vendor, and a way to reach its contact group.
class FeedbackDialog : public FramelessDialog, public FeedbackView {
    Q_OBJECT

public:
    // http may be null for the process-wide one.
    explicit FeedbackDialog(QWidget* parent = nullptr, HttpManager* http = nullptr);

    QString getFeedbackEditTitleText() override;
    QString getFeedbackEditContentPlainText() override;
    void setFeedbackEditTitlePlaceholderText(QString text) override;
    void setFeedbackEditContentPlaceholderText(QString text) override;
    void toClose() override { close(); }
    void toShow() override;
    bool isHidden() override { return QWidget::isHidden(); }
    void clearText() override;

    QLineEdit* titleEdit() const { return mTitle; }
    QPlainTextEdit* contentEdit() const { return mContent; }
    QPushButton* submitButton() const { return mSubmit; }
    QPushButton* cancelButton() const { return mCancel; }
    MessageDialog* farewell() const { return mFarewell; }
    FeedbackPresenter* presenter() const { return mPresenter; }

private:
    QLineEdit* mTitle;
    QPlainTextEdit* mContent;
    QPushButton* mSubmit;
    QPushButton* mCancel;
    QPushButton* mContact;
    MessageDialog* mFarewell;
    FeedbackPresenter* mPresenter;
};
