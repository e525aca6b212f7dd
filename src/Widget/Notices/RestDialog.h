#pragma once

#include "Utils/Singleton.h"
#include "Widget/Notices/NoticePanel.h"

class QLabel;

// The break reminder: each showing brings the next of four pictures.
class RestDialog : public NoticePanel, public Singleton<RestDialog> {
    Q_OBJECT

public:
    void showContent();
    // The picture the panel shows now (its resource path).
    QString currentPicture() const { return mCurrentPicture; }

private:
    friend class Singleton<RestDialog>;
    explicit RestDialog(QWidget* parent = nullptr);

    void changeBackground();

    QLabel* mPicture;
    QLabel* mTitle;
    QLabel* mTip;
    int mBackgroundIndex = 0;
    QString mCurrentPicture;
};
