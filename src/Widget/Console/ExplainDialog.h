#pragma once

#include "Utils/Singleton.h"
#include "Widget/Common/FramelessDialog.h"

class QLabel;

// A picture that explains the mouse's keys; the backend may send one of its own.
class ExplainDialog : public FramelessDialog, public Singleton<ExplainDialog> {
    Q_OBJECT

public:
    static constexpr int kMaxWidth = 640;
    static constexpr int kMaxHeight = 420;

    explicit ExplainDialog(QWidget* parent = nullptr);

    // A file that does not load leaves the picture shown until now.
    bool setImage(const QString& path);
    const QPixmap& image() const { return mImage; }

private:
    void showImage(const QPixmap& image);

    QLabel* mPicture;
    QPixmap mImage;
};
