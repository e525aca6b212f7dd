#include "Widget/Console/Ui_MainWindow.h"

#include "Utils/LanguageTables.h"
#include "Widget/LineEdit.h"
#include "Widget/Translations.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QString sheet()
{
    return QStringLiteral(
        "QWidget#central { background: #f4f6f9; border-radius: 12px; }"
        "QWidget#titleBar { background: transparent; }"
        "QWidget#navigation { background: #ffffff; border-top-left-radius: 12px;"
        " border-bottom-left-radius: 12px; }"
        "QLabel { color: #333333; font-size: 14px; }"
        "QLabel#pageTitle { font-size: 18px; font-weight: bold; color: #20252d; }"
        "QLabel#sectionLabel { font-size: 13px; color: #8a919e; }"
        "QLabel#deviceName { font-size: 20px; font-weight: bold; color: #20252d; }"
        "QLabel#hintLabel { color: #8a919e; font-size: 12px; }"
        "QLabel#warningLabel { color: #e5484d; font-size: 13px; }"
        "QLabel#cpiLabel { color: #8a919e; font-size: 12px; }"
        "QFrame#card { background: #ffffff; border-radius: 10px; }"
        "QPushButton#navButton { text-align: left; padding-left: 18px; border: none; border-radius: 8px;"
        " min-height: 40px; font-size: 15px; color: #454c59; background: transparent; }"
        "QPushButton#navButton:hover { background: #eef3fe; }"
        "QPushButton#navButton:checked { background: #e3edfe; color: #2f7cf6; font-weight: bold; }"
        "QPushButton { min-height: 30px; padding: 0 14px; border-radius: 15px; border: 1px solid #c8ccd4;"
        " background: #ffffff; color: #333333; font-size: 14px; }"
        "QPushButton:hover { border-color: #2f7cf6; color: #2f7cf6; }"
        "QPushButton#primaryButton { border: none; background: #2f7cf6; color: white; }"
        "QPushButton#primaryButton:hover { background: #4a8ff8; }"
        "QPushButton#linkButton { border: none; background: transparent; color: #2f7cf6; padding: 0 4px; }"
        "QPushButton#dpiButton { border: 1px solid #d6d9de; border-radius: 10px; background: #fafbfc;"
        " padding: 0 8px; font-size: 14px; color: #454c59; }"
        "QPushButton#dpiButton:disabled { color: #b8bec8; }"
        "QPushButton#dpiButton:checked { border: 2px solid #2f7cf6; background: #e3edfe; color: #2f7cf6;"
        " font-weight: bold; }"
        "QToolButton { border: none; border-radius: 6px; background: transparent; }"
        "QToolButton:hover { background: #e6e9ee; }"
        "QToolButton#closeButton:hover { background: #f9d7d8; }"
        "QToolButton::menu-indicator { image: none; }"
        "QComboBox { min-height: 30px; padding: 0 10px; border: 1px solid #d6d9de; border-radius: 6px;"
        " background: #ffffff; font-size: 14px; combobox-popup: 0; }"
        "QComboBox::drop-down { border: none; width: 24px; }"
        "QComboBox::down-arrow { image: url(:/console/arrow_down.svg); width: 12px; height: 12px; }"
        "QComboBox QAbstractItemView { border: 1px solid #d6d9de; background: #ffffff;"
        " selection-background-color: #e3edfe; selection-color: #2f7cf6; outline: 0; }"
        "QLineEdit { min-height: 30px; border: 1px solid #d6d9de; border-radius: 6px; padding: 0 8px;"
        " background: #ffffff; font-size: 14px; }"
        "QLineEdit:focus { border-color: #2f7cf6; }"
        "QCheckBox, QRadioButton { font-size: 14px; color: #333333; spacing: 8px; }"
        "QCheckBox#switch::indicator { width: 40px; height: 22px; image: url(:/console/switch_off.svg); }"
        "QCheckBox#switch::indicator:checked { image: url(:/console/switch_on.svg); }"
        "QCheckBox#switch::indicator:indeterminate { image: url(:/console/switch_unknown.svg); }"
        "QCheckBox#switch::indicator:disabled { image: url(:/console/switch_disabled.svg); }"
        "QCheckBox#status { font-size: 12px; color: #8a919e; }"
        "QCheckBox#status::indicator { width: 12px; height: 12px; image: url(:/console/lamp_off.svg); }"
        "QCheckBox#status::indicator:checked { image: url(:/console/lamp_on.svg); }"
        "QTableWidget { border: 2px solid transparent; border-radius: 4px; background: #ffffff; "
        "gridline-color: #eef0f3; font-size: 14px;"
        " selection-background-color: #e3edfe; selection-color: #20252d; }"
        "QHeaderView::section { background: #f7f8fa; border: none; border-bottom: 1px solid #eef0f3;"
        " padding: 6px; font-size: 13px; color: #8a919e; }");
}

