#include "Utils/AppVersion.h"

const char kAppVersion[] = ZORVANE_APP_VERSION;
