#include "Widget/Common/DeletePopupDialog.h"

#include "Widget/Common/DialogStyle.h"
#include "Widget/Common/Pictures.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

DeletePopupDialog::DeletePopupDialog(QWidget* parent)
    : FramelessDialog(parent, Qt::WindowStaysOnTopHint),
      mPresenter(new DeletePopupPresenter(this, this)),
      mSubmit(new QPushButton(tr("删除"), this)),
      mCancel(new QPushButton(tr("取消"), this))
{
    setModal(true);
    setStyleSheet(DialogStyle::sheet());
    setFixedSize(340, 170);
    auto* icon = new QLabel(this);
    icon->setPixmap(Pictures::load(QStringLiteral(":/common/warning.svg"), icon, QSize(40, 40)));
    auto* question = new QLabel(tr("确定删除所选的命令词吗？"), this);
    question->setObjectName(QStringLiteral("titleLabel"));
    auto* hint = new QLabel(tr("删除后无法恢复"), this);
    hint->setObjectName(QStringLiteral("mutedLabel"));
    auto* texts = new QVBoxLayout;
    texts->addWidget(question);
    texts->addWidget(hint);
    auto* top = new QHBoxLayout;
    top->setSpacing(14);
    top->addWidget(icon);
    top->addLayout(texts, 1);
    mSubmit->setObjectName(QStringLiteral("primaryButton"));
    auto* buttons = buttonRow({mCancel, mSubmit});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 20);
    layout->addLayout(top);
    layout->addStretch();
    layout->addLayout(buttons);
    connect(mSubmit, &QPushButton::clicked, mPresenter, &DeletePopupPresenter::submit);
    connect(mCancel, &QPushButton::clicked, mPresenter, &DeletePopupPresenter::cancel);
}