// A page or speed button. Qt lets Tab reach only one button of a group, as with radio buttons;
// here each is reached (the arrows still move within the group).
class GroupButton : public QPushButton {
public:
    using QPushButton::QPushButton;

protected:
    void focusInEvent(QFocusEvent* event) override
    {
        QPushButton::focusInEvent(event);
        for (QAbstractButton* button : group() != nullptr ? group()->buttons() : QList<QAbstractButton*>()) {
            button->setFocusPolicy(Qt::TabFocus);
        }
    }
};

// Where the keyboard is, for those who move with Tab: a ring the page's colours do not have.
QString focusSheet()
{
    return QStringLiteral(
        "QPushButton, QToolButton { outline: none; }"
        "QPushButton:focus, QToolButton:focus, QComboBox:focus { border: 2px solid #2f7cf6; }"
        "QPushButton#primaryButton:focus { border: 2px solid #20252d; }"
        "QPushButton#navButton:focus { border: 2px solid #2f7cf6; }"
        "QPushButton#dpiButton:focus { border: 2px dashed #2f7cf6; }"
        "QCheckBox:focus, QRadioButton:focus { color: #2f7cf6; }"
        "QCheckBox#switch { border: 2px solid transparent; border-radius: 13px; padding: 1px; }"
        "QCheckBox#switch:focus { border-color: #2f7cf6; }"
        "QTableWidget:focus { border-color: #2f7cf6; }");
}

QToolButton* titleButton(QWidget* parent, const QString& icon, const QString& tip, const QString& name)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(18, 18));
    button->setFixedSize(32, 28);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    // Reached with Tab, not taken by a click: the pointer user's focus stays where it was.
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

QLabel* label(const QString& text, QWidget* parent, const char* objectName = nullptr)
{
    auto* l = new QLabel(text, parent);
    if (objectName != nullptr) {
        l->setObjectName(QLatin1String(objectName));
        // Hints are sentences, longer in some languages: they wrap rather than clip.
        l->setWordWrap(qstrcmp(objectName, "hintLabel") == 0);
    }
    return l;
}

QComboBox* comboBox(QWidget* parent, const QStringList& rows, const QString& tip)
{
    auto* box = new QComboBox(parent);
    box->addItems(rows);
    box->setEditable(false);
    box->setToolTip(tip);
    box->setMaxVisibleItems(12);
    box->setMinimumWidth(150);
    // A plain list view, so that the rows take the sheet's look and the popup stays a list.
    box->setView(new QListView(box));
    return box;
}

QStringList spokenRows()
{
    QStringList rows;
    for (const char* const text : kConsoleSourceLabels) {
        rows << LanguageTables::shown(text);
    }
    return rows;
}

QStringList targetRows()
{
    QStringList rows;
    for (const char* const text : kConsoleTargetLabels) {
        rows << LanguageTables::shown(text);
    }
    return rows;
}

QFrame* card(QWidget* parent)
{
    auto* frame = new QFrame(parent);
    frame->setObjectName(QStringLiteral("card"));
    return frame;
}

// A settings line: text on the left, the control (or a layout of controls) on the right.
void addLine(QGridLayout* grid, int row, QLabel* labelWidget, QWidget* control)
{
    // A screen reader names the control by its line's text.
    labelWidget->setBuddy(control);
    grid->addWidget(labelWidget, row, 0);
    grid->addWidget(control, row, 1, Qt::AlignRight | Qt::AlignVCenter);
}

}  // namespace

