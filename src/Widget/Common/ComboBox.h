#pragma once

#include <QComboBox>

// A list that tells whether its popup is open: a window that hides when the pointer leaves it
// must not hide under an open list, whose popup lies outside the window.
class ComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit ComboBox(QWidget* parent = nullptr) : QComboBox(parent) {}

    bool isShowPopup() const { return mShowPopup; }

    void showPopup() override;
    void hidePopup() override;

private:
    bool mShowPopup = false;
};
