#pragma once

#include <QDialog>
#include <QRect>

class QPainter;
class QPushButton;

// The small cards of the selection and language choices (the three pickers, the selection
// toolbar): each floats over the application the user works in without taking its keyboard,
// and tells when the pointer enters or leaves it (the panels hide a picker a while after the
// pointer left).
class FloatingCardDialog : public QDialog {
    Q_OBJECT

public:
    static constexpr int kRadius = 8;

    // The white rounded card with its thin edge, as every window of this group draws it.
    static void paintCard(QPainter* painter, const QRect& card, int radius);
    // A flat button that shows a picture of the selection group at a fixed place.
    static QPushButton* addIconButton(QWidget* parent, const QString& icon, const QString& tip,
                                      const QRect& geometry, int iconSize);

signals:
    void signalsMouseEnter();
    void signalsMouseLeave();

protected:
    // body: the part of the window that is drawn, in its own coordinates (the whole window
    // when empty).
    explicit FloatingCardDialog(QWidget* parent, Qt::WindowFlags extraFlags = {}, QRect body = QRect());

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
