#pragma once

#include <QString>

// The console's look for its small dialogs: one sheet, so that they all match.
namespace DialogStyle {

inline QString sheet()
{
    return QStringLiteral(
        "QLabel { color: #333333; font-size: 14px; }"
        "QLabel#titleLabel { font-size: 15px; }"
        "QLabel#headingLabel { font-size: 18px; font-weight: bold; }"
        "QLabel#mutedLabel { color: #888888; font-size: 13px; }"
        "QPushButton { min-width: 72px; min-height: 30px; padding: 0 14px; border-radius: 15px;"
        " border: 1px solid #c8ccd4; background: #ffffff; color: #333333; font-size: 14px; }"
        "QPushButton:hover { border-color: #2f7cf6; color: #2f7cf6; }"
        "QPushButton#primaryButton { border: none; background: #2f7cf6; color: white; }"
        "QPushButton#primaryButton:hover { background: #4a8ff8; }"
        "QPushButton#closeButton { min-width: 24px; min-height: 24px; max-width: 24px; max-height: 24px;"
        " padding: 0; border: none; background: transparent; }"
        "QPushButton#closeButton:hover { background: #eef0f3; }"
        "QLineEdit, QPlainTextEdit, QTextBrowser { border: 1px solid #d6d9de; border-radius: 6px;"
        " padding: 4px 6px; font-size: 14px; background: #fafbfc; }"
        "QProgressBar { border: none; border-radius: 4px; background: #e6e9ee; max-height: 8px; }"
        "QProgressBar::chunk { border-radius: 4px; background: #2f7cf6; }"
        "QCheckBox { font-size: 14px; color: #333333; }");
}

}  // namespace DialogStyle
