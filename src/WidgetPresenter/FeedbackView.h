#pragma once

#include <QString>

// The feedback dialog as its presenter sees it.
class FeedbackView {
public:
    virtual ~FeedbackView() = default;

    virtual QString getFeedbackEditTitleText() = 0;
    virtual QString getFeedbackEditContentPlainText() = 0;
    virtual void setFeedbackEditTitlePlaceholderText(QString text) = 0;
    virtual void setFeedbackEditContentPlaceholderText(QString text) = 0;
    virtual void toClose() = 0;
    virtual void toShow() = 0;
    virtual bool isHidden() = 0;
    virtual void clearText() = 0;
};
