#include "Widget/Common/MessageDialog.h"

#include "Widget/Common/DialogStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

MessageDialog::MessageDialog(QWidget* parent)
    : FramelessDialog(parent, Qt::WindowSystemMenuHint | Qt::WindowStaysOnTopHint),
      mTitle(new QLabel(this)),
      mSubmit(new QPushButton(tr("确定"), this)),
      mCancel(new QPushButton(tr("取消"), this))
{
    setStyleSheet(DialogStyle::sheet());
    setFixedWidth(360);
    mTitle->setObjectName(QStringLiteral("titleLabel"));
    mTitle->setWordWrap(true);
    mTitle->setAlignment(Qt::AlignCenter);
    mSubmit->setObjectName(QStringLiteral("primaryButton"));
    auto* buttons = buttonRow({mCancel, mSubmit});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 20);
    layout->setSpacing(18);
    layout->addWidget(mTitle);
    layout->addLayout(buttons);
    connect(mSubmit, &QPushButton::clicked, this, [this] { done(1); });
    connect(mCancel, &QPushButton::clicked, this, [this] { done(0); });
}

void MessageDialog::setTitle(QString title)
{
    mTitle->setText(title);
    // A window does not follow its layout's height for its width by itself, and the style
    // sheet's font decides how many lines the text wraps to: a long text would be cut.
    ensurePolished();
    adjustSize();
    resize(width(), qMax(height(), heightForWidth(width())));
}

void MessageDialog::setSubmitHidden(bool hidden)
{
    mSubmit->setHidden(hidden);
}

void MessageDialog::setCancelHidden(bool hidden)
{
    mCancel->setHidden(hidden);
}

QString MessageDialog::title() const
{
    return mTitle->text();
}
