#include "BLEConnentionGuidanceDialog.h"

#include "Utils/PreferencesUtils.h"
#include "Widget/Common/Pictures.h"
#include "Widget/Common/WindowLook.h"
#include "Widget/Notices/NoticePanel.h"

#include <QBluetoothAddress>
#include <QBluetoothLocalDevice>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int kCornerRadius = 14;
constexpr int kBottomGap = 30;
const char* const kPictures = ":/zh_res/res_1080/BLEGuidance/";

QString picture(const char* name)
{
    return QLatin1String(kPictures) + QLatin1String(name);
}

QLabel* pictureLabel(const QString& path, QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setPixmap(Pictures::load(path, label));
    label->setAlignment(Qt::AlignCenter);
    return label;
}

QLabel* textLabel(const QString& text, const QString& objectName, QWidget* parent)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(objectName);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

QPushButton* button(const QString& text, const QString& objectName, QWidget* parent)
{
    auto* pushButton = new QPushButton(text, parent);
    pushButton->setObjectName(objectName);
    pushButton->setCursor(Qt::PointingHandCursor);
    return pushButton;
}

}  // namespace

BLEConnentionGuidanceDialog::BLEConnentionGuidanceDialog(QWidget* parent, BleGuidanceDevice* device,
                                                         AppLauncher* launcher)
    : QDialog(parent), mTranslucent(WindowLook::compositing())
{
    Q_INIT_RESOURCE(reminders);
    if (device == nullptr) {
        // A mouse paired through the desktop's own settings moves the wizard on by itself.
        mLocalDevice = new QBluetoothLocalDevice(this);
        connect(mLocalDevice, &QBluetoothLocalDevice::deviceConnected, this,
                [this](const QBluetoothAddress& address) {
                    mPresenter->onSystemDeviceConnected(address.toString());
                });
    }
    mPresenter = new BleGuidancePresenter(this, device, launcher, this);

    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setWindowTitle(tr("Zorvane 蓝牙连接向导"));
    setAttribute(Qt::WA_TranslucentBackground, mTranslucent);
    setStyleSheet(QStringLiteral(
        "QLabel { color: #333B4A; font-size: 15px; }"
        "QLabel#title { font-size: 20px; font-weight: bold; }"
        "QLabel#failed { color: #E53935; }"
        "QLabel#settingsHint { color: #F57C00; font-size: 13px; }"
        "QPushButton { font-size: 15px; border-radius: 6px; padding: 7px 22px; }"
        "QPushButton#primary { color: #FFFFFF; background: #3D8BFF; border: none; }"
        "QPushButton#primary:hover { background: #2F74DB; }"
        "QPushButton#secondary { color: #3D8BFF; background: #FFFFFF; border: 1px solid #3D8BFF; }"
        "QPushButton#cross { color: #6B7385; background: transparent; border: none; padding: 0;"
        " font-size: 16px; }"
        "QPushButton#cross:hover { color: #E53935; }"
        "QToolButton { color: #333B4A; font-size: 15px; background: #FFFFFF; border: 2px solid #E4E8F0;"
        " border-radius: 12px; padding: 8px; }"
        "QToolButton:hover { border-color: #3D8BFF; }"));

    mStack = new QStackedWidget(this);
    mStack->addWidget(buildRegisteringPage());
    mStack->addWidget(buildModelChoicePage());
    mStack->addWidget(buildModelPage());
    mStack->addWidget(buildConnectedPage());
    mStack->addWidget(buildPromptPage(picture("ble_guidance_4.png"), tr("未找到鼠标，是否注册新的鼠标？")));
    mStack->addWidget(
        buildPromptPage(picture("ble_guidance_5.png"), tr("已保存的鼠标未响应，是否重新注册？")));

    mCross = button(QStringLiteral("✕"), QStringLiteral("cross"), this);
    mCross->setFixedSize(24, 24);
    connect(mCross, &QPushButton::clicked, this, &BLEConnentionGuidanceDialog::onClose);

    resize(kWideWidth, kWideHeight);
    placeAtBottomCentre();
}

BLEConnentionGuidanceDialog::~BLEConnentionGuidanceDialog() = default;

