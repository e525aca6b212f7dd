#pragma once

#include <QDialog>

class QLabel;
class QTimer;

// The strip that slides in at the top right corner of the screen when the receiver is plugged
// in or pulled out, stands for 3 seconds and slides back out. Every notice is a new dialog,
// deleted when it has gone; it never takes the keyboard focus.
class USBChangeMessageDialog : public QDialog {
    Q_OBJECT

public:
    static constexpr int kWidth = 336;
    static constexpr int kHeight = 72;
    static constexpr int kSlideMs = 800;
    static constexpr int kStandMs = 3000;

    explicit USBChangeMessageDialog(QWidget* parent = nullptr);

    void showMessage(bool insert);
    QString text() const;
    QTimer* standTimer() const { return mTimer; }

public slots:
    void showAnimation();
    void hideAnimation();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QLabel* mIcon;
    QLabel* mLabel;
    QTimer* mTimer;
    bool mInsert = true;
};
