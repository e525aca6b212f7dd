// GLib's headers use "signals" as a name; they come before Qt defines it.
#ifdef ZORVANE_HAVE_ATSPI
#include <atspi/atspi.h>
#endif

#include "Platform/AtspiCaret.h"

#include "Utils/Logging.h"

namespace AtspiCaret {

#ifdef ZORVANE_HAVE_ATSPI

namespace {

// Bounds of the walk through an application's tree, so that a huge document cannot stall typing.
constexpr int kMaxNodes = 400;
constexpr int kMaxDepth = 24;
// Milliseconds an accessibility call may take.
constexpr int kCallTimeoutMs = 200;

bool hasState(AtspiAccessible* node, AtspiStateType state)
{
    AtspiStateSet* set = atspi_accessible_get_state_set(node);
    if (set == nullptr) {
        return false;
    }
    const bool has = atspi_state_set_contains(set, state);
    g_object_unref(set);
    return has;
}

// The focused descendant with a text interface, as a new reference, or null.
AtspiAccessible* findFocusedText(AtspiAccessible* node, int depth, int* budget)
{
    if (node == nullptr || depth > kMaxDepth || --*budget < 0) {
        return nullptr;
    }
    if (hasState(node, ATSPI_STATE_FOCUSED)) {
        AtspiText* text = atspi_accessible_get_text_iface(node);
        if (text != nullptr) {
            g_object_unref(text);
            return static_cast<AtspiAccessible*>(g_object_ref(node));
        }
    }
    GError* error = nullptr;
    const int count = atspi_accessible_get_child_count(node, &error);
    if (error != nullptr) {
        g_error_free(error);
        return nullptr;
    }
    for (int i = 0; i<count&& * budget> 0; ++i) {
        AtspiAccessible* child = atspi_accessible_get_child_at_index(node, i, nullptr);
        AtspiAccessible* found = findFocusedText(child, depth + 1, budget);
        if (child != nullptr) {
            g_object_unref(child);
        }
        if (found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

bool initialised()
{
    static const bool ok = [] {
        if (atspi_init() < 0) {
            qCInfo(lcX11) << "no accessibility bus: the caret position is unknown";
            return false;
        }
        atspi_set_timeout(kCallTimeoutMs, kCallTimeoutMs);
        return true;
    }();
    return ok;
}

}  // namespace

QPoint caretPosition()
{
    if (!initialised()) {
        return QPoint(0, 0);
    }
    AtspiAccessible* desktop = atspi_get_desktop(0);
    if (desktop == nullptr) {
        return QPoint(0, 0);
    }
    QPoint result(0, 0);
    int budget = kMaxNodes;
    const int apps = atspi_accessible_get_child_count(desktop, nullptr);
    for (int a = 0; a < apps && budget > 0 && result.isNull(); ++a) {
        AtspiAccessible* app = atspi_accessible_get_child_at_index(desktop, a, nullptr);
        if (app == nullptr) {
            continue;
        }
        // Only the application with the active window holds the caret the user types at.
        const int windows = atspi_accessible_get_child_count(app, nullptr);
        for (int w = 0; w < windows && result.isNull(); ++w) {
            AtspiAccessible* window = atspi_accessible_get_child_at_index(app, w, nullptr);
            if (window != nullptr && hasState(window, ATSPI_STATE_ACTIVE)) {
                AtspiAccessible* focused = findFocusedText(window, 0, &budget);
                if (focused != nullptr) {
                    AtspiText* text = atspi_accessible_get_text_iface(focused);
                    const int offset = atspi_text_get_caret_offset(text, nullptr);
                    AtspiRect* rect =
                        atspi_text_get_character_extents(text, offset, ATSPI_COORD_TYPE_SCREEN, nullptr);
                    if (rect != nullptr) {
                        // Below the caret, where a panel should not cover it.
                        if (rect->x > 0 && rect->y > 0) {
                            result = QPoint(rect->x, rect->y + rect->height);
                        }
                        g_free(rect);
                    }
                    g_object_unref(text);
                    g_object_unref(focused);
                }
            }
            if (window != nullptr) {
                g_object_unref(window);
            }
        }
        g_object_unref(app);
    }
    g_object_unref(desktop);
    return result;
}

#else

QPoint caretPosition()
{
    return QPoint(0, 0);
}

#endif

}  // namespace AtspiCaret
