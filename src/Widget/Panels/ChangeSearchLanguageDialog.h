#pragma once

#include "Utils/Singleton.h"
#include "Widget/Panels/ChangeLanguageDialogBase.h"

// Picks the language of a voice search: Mandarin, Cantonese, Sichuanese or English, sent as
// the row of the console's dictation box.
class ChangeSearchLanguageDialog : public ChangeLanguageDialogBase,
                                   public Singleton<ChangeSearchLanguageDialog> {
    Q_OBJECT

public:
    explicit ChangeSearchLanguageDialog(QWidget* parent = nullptr);

signals:
    void signalChangeLanguage(int language);
};
