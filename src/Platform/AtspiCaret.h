#pragma once

#include <QPoint>

// The caret of the focused text field, through the accessibility bus where the desktop runs
// one. (0, 0) when there is no bus, no focused text, or the search takes too long.
namespace AtspiCaret {

// One search, on the calling thread and blocking it: each application gets a bounded time to
// answer a call, and one that lets a call time out is left out of the searches for a while.
// Any thread; searches run one at a time.
QPoint lookUp();

}  // namespace AtspiCaret
