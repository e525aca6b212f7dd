#pragma once

#include <QDialog>
#include <QRect>

class QPushButton;

// What the three language pickers share: a small card that floats over the application the
// user speaks into without taking its keyboard, and tells when the pointer enters or leaves
// it (the panels hide a picker a while after the pointer left).
class ChangeLanguageDialogBase : public QDialog {
    Q_OBJECT

public:
    static constexpr int kRadius = 8;

signals:
    void signalsMouseEnter();
    void signalsMouseLeave();

protected:
    // body: the part of the window that is drawn, in its own coordinates (the whole window
    // when empty).
    explicit ChangeLanguageDialogBase(QWidget* parent, Qt::WindowFlags extraFlags = {}, QRect body = QRect());

    // A flat language button at a fixed place.
    QPushButton* addButton(const QString& text, const QRect& geometry);
    // Whether the pointer leaving counts now; a list open below the card keeps it.
    virtual bool isLeaveReported() const { return true; }

    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QRect body() const;

    QRect mBody;
};
