#pragma once

#include "Utils/Singleton.h"
#include "Widget/Panels/FloatingCardDialog.h"
#include "WidgetPresenter/PaddleWordsView.h"

#include <QPoint>
#include <QTimer>

class PaddleWordsPresenter;
class QAction;
class QMenu;
class QPushButton;
class SpeechSynthesisUtils;

// The toolbar that opens at the pointer when the user selects text elsewhere: translate the
// selection, read it aloud, choose the reader. It closes 2.5 s after the pointer left it,
// except while it reads.
class PaddleWordsDialog : public FloatingCardDialog,
                          public PaddleWordsView,
                          public Singleton<PaddleWordsDialog> {
    Q_OBJECT

public:
    static constexpr int kTickMs = 100;
    static constexpr int kTicksOutside = 25;
    static constexpr int kAboveCursor = 65;

    // synthesis null: the process-wide one.
    explicit PaddleWordsDialog(QWidget* parent = nullptr, SpeechSynthesisUtils* synthesis = nullptr);

    void startShow();
    void toHide();
    QPoint getPaddleWordViewPoint() const { return mPoint; }
    bool isFollowSpeakPlaying() const;

    // For tests and screenshots.
    int pronPerson() const { return mPronPerson; }
    int outsideCount() const { return mOutsideCount; }
    const QTimer& timer() const { return mTimer; }
    QMenu* readerMenu() const { return mMenu; }
    QPushButton* translateButton() const { return mTranslate; }
    QPushButton* readButton() const { return mRead; }
    QPushButton* readerButton() const { return mReader; }

signals:
    void signalTranslateButtonPress();
    void signalReadingButtonPress(int pronPerson);

public slots:
    // One tick of the pointer watch.
    void onTimeout();
    void onSpeechSynthesisOver();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void createPronPersonMenu();
    void onReadButton();
    void onReader(QAction* action);
    void setReadLook(bool active);

    PaddleWordsPresenter* mPresenter;
    int mPronPerson = 0;
    QPoint mPoint;
    int mOutsideCount = 0;
    QTimer mTimer;
    QMenu* mMenu;
    QPushButton* mTranslate;
    QPushButton* mRead;
    QPushButton* mReader;
};
