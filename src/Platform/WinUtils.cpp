#include "Platform/WinUtils.h"

#include "Platform/ChineseConverter.h"
#include "Platform/InputBackend.h"
#include "Platform/InputBackendChoice.h"
#include "Platform/MacKeyMap.h"
#include "Utils/Logging.h"

#include <X11/keysym.h>

WinUtils::WinUtils() : WinUtils(InputBackendChoice::create()) {}

WinUtils::WinUtils(std::unique_ptr<InputBackend> desktop)
    : mDesktop(std::move(desktop)), mConverter(std::make_unique<ChineseConverter>())
{
    mBackend = mDesktop.get();
}

WinUtils::~WinUtils() = default;

void WinUtils::shutDown()
{
    mDesktop->shutDown();
}

void WinUtils::setBackend(InputBackend* backend)
{
    mBackend = backend != nullptr ? backend : mDesktop.get();
}

InputBackend* WinUtils::backend() const
{
    return mBackend;
}

QRect WinUtils::getScreen()
{
    const QRect screen = mBackend->screenGeometry();
    qCDebug(lcX11) << "屏幕分辨率：" << screen;
    return screen;
}

QPoint WinUtils::getPosition1()
{
    return mBackend->caretPosition();
}

QPoint WinUtils::getPosition2()
{
    return QPoint(0, 0);
}

QPoint WinUtils::getPosition()
{
    const QPoint caret = getPosition1();
    const QRect screen = getScreen();
    if (caret.x() >= 0 && caret.x() <= screen.width() && caret.y() >= 0 && caret.y() <= screen.height()) {
        return caret;
    }
    return getPosition2();
}

QString WinUtils::getForegroundWindowName()
{
    return mBackend->activeWindowClass();
}

unsigned long WinUtils::focusedWindow()
{
    return mBackend->focusedWindow();
}

quint64 WinUtils::foreignKeyPresses()
{
    return mBackend->foreignKeyPresses();
}

void WinUtils::sendKeyboard(unsigned short key, bool down)
{
    const unsigned long keysym = MacKeyMap::toKeysym(key);
    if (keysym == 0) {
        qCDebug(lcX11) << "no key for code" << key;
        return;
    }
    mBackend->sendKey(keysym, down);
}

void WinUtils::backDesktop()
{
    mBackend->toggleShowingDesktop();
}

void WinUtils::backspace()
{
    mBackend->sendKey(XK_BackSpace, true);
    mBackend->sendKey(XK_BackSpace, false);
}

void WinUtils::chord(unsigned long modifier, unsigned long key)
{
    // Whole key presses: a key left down would stay down for the user.
    mBackend->sendKey(modifier, true);
    mBackend->sendKey(key, true);
    mBackend->sendKey(key, false);
    mBackend->sendKey(modifier, false);
}

void WinUtils::selectAll()
{
    qCDebug(lcX11) << "selectAll";
    chord(XK_Control_L, XK_a);
}

void WinUtils::copyContent()
{
    chord(XK_Control_L, XK_c);
}

void WinUtils::cutContent()
{
    chord(XK_Control_L, XK_x);
}

void WinUtils::deleteFile()
{
    // File managers move the selection to the trash on Delete.
    mBackend->sendKey(XK_Delete, true);
    mBackend->sendKey(XK_Delete, false);
}

void WinUtils::sendInput(QString text)
{
    if (!text.isEmpty()) {
        mBackend->typeText(text);
    }
}

QString WinUtils::SimplifiedToTraditional(QString text)
{
    return mConverter->simplifiedToTraditional(text);
}
