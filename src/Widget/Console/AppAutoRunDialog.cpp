#include "Widget/Console/AppAutoRunDialog.h"

#include "Widget/Common/DialogStyle.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

AppAutoRunDialog::AppAutoRunDialog(QWidget* parent, AppAutoRunUtils* autoRun)
    : FramelessDialog(parent),
      mPresenter(new AppAutoRunPresenter(this, autoRun, this)),
      mCheck(new QCheckBox(tr("开机时自动启动Zorvane"), this)),
      mSubmit(new QPushButton(tr("确定"), this))
{
    setDraggable(true);
    setModal(true);
    setStyleSheet(DialogStyle::sheet());
    auto* text = new QLabel(tr("Zorvane需要在后台运行才能随时响应鼠标的语音键。"), this);
    text->setWordWrap(true);
    mSubmit->setObjectName(QStringLiteral("primaryButton"));
    auto* buttons = buttonRow({mSubmit});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 16, 16, 20);
    layout->addLayout(titleBar(tr("开机启动")));
    layout->addSpacing(6);
    layout->addWidget(text);
    layout->addWidget(mCheck);
    QString note = mPresenter->loginNote();
    if (!note.isEmpty()) {
        // A path has no spaces: a zero-width one after each slash lets it wrap.
        mNote = new QLabel(note.replace(QLatin1Char('/'), QStringLiteral("/\u200b")), this);
        mNote->setWordWrap(true);
        mNote->setObjectName(QStringLiteral("mutedLabel"));
        layout->addWidget(mNote);
    }
    layout->addStretch();
    layout->addLayout(buttons);
    // As tall as the texts need at this width, as their style sets them: a longer path makes
    // the note wrap to more lines.
    ensurePolished();
    setFixedSize(kWidth, std::max(kMinHeight, layout->heightForWidth(kWidth)));
    connect(mSubmit, &QPushButton::clicked, mPresenter, &AppAutoRunPresenter::submit);
}

void AppAutoRunDialog::setCheckAppAutoRun(bool checked)
{
    mCheck->setChecked(checked);
}

void AppAutoRunDialog::forceFinishView()
{
    if (mCheck->isChecked()) {
        mCheck->setChecked(false);
    }
    // Not the user's answer: nothing is turned on, and no no is remembered.
    if (isVisible()) {
        done(0);
    }
}

void AppAutoRunDialog::submit()
{
    mPresenter->submit();
}

bool AppAutoRunDialog::isCheckAppAutoRun()
{
    return mCheck->isChecked();
}
