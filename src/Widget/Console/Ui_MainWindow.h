#pragma once

#include <QCoreApplication>

class LineEdit;
class QAbstractButton;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QFrame;
class QIcon;
class QLabel;
class QLineEdit;
class QMainWindow;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTableWidget;
class QToolButton;
class QWidget;

// The console's widgets, built in code: the title bar, the navigation column and the seven
// pages. It only builds and names; what the widgets do is the window's.
class Ui_MainWindow {
    Q_DECLARE_TR_FUNCTIONS(Ui_MainWindow)

public:
    enum Page {
        HomePage = 0,
        CommandPage = 1,
        AppSettingsPage = 2,
        MouseSettingsPage = 3,
        AddCommandPage = 4,
        EditCommandPage = 5,
        PreferencePage = 6
    };

    // One form of the add and edit pages.
    struct CommandForm {
        QComboBox* type = nullptr;
        QLineEdit* command = nullptr;
        LineEdit* content = nullptr;
        QPushButton* browse = nullptr;
        QLabel* hint = nullptr;
        QLabel* warning = nullptr;
        QPushButton* submit = nullptr;
        QPushButton* back = nullptr;
    };

    // A switch the user handles, and next to it the state the mouse reported.
    struct SwitchRow {
        QWidget* row = nullptr;
        QCheckBox* onOff = nullptr;
        QCheckBox* status = nullptr;
    };

    void setupUi(QMainWindow* window);
    // The icon of a command word's type (0 web page … 4 application).
    static QIcon commandTypeIcon(int type);

    QWidget* central = nullptr;
    QWidget* titleBar = nullptr;
    QToolButton* buttonMenu = nullptr;
    QToolButton* buttonMin = nullptr;
    QToolButton* buttonClose = nullptr;

    QLabel* labelNav = nullptr;
    QButtonGroup* navGroup = nullptr;
    QPushButton* navButtons[4] = {};
    QStackedWidget* stackedWidget = nullptr;

    // Home.
    QLabel* labelHomeImage = nullptr;
    QLabel* labelDeviceName = nullptr;
    QLabel* labelTypeUsb = nullptr;
    QLabel* labelTypeBle = nullptr;
    QLabel* labelHomeWarning = nullptr;
    QComboBox* comboDictationLanguageHome = nullptr;
    QPushButton* buttonExplain = nullptr;

    // Command words.
    QTableWidget* tableCustom = nullptr;
    QPushButton* buttonAddCommand = nullptr;
    QPushButton* buttonDelCommand = nullptr;
    QPushButton* buttonEditCommand = nullptr;
    QLabel* labelCommandWarning = nullptr;

    // Application settings.
    QComboBox* comboDictationLanguage = nullptr;
    QCheckBox* checkVoiceTranslateOnOff = nullptr;
    QComboBox* comboVoiceTranslateSrc = nullptr;
    QComboBox* comboVoiceTranslateTar = nullptr;
    QCheckBox* checkTextTranslateOnOff = nullptr;
    QComboBox* comboTextTranslate = nullptr;
    QComboBox* comboRestTime = nullptr;
    QComboBox* comboNoticeStyle = nullptr;  // popup, notification, both
    SwitchRow calendarPhrases;
    SwitchRow updateHint;
    SwitchRow autoRun;
    QPushButton* buttonPreference = nullptr;
    QPushButton* buttonFeedback = nullptr;

    // Mouse settings.
    QFrame* frameResolution = nullptr;
    QButtonGroup* dpiGroup = nullptr;
    QPushButton* radioLevel[4] = {};
    QLabel* labelCpi = nullptr;
    SwitchRow lighting;
    SwitchRow shake;
    SwitchRow soundEffect;
    SwitchRow lowbat;

    // Add and edit a command word.
    CommandForm addForm;
    CommandForm editForm;

    // Preferences of clicking and sending.
    QCheckBox* checkClickMode = nullptr;
    QRadioButton* radioClickSend = nullptr;
    QRadioButton* radioAutoSend = nullptr;
    QCheckBox* checkEnterSend = nullptr;
    QCheckBox* checkSpaceSend = nullptr;
    QCheckBox* checkDelAllSign = nullptr;
    QComboBox* comboInterfaceLanguage = nullptr;  // follow the system, Chinese, English
    QPushButton* buttonPreferenceBack = nullptr;

    // The speed buttons' row: close together with the fourth shown, spread out without it.
    static constexpr int kSpeedButtonMinWidth = 100;
    static constexpr int kFourButtonsGap = 14;
    static constexpr int kThreeButtonsGap = 47;
    static constexpr int kButtonsY = 50;

private:
    QWidget* buildTitleBar(QWidget* parent);
    QWidget* buildNavigation(QWidget* parent);
    QWidget* buildHomePage();
    QWidget* buildInterfaceLanguageCard(QWidget* page);
    QWidget* buildCommandPage();
    QWidget* buildAppSettingsPage();
    QWidget* buildMouseSettingsPage();
    QWidget* buildCommandFormPage(CommandForm* form, const QString& heading);
    QWidget* buildPreferencePage();
    SwitchRow switchRow(QWidget* parent, const QString& text, const QString& tip);
};
