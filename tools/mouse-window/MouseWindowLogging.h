#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcMouseWindow)  // zorvane.tools.mousewindow
