#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;

// A strip with one line of text at the bottom right of the work area, on top of everything,
// taking no focus, drawn like the plug strip; it goes by itself after 3 seconds. Every notice
// is a new dialog.
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

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* mLabel;
    QTimer mTimer;
};
