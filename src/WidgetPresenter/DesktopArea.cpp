#include "WidgetPresenter/DesktopArea.h"

#include "Platform/WinUtils.h"

namespace DesktopArea {

QRect workArea()
{
    return WinUtils::getInstance()->getScreen();
}

}  // namespace DesktopArea