QWidget* Ui_MainWindow::buildInterfaceLanguageCard(QWidget* page)
{
    // The two languages are named in their own words, so that each reader finds theirs.
    comboInterfaceLanguage =
        comboBox(page, {tr("跟随系统"), QStringLiteral("中文"), QStringLiteral("English")}, tr("界面语言"));
    Translations::bindChoice(comboInterfaceLanguage);
    auto* frame = card(page);
    auto* grid = new QGridLayout(frame);
    grid->setContentsMargins(20, 12, 20, 12);
    addLine(grid, 0, label(tr("窗口和菜单的语言"), frame), comboInterfaceLanguage);
    grid->addWidget(label(tr("重新启动 Zorvane 后生效"), frame, "hintLabel"), 1, 0, 1, 2);
    return frame;
}

QIcon Ui_MainWindow::commandTypeIcon(int type)
{
    // The desktop's own icons where its theme has them.
    static const struct {
        const char* themed;
        const char* bundled;
    } kIcons[] = {{"text-html", ":/console/cmd_web.svg"},
                  {"text-x-generic", ":/console/cmd_file.svg"},
                  {"folder", ":/console/cmd_folder.svg"},
                  {"input-keyboard", ":/console/cmd_shortcut.svg"},
                  {"application-x-executable", ":/console/cmd_app.svg"}};
    const auto& icon = kIcons[qBound(0, type, int(std::size(kIcons)) - 1)];
    return QIcon::fromTheme(QLatin1String(icon.themed), QIcon(QLatin1String(icon.bundled)));
}

void Ui_MainWindow::setupUi(QMainWindow* window)
{
    window->setObjectName(QStringLiteral("MainWindow"));
    window->resize(880, 600);
    window->setMinimumSize(880, 600);
    central = new QWidget(window);
    central->setObjectName(QStringLiteral("central"));
    central->setStyleSheet(sheet() + focusSheet());
    central->setAttribute(Qt::WA_StyledBackground);

    // Made first, so that Tab starts at the page names and goes on into the page shown.
    QWidget* navigation = buildNavigation(central);
    stackedWidget = new QStackedWidget(central);
    stackedWidget->addWidget(buildHomePage());
    stackedWidget->addWidget(buildCommandPage());
    stackedWidget->addWidget(buildAppSettingsPage());
    stackedWidget->addWidget(buildMouseSettingsPage());
    stackedWidget->addWidget(buildCommandFormPage(&addForm, tr("添加命令词")));
    stackedWidget->addWidget(buildCommandFormPage(&editForm, tr("编辑命令词")));
    stackedWidget->addWidget(buildPreferencePage());

    auto* right = new QVBoxLayout;
    right->setContentsMargins(0, 0, 0, 0);
    right->setSpacing(0);
    right->addWidget(buildTitleBar(central));
    right->addWidget(stackedWidget, 1);

    auto* layout = new QHBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(navigation);
    layout->addLayout(right, 1);
    window->setCentralWidget(central);

    // The word column as wide as its heading, which is longer in some languages; measured now
    // that the sheet reaches the header.
    QHeaderView* header = tableCustom->horizontalHeader();
    header->ensurePolished();
    tableCustom->setColumnWidth(1, qMax(header->defaultSectionSize(), header->sectionSizeHint(1)));
}

QWidget* Ui_MainWindow::buildTitleBar(QWidget* parent)
{
    titleBar = new QWidget(parent);
    titleBar->setObjectName(QStringLiteral("titleBar"));
    titleBar->setFixedHeight(44);
    buttonMenu =
        titleButton(titleBar, QStringLiteral(":/console/menu.svg"), tr("菜单"), QStringLiteral("menuButton"));
    buttonMenu->setPopupMode(QToolButton::InstantPopup);
    buttonMin = titleButton(titleBar, QStringLiteral(":/console/minimize.svg"), tr("最小化"),
                            QStringLiteral("minButton"));
    buttonClose = titleButton(titleBar, QStringLiteral(":/console/close.svg"), tr("关闭"),
                              QStringLiteral("closeButton"));
    auto* layout = new QHBoxLayout(titleBar);
    layout->setContentsMargins(12, 8, 12, 4);
    layout->setSpacing(4);
    layout->addStretch();
    layout->addWidget(buttonMenu);
    layout->addWidget(buttonMin);
    layout->addWidget(buttonClose);
    return titleBar;
}

