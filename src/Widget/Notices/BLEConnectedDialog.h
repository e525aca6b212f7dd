#pragma once

#include "Utils/Singleton.h"

#include <QDialog>

class QTimer;

// The short hint that the mouse is now connected over Bluetooth: a picture that stands for
// 3 seconds in the middle of the screen without taking the keyboard.
class BLEConnectedDialog : public QDialog, public Singleton<BLEConnectedDialog> {
    Q_OBJECT
    friend class Singleton<BLEConnectedDialog>;

public:
    static constexpr int kShowMs = 3000;
    static const QSize kSize;

    void showHint();
    QTimer* hideTimer() const { return mTimer; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit BLEConnectedDialog(QWidget* parent = nullptr);

    QTimer* mTimer;
};
