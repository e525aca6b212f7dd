#pragma once

#include <QHash>
#include <QLineEdit>
#include <QList>
#include <QTimer>

// The shortcut capture box of the command words. In shortcut mode it collects the keys held
// together and emits them, in press order, once all are released; an unfinished chord lapses
// 3 seconds after its last press. Otherwise it is an ordinary edit box.
class LineEdit : public QLineEdit {
    Q_OBJECT

public:
    static constexpr int kClearMs = 3000;

    explicit LineEdit(QWidget* parent = nullptr);

    void setShortcutMode(bool on);
    bool isShortcutMode() const;
    static QString getKeyName(int qtKey);

    // Tests: the lapse timer, to expire it without waiting.
    QTimer* clearTimer() { return &mTimerClear; }

signals:
    void signalShortcut(QList<int> events);

public slots:
    void onClearTimeout();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

private:
    void removeInvalidKey();
    bool checkFinish() const;

    bool mShortcutMode = false;
    QHash<int, int> mKeyStates;
    QList<int> mKeys;
    QTimer mTimerClear;
};