QWidget* Ui_MainWindow::buildNavigation(QWidget* parent)
{
    auto* nav = new QWidget(parent);
    nav->setObjectName(QStringLiteral("navigation"));
    nav->setAttribute(Qt::WA_StyledBackground);
    nav->setFixedWidth(184);
    labelNav = new QLabel(nav);
    labelNav->setFixedSize(150, 40);
    labelNav->setScaledContents(true);
    labelNav->setAccessibleName(QStringLiteral("Zorvane"));
    navGroup = new QButtonGroup(nav);
    navGroup->setExclusive(true);
    const QString texts[4] = {tr("首页"), tr("命令词", "navigation"), tr("应用设置", "navigation"),
                              tr("鼠标设置", "navigation")};
    const QString icons[4] = {
        QStringLiteral(":/console/nav_home.svg"), QStringLiteral(":/console/nav_command.svg"),
        QStringLiteral(":/console/nav_settings.svg"), QStringLiteral(":/console/nav_mouse.svg")};
    auto* layout = new QVBoxLayout(nav);
    layout->setContentsMargins(14, 18, 14, 18);
    layout->setSpacing(6);
    layout->addWidget(labelNav, 0, Qt::AlignHCenter);
    layout->addSpacing(26);
    for (int i = 0; i < 4; ++i) {
        navButtons[i] = new GroupButton(QIcon(icons[i]), texts[i], nav);
        navButtons[i]->setObjectName(QStringLiteral("navButton"));
        navButtons[i]->setCheckable(true);
        navButtons[i]->setIconSize(QSize(20, 20));
        navButtons[i]->setFocusPolicy(Qt::TabFocus);
        navGroup->addButton(navButtons[i], i);
        layout->addWidget(navButtons[i]);
    }
    layout->addStretch();
    return nav;
}

QWidget* Ui_MainWindow::buildHomePage()
{
    auto* page = new QWidget;
    labelHomeImage = new QLabel(page);
    labelHomeImage->setFixedSize(360, 240);
    labelHomeImage->setAlignment(Qt::AlignCenter);
    labelHomeImage->setAccessibleName(tr("鼠标图片"));
    labelDeviceName = label(QString(), page, "deviceName");
    labelDeviceName->setAlignment(Qt::AlignCenter);
    labelTypeUsb = new QLabel(page);
    labelTypeUsb->setPixmap(QIcon(QStringLiteral(":/console/type_usb.svg")).pixmap(22, 22));
    labelTypeUsb->setToolTip(tr("USB接收器"));
    labelTypeUsb->setAccessibleName(labelTypeUsb->toolTip());
    labelTypeBle = new QLabel(page);
    labelTypeBle->setPixmap(QIcon(QStringLiteral(":/console/type_ble.svg")).pixmap(22, 22));
    labelTypeBle->setToolTip(tr("蓝牙"));
    labelTypeBle->setAccessibleName(labelTypeBle->toolTip());
    labelTypeBle->hide();
    auto* nameRow = new QHBoxLayout;
    nameRow->addStretch();
    nameRow->addWidget(labelDeviceName);
    nameRow->addWidget(labelTypeUsb);
    nameRow->addWidget(labelTypeBle);
    nameRow->addStretch();

    comboDictationLanguageHome = comboBox(page, spokenRows(), tr("说话语言"));
    buttonExplain = new QPushButton(tr("按键说明"), page);
    auto* languageRow = new QHBoxLayout;
    languageRow->addStretch();
    auto* spoken = label(tr("说话语言"), page);
    spoken->setBuddy(comboDictationLanguageHome);
    languageRow->addWidget(spoken);
    languageRow->addWidget(comboDictationLanguageHome);
    languageRow->addSpacing(16);
    languageRow->addWidget(buttonExplain);
    languageRow->addStretch();

    auto* tip = label(tr("按住鼠标的语音键说话，松开后文字即输入到光标处"), page, "hintLabel");
    tip->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 10, 30, 30);
    layout->addStretch();
    layout->addWidget(labelHomeImage, 0, Qt::AlignHCenter);
    layout->addSpacing(10);
    layout->addLayout(nameRow);
    layout->addSpacing(18);
    layout->addLayout(languageRow);
    layout->addSpacing(10);
    layout->addWidget(tip);
    // What keeps the voice key from working, for desktops without a tray to tell it.
    labelHomeWarning = label(QString(), page, "warningLabel");
    labelHomeWarning->setAlignment(Qt::AlignCenter);
    labelHomeWarning->hide();
    layout->addSpacing(6);
    layout->addWidget(labelHomeWarning);
    layout->addStretch();
    return page;
}

