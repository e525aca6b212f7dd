#include "Widget/Notices/NoticeLook.h"

#include <QtGlobal>

static void registerNoticeArt()
{
    Q_INIT_RESOURCE(notices);
}

namespace NoticeLook {

void loadArt()
{
    static const bool loaded = [] {
        registerNoticeArt();
        return true;
    }();
    Q_UNUSED(loaded);
}

}  // namespace NoticeLook
