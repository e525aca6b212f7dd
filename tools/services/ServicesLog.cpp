#include "ServicesLog.h"

Q_LOGGING_CATEGORY(lcServices, "zorvane.services")
