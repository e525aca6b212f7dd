#include "Widget/Common/DeletePopupDialog.h"
#include "Widget/Console/ExplainDialog.h"
#include "Widget/Notices/BLEConnectedDialog.h"
#include "Widget/Notices/CalendarPhrasesDialog.h"
#include "Widget/Notices/LowbatDialog.h"
#include "Widget/Notices/RestDialog.h"
#include "Widget/Panels/FocusFollowDialog.h"
#include "Widget/Panels/NoFocusFollowDialog.h"

#include <QLabel>
#include <QtTest>

// The windows at scale 2, as on a HiDPI screen.
class TestHiDpi : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_SCALE_FACTOR", "2"); }

private slots:
    void picturesAreDrawnAtTheScreensDensity();
    void explainPictureKeepsItsSize();
};

namespace {

// The labels of `window` whose picture has fewer pixels than the screen shows: stretched, blurred.
QStringList blurred(QWidget* window)
{
    QStringList found;
    for (const QLabel* label : window->findChildren<QLabel*>()) {
        const QPixmap picture = label->pixmap(Qt::ReturnByValue);
        if (!picture.isNull() && picture.devicePixelRatioF() < 2.0) {
            const QPoint at = label->mapTo(window, QPoint());
            found << QLatin1String(window->metaObject()->className()) +
                         QStringLiteral(" at %1,%2").arg(at.x()).arg(at.y());
        }
    }
    return found;
}

}  // namespace

void TestHiDpi::picturesAreDrawnAtTheScreensDensity()
{
    QCOMPARE(qApp->devicePixelRatio(), 2.0);
    QStringList found;
    LowbatDialog* lowbat = LowbatDialog::getInstance();
    lowbat->setLowbatAnimationImage(1);
    lowbat->setMinLowbatAnimationImage(1);
    found << blurred(lowbat);
    RestDialog::getInstance()->showContent();
    found << blurred(RestDialog::getInstance());
    found << blurred(CalendarPhrasesDialog::getInstance());
    found << blurred(BLEConnectedDialog::getInstance());
    DeletePopupDialog question;
    found << blurred(&question);
    FocusFollowDialog caret;
    caret.setInitDictationView();
    caret.setMicStatus(true);
    caret.setDictationTextLanguageName(QStringLiteral("英语"));
    found << blurred(&caret);
    NoFocusFollowDialog fixed;
    fixed.setInitDictationView();
    fixed.setMicStatus(false);
    found << blurred(&fixed);
    QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1Char('\n'))));
}

void TestHiDpi::explainPictureKeepsItsSize()
{
    // Twice the pixels, the same size on screen: not halved by a bound counted in pixels.
    const QPixmap shown = ExplainDialog::getInstance(nullptr)->image();
    QCOMPARE(shown.devicePixelRatioF(), 2.0);
    QCOMPARE(shown.size() / 2, QSize(480, 300));
}

QTEST_MAIN(TestHiDpi)
#include "tst_hidpi.moc"
