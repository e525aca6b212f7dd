#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;

// A strip with one line of text at the bottom right of the screen, on top of everything,
// taking no focus; it goes by itself after 3 seconds. Every notice is a new dialog.
class NotificationDialog : public QDialog {
    Q_OBJECT

public:
    static constexpr int kShowMs = 3000;

    explicit NotificationDialog(QWidget* parent = nullptr);

    void showMessage(const QString& text);
    QString text() const;
    QTimer* hideTimer() { return &mTimer; }

public slots:
    void hideAnimation();

private:
    QLabel* mLabel;
    QTimer mTimer;
};
