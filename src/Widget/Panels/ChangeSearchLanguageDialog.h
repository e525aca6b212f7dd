#pragma once

#include "Utils/Singleton.h"
#include "Widget/Panels/FloatingCardDialog.h"

// Picks the language of a voice search: Mandarin, Cantonese, Sichuanese or English, sent as
// the row of the console's dictation box.
class ChangeSearchLanguageDialog : public FloatingCardDialog, public Singleton<ChangeSearchLanguageDialog> {
    Q_OBJECT

public:
    explicit ChangeSearchLanguageDialog(QWidget* parent = nullptr);

signals:
    void signalChangeLanguage(int language);
};
