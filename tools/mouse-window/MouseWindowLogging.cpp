#include "MouseWindowLogging.h"

// Debug lines (every command the window sends) on request: QT_LOGGING_RULES=zorvane.*.debug=true
Q_LOGGING_CATEGORY(lcMouseWindow, "zorvane.tools.mousewindow", QtInfoMsg)
