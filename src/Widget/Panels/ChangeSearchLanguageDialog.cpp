#include "Widget/Panels/ChangeSearchLanguageDialog.h"

#include "Utils/LanguageTables.h"

#include <QPushButton>

ChangeSearchLanguageDialog::ChangeSearchLanguageDialog(QWidget* parent) : FloatingCardDialog(parent)
{
    setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    setFixedSize(186, 42);
    const struct {
        int x;
        const char* text;
    } buttons[] = {{3, QT_TRANSLATE_NOOP("LanguageTables", "中")},
                   {49, QT_TRANSLATE_NOOP("LanguageTables", "粤")},
                   {94, QT_TRANSLATE_NOOP("LanguageTables", "川")},
                   {140, QT_TRANSLATE_NOOP("LanguageTables", "英")}};
    for (int language = 0; language < 4; ++language) {
        QPushButton* button =
            addButton(LanguageTables::shown(buttons[language].text), QRect(buttons[language].x, 3, 42, 36));
        connect(button, &QPushButton::clicked, this, [this, language] {
            emit signalChangeLanguage(language);
            hide();
        });
    }
}
