#include "Hid/HookManager.h"
#include "InputPresenterRig.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>
#include <QtTest>

namespace {

using P = InputPresenter;

QByteArray translation(const QStringList& lines)
{
    QString entries;
    for (const QString& line : lines) {
        entries += QStringLiteral("%1{\"src\":\"x\",\"dst\":\"%2\"}")
                       .arg(entries.isEmpty() ? QString() : QStringLiteral(","), line);
    }
    return QStringLiteral("{\"from\":\"zh\",\"to\":\"cht\",\"trans_result\":[%1]}").arg(entries).toUtf8();
}

QByteArray semantic(int category)
{
    return QStringLiteral(
               "{\"code\":1,\"msg\":\"ok\",\"data\":{\"serviceCategory\":%1,\"serviceModel\":1,"
               "\"isSearch\":0,\"website\":\"\",\"searchUrl\":\"\",\"searchWord\":\"\"}}")
        .arg(category)
        .toUtf8();
}

}  // namespace

// What becomes of recognised text, and of text translated from a selection.
class TestInputResults : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void dictationTypesSegmentsOneBehindTheOther();
    void strippingTypesNoPunctuationButUploadsIt();
    void traditionalTargetTypesOnlyFinals();
    void translationSourceText();
    void voiceCommandLengthAndStripping();
    void nonMandarinSearchKeepsPunctuation();
    void semanticReplies();

private:
    P* presenter() { return mRig->presenter.get(); }
    RecordingInputView& view() { return mRig->view; }
    BaiduSpeech* engine() { return mRig->baidu.get(); }
    // A voice command said whole: press, the final, the stop, the recogniser's end.
    void command(const QString& words)
    {
        presenter()->onKeyEvent(5, 1);
        emit engine()->signalResult(words);
        presenter()->stopStatus();
        emit engine()->signalEnd();
    }
    QList<LocalHttpServer::Request> requestsTo(const QByteArray& path) const
    {
        QList<LocalHttpServer::Request> found;
        for (const LocalHttpServer::Request& r : mRig->backend.requests()) {
            if (r.target.startsWith(path)) {
                found << r;
            }
        }
        return found;
    }

    std::unique_ptr<InputPresenterRig> mRig;
};

void TestInputResults::init()
{
    mRig = std::make_unique<InputPresenterRig>();
    mRig->connectDevice();
}

void TestInputResults::cleanup()
{
    mRig.reset();
}

void TestInputResults::dictationTypesSegmentsOneBehindTheOther()
{
    presenter()->onKeyEvent(6, 1);
    emit engine()->signalBegin();
    emit engine()->signalFlushResult(QStringLiteral("你好"));
    emit engine()->signalFlushResult(QStringLiteral("你们"));  // revised: one backspace
    emit engine()->signalResult(QStringLiteral("你们好。"));
    emit engine()->signalFlushResult(QStringLiteral("再见"));
    QCOMPARE(mRig->desktop.typedText(), QStringLiteral("你们好。再见"));
    QCOMPARE(mRig->desktop.log.count(QStringLiteral("down BackSpace")), 1);
    QCOMPARE(presenter()->results(), QList<QString>{QStringLiteral("你们好。")});

    // The user clicked into another window before the final came: no rewrite lands there,
    // and the next segment starts afresh where the user now is.
    mRig->desktop.takeLog();
    mRig->desktop.window = 2;
    emit engine()->signalResult(QStringLiteral("在见。"));
    QVERIFY(mRig->desktop.log.isEmpty());
    emit engine()->signalFlushResult(QStringLiteral("好"));
    QCOMPARE(mRig->desktop.takeLog(), QStringList{QStringLiteral("text 好")});

    // A click into another field of the same window: no rewrite there either.
    emit HookManager::getInstance()->signalMouseEvent(1, 1);
    emit HookManager::getInstance()->signalMouseEvent(1, 0);
    emit engine()->signalResult(QStringLiteral("号。"));
    QVERIFY(mRig->desktop.log.isEmpty());
    emit engine()->signalFlushResult(QStringLiteral("再"));
    QCOMPARE(mRig->desktop.takeLog(), QStringList{QStringLiteral("text 再")});
}

