#include "Platform/InputBackendChoice.h"

#include "Platform/DesktopNotifications.h"
#include "Platform/IBus/IBusTypingBackend.h"
#include "Platform/Wayland/WaylandKeyboardBackend.h"
#include "Platform/X11InputBackend.h"
#include "Utils/Logging.h"
#include "Utils/Notice.h"

#include <QCoreApplication>

namespace InputBackendChoice {

Kind choose(const QByteArray& sessionType, const QByteArray& waylandDisplay,
            const std::function<bool()>& offersVirtualKeyboard, const std::function<bool()>& takesIbusEngine)
{
    // An X11 session may carry a nested compositor's WAYLAND_DISPLAY: the session decides.
    if (sessionType == "x11" || waylandDisplay.isEmpty()) {
        return Kind::X11;
    }
    if (offersVirtualKeyboard()) {
        return Kind::WaylandVirtualKeyboard;
    }
    return takesIbusEngine() ? Kind::IBus : Kind::X11;
}

std::unique_ptr<InputBackend> create()
{
    const QByteArray session = qgetenv("XDG_SESSION_TYPE");
    std::unique_ptr<WaylandKeyboardBackend> wayland;
    std::unique_ptr<IBusTypingBackend> ibus;
    const Kind kind = choose(
        session, qgetenv("WAYLAND_DISPLAY"),
        [&wayland] {
            wayland = std::make_unique<WaylandKeyboardBackend>();
            return wayland->isAvailable();
        },
        [&ibus] {
            ibus = std::make_unique<IBusTypingBackend>();
            return ibus->isAvailable();
        });
    if (kind == Kind::WaylandVirtualKeyboard) {
        return wayland;
    }
    if (kind == Kind::IBus) {
        return ibus;
    }
    if (session == "wayland") {
        const QString why =
            wayland != nullptr ? wayland->unavailableReason() : QStringLiteral("WAYLAND_DISPLAY is not set");
        qCWarning(lcWayland).noquote()
            << QStringLiteral(
                   "Wayland session without a virtual keyboard for clients (%1) nor ibus (%2): text "
                   "is typed through XWayland and reaches only X11 windows; native Wayland windows "
                   "(most GNOME and KDE programs, Firefox on Wayland) get nothing")
                   .arg(why, ibus != nullptr ? ibus->unavailableReason() : QStringLiteral("not asked"));
    }
    return std::make_unique<X11InputBackend>();
}

QString describe(InputBackend* backend)
{
    if (auto* wayland = dynamic_cast<WaylandKeyboardBackend*>(backend)) {
        return wayland->isAvailable() ? QStringLiteral("available (Wayland virtual keyboard)")
                                      : QStringLiteral("off (%1)").arg(wayland->unavailableReason());
    }
    if (auto* ibus = dynamic_cast<IBusTypingBackend*>(backend)) {
        return ibus->isAvailable() ? QStringLiteral("available (IBus engine on Wayland)")
                                   : QStringLiteral("off (%1)").arg(ibus->unavailableReason());
    }
    auto* x11 = dynamic_cast<X11InputBackend*>(backend);
    if (x11 == nullptr) {
        return QStringLiteral("off (no desktop backend)");
    }
    if (!x11->isAvailable()) {
        return QStringLiteral("off (%1)").arg(x11->unavailableReason());
    }
    return qgetenv("XDG_SESSION_TYPE") == "wayland"
               ? QStringLiteral("available (X11 through XWayland: X11 windows only)")
               : QStringLiteral("available (X11)");
}

bool tellIfNoRoute(InputBackend* backend, DesktopNotifications* notifications)
{
    if (qgetenv("XDG_SESSION_TYPE") != "wayland" || dynamic_cast<X11InputBackend*>(backend) == nullptr) {
        return false;
    }
    const QString summary =
        QCoreApplication::translate("InputBackendChoice", "听写的文字无法输入到 Wayland 窗口");
    const QString body = QCoreApplication::translate(
        "InputBackendChoice",
        "此桌面既没有提供虚拟键盘，也没有可用的 IBus 输入法：文字只能输入到 X11 程序中，"
        "GNOME、KDE 等原生 Wayland 程序的窗口收不到任何文字。"
        "请安装并启用 IBus（在系统设置的“键盘/输入源”中添加 IBus 输入源），"
        "或在登录界面选择 X11（Xorg）会话，然后重新启动 Zorvane。");
    Notice::show(summary + QStringLiteral("\n") + body);
    if (notifications != nullptr) {
        notifications->notify(DesktopNotifications::KindTyping, summary, body,
                              DesktopNotifications::UrgencyCritical);
    }
    return true;
}

}  // namespace InputBackendChoice
