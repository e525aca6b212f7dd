#pragma once

#include "Http/HttpRequest.h"

#include <QObject>

class FeedbackView;
class HttpManager;
class MessageBoxView;
class QTimer;

// Checks the title and the text of a feedback, sends them, and says goodbye in three
// seconds whatever the backend answers.
class FeedbackPresenter : public QObject {
    Q_OBJECT

public:
    static constexpr int kRequestTimeoutMs = 999999;
    static constexpr int kCountdown = 3;

    // http may be null for the process-wide one; none is owned.
    FeedbackPresenter(FeedbackView* view, MessageBoxView* messageBox, HttpManager* http = nullptr,
                      QObject* parent = nullptr);

    bool isHidden();
    void toShow();
    QTimer* countdownTimer() const { return mTimerCountdown; }

public slots:
    void submit();
    void cancel();
    // The farewell's tick.
    void onFeekbackResult();

private:
    QString farewell() const;

    FeedbackView* mView;
    QTimer* mTimerCountdown;
    MessageBoxView* mMessageDialog;
    int mCountdown = 0;
    HttpManager* mHttpManager;
    HttpRequest::TimeoutFunc mTimeout;
    HttpRequest::ErrorFunc mError;
};
