#include "Widget/Console/UpdateDialog.h"

#include "Widget/Common/DialogStyle.h"
#include "Widget/Console/AppAutoRunDialog.h"
#include "WidgetPresenter/UpdatePresenter.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

enum Page { UpToDate = 0, Offer = 1, Downloading = 2, Message = 3 };

QLabel* picture(QWidget* parent, const QString& path, int side)
{
    auto* label = new QLabel(parent);
    label->setPixmap(QIcon(path).pixmap(side, side));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QPushButton* namedButton(QWidget* parent, const QString& text, const QString& name, bool primary = false)
{
    auto* button = new QPushButton(text, parent);
    button->setProperty("role", name);
    if (primary) {
        button->setObjectName(QStringLiteral("primaryButton"));
    }
    return button;
}

}  // namespace

UpdateDialog::UpdateDialog(QWidget* parent, HttpManager* http, AppLauncher* launcher)
    : FramelessDialog(parent),
      mPresenter(new UpdatePresenter(this, http, launcher, this)),
      mPages(new QStackedWidget(this))
{
    setDraggable(true);
    setStyleSheet(DialogStyle::sheet());
    setFixedSize(440, 320);
    mPages->addWidget(makeUpToDatePage());
    mPages->addWidget(makeOfferPage());
    mPages->addWidget(makeDownloadPage());
    mPages->addWidget(makeMessagePage());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 16, 16, 20);
    layout->addLayout(titleBar(tr("检查更新")));
    layout->addWidget(mPages, 1);
}

UpdateDialog::~UpdateDialog()
{
    // The download's replies must not outlive the file they write to unnoticed.
    if (currentIndex() == Downloading) {
        mPresenter->onButtonCancel();
    }
}

QWidget* UpdateDialog::makeUpToDatePage()
{
    auto* page = new QWidget(this);
    auto* text = new QLabel(tr("您的Zorvane已经是最新版本!"), page);
    text->setObjectName(QStringLiteral("titleLabel"));
    text->setAlignment(Qt::AlignCenter);
    mVersionLabel = new QLabel(page);
    mVersionLabel->setObjectName(QStringLiteral("mutedLabel"));
    mVersionLabel->setAlignment(Qt::AlignCenter);
    QPushButton* ok = namedButton(page, tr("确定"), QStringLiteral("ok"), true);
    connect(ok, &QPushButton::clicked, mPresenter, &UpdatePresenter::onButtonOk);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch();
    layout->addWidget(picture(page, QStringLiteral(":/console/logo.svg"), 72));
    layout->addSpacing(8);
    layout->addWidget(text);
    layout->addWidget(mVersionLabel);
    layout->addStretch();
    layout->addWidget(ok, 0, Qt::AlignRight);
    return page;
}

QWidget* UpdateDialog::makeOfferPage()
{
    auto* page = new QWidget(this);
    mNotes = new QTextBrowser(page);
    mNotes->setOpenLinks(false);
    QPushButton* decline = namedButton(page, tr("暂不更新"), QStringLiteral("decline"));
    QPushButton* update = namedButton(page, tr("立即更新"), QStringLiteral("update"), true);
    connect(decline, &QPushButton::clicked, this, [this] {
        emit signalNoUpdate();
        mPresenter->onButtonOnVerra();
    });
    connect(update, &QPushButton::clicked, mPresenter, &UpdatePresenter::onButtonUpdate);
    auto* top = new QHBoxLayout;
    top->addWidget(picture(page, QStringLiteral(":/console/update.svg"), 48));
    top->addWidget(mNotes, 1);
    auto* buttons = buttonRow({decline, update});
    auto* layout = new QVBoxLayout(page);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);
    return page;
}

QWidget* UpdateDialog::makeDownloadPage()
{
    auto* page = new QWidget(this);
    auto* text = new QLabel(tr("正在下载更新版本..."), page);
    text->setObjectName(QStringLiteral("titleLabel"));
    text->setAlignment(Qt::AlignCenter);
    mProgress = new QProgressBar(page);
    mProgress->setTextVisible(false);
    QPushButton* cancel = namedButton(page, tr("取消"), QStringLiteral("cancel"));
    connect(cancel, &QPushButton::clicked, mPresenter, &UpdatePresenter::onButtonCancel);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch();
    layout->addWidget(picture(page, QStringLiteral(":/console/update.svg"), 56));
    layout->addSpacing(8);
    layout->addWidget(text);
    layout->addSpacing(8);
    layout->addWidget(mProgress);
    layout->addStretch();
    layout->addWidget(cancel, 0, Qt::AlignRight);
    return page;
}

QWidget* UpdateDialog::makeMessagePage()
{
    auto* page = new QWidget(this);
    mMessage = new QLabel(page);
    mMessage->setWordWrap(true);
    mMessage->setTextInteractionFlags(Qt::TextSelectableByMouse);  // the command can be copied
    QPushButton* ok = namedButton(page, tr("确定"), QStringLiteral("message-ok"), true);
    connect(ok, &QPushButton::clicked, mPresenter, &UpdatePresenter::onButtonOk);
    auto* layout = new QVBoxLayout(page);
    layout->addStretch();
    layout->addWidget(mMessage);
    layout->addStretch();
    layout->addWidget(ok, 0, Qt::AlignRight);
    return page;
}

void UpdateDialog::showMessage(QString text)
{
    mMessage->setText(text);
    mPages->setCurrentIndex(Message);
}

void UpdateDialog::setStackedWidgetCurrentIndex(int index)
{
    mPages->setCurrentIndex(index);
}

void UpdateDialog::setProgressBarValue(int value)
{
    mProgress->setValue(value);
}

void UpdateDialog::setProgressBarMaximum(int maximum)
{
    // A server that sends no length reports no total: the bar then just shows activity.
    mProgress->setMaximum(maximum > 0 ? maximum : 0);
}

void UpdateDialog::toShow()
{
    show();
    raise();
    activateWindow();
}

void UpdateDialog::setNewestVersion(QString text)
{
    mVersionLabel->setText(text);
}

void UpdateDialog::setDiscoverNewestVersionInfo(QString text)
{
    mNotes->setPlainText(text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
}

void UpdateDialog::closeAppAutoRunView()
{
    AppAutoRunDialog* autoRun = AppAutoRunDialog::getInstance(parentWidget());
    if (autoRun->isVisible()) {
        autoRun->forceFinishView();
    }
}

int UpdateDialog::currentIndex() const
{
    return mPages->currentIndex();
}

QPushButton* UpdateDialog::button(const QString& name) const
{
    for (QPushButton* b : findChildren<QPushButton*>()) {
        if (b->property("role").toString() == name) {
            return b;
        }
    }
    return nullptr;
}

void UpdateDialog::onVersion(VersionInfo vi)
{
    mPresenter->onVersion(vi);
}

void UpdateDialog::reject()
{
    // Closed while downloading: stop the transfer; its error brings the offer back for a retry.
    if (currentIndex() == Downloading) {
        mPresenter->onButtonCancel();
    }
    FramelessDialog::reject();
}