QWidget* BLEConnentionGuidanceDialog::buildRegisteringPage()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(40, 30, 40, 30);
    layout->addWidget(pictureLabel(picture("ble_guidance_1.png"), page), 1);
    mProgressLabel = textLabel(tr("正在注册..."), QStringLiteral("title"), page);
    mFailedLabel = textLabel(tr("设备注册失败, 请尝试重新注册"), QStringLiteral("failed"), page);
    layout->addWidget(mProgressLabel);
    layout->addWidget(mFailedLabel);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    mRetryButton = button(tr("重新注册"), QStringLiteral("primary"), page);
    connect(mRetryButton, &QPushButton::clicked, this, &BLEConnentionGuidanceDialog::onDeviceRegister);
    buttons->addWidget(mRetryButton);
    mFailedSettingsButton = settingsButton();
    buttons->addWidget(mFailedSettingsButton);
    buttons->addStretch();
    layout->addLayout(buttons);
    return page;
}

QWidget* BLEConnentionGuidanceDialog::buildModelChoicePage()
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(40, 30, 40, 40);
    layout->addWidget(textLabel(tr("请选择您的鼠标型号"), QStringLiteral("title"), page));
    auto* row = new QHBoxLayout;
    row->setSpacing(60);
    row->addStretch();
    const char* const models[] = {"rk02", "rk06", "rk08"};
    for (int index = 0; index < 3; ++index) {
        auto* model = new QToolButton(page);
        model->setIcon(QIcon(picture(models[index]) + QStringLiteral(".png")));
        model->setIconSize(QSize(180, 180));
        model->setText(QString::fromLatin1(models[index]).toUpper());
        model->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        model->setCursor(Qt::PointingHandCursor);
        connect(model, &QToolButton::clicked, this, [this, index] { mPresenter->onChooseModel(index); });
        row->addWidget(model);
    }
    row->addStretch();
    layout->addLayout(row, 1);
    return page;
}

QWidget* BLEConnentionGuidanceDialog::buildModelPage()
{
    auto* page = new QWidget;
    auto* outer = new QVBoxLayout(page);
    outer->setContentsMargins(0, 0, 0, 0);
    mModelFrame = new QFrame(page);
    mModelFrame->setObjectName(QStringLiteral("modelFrame"));
    outer->addWidget(mModelFrame);
    auto* layout = new QVBoxLayout(mModelFrame);
    layout->setContentsMargins(40, 22, 40, 22);
    layout->setSpacing(8);
    layout->addWidget(textLabel(tr("按以下步骤注册鼠标"), QStringLiteral("title"), mModelFrame));
    layout->addWidget(pictureLabel(picture("ble_guidance_2.png"), mModelFrame), 1);
    auto* captions = new QHBoxLayout;
    captions->addWidget(textLabel(tr("1. 在系统设置中打开蓝牙"), QString(), mModelFrame));
    captions->addWidget(textLabel(tr("2. 长按鼠标的配对键，直到指示灯闪烁"), QString(), mModelFrame));
    captions->addWidget(textLabel(tr("3. 将鼠标靠近电脑，点击开始注册"), QString(), mModelFrame));
    layout->addLayout(captions);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(settingsButton());
    auto* start = button(tr("开始注册"), QStringLiteral("primary"), mModelFrame);
    connect(start, &QPushButton::clicked, this, &BLEConnentionGuidanceDialog::onStartRegister);
    buttons->addWidget(start);
    buttons->addStretch();
    layout->addLayout(buttons);
    return page;
}

QWidget* BLEConnentionGuidanceDialog::buildConnectedPage()
{
    auto* page = new QWidget;
    auto* layout = new QHBoxLayout(page);
    layout->setContentsMargins(60, 40, 60, 40);
    layout->addWidget(pictureLabel(picture("ble_guidance_3.png"), page), 1);
    auto* side = new QVBoxLayout;
    side->addStretch();
    side->addWidget(textLabel(tr("系统已连接了一个鼠标"), QStringLiteral("title"), page));
    side->addWidget(textLabel(tr("如果它不是您要注册的鼠标，请点击下一步选择型号"), QString(), page));
    auto* next = button(tr("下一步"), QStringLiteral("primary"), page);
    connect(next, &QPushButton::clicked, this, &BLEConnentionGuidanceDialog::onNext);
    side->addWidget(next, 0, Qt::AlignHCenter);
    side->addStretch();
    layout->addLayout(side, 1);
    return page;
}