QWidget* Ui_MainWindow::buildCommandPage()
{
    auto* page = new QWidget;
    tableCustom = new QTableWidget(0, 3, page);
    tableCustom->setHorizontalHeaderLabels({QString(), tr("命令词"), tr("执行内容")});
    tableCustom->verticalHeader()->hide();
    tableCustom->horizontalHeader()->setStretchLastSection(true);
    tableCustom->horizontalHeader()->setHighlightSections(false);
    tableCustom->horizontalHeader()->setMinimumSectionSize(24);
    // Headings over the start of their column's text, as the rows are.
    tableCustom->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    tableCustom->setSelectionBehavior(QAbstractItemView::SelectRows);
    tableCustom->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tableCustom->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tableCustom->setShowGrid(false);
    tableCustom->setWordWrap(false);
    tableCustom->setTextElideMode(Qt::ElideMiddle);
    tableCustom->verticalHeader()->setDefaultSectionSize(40);
    tableCustom->setIconSize(QSize(18, 18));
    // Tab leaves the list rather than going from cell to cell: the arrows do that.
    tableCustom->setTabKeyNavigation(false);
    tableCustom->setAccessibleName(tr("命令词列表"));
    tableCustom->setAccessibleDescription(tr("回车键编辑选中的命令词，Delete 键删除"));

    buttonAddCommand = new QPushButton(QIcon(QStringLiteral(":/console/add.svg")), tr("添加"), page);
    buttonAddCommand->setToolTip(tr("添加命令词"));
    buttonAddCommand->setObjectName(QStringLiteral("primaryButton"));
    buttonDelCommand = new QPushButton(QIcon(QStringLiteral(":/console/delete.svg")), tr("删除"), page);
    buttonDelCommand->setToolTip(tr("删除命令词"));
    buttonEditCommand = new QPushButton(QIcon(QStringLiteral(":/console/edit.svg")), tr("编辑"), page);
    buttonEditCommand->setToolTip(tr("编辑命令词"));
    labelCommandWarning = label(QString(), page, "warningLabel");

    auto* header = new QHBoxLayout;
    header->addWidget(label(tr("命令词"), page, "pageTitle"));
    header->addStretch();
    header->addWidget(labelCommandWarning);
    header->addWidget(buttonAddCommand);
    header->addWidget(buttonEditCommand);
    header->addWidget(buttonDelCommand);
    auto* tip = label(tr("说出命令词即可打开网页、文件、文件夹、应用程序或按下快捷键"), page, "hintLabel");
    auto* frame = card(page);
    auto* frameLayout = new QVBoxLayout(frame);
    frameLayout->setContentsMargins(0, 0, 0, 0);
    frameLayout->addWidget(tableCustom);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 6, 30, 30);
    layout->addLayout(header);
    layout->addWidget(tip);
    layout->addSpacing(6);
    layout->addWidget(frame, 1);
    return page;
}

