#pragma once

#include "Utils/Singleton.h"
#include "Utils/UserPreferences.h"
#include "Widget/Panels/FloatingCardDialog.h"

class ComboBox;
class QPushButton;

// Picks any pair of spoken and written language from two lists.
class ChangeTranMoreLanguageDialog : public FloatingCardDialog,
                                     public Singleton<ChangeTranMoreLanguageDialog> {
    Q_OBJECT

public:
    static constexpr int kFrameHeight = 144;

    explicit ChangeTranMoreLanguageDialog(QWidget* parent = nullptr);

    ComboBox* sourceList() const { return mSource; }
    ComboBox* targetList() const { return mTarget; }
    QPushButton* okButton() const { return mOk; }
    QPushButton* cancelButton() const { return mCancel; }

signals:
    void signalsChangeTranslateMoreLanguage(int src, int dst);

public slots:
    void onSetPreference(UserPreferences preference);

protected:
    bool isLeaveReported() const override;

private:
    UserPreferences mPreferences;
    ComboBox* mSource;
    ComboBox* mTarget;
    QPushButton* mOk;
    QPushButton* mCancel;
};
