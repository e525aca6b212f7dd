#pragma once

#include "Utils/Singleton.h"
#include "Utils/UserPreferences.h"
#include "Widget/Panels/FloatingCardDialog.h"

class ChangeTranMoreLanguageDialog;
class QPushButton;

// Picks the pair of a voice translation from fixed buttons, the pair used last, or "更多"
// for the two full lists.
class ChangeTranLanguageDialog : public FloatingCardDialog, public Singleton<ChangeTranLanguageDialog> {
    Q_OBJECT

public:
    // more null: the process-wide list dialog.
    explicit ChangeTranLanguageDialog(QWidget* parent = nullptr,
                                      ChangeTranMoreLanguageDialog* more = nullptr);

    void setPreference(UserPreferences preference);
    void moveChangeTranMoreLanguageDialog(int x, int y);

    QPushButton* customButton() const { return mCustom; }
    QPushButton* moreButton() const { return mMoreButton; }
    QPushButton* pairButton(const QString& text) const;

signals:
    void signalChangeLanguage(int src, int dst);

public slots:
    void onPreferences(UserPreferences preference);

private:
    void choose(int src, int dst);
    void onMore();

    UserPreferences mPreferences;
    ChangeTranMoreLanguageDialog* mMore;
    QPushButton* mCustom;
    QPushButton* mMoreButton;
};
