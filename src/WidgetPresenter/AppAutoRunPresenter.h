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

// Turns autostart on when the user leaves the box checked; an unchecked box is a no that is
// remembered, so that the question does not come back at every start.
class AppAutoRunPresenter : public QObject {
    Q_OBJECT

public:
    // autoRun may be null for the process-wide one; not owned.
    AppAutoRunPresenter(AppAutoRunView* view, AppAutoRunUtils* autoRun = nullptr, QObject* parent = nullptr);

    // What the entry would start when that is not simply the running program: the installed
    // one, or a build that is not installed. Empty otherwise.
    QString loginNote() const;

public slots:
    void submit();

private:
    AppAutoRunView* mView;
    AppAutoRunUtils* mAutoRun;
};
