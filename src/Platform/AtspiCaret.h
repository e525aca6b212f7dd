#pragma once

#include <QPoint>

// The caret of the focused text field, through the accessibility bus where the desktop runs
// one. (0, 0) when there is no bus, no focused text, or the search takes too long.
namespace AtspiCaret {

QPoint caretPosition();

}  // namespace AtspiCaret