Ui_MainWindow::SwitchRow Ui_MainWindow::switchRow(QWidget* parent, const QString& text, const QString& tip)
{
    SwitchRow s;
    s.row = new QWidget(parent);
    auto* name = label(text, s.row);
    name->setToolTip(tip);
    s.status = new QCheckBox(QString(), s.row);
    s.status->setObjectName(QStringLiteral("status"));
    s.status->setAttribute(Qt::WA_TransparentForMouseEvents);
    s.status->setFocusPolicy(Qt::NoFocus);
    s.status->setToolTip(tr("当前状态"));
    s.status->setAccessibleName(tr("%1：当前状态").arg(text));
    s.onOff = new QCheckBox(s.row);
    s.onOff->setObjectName(QStringLiteral("switch"));
    s.onOff->setToolTip(tip);
    name->setBuddy(s.onOff);
    auto* layout = new QHBoxLayout(s.row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(name);
    layout->addStretch();
    layout->addWidget(s.status);
    layout->addSpacing(12);
    layout->addWidget(s.onOff);
    return s;
}

QWidget* Ui_MainWindow::buildAppSettingsPage()
{
    auto* page = new QWidget;
    comboDictationLanguage = comboBox(page, spokenRows(), tr("说话语言"));
    checkVoiceTranslateOnOff = new QCheckBox(page);
    checkVoiceTranslateOnOff->setObjectName(QStringLiteral("switch"));
    comboVoiceTranslateSrc = comboBox(page, spokenRows(), tr("说话语言"));
    comboVoiceTranslateTar = comboBox(page, targetRows(), tr("译文语言"));
    checkTextTranslateOnOff = new QCheckBox(page);
    checkTextTranslateOnOff->setObjectName(QStringLiteral("switch"));
    comboTextTranslate = comboBox(page, targetRows(), tr("文字语言"));
    comboRestTime = comboBox(page, {tr("3小时"), tr("2.5小时"), tr("2小时"), tr("1小时"), tr("不提醒")},
                             tr("连续工作多久后提醒休息"));
    comboNoticeStyle = comboBox(page, {tr("弹窗"), tr("系统通知"), tr("两者")},
                                tr("电量和设备提示的显示方式；系统通知在没有通知服务的桌面上改用弹窗"));

    auto* language = card(page);
    auto* grid = new QGridLayout(language);
    grid->setContentsMargins(20, 12, 20, 12);
    grid->setVerticalSpacing(10);
    addLine(grid, 0, label(tr("听写语言"), language), comboDictationLanguage);
    addLine(grid, 1, label(tr("语音翻译"), language), checkVoiceTranslateOnOff);
    auto* pair = new QWidget(language);
    auto* pairLayout = new QHBoxLayout(pair);
    pairLayout->setContentsMargins(0, 0, 0, 0);
    comboVoiceTranslateSrc->setAccessibleName(tr("语音翻译：说话语言"));
    comboVoiceTranslateTar->setAccessibleName(tr("语音翻译：译文语言"));
    pairLayout->addWidget(comboVoiceTranslateSrc);
    pairLayout->addWidget(label(QStringLiteral("→"), pair));
    pairLayout->addWidget(comboVoiceTranslateTar);
    addLine(grid, 2, label(tr("语音翻译语言"), language), pair);
    addLine(grid, 3, label(tr("划词翻译"), language), checkTextTranslateOnOff);
    addLine(grid, 4, label(tr("划词翻译语言"), language), comboTextTranslate);

    calendarPhrases = switchRow(page, tr("每日一句"), tr("开机后显示每日一句"));
    updateHint = switchRow(page, tr("更新提醒"), tr("有新版本时提醒"));
    autoRun = switchRow(page, tr("开机自启动"), tr("登录桌面时自动启动"));
    auto* general = card(page);
    auto* generalLayout = new QVBoxLayout(general);
    generalLayout->setContentsMargins(20, 12, 20, 12);
    generalLayout->setSpacing(10);
    generalLayout->addWidget(calendarPhrases.row);
    generalLayout->addWidget(updateHint.row);
    generalLayout->addWidget(autoRun.row);
    auto* restRow = new QHBoxLayout;
    auto* rest = label(tr("休息提醒"), general);
    rest->setBuddy(comboRestTime);
    restRow->addWidget(rest);
    restRow->addStretch();
    restRow->addWidget(comboRestTime);
    generalLayout->addLayout(restRow);
    auto* noticeRow = new QHBoxLayout;
    auto* notices = label(tr("通知方式"), general);
    notices->setBuddy(comboNoticeStyle);
    noticeRow->addWidget(notices);
    noticeRow->addStretch();
    noticeRow->addWidget(comboNoticeStyle);
    generalLayout->addLayout(noticeRow);

    buttonPreference = new QPushButton(tr("偏好设置 ›"), page);
    buttonPreference->setObjectName(QStringLiteral("linkButton"));
    buttonFeedback = new QPushButton(tr("意见反馈"), page);
    buttonFeedback->setObjectName(QStringLiteral("linkButton"));
    auto* footer = new QHBoxLayout;
    footer->addWidget(buttonFeedback);
    footer->addStretch();
    footer->addWidget(buttonPreference);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 6, 30, 20);
    layout->setSpacing(8);
    layout->addWidget(label(tr("应用设置"), page, "pageTitle"));
    layout->addWidget(label(tr("语言"), page, "sectionLabel"));
    layout->addWidget(language);
    layout->addWidget(label(tr("通用"), page, "sectionLabel"));
    layout->addWidget(general);
    layout->addStretch();
    layout->addLayout(footer);
    return page;
}

