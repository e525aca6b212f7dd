#include "Widget/Panels/ChangeSearchLanguageDialog.h"

#include <QPushButton>

ChangeSearchLanguageDialog::ChangeSearchLanguageDialog(QWidget* parent) : FloatingCardDialog(parent)
{
    setAttribute(Qt::WA_MacAlwaysShowToolWindow);
    setFixedSize(186, 42);
    const struct {
        int x;
        const char* text;
    } buttons[] = {{3, "中"}, {49, "粤"}, {94, "川"}, {140, "英"}};
    for (int language = 0; language < 4; ++language) {
        QPushButton* button =
            addButton(QString::fromUtf8(buttons[language].text), QRect(buttons[language].x, 3, 42, 36));
        connect(button, &QPushButton::clicked, this, [this, language] {
            emit signalChangeLanguage(language);
            hide();
        });
    }
}
