#pragma once

#include "Utils/Singleton.h"
#include "WidgetPresenter/TextTranslateView.h"

#include <QDialog>
#include <QPoint>
#include <QTimer>

class ComboBox;
class HttpManager;
class PaddleWordsDialog;
class QFrame;
class QLabel;
class QParallelAnimationGroup;
class QPushButton;
class SpeechSynthesisUtils;
class TextEdit;
class TextTranslatePresenter;

// The window that shows a selection and its translation. It is an ordinary window the user
// moves by its body; it is shown without taking the keyboard, and takes it when the user
// clicks into it to edit the source text.
class TextTranslateDialog : public QDialog, public TextTranslateView, public Singleton<TextTranslateDialog> {
    Q_OBJECT

public:
    static constexpr int kWidth = 456;
    static constexpr int kHeight = 361;
    static constexpr int kBoxHeight = 90;
    static constexpr int kRadius = 10;

    // Null collaborators: the process-wide ones.
    explicit TextTranslateDialog(QWidget* parent = nullptr, PaddleWordsDialog* paddle = nullptr,
                                 SpeechSynthesisUtils* synthesis = nullptr, HttpManager* http = nullptr);

    // TextTranslateView
    QString getSourceText() override;
    void setSourceTextIsOnlyRead(bool readOnly) override;
    void setSourceText(QString text) override;
    void setTargetText(QString text) override;
    void setComboTextTranslateLanguage(int index) override;
    int getComboTextTranslateLanguage() override;
    void setShowHint(QString hint) override;
    void setTranslateStatus(int status) override;
    bool isHiddenView() override;
    void toShow() override;
    void setCurrentIpId(int id) override;

    void toHide();
    bool isPlaying() const;
    void moveWindow();
    void startShowCopySuccess();
    void setNewTextTranslateView(int s, int t);

    // For tests and screenshots.
    TextTranslatePresenter* presenter() const { return mPresenter; }
    TextEdit* sourceBox() const { return mSource; }
    TextEdit* targetBox() const { return mTarget; }
    QLabel* hintLabel() const { return mHint; }
    QPushButton* readButton() const { return mRead; }
    QPushButton* editButton() const { return mEdit; }
    QPushButton* copyButton() const { return mCopy; }
    QPushButton* closeButton() const { return mClose; }
    ComboBox* languageList() const { return mLanguage; }
    QParallelAnimationGroup* animation() const { return mAnimation; }
    const QTimer& hintTimer() const { return mTimerHint; }

public slots:
    void onSelectAll();
    void onCopy();
    void onButtonEdit();
    void onButtonCopy();
    void onCloseLabel();
    void onTextChange();
    void onRightMenu(QPoint point);
    void onChangeLanguage(int index);
    void onSpeechSynthesisOver();

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void setupUi();
    void initView();
    void onReadButton();
    void setReadLook(bool active);
    void stopReading();
    void updateShape();
    QRect cardRect() const;

    TextTranslatePresenter* mPresenter;
    PaddleWordsDialog* mPaddle;
    bool mDragging = false;
    QPoint mDragPoint;
    bool mEditByButton = false;
    int mHintCount = 0;
    QTimer mTimerHint;
    QParallelAnimationGroup* mAnimation;

    QFrame* mFrame = nullptr;
    QLabel* mHint = nullptr;
    QLabel* mTitle = nullptr;
    TextEdit* mSource = nullptr;
    TextEdit* mTarget = nullptr;
    QFrame* mDivider = nullptr;
    QWidget* mLanguageRow = nullptr;
    ComboBox* mLanguage = nullptr;
    QPushButton* mRead = nullptr;
    QPushButton* mEdit = nullptr;
    QPushButton* mCopy = nullptr;
    QPushButton* mClose = nullptr;
};
