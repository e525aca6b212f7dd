#pragma once

#include <QRect>

// Where the windows may be placed: the primary screen's free part as the typing backend sees it,
// in the frame it reports the caret in (on Wayland a compositor's output, which need not be the
// one Qt's own windows think they are on).
namespace DesktopArea {

QRect workArea();

}  // namespace DesktopArea
