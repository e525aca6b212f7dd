#include "CallRecorder.h"
#include "Http/HttpManager.h"
#include "LocalHttpServer.h"
#include "RecordingAppLauncher.h"
#include "WidgetPresenter/LowBatView.h"
#include "WidgetPresenter/LowbatPresenter.h"
#include "WidgetPresenter/UpdatePresenter.h"
#include "WidgetPresenter/UpdateView.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

namespace {

class RecordingUpdateView : public UpdateView, public CallRecorder {
public:
    void done0() override { record(QStringLiteral("done0")); }
    void done1() override { record(QStringLiteral("done1")); }
    void setStackedWidgetCurrentIndex(int index) override { record(QStringLiteral("page"), index); }
    void setProgressBarValue(int value) override { record(QStringLiteral("value"), value); }
    void setProgressBarMaximum(int maximum) override { record(QStringLiteral("maximum"), maximum); }
    void toHide() override { record(QStringLiteral("toHide")); }
    bool isHidden() override { return ask(QStringLiteral("isHidden"), true).toBool(); }
    void toShow() override { record(QStringLiteral("toShow")); }
    void setNewestVersion(QString text) override { record(QStringLiteral("setNewestVersion"), text); }
    void setDiscoverNewestVersionInfo(QString text) override { record(QStringLiteral("info"), text); }
    void closeAppAutoRunView() override { record(QStringLiteral("closeAppAutoRunView")); }
    void showMessage(QString text) override { record(QStringLiteral("message"), text); }
};

class RecordingLowBatView : public LowBatView {
public:
    QList<int> lowFrames;
    QList<int> minFrames;
    bool IsHidden() override { return true; }
    void toShow() override {}
    void setLowbatAnimationImage(int frame) override { lowFrames << frame; }
    void setMinLowbatAnimationImage(int frame) override { minFrames << frame; }
};

const QString kDownloadPath = QStringLiteral("/BelmorZorvaneV2Mac/version/appDownload");

}  // namespace

// The update download and its hand-over, and the battery panel's frames.
class TestConsoleDialogs : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void downloadHandsOverOrReturnsToTheOffer();
    void batteryFrames();

private:
    LocalHttpServer mServer;
    std::unique_ptr<HttpManager> mHttp;
};

void TestConsoleDialogs::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(mServer.start());
    mHttp = std::make_unique<HttpManager>(HttpRequest::getInstance(), mServer.url(), mServer.url());
}

