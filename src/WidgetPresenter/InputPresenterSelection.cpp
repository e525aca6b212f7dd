// Text selected with the mouse: read from the X session's PRIMARY selection, then translated
// or read aloud from the toolbar beside it.
#include "InputPresenter.h"

#include "Hid/DeviceManager.h"
#include "Http/BaiduTranslate.h"
#include "Http/HttpManager.h"
#include "InputView.h"
#include "SpeechRec/SpeechSynthesisUtils.h"
#include "Utils/Logging.h"

#include <QClipboard>
#include <QMimeData>
#include <QThread>

namespace {

// The selecting program may see the end of the drag after us and claim the selection a moment
// later.
constexpr unsigned long kSettleMs = 50;
constexpr int kClipboardPolls = 3;

}  // namespace

void InputPresenter::onPaddleWords()
{
    if (!mDeviceManager->isReady() || !mInputView->isShowPaddlewordsView() || !isPaddle()) {
        return;
    }
    // No copy chord: X already holds the selection, and Ctrl+C would interrupt a terminal's
    // program and overwrite the user's clipboard.
    onClipboardDataChange();
}

bool InputPresenter::isClipboardUsable()
{
    const QMimeData* data = mClipboard->mimeData(QClipboard::Selection);
    if (data == nullptr || !data->hasFormat(QStringLiteral("text/plain")) ||
        data->hasFormat(QStringLiteral("application/octet-stream"))) {
        return false;
    }
    const QString text = data->text();
    if (text.isEmpty() || text == QLatin1String("\n") || text == QLatin1String("\r\n")) {
        return false;
    }
    return mInputView->isShowPaddlewordsView();
}

void InputPresenter::onClipboardDataChange()
{
    if (!isPaddle() || !mDeviceManager->isReady()) {
        return;
    }
    QThread::msleep(kSettleMs);
    if (isClipboardUsable()) {
        mPaddleText = mClipboard->text(QClipboard::Selection);
        showPaddleWords();
        return;
    }
    if (mClipboard->text(QClipboard::Selection).isEmpty()) {
        // Not claimed yet: look again a few times.
        mTimerClipboardPoll.stop();
        mClipboardTries = 0;
        mTimerClipboardPoll.start();
    }
}

void InputPresenter::onClipboardPoll()
{
    if (isClipboardUsable()) {
        mClipboardTries = 0;
        mTimerClipboardPoll.stop();
        mPaddleText = mClipboard->text(QClipboard::Selection);
        showPaddleWords();
        return;
    }
    if (++mClipboardTries >= kClipboardPolls) {
        mClipboardTries = 0;
        mTimerClipboardPoll.stop();
    }
}

void InputPresenter::showPaddleWords()
{
    if (!mInputView->isHiddenPaddleWordsView()) {
        mInputView->toHiddenPaddleWordsView();
    }
    if (mInputView->isHiddenTextTranslateView() && mInputView->isHiddenPaddleWordsView()) {
        mInputView->toShowPaddleWordsView();
    }
}

void InputPresenter::onToShowTextTranslate()
{
    QThread::msleep(kSettleMs);
    mInputView->setTextTranslateSourceText(mPaddleText);
}

void InputPresenter::onToStartTextReading(int pronPerson)
{
    if (mSynthesis->isPlaying()) {
        mSynthesis->stop();
    }
    // Half-width marks the voice would spell out; the selection keeps the change.
    for (const QChar mark : QStringLiteral("\n/\\*<>,?")) {
        mPaddleText.remove(mark);
    }
    for (int at = 0; at < mPaddleText.size(); at += kReadingPieceChars) {
        emit mSynthesis->speechSynthesis(mPaddleText.mid(at, kReadingPieceChars), pronPerson, 5, 5, 5);
    }
}

void InputPresenter::onToShowReviseSignView(int x, int y)
{
    // The hint beside a rewritten word shows the text typed last.
    mInputView->setReviseSignViewText(x, y, mLastOutput);
}