void TestInputResults::strippingTypesNoPunctuationButUploadsIt()
{
    mRig->backend.setAnswer(QStringLiteral("/BelmorZorvaneV2Mac/textrecord/upload"), {200, "{\"code\":1}"});
    mRig->setPreferences([](UserPreferences& p) { p.isDelAllSign = 1; });
    presenter()->onLocalIpId(77);
    presenter()->onKeyEvent(6, 1);
    emit engine()->signalResult(QStringLiteral("你好，世界。"));
    emit engine()->signalResult(QStringLiteral("Yes!"));
    presenter()->stopStatus();
    // The end of a session leaves nothing at info level for the user's log.
    static QStringList infos;
    const QtMessageHandler previous =
        qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
            if (type == QtInfoMsg) {
                infos << message;
            }
        });
    emit engine()->signalEnd();
    qInstallMessageHandler(previous);
    QVERIFY2(infos.isEmpty(), qPrintable(infos.join(QLatin1Char('\n'))));
    QCOMPARE(mRig->desktop.typedText(), QStringLiteral("你好世界Yes"));
    QVERIFY(!presenter()->status().isRunning);
    QTRY_COMPARE(requestsTo("/BelmorZorvaneV2Mac/textrecord/upload").size(), 1);
    const QJsonObject record =
        QJsonDocument::fromJson(requestsTo("/BelmorZorvaneV2Mac/textrecord/upload").first().body).object();
    QCOMPARE(record.value(QStringLiteral("src")).toString(), QStringLiteral("你好，世界。Yes!"));
    QCOMPARE(record.value(QStringLiteral("type")).toInt(), 3);
    QCOMPARE(record.value(QStringLiteral("ip")).toInt(), 77);
}

void TestInputResults::traditionalTargetTypesOnlyFinals()
{
    const QString path = QStringLiteral("/api/trans/vip/translate");
    mRig->backend.setAnswer(path,
                            {200, translation({QStringLiteral("你們好"), QStringLiteral("世界")}), 300});
    mRig->setPreferences([](UserPreferences& p) {
        p.recognitionLanguage = 1;
        p.voiceTranslateSourceLanguage = 1;
        p.voiceTranslateTargetLanguage = 3;  // 粤语繁体
    });
    presenter()->onKeyEvent(6, 1);
    QCOMPARE(presenter()->status().type, int(P::Dictation));
    emit engine()->signalFlushResult(QStringLiteral("你们好"));
    QVERIFY(mRig->desktop.log.isEmpty());
    // The conversion answers later, never inside the result's handling; the finals keep
    // their order whichever answer comes first.
    emit engine()->signalResult(QStringLiteral("你们好世界"));
    QVERIFY(mRig->desktop.log.isEmpty());
    QTRY_COMPARE(requestsTo(path.toUtf8()).size(), 1);
    mRig->backend.setAnswer(path, {200, translation({QStringLiteral("再見")})});
    emit engine()->signalResult(QStringLiteral("再见"));
    QTRY_COMPARE(mRig->desktop.typedText(), QStringLiteral("你們好\n世界再見"));
    const QUrlQuery query(QUrl::fromEncoded(requestsTo(path.toUtf8()).first().target));
    QCOMPARE(query.queryItemValue(QStringLiteral("from")), QStringLiteral("zh_cn"));
    QCOMPARE(query.queryItemValue(QStringLiteral("to")), QStringLiteral("cht"));

    // No answer: the words as recognised are typed rather than nothing.
    mRig->backend.setAnswer(path, {500, QByteArray()});
    emit engine()->signalResult(QStringLiteral("好的"));
    QTRY_VERIFY(mRig->desktop.typedText().endsWith(QStringLiteral("好的")));

    // A new press while a conversion is out: the segment is typed as heard before the new
    // session begins, and the late answer is typed nowhere.
    mRig->backend.setAnswer(path, {200, translation({QStringLiteral("謝謝")}), 300});
    emit engine()->signalResult(QStringLiteral("谢谢"));
    QTRY_COMPARE(requestsTo(path.toUtf8()).size(), 4);
    presenter()->onKeyEvent(6, 0);
    presenter()->onKeyEvent(6, 1);
    QVERIFY(mRig->desktop.typedText().endsWith(QStringLiteral("好的谢谢")));
    QTest::qWait(600);
    QVERIFY(mRig->desktop.typedText().endsWith(QStringLiteral("好的谢谢")));
}

void TestInputResults::translationSourceText()
{
    mRig->setPreferences([](UserPreferences& p) {
        p.voiceTranslateTargetLanguage = 4;
        p.isDelAllSign = 1;
    });
    presenter()->onKeyEvent(6, 1);
    QCOMPARE(presenter()->status().type, int(P::VoiceTranslate));
    emit engine()->signalResult(QStringLiteral("你好。"));
    emit engine()->signalFlushResult(QStringLiteral("世界"));
    QCOMPARE(view().callsOf(QStringLiteral("setVoiceTranslateSourceText")),
             QStringList({QStringLiteral("setVoiceTranslateSourceText(你好)"),
                          QStringLiteral("setVoiceTranslateSourceText(你好世界)")}));
    // While the user edits the panel, only the changed tail is inserted.
    view().answers[QStringLiteral("isNoFoOnEditing")] = true;
    emit engine()->signalFlushResult(QStringLiteral("世"));
    emit engine()->signalResult(QStringLiteral("世界！"));
    QCOMPARE(view().callsOf(QStringLiteral("insertVoiceTranslateOnEditingSourceText")),
             QStringList({QStringLiteral("insertVoiceTranslateOnEditingSourceText(你好世)"),
                          QStringLiteral("insertVoiceTranslateOnEditingSourceText(界)")}));
    QVERIFY(presenter()->results().isEmpty());
    presenter()->stopStatus();
    emit engine()->signalEnd();
    QVERIFY(!presenter()->status().isRunning);
}

