#include "Widget/Console/ApplicationPickerDialog.h"

#include "Widget/Common/DialogStyle.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kIconSize = 32;

// For an entry whose icon the theme lacks: a plain tile, so that the rows stay aligned.
QIcon fallbackIcon()
{
    QPixmap pixmap(kIconSize * 2, kIconSize * 2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x2f, 0x7c, 0xf6));
    painter.drawRoundedRect(QRectF(6, 6, 52, 52), 12, 12);
    painter.setBrush(Qt::white);
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 2; ++column) {
            painter.drawRoundedRect(QRectF(17 + column * 17, 17 + row * 17, 13, 13), 3, 3);
        }
    }
    painter.end();
    return QIcon(pixmap);
}

QIcon entryIcon(const QString& icon)
{
    static const QIcon fallback =
        QIcon::fromTheme(QStringLiteral("application-x-executable"), fallbackIcon());
    if (icon.isEmpty()) {
        return fallback;
    }
    if (QFileInfo(icon).isAbsolute()) {
        return QFileInfo::exists(icon) ? QIcon(icon) : fallback;
    }
    return QIcon::fromTheme(icon, fallback);
}

}  // namespace

ApplicationPickerDialog::ApplicationPickerDialog(const QList<InstalledApplication>& applications,
                                                 QWidget* parent)
    : FramelessDialog(parent),
      mFilter(new QLineEdit(this)),
      mList(new QListWidget(this)),
      mEmpty(new QLabel(tr("没有找到应用程序"), this)),
      mOk(new QPushButton(tr("确定"), this))
{
    setDraggable(true);
    setModal(true);
    setStyleSheet(DialogStyle::sheet() +
                  QStringLiteral("QListWidget { border: 1px solid #d6d9de; border-radius: 6px;"
                                 " background: #fafbfc; font-size: 14px; outline: none; }"
                                 "QListWidget::item { padding: 4px 6px; border: none; color: #333333; }"
                                 "QListWidget::item:selected { padding: 4px 6px; border: none;"
                                 " background: #dce9fe; color: #333333; }"));
    setFixedSize(420, 520);
    mFilter->setPlaceholderText(tr("搜索应用程序"));
    mFilter->setClearButtonEnabled(true);
    mList->setIconSize(QSize(kIconSize, kIconSize));
    mList->setUniformItemSizes(true);
    mList->setSelectionMode(QAbstractItemView::SingleSelection);
    for (const InstalledApplication& application : applications) {
        auto* item = new QListWidgetItem(entryIcon(application.icon), application.name, mList);
        item->setData(Qt::UserRole, application.path);
        item->setData(Qt::UserRole + 1, application.id);
        item->setToolTip(application.path);
    }
    mEmpty->setObjectName(QStringLiteral("mutedLabel"));
    mEmpty->setAlignment(Qt::AlignCenter);
    auto* cancel = new QPushButton(tr("取消"), this);
    mOk->setObjectName(QStringLiteral("primaryButton"));
    mOk->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 16, 16, 20);
    layout->setSpacing(10);
    layout->addLayout(titleBar(tr("选择应用程序")));
    layout->addWidget(mFilter);
    layout->addWidget(mList, 1);
    layout->addWidget(mEmpty, 1);
    layout->addLayout(buttonRow({cancel, mOk}));

    connect(mFilter, &QLineEdit::textChanged, this, &ApplicationPickerDialog::applyFilter);
    connect(mList, &QListWidget::currentItemChanged, this, &ApplicationPickerDialog::updateOk);
    connect(mList, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(mOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    applyFilter(QString());
    mFilter->setFocus();
}

QString ApplicationPickerDialog::selectedPath() const
{
    const QListWidgetItem* item = mList->currentItem();
    return item != nullptr && !item->isHidden() ? item->data(Qt::UserRole).toString() : QString();
}

QStringList ApplicationPickerDialog::visibleNames() const
{
    QStringList names;
    for (int row = 0; row < mList->count(); ++row) {
        if (!mList->item(row)->isHidden()) {
            names << mList->item(row)->text();
        }
    }
    return names;
}

void ApplicationPickerDialog::applyFilter(const QString& text)
{
    // By the shown name or the id, which holds the program's usual name ("org.gnome.gedit").
    const QString wanted = text.trimmed();
    QListWidgetItem* first = nullptr;
    for (int row = 0; row < mList->count(); ++row) {
        QListWidgetItem* item = mList->item(row);
        const bool shown = wanted.isEmpty() || item->text().contains(wanted, Qt::CaseInsensitive) ||
                           item->data(Qt::UserRole + 1).toString().contains(wanted, Qt::CaseInsensitive);
        item->setHidden(!shown);
        if (shown && first == nullptr) {
            first = item;
        }
    }
    // The choice stays on a row still shown, else moves to the first one.
    if (mList->currentItem() == nullptr || mList->currentItem()->isHidden()) {
        mList->setCurrentItem(first);
    }
    mList->setVisible(first != nullptr);
    mEmpty->setVisible(first == nullptr);
    updateOk();
}

void ApplicationPickerDialog::updateOk()
{
    mOk->setEnabled(!selectedPath().isEmpty());
}
