#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"
#include "WidgetPresenter/AppAutoRunPresenter.h"

class QCheckBox;
class QLabel;
class QPushButton;

// The question at the first start when autostart is off: checked and confirmed, Zorvane
// starts with the session from then on. Ends with 1 when autostart was turned on.
class AppAutoRunDialog : public FramelessDialog, public AppAutoRunView, public Singleton<AppAutoRunDialog> {
    Q_OBJECT

public:
    static constexpr int kWidth = 400;
    static constexpr int kMinHeight = 200;

    // autoRun may be null for the process-wide one.
    explicit AppAutoRunDialog(QWidget* parent = nullptr, AppAutoRunUtils* autoRun = nullptr);

    void setCheckAppAutoRun(bool checked);
    // Another window ends the question: the box goes unchecked so that nothing is changed, and
    // the question comes again at the next start.
    void forceFinishView();
    void submit();

    bool isCheckAppAutoRun() override;
    void finish(int result) override { done(result); }

    QCheckBox* checkBox() const { return mCheck; }
    QPushButton* submitButton() const { return mSubmit; }
    // What will start at login, when that needs saying; may be null.
    QLabel* loginNote() const { return mNote; }

private:
    AppAutoRunPresenter* mPresenter;
    QCheckBox* mCheck;
    QPushButton* mSubmit;
    QLabel* mNote = nullptr;
};
