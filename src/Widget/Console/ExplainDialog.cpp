#include "Widget/Console/ExplainDialog.h"

#include "Widget/Common/DialogStyle.h"

#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

ExplainDialog::ExplainDialog(QWidget* parent) : FramelessDialog(parent), mPicture(new QLabel(this))
{
    setDraggable(true);
    setStyleSheet(DialogStyle::sheet());
    mPicture->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 14, 14, 20);
    layout->addLayout(titleBar(tr("使用说明")));
    layout->addWidget(mPicture, 1);
    showImage(QIcon(QStringLiteral(":/console/explain_default.svg")).pixmap(480, 300));
}

bool ExplainDialog::setImage(const QString& path)
{
    QPixmap image(path);
    if (image.isNull()) {
        return false;
    }
    showImage(image);
    return true;
}

void ExplainDialog::showImage(const QPixmap& image)
{
    // Bounded in device-independent pixels: a picture with twice the pixels for a HiDPI screen
    // shows as large as on any other.
    const qreal ratio = image.devicePixelRatioF();
    const QSize shown = image.size() / ratio;
    mImage = image;
    if (shown.width() > kMaxWidth || shown.height() > kMaxHeight) {
        mImage =
            image.scaled(QSize(kMaxWidth, kMaxHeight) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        mImage.setDevicePixelRatio(ratio);
    }
    mPicture->setPixmap(mImage);
    adjustSize();
}