void TestConsoleDialogs::downloadHandsOverOrReturnsToTheOffer()
{
    RecordingUpdateView view;
    RecordingAppLauncher launcher;
    UpdatePresenter presenter(&view, mHttp.get(), &launcher);
    int quits = 0;
    presenter.setQuit([&quits] { ++quits; });
    QList<PackageInstaller::Command> installers;
    QStringList handed;
    presenter.setInstaller([&](const QString& file) {
        handed << file;
        return installers.takeFirst();
    });
    VersionInfo vi;
    vi.version = QStringLiteral("2.9.0.0");
    presenter.onVersion(vi);
    const QString path = UpdatePresenter::installerPath();

    // An old installer goes before the download, even one that then fails.
    QDir().mkpath(QFileInfo(path).path());
    QFile old(path);
    QVERIFY(old.open(QIODevice::WriteOnly));
    old.write("old");
    old.close();
    mServer.setAnswer(kDownloadPath, {404, "", 0, "text/plain"});
    view.calls.clear();
    presenter.onButtonUpdate();
    QCOMPARE(view.calls.mid(0, 4),
             (QStringList{QStringLiteral("closeAppAutoRunView()"), QStringLiteral("value(0)"),
                          QStringLiteral("maximum(100)"), QStringLiteral("page(2)")}));
    QFile replaced(path);
    QVERIFY(!replaced.open(QIODevice::ReadOnly) || replaced.readAll() != "old");
    QTRY_COMPARE(view.callsOf(QStringLiteral("page")).last(), QStringLiteral("page(1)"));

    // Cancelled: back to the offer.
    mServer.setAnswer(kDownloadPath, {200, QByteArray(4096, 'x'), 3000, "application/octet-stream"});
    view.calls.clear();
    presenter.onUpdate();
    QTest::qWait(100);
    presenter.onButtonCancel();
    QTRY_COMPARE(view.callsOf(QStringLiteral("page")).last(), QStringLiteral("page(1)"));

    // Done: the bar follows the total, the dialog goes, the package goes to a graphical
    // installer, then quit.
    const QByteArray package(200000, 'x');
    mServer.setAnswer(kDownloadPath, {200, package, 0, "application/vnd.debian.binary-package"});
    view.calls.clear();
    installers << PackageInstaller::Command{{QStringLiteral("true")}, false};
    presenter.onUpdate();
    QTRY_VERIFY(view.calls.contains(QStringLiteral("toHide()")));
    QVERIFY(view.calls.contains(QStringLiteral("maximum(200000)")));
    QVERIFY(view.calls.contains(QStringLiteral("value(200000)")));
    QCOMPARE(quits, 0);
    QTRY_COMPARE(quits, 1);
    QCOMPARE(handed, QStringList{path});
    QVERIFY(launcher.log.isEmpty());
    QCOMPARE(QFileInfo(path).size(), 200000);

    // A package that is not the one published is neither handed on nor kept.
    vi.sha256 = QString(64, QLatin1Char('0'));
    presenter.onVersion(vi);
    view.calls.clear();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("does not match its checksum")));
    presenter.onUpdate();
    QTRY_COMPARE(view.callsOf(QStringLiteral("message")).size(), 1);
    QVERIFY(!QFile::exists(path));
    QCOMPARE(handed.size(), 1);

    // apt refused (the password prompt cancelled): the program stays, the folder opens and the
    // command to type is told. apt that installs it: then it quits.
    vi.sha256 =
        QString::fromLatin1(QCryptographicHash::hash(package, QCryptographicHash::Sha256).toHex().toUpper());
    presenter.onVersion(vi);
    view.calls.clear();
    installers << PackageInstaller::Command{{QStringLiteral("false")}, true};
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("package installer ended with 1")));
    presenter.onUpdate();
    QTRY_COMPARE(view.callsOf(QStringLiteral("message")).size(), 1);
    QVERIFY(view.callsOf(QStringLiteral("message")).first().contains(PackageInstaller::manualCommand(path)));
    QCOMPARE(launcher.log, QStringList{QStringLiteral("path ") + QFileInfo(path).absolutePath()});
    QCOMPARE(quits, 1);
    installers << PackageInstaller::Command{{QStringLiteral("true")}, true};
    presenter.onUpdate();
    QTRY_COMPARE(quits, 2);
    QCOMPARE(handed.size(), 3);

    // Only the file the download left is handed over: one swapped for a link meanwhile is not,
    // and the offer comes back instead of the quit.
    view.calls.clear();
    presenter.onUpdate();
    QTRY_VERIFY(view.calls.contains(QStringLiteral("toHide()")));
    QVERIFY(QFile::remove(path));
    QVERIFY(QFile::link(QStringLiteral("/bin/sh"), path));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("not the downloaded installer")));
    QTRY_COMPARE(view.callsOf(QStringLiteral("page")).last(), QStringLiteral("page(1)"));
    QCOMPARE(quits, 2);
    QCOMPARE(handed.size(), 3);
    QFile::remove(path);
}

void TestConsoleDialogs::batteryFrames()
{
    RecordingLowBatView view;
    LowbatPresenter presenter(&view);
    presenter.startLowbatAnimation();
    QVERIFY(presenter.lowbatTimer()->isActive());
    for (int i = 0; i < LowbatPresenter::kLowbatFrames + 2; ++i) {
        presenter.onLowbatAnimation();
    }
    QCOMPARE(view.lowFrames.first(), 1);
    QCOMPARE(view.lowFrames.at(152), 153);
    QCOMPARE(view.lowFrames.mid(153), (QList<int>{1, 2}));
    QVERIFY(!view.lowFrames.contains(0));
    // A start begins again at the first frame.
    presenter.startLowbatAnimation();
    presenter.onLowbatAnimation();
    QCOMPARE(view.lowFrames.last(), 1);
    presenter.stopLowbatAnimation();
    QVERIFY(!presenter.lowbatTimer()->isActive());

    presenter.startMinLowbatAnimation();
    for (int i = 0; i < LowbatPresenter::kMinLowbatFrames + 1; ++i) {
        presenter.onMinLowbatAnimation();
    }
    QCOMPARE(view.minFrames.at(108), 109);
    QCOMPARE(view.minFrames.last(), 1);
}

QTEST_GUILESS_MAIN(TestConsoleDialogs)
#include "tst_consoledialogs.moc"
