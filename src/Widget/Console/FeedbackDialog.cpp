#include "Widget/Console/FeedbackDialog.h"

#include "Utils/AppConfig.h"
#include "Widget/Common/DialogStyle.h"
#include "Widget/Common/MessageDialog.h"
#include "WidgetPresenter/FeedbackPresenter.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const char* const kTitlePrompt = QT_TRANSLATE_NOOP("FeedbackDialog", "请输入标题");
const char* const kContentPrompt = QT_TRANSLATE_NOOP("FeedbackDialog", "请写下您的建议或遇到的问题");
}  // namespace

FeedbackDialog::FeedbackDialog(QWidget* parent, HttpManager* http)
    : FramelessDialog(parent),
      mTitle(new QLineEdit(this)),
      mContent(new QPlainTextEdit(this)),
      mSubmit(new QPushButton(tr("提交"), this)),
      mCancel(new QPushButton(tr("取消"), this)),
      mContact(new QPushButton(tr("联系我们"), this)),
      mFarewell(new MessageDialog(this)),
      mPresenter(new FeedbackPresenter(this, mFarewell, http, this))
{
    setDraggable(true);
    setStyleSheet(DialogStyle::sheet());
    setFixedSize(460, 400);
    mTitle->setPlaceholderText(tr(kTitlePrompt));
    mContent->setPlaceholderText(tr(kContentPrompt));
    mSubmit->setObjectName(QStringLiteral("primaryButton"));
    mContact->setToolTip(tr("点击联系我们！"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(mContact);
    buttons->addStretch();
    buttons->addWidget(mCancel);
    buttons->addWidget(mSubmit);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 16, 16, 20);
    layout->setSpacing(12);
    layout->addLayout(titleBar(tr("意见反馈")));
    layout->addWidget(mTitle);
    layout->addWidget(mContent, 1);
    layout->addLayout(buttons);
    connect(mSubmit, &QPushButton::clicked, mPresenter, &FeedbackPresenter::submit);
    connect(mCancel, &QPushButton::clicked, mPresenter, &FeedbackPresenter::cancel);
    connect(mContact, &QPushButton::clicked, this,
            [] { QDesktopServices::openUrl(AppConfig::getInstance()->contactPageUrl()); });
}

QString FeedbackDialog::getFeedbackEditTitleText()
{
    return mTitle->text();
}

QString FeedbackDialog::getFeedbackEditContentPlainText()
{
    return mContent->toPlainText();
}

void FeedbackDialog::setFeedbackEditTitlePlaceholderText(QString text)
{
    mTitle->setPlaceholderText(text);
}

void FeedbackDialog::setFeedbackEditContentPlaceholderText(QString text)
{
    mContent->setPlaceholderText(text);
}

void FeedbackDialog::toShow()
{
    show();
    raise();
    activateWindow();
}

void FeedbackDialog::clearText()
{
    mTitle->clear();
    mContent->clear();
    // The next feedback starts with the prompts, not with an old warning.
    mTitle->setPlaceholderText(tr(kTitlePrompt));
    mContent->setPlaceholderText(tr(kContentPrompt));
}
