#pragma once

#include <QWidget>

class MouseControl;
class QCheckBox;
class QComboBox;
class QLabel;
class QRadioButton;
class QSlider;
class TalkButton;

// The virtual mouse's control window. It never takes the keyboard: the text dictated with its
// talk buttons goes to the window the user was typing in.
class MouseWindow : public QWidget {
    Q_OBJECT

public:
    explicit MouseWindow(MouseControl* control, QWidget* parent = nullptr);

    // In the screen's bottom left corner, clear of Zorvane's dialogs (the middle of the screen)
    // and of its strip and notices (the bottom right).
    void placeAside();

    // A control by its object name (dictate, command, key, click, double-click, long-press, plug,
    // ble, battery, lowbat-1, lowbat-2, shutdown, charging, microphone, file, choose, hearing,
    // status), for driving the window from outside; null for an unknown name.
    QWidget* control(const QString& name) const;

private:
    QWidget* buildKeys();
    QWidget* buildDevice();
    QWidget* buildSound();
    void chooseFile();
    void showSource();
    void refreshStatus();
    int chosenKey() const;

    MouseControl* mControl;
    TalkButton* mDictate = nullptr;
    TalkButton* mCommand = nullptr;
    QComboBox* mKey = nullptr;
    QCheckBox* mPlugged = nullptr;
    QCheckBox* mBle = nullptr;
    QSlider* mBattery = nullptr;
    QLabel* mBatteryValue = nullptr;
    QCheckBox* mCharging = nullptr;
    QRadioButton* mMicrophone = nullptr;
    QRadioButton* mFile = nullptr;
    QLabel* mHearing = nullptr;
    QLabel* mStatus = nullptr;
};
