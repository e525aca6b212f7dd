#include "Widget/NotificationDialog.h"
#include "Widget/WidgetNoticeSink.h"

#include <QApplication>
#include <QPointer>
#include <QtTest>

class TestNotice : public QObject {
    Q_OBJECT

private slots:
    void stripShowsAndGoesByItself();
};

void TestNotice::stripShowsAndGoesByItself()
{
    WidgetNoticeSink sink;
    sink.showNotice(QStringLiteral("无法连接到服务!"));
    NotificationDialog* dialog = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets()) {
        dialog = dialog != nullptr ? dialog : qobject_cast<NotificationDialog*>(w);
    }
    QVERIFY(dialog != nullptr);
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->text(), QStringLiteral("无法连接到服务!"));
    QVERIFY(dialog->windowFlags() & Qt::WindowDoesNotAcceptFocus);
    QCOMPARE(dialog->hideTimer()->interval(), 3000);
    QVERIFY(dialog->hideTimer()->isActive());
    QPointer<NotificationDialog> guard(dialog);
    dialog->hideAnimation();
    QTRY_VERIFY(guard.isNull());  // gone, not just hidden
}

QTEST_MAIN(TestNotice)
#include "tst_notice.moc"