QWidget* Ui_MainWindow::buildMouseSettingsPage()
{
    auto* page = new QWidget;
    frameResolution = card(page);
    auto* heading = label(tr("指针速度"), frameResolution);
    heading->move(20, 14);
    dpiGroup = new QButtonGroup(frameResolution);
    dpiGroup->setExclusive(true);
    const QString texts[4] = {tr("慢速"), tr("标准"), tr("快速"), tr("适配屏幕")};
    // All as wide as the widest name in bold, as the checked one shows it: checking one neither
    // clips its name nor moves the row.
    QFont bold = frameResolution->font();
    bold.setPixelSize(14);
    bold.setBold(true);
    int width = kSpeedButtonMinWidth;
    for (const QString& text : texts) {
        width = qMax(width, QFontMetrics(bold).horizontalAdvance(text) + 2 * (8 + 2) + 4);
    }
    frameResolution->setFixedSize(qMax(520, 4 * width + 3 * kFourButtonsGap + 2 * 20), 140);
    for (int i = 0; i < 4; ++i) {
        radioLevel[i] = new GroupButton(texts[i], frameResolution);
        radioLevel[i]->setObjectName(QStringLiteral("dpiButton"));
        radioLevel[i]->setCheckable(true);
        radioLevel[i]->setFocusPolicy(Qt::TabFocus);
        radioLevel[i]->setFixedSize(width, 48);
        radioLevel[i]->setAccessibleDescription(tr("指针速度"));
        dpiGroup->addButton(radioLevel[i], i);
    }
    labelCpi = label(QString(), frameResolution, "cpiLabel");
    labelCpi->setAlignment(Qt::AlignCenter);
    labelCpi->setFixedWidth(width);

    lighting = switchRow(page, tr("灯光效果"), tr("鼠标的灯光"));
    shake = switchRow(page, tr("振动反馈"), tr("按下语音键时振动"));
    soundEffect = switchRow(page, tr("按键音效"), tr("按下语音键时的提示音"));
    lowbat = switchRow(page, tr("低电量提醒"), tr("电量低时提醒"));
    auto* switches = card(page);
    auto* switchLayout = new QVBoxLayout(switches);
    switchLayout->setContentsMargins(20, 12, 20, 12);
    switchLayout->setSpacing(12);
    for (const SwitchRow* row : {&lighting, &shake, &soundEffect, &lowbat}) {
        switchLayout->addWidget(row->row);
        // Nothing is known of a mouse before it answers.
        row->onOff->setCheckState(Qt::PartiallyChecked);
        row->onOff->setEnabled(false);
    }
    frameResolution->setEnabled(false);

    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 6, 30, 30);
    layout->setSpacing(8);
    layout->addWidget(label(tr("鼠标设置"), page, "pageTitle"));
    layout->addWidget(frameResolution, 0, Qt::AlignLeft);
    layout->addSpacing(6);
    layout->addWidget(switches);
    layout->addStretch();
    return page;
}

QWidget* Ui_MainWindow::buildCommandFormPage(CommandForm* form, const QString& heading)
{
    auto* page = new QWidget;
    form->type =
        comboBox(page, {tr("网页"), tr("文件"), tr("文件夹"), tr("快捷键"), tr("应用程序")}, tr("命令类型"));
    for (int type = 0; type < form->type->count(); ++type) {
        form->type->setItemIcon(type, commandTypeIcon(type));
    }
    form->command = new QLineEdit(page);
    form->command->setMaxLength(200);
    form->content = new LineEdit(page);
    form->content->setMaxLength(1000);
    form->browse = new QPushButton(tr("浏览"), page);
    form->hint = label(QString(), page, "hintLabel");
    form->hint->setWordWrap(true);
    form->warning = label(QString(), page, "warningLabel");
    form->submit = new QPushButton(tr("保存"), page);
    form->submit->setObjectName(QStringLiteral("primaryButton"));
    form->back = new QPushButton(QIcon(QStringLiteral(":/console/back.svg")), tr("返回"), page);

    auto* frame = card(page);
    auto* grid = new QGridLayout(frame);
    grid->setContentsMargins(24, 20, 24, 20);
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(14);
    grid->setColumnStretch(1, 1);
    auto* typeLabel = label(tr("类型"), frame);
    typeLabel->setBuddy(form->type);
    grid->addWidget(typeLabel, 0, 0);
    grid->addWidget(form->type, 0, 1, Qt::AlignLeft);
    auto* commandLabel = label(tr("命令词"), frame);
    commandLabel->setBuddy(form->command);
    grid->addWidget(commandLabel, 1, 0);
    grid->addWidget(form->command, 1, 1, 1, 2);
    auto* contentLabel = label(tr("执行内容"), frame);
    contentLabel->setBuddy(form->content);
    grid->addWidget(contentLabel, 2, 0);
    grid->addWidget(form->content, 2, 1);
    grid->addWidget(form->browse, 2, 2);
    grid->addWidget(form->hint, 3, 1, 1, 2);
    grid->addWidget(form->warning, 4, 1, 1, 2);

    auto* header = new QHBoxLayout;
    header->addWidget(form->back);
    header->addSpacing(8);
    header->addWidget(label(heading, page, "pageTitle"));
    header->addStretch();
    auto* footer = new QHBoxLayout;
    footer->addStretch();
    footer->addWidget(form->submit);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 6, 30, 30);
    layout->setSpacing(12);
    layout->addLayout(header);
    layout->addWidget(frame);
    layout->addLayout(footer);
    layout->addStretch();
    return page;
}