void TestInputResults::voiceCommandLengthAndStripping()
{
    // One character: too short, and said for as long as any other answer.
    command(QStringLiteral("好"));
    QCOMPARE(view().calls.last(), QStringLiteral("setContent(\"好\" : 内容太短啦！)"));
    QVERIFY(presenter()->timer(P::TimerDelayHide).isActive());
    QCOMPARE(presenter()->timer(P::TimerDelayHide).interval(), 2000);

    // Two characters, one a mark: long enough, and the command sees one character.
    presenter()->onKeyEvent(5, 1);
    emit engine()->signalResult(QStringLiteral("好。"));
    presenter()->stopStatus();
    view().takeCalls();
    emit engine()->signalEnd();
    QVERIFY(view().calls.contains(QStringLiteral("showFace(1)")));
    QVERIFY(!presenter()->status().isRunning);

    // Partial results only: nothing final, so nothing to obey.
    presenter()->onKeyEvent(5, 1);
    emit engine()->signalFlushResult(QStringLiteral("全选"));
    QCOMPARE(view().calls.last(), QStringLiteral("setContent(全选)"));
    presenter()->stopStatus();
    emit engine()->signalEnd();
    QVERIFY(view().calls.contains(QStringLiteral("setContent(\"\" : 内容太短啦！)")));

    // A built-in command, punctuation and all.
    command(QStringLiteral("全选。"));
    QCOMPARE(mRig->desktop.log.first(), QStringLiteral("down Control_L"));
}

void TestInputResults::nonMandarinSearchKeepsPunctuation()
{
    mRig->setPreferences([](UserPreferences& p) {
        p.recognitionLanguage = 3;
        p.voiceTranslateSourceLanguage = 3;
        p.voiceTranslateTargetLanguage = 4;
    });
    command(QStringLiteral("weather in Paris, today?"));
    QCOMPARE(mRig->launcher.log.size(), 1);
    const QUrl opened(mRig->launcher.log.first().mid(4));
    QCOMPARE(opened.path(), QStringLiteral("/s"));
    QCOMPARE(QUrlQuery(opened).queryItemValue(QStringLiteral("wd"), QUrl::FullyDecoded),
             QStringLiteral("weather in Paris, today?"));
    QVERIFY(requestsTo("/BelmorZorvaneV2Mac/semanticParsing").isEmpty());
}

void TestInputResults::semanticReplies()
{
    const QString path = QStringLiteral("/BelmorZorvaneV2Mac/semanticParsing/semanticParsing");
    mRig->backend.setAnswer(path, {200, semantic(21)});
    command(QStringLiteral("打开微信。"));
    QVERIFY(presenter()->status().isAnalyzing);
    QTRY_VERIFY(!presenter()->status().isRunning);
    QCOMPARE(view().calls.last(), QStringLiteral("setContent(正在打开...)"));
    const QJsonObject body = QJsonDocument::fromJson(requestsTo(path.toUtf8()).first().body).object();
    QCOMPARE(body.value(QStringLiteral("content")).toString(), QStringLiteral("打开微信"));

    // Not understood: the words and the message; the session stays until the next press.
    mRig->backend.setAnswer(path, {200, "{\"code\":0,\"msg\":\"no\"}"});
    command(QStringLiteral("嗯嗯嗯"));
    QTRY_VERIFY(view().calls.contains(QStringLiteral("setContent(\"嗯嗯嗯\" : 没听懂您说的。)")));

    // A late reply after a new press changes nothing.
    mRig->backend.setAnswer(path, {200, semantic(21), 300});
    command(QStringLiteral("打开微信"));
    presenter()->onKeyEvent(6, 1);
    view().takeCalls();
    QTest::qWait(500);
    QVERIFY(view().callsOf(QStringLiteral("setContent")).isEmpty());
    QCOMPARE(presenter()->status().type, int(P::Dictation));

    // No backend: the puzzled face, no text.
    mRig->backend.setAnswer(path, {500, QByteArray()});
    command(QStringLiteral("打开微信"));
    QTRY_VERIFY(view().calls.contains(QStringLiteral("showFace(1)")));
    QVERIFY(view().calls.contains(QStringLiteral("setContent()")));
}

QTEST_MAIN(TestInputResults)
#include "tst_inputresults.moc"
