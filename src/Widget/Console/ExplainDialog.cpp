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
    mImage = image.width() > kMaxWidth || image.height() > kMaxHeight
                 ? image.scaled(kMaxWidth, kMaxHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                 : image;
    mPicture->setPixmap(mImage);
    adjustSize();
}
