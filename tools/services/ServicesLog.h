#pragma once

#include <QLoggingCategory>

// One line per request or session, so that a person at the console sees what the
// application asked for.
Q_DECLARE_LOGGING_CATEGORY(lcServices)
