#include "Widget/Panels/ChangeTranLanguageDialog.h"

#include "Utils/LanguageTables.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"

#include <QPushButton>

namespace {

struct PairPlace {
    const char* label;
    int x;
    int y;
};
// Where each fixed pair of the language table sits; the custom pair takes the last place.
constexpr PairPlace kPlaces[] = {
    {"中(简)", 2, 2},  {"粤(简)", 74, 2},  {"川", 146, 2},  {"中-英", 218, 2},
    {"中(繁)", 2, 40}, {"粤(繁)", 74, 40}, {"英", 146, 40},
};

QString rowText(const char* const text)
{
    return LanguageTables::shown(text);
}

}  // namespace

ChangeTranLanguageDialog::ChangeTranLanguageDialog(QWidget* parent, ChangeTranMoreLanguageDialog* more)
    : FloatingCardDialog(parent),
      mMore(more != nullptr ? more : ChangeTranMoreLanguageDialog::getInstance(parent)),
      mCustom(addButton(QString(), QRect(218, 40, 70, 36))),
      mMoreButton(addButton(tr("更多"), QRect(290, 2, 68, 74)))
{
    setFixedSize(360, 78);
    for (const PairPlace& place : kPlaces) {
        for (const TranslatePair& pair : kTranslatePairs) {
            if (qstrcmp(pair.label, place.label) != 0) {
                continue;
            }
            QPushButton* button = addButton(rowText(pair.label), QRect(place.x, place.y, 70, 36));
            button->setObjectName(QString::fromUtf8(pair.label));
            connect(button, &QPushButton::clicked, this,
                    [this, src = pair.source, dst = pair.target] { choose(src, dst); });
        }
    }
    connect(mCustom, &QPushButton::clicked, this, [this] {
        choose(mPreferences.lastVoiceTranslateSourceLanguage, mPreferences.lastVoiceTranslateTargetLanguage);
    });
    connect(mMoreButton, &QPushButton::clicked, this, &ChangeTranLanguageDialog::onMore);
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &ChangeTranLanguageDialog::onPreferences);
    setPreference(PreferencesUtils::getInstance()->getUserPreferences());
}

QPushButton* ChangeTranLanguageDialog::pairButton(const QString& text) const
{
    return findChild<QPushButton*>(text, Qt::FindDirectChildrenOnly);
}

void ChangeTranLanguageDialog::setPreference(UserPreferences preference)
{
    mPreferences = preference;
    const int src = mPreferences.lastVoiceTranslateSourceLanguage;
    const int dst = mPreferences.lastVoiceTranslateTargetLanguage;
    // A row out of either table shows an empty half rather than reading past it.
    const bool srcKnown = src >= 0 && src < kSpeechLanguageRows;
    const bool dstKnown = dst >= 0 && dst < kTranslateLanguageCount;
    const QString format = QStringLiteral("%1-%2");
    mCustom->setToolTip(format.arg(srcKnown ? rowText(kIFlyLanguages[src].name) : QString(),
                                   dstKnown ? rowText(kTranslateLanguages[dst].name) : QString()));
    mCustom->setText(format.arg(srcKnown ? rowText(kIFlyLanguages[src].glyph) : QString(),
                                dstKnown ? rowText(kTranslateLanguages[dst].glyph) : QString()));
}

void ChangeTranLanguageDialog::onPreferences(UserPreferences preference)
{
    setPreference(preference);
}

void ChangeTranLanguageDialog::choose(int src, int dst)
{
    emit signalChangeLanguage(src, dst);
    if (mMore->isVisible()) {
        mMore->hide();
    }
    hide();
}

void ChangeTranLanguageDialog::onMore()
{
    if (mMore->isVisible()) {
        return;
    }
    moveChangeTranMoreLanguageDialog(x() + width() - mMore->width(),
                                     y() - ChangeTranMoreLanguageDialog::kFrameHeight);
    mMore->show();
}

void ChangeTranLanguageDialog::moveChangeTranMoreLanguageDialog(int x, int y)
{
    const QRect screen = WindowLook::workArea();
    const int overhang = x + mMore->width() - (screen.x() + screen.width());
    if (overhang > 0) {
        x -= overhang;
    }
    mMore->move(qMax(0, x), qMax(0, y));
}
