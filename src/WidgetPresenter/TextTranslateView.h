#pragma once

#include <QString>

// The text translation window as its presenter sees it. Hint states (setTranslateStatus):
// 0 none, 1 translating, 2 translation failed, 3 copied.
class TextTranslateView {
public:
    virtual ~TextTranslateView() = default;

    virtual QString getSourceText() = 0;
    virtual void setSourceTextIsOnlyRead(bool readOnly) = 0;
    virtual void setSourceText(QString text) = 0;
    virtual void setTargetText(QString text) = 0;
    virtual void setComboTextTranslateLanguage(int index) = 0;
    virtual int getComboTextTranslateLanguage() = 0;
    virtual void setShowHint(QString hint) = 0;
    virtual void setTranslateStatus(int status) = 0;
    virtual bool isHiddenView() = 0;
    virtual void toShow() = 0;
    virtual void setCurrentIpId(int id) = 0;
};
