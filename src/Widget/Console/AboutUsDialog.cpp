#include "Widget/Console/AboutUsDialog.h"

#include "Utils/AppConfig.h"
#include "Utils/AppVersion.h"
#include "Widget/Common/DialogStyle.h"

#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutUsDialog::AboutUsDialog(QWidget* parent) : FramelessDialog(parent), mVersion(new QLabel(this))
{
    setDraggable(true);
    setStyleSheet(DialogStyle::sheet());
    setFixedSize(360, 330);
    auto* logo = new QLabel(this);
    logo->setPixmap(QIcon(QStringLiteral(":/console/logo.svg")).pixmap(80, 80));
    logo->setAlignment(Qt::AlignCenter);
    auto* name = new QLabel(QStringLiteral("Zorvane"), this);
    name->setObjectName(QStringLiteral("headingLabel"));
    name->setAlignment(Qt::AlignCenter);
    auto* tagline = new QLabel(tr("语音鼠标助手"), this);
    tagline->setObjectName(QStringLiteral("mutedLabel"));
    tagline->setAlignment(Qt::AlignCenter);
    mVersion->setAlignment(Qt::AlignCenter);
    auto* link = new QLabel(this);
    link->setText(tr("<a href=\"%1\">访问软件网站</a>")
                      .arg(AppConfig::getInstance()->productSiteUrl().toString().toHtmlEscaped()));
    link->setOpenExternalLinks(true);
    link->setAlignment(Qt::AlignCenter);
    auto* ok = new QPushButton(tr("确定"), this);
    ok->setObjectName(QStringLiteral("primaryButton"));
    connect(ok, &QPushButton::clicked, this, &QWidget::close);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 16, 16, 20);
    layout->addLayout(titleBar(tr("关于我们")));
    layout->addWidget(logo);
    layout->addWidget(name);
    layout->addWidget(tagline);
    layout->addSpacing(6);
    layout->addWidget(mVersion);
    layout->addWidget(link);
    layout->addStretch();
    layout->addWidget(ok, 0, Qt::AlignHCenter);
    setAppVersion(QLatin1String(kAppVersion));
}

void AboutUsDialog::setAppVersion(const QString& version)
{
    mVersion->setText(tr("版本号：%1").arg(version));
}

QString AboutUsDialog::versionText() const
{
    return mVersion->text();
}