QWidget* Ui_MainWindow::buildPreferencePage()
{
    auto* page = new QWidget;
    checkClickMode = new QCheckBox(tr("支持单击模式"), page);
    checkClickMode->setToolTip(tr("单击语音键开始说话，再次单击结束"));
    radioClickSend = new QRadioButton(tr("点击发送"), page);
    radioAutoSend = new QRadioButton(tr("自动发送"), page);
    // The panels never take the keyboard from the application typed into: the keys act only
    // while the user edits in the caret panel, and say so.
    checkEnterSend = new QCheckBox(tr("编辑时回车键发送"), page);
    checkEnterSend->setToolTip(tr("编辑译文原文时，回车键结束编辑并发送；关闭时回车键只结束编辑"));
    checkSpaceSend = new QCheckBox(tr("编辑时空格键发送"), page);
    checkSpaceSend->setToolTip(tr("编辑译文原文时及编辑结束后，空格键发送"));
    checkDelAllSign = new QCheckBox(tr("去除标点符号"), page);
    buttonPreferenceBack = new QPushButton(QIcon(QStringLiteral(":/console/back.svg")), tr("返回"), page);

    auto* click = card(page);
    auto* clickLayout = new QVBoxLayout(click);
    clickLayout->setContentsMargins(20, 14, 20, 14);
    clickLayout->addWidget(checkClickMode);
    clickLayout->addWidget(
        label(tr("开启后单击语音键开始说话，再次单击结束；关闭时按住说话，松开结束"), click, "hintLabel"));
    auto* send = card(page);
    auto* sendLayout = new QVBoxLayout(send);
    sendLayout->setContentsMargins(20, 14, 20, 14);
    sendLayout->setSpacing(10);
    auto* modes = new QHBoxLayout;
    modes->addWidget(radioAutoSend);
    modes->addSpacing(24);
    modes->addWidget(radioClickSend);
    modes->addStretch();
    sendLayout->addLayout(modes);
    sendLayout->addWidget(label(
        tr("自动发送：翻译结果在面板关闭时直接输入；点击发送：点面板上的“发送”后输入"), send, "hintLabel"));
    sendLayout->addWidget(checkEnterSend);
    sendLayout->addWidget(checkSpaceSend);
    sendLayout->addWidget(checkDelAllSign);

    auto* header = new QHBoxLayout;
    header->addWidget(buttonPreferenceBack);
    header->addSpacing(8);
    header->addWidget(label(tr("偏好设置"), page, "pageTitle"));
    header->addStretch();
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(30, 6, 30, 30);
    layout->setSpacing(8);
    layout->addLayout(header);
    layout->addWidget(label(tr("语音键"), page, "sectionLabel"));
    layout->addWidget(click);
    layout->addWidget(label(tr("翻译结果的发送"), page, "sectionLabel"));
    layout->addWidget(send);
    layout->addWidget(label(tr("界面语言"), page, "sectionLabel"));
    layout->addWidget(buildInterfaceLanguageCard(page));
    layout->addStretch();
    return page;
}
