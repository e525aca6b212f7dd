#include "Widget/Panels/ChangeTranMoreLanguageDialog.h"

#include "Utils/LanguageTables.h"
#include "Utils/PreferencesUtils.h"
#include "Widget/Common/ComboBox.h"

#include <QLabel>
#include <QPushButton>

ChangeTranMoreLanguageDialog::ChangeTranMoreLanguageDialog(QWidget* parent)
    : FloatingCardDialog(parent, {}, QRect(0, 0, 252, kFrameHeight)),
      mSource(new ComboBox(this)),
      mTarget(new ComboBox(this)),
      mOk(addButton(tr("确定"), QRect(60, 110, 66, 24))),
      mCancel(addButton(tr("取消"), QRect(160, 110, 66, 24)))
{
    // The window is taller than its card: the space below is left for nothing to be drawn.
    setFixedSize(252, 360);
    setStyleSheet(styleSheet() +
                  QStringLiteral("ComboBox { border: 1px solid #d6d9de; border-radius: 6px; padding: 0 8px;"
                                 " font-size: 14px; color: #2b2f36; background: #fafbfc; }"
                                 "ComboBox::drop-down { border: none; width: 22px; }"
                                 "ComboBox::down-arrow { image: url(:/panels/selection/arrow_down.svg); }"
                                 "QLabel { color: #6b7280; font-size: 13px; }"));
    mSource->setGeometry(55, 16, 186, 36);
    mTarget->setGeometry(55, 60, 186, 36);
    mSource->setToolTip(tr("说话语言"));
    mTarget->setToolTip(tr("文字语言"));
    mSource->setAccessibleName(mSource->toolTip());
    mTarget->setAccessibleName(mTarget->toolTip());
    for (const char* name : kConsoleSourceLabels) {
        mSource->addItem(LanguageTables::shown(name));
    }
    for (const char* name : kConsoleTargetLabels) {
        mTarget->addItem(LanguageTables::shown(name));
    }
    for (ComboBox* list : {mSource, mTarget}) {
        list->setFocusPolicy(Qt::NoFocus);
        list->setMaxVisibleItems(10);
    }
    const struct {
        int y;
        const char* text;
    } captions[] = {{16, QT_TR_NOOP("说话")}, {60, QT_TR_NOOP("文字")}};
    for (const auto& caption : captions) {
        auto* text = new QLabel(tr(caption.text), this);
        text->setGeometry(12, caption.y, 40, 36);
    }

    connect(mOk, &QPushButton::clicked, this, [this] {
        emit signalsChangeTranslateMoreLanguage(mSource->currentIndex(), mTarget->currentIndex());
        hide();
    });
    connect(mCancel, &QPushButton::clicked, this, &QWidget::close);
    connect(PreferencesUtils::getInstance(), &PreferencesUtils::signalPreferencesChange, this,
            &ChangeTranMoreLanguageDialog::onSetPreference);
    onSetPreference(PreferencesUtils::getInstance()->getUserPreferences());
}

void ChangeTranMoreLanguageDialog::onSetPreference(UserPreferences preference)
{
    mPreferences = preference;
    mSource->setCurrentIndex(mPreferences.recognitionLanguage);
    mTarget->setCurrentIndex(mPreferences.voiceTranslateTargetLanguage);
}

bool ChangeTranMoreLanguageDialog::isLeaveReported() const
{
    return !mSource->isShowPopup() && !mTarget->isShowPopup();
}
