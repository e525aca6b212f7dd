#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

#include <memory>

class DesktopNotifications;
class InputBackend;

// Which backend types into other windows, chosen once at start from the session:
//  - an X11 session, or no Wayland compositor to reach: X11 (XTest);
//  - a Wayland session whose compositor offers virtual keyboards (wlroots: sway, Hyprland,
//    labwc, river): WaylandKeyboardBackend, which reaches native Wayland and XWayland windows;
//  - a Wayland session without them but with an ibus-daemon (GNOME): IBusTypingBackend, an
//    engine of ours that ibus runs for the focused field while we type;
//  - a Wayland session with neither (KDE Plasma without ibus): X11 through XWayland, which
//    reaches only X11 windows; the user is told so once (tellIfNoRoute).
namespace InputBackendChoice {

enum class Kind { X11, WaylandVirtualKeyboard, IBus };

// The rule, from XDG_SESSION_TYPE, WAYLAND_DISPLAY, whether the compositor offers a virtual
// keyboard and whether ibus takes our engine (each asked only when the rule needs it).
Kind choose(
    const QByteArray& sessionType, const QByteArray& waylandDisplay,
    const std::function<bool()>& offersVirtualKeyboard,
    const std::function<bool()>& takesIbusEngine = [] { return false; });
// The backend for this process's session.
std::unique_ptr<InputBackend> create();
// What the start line says of typing: "available (...)" naming the backend, or "off (why)".
QString describe(InputBackend* backend);
// A Wayland session left with the X11 fallback reaches no native Wayland window: tells the user
// so, what to do about it, as a notice (the console's log and popup) and a desktop notification.
// Nothing elsewhere. Called once, at start. False if there was nothing to tell.
bool tellIfNoRoute(InputBackend* backend, DesktopNotifications* notifications);

}  // namespace InputBackendChoice
