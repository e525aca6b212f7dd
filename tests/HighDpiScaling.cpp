#include "Widget/Common/Pictures.h"

// The suites' windows are scaled as the program's are (a static object runs before the
// application is made): at QT_SCALE_FACTOR=2 they show what the user sees.
static const bool kHighDpiScaling = (Pictures::enableHighDpiScaling(), true);
