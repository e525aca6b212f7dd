#pragma once

#include <QObject>

class AppAutoRunUtils;

// The first-start question as its presenter sees it.
class AppAutoRunView {
public:
    virtual ~AppAutoRunView() = default;

    virtual bool isCheckAppAutoRun() = 0;
    virtual void finish(int result) = 0;
};

// Turns autostart on when the user leaves the box checked; an unchecked box changes nothing.
class AppAutoRunPresenter : public QObject {
    Q_OBJECT

public:
    // autoRun may be null for the process-wide one; not owned.
    AppAutoRunPresenter(AppAutoRunView* view, AppAutoRunUtils* autoRun = nullptr, QObject* parent = nullptr);

public slots:
    void submit();

private:
    AppAutoRunView* mView;
    AppAutoRunUtils* mAutoRun;
};