QWidget* BLEConnentionGuidanceDialog::buildPromptPage(const QString& path, const QString& question)
{
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(16, 16, 16, 14);
    auto* row = new QHBoxLayout;
    auto* icon = pictureLabel(path, page);
    icon->setFixedSize(72, 72);
    icon->setScaledContents(true);
    row->addWidget(icon);
    auto* text = textLabel(question, QString(), page);
    text->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    row->addWidget(text, 1);
    layout->addLayout(row, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    auto* cancel = button(tr("取消"), QStringLiteral("secondary"), page);
    connect(cancel, &QPushButton::clicked, this, &QDialog::close);
    auto* pair = button(tr("注册"), QStringLiteral("primary"), page);
    connect(pair, &QPushButton::clicked, this, &BLEConnentionGuidanceDialog::onDeviceRegister);
    buttons->addWidget(cancel);
    buttons->addWidget(pair);
    layout->addLayout(buttons);
    return page;
}

QPushButton* BLEConnentionGuidanceDialog::settingsButton()
{
    auto* settings = button(tr("打开蓝牙设置"), QStringLiteral("secondary"), nullptr);
    connect(settings, &QPushButton::clicked, mPresenter, &BleGuidancePresenter::onOpenBluetoothSettings);
    return settings;
}

void BLEConnentionGuidanceDialog::showGuidance()
{
    mPresenter->showGuidance(PreferencesUtils::getInstance()->getUserPreferences().saveDeviceUuid);
}

void BLEConnentionGuidanceDialog::changePage(Page page)
{
    mPresenter->changePage(page);
}

void BLEConnentionGuidanceDialog::setPage(int page)
{
    const bool prompt = page == Page::PageFirstPairing || page == Page::PageSavedLost;
    const QSize wanted = prompt ? QSize(kPromptWidth, kPromptHeight) : QSize(kWideWidth, kWideHeight);
    if (size() != wanted) {
        resize(wanted);
        if (prompt) {
            const QScreen* screen = QGuiApplication::primaryScreen();
            const QRect available = screen != nullptr ? screen->availableGeometry() : QRect();
            move(available.center() - rect().center());
        } else {
            placeAtBottomCentre();
        }
    }
    mStack->setCurrentIndex(page);
}

int BLEConnentionGuidanceDialog::currentPage()
{
    return mStack->currentIndex();
}

void BLEConnentionGuidanceDialog::setRegisterFailed(bool failed)
{
    mProgressLabel->setVisible(!failed);
    mFailedLabel->setVisible(failed);
    mRetryButton->setVisible(failed);
    // A failed search may mean Bluetooth is off: the desktop's settings are the other way out.
    mFailedSettingsButton->setVisible(failed);
}

void BLEConnentionGuidanceDialog::setModelBackground(QString path)
{
    mModelFrame->setStyleSheet(
        QStringLiteral("QFrame#modelFrame { border-image: url(%1); border-radius: %2px; }")
            .arg(path)
            .arg(kCornerRadius));
}

void BLEConnentionGuidanceDialog::showSettingsMissing()
{
    QWidget* page = mStack->currentWidget();
    auto* hint = page->findChild<QLabel*>(QStringLiteral("settingsHint"));
    if (hint == nullptr) {
        hint =
            textLabel(tr("未找到系统的蓝牙设置，请从系统菜单中打开"), QStringLiteral("settingsHint"), page);
        page->layout()->addWidget(hint);
    }
    hint->show();
}

void BLEConnentionGuidanceDialog::placeAtBottomCentre()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) {
        return;
    }
    const QRect available = screen->availableGeometry();
    move(available.left() + (available.width() - width()) / 2,
         available.bottom() + 1 - kBottomGap - height());
}

void BLEConnentionGuidanceDialog::reject()
{
    QDialog::reject();
    mPresenter->onClose();
}

void BLEConnentionGuidanceDialog::mousePressEvent(QMouseEvent* event)
{
    mDragging = true;
    mDragPosition = event->globalPos();
    QDialog::mousePressEvent(event);
}

void BLEConnentionGuidanceDialog::mouseMoveEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPosition);
        mDragPosition = event->globalPos();
    }
    QDialog::mouseMoveEvent(event);
}

void BLEConnentionGuidanceDialog::mouseReleaseEvent(QMouseEvent* event)
{
    if (mDragging) {
        move(pos() + event->globalPos() - mDragPosition);
        mDragging = false;
    }
    QDialog::mouseReleaseEvent(event);
}

void BLEConnentionGuidanceDialog::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    mStack->setGeometry(rect());
    mCross->move(width() - mCross->width() - 12, 10);
    mCross->raise();
    if (!mTranslucent) {
        WindowLook::shape(this, rect(), kCornerRadius);
    }
}

void BLEConnentionGuidanceDialog::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xE4, 0xE8, 0xF0), 1));
    painter.setBrush(QColor(0xF5, 0xF7, 0xFB));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius, kCornerRadius);
}
