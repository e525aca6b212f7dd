#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"

#include <QTimer>

class QLabel;

// A bubble at the bottom right with one line, gone after 1.5 seconds; a new text restarts
// the time. It floats: it never takes the keyboard.
class ZorvaneMessageDialog : public FramelessDialog, public Singleton<ZorvaneMessageDialog> {
    Q_OBJECT

public:
    static constexpr int kShowMs = 1500;

    explicit ZorvaneMessageDialog(QWidget* parent = nullptr);

    void setMessageText(const QString& text);
    QString messageText() const;
    QTimer* hideTimer() { return &mTimer; }

private:
    QLabel* mLabel;
    QTimer mTimer;
};
