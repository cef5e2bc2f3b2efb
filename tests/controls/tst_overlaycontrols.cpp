#include "controls/OverlayScroller.h"
#include "controls/StripedProgressBar.h"

#include <QAccessible>
#include <QListWidget>
#include <QScrollBar>
#include <QtTest>

class TestOverlayControls : public QObject {
    Q_OBJECT

private slots:
    void theBarClampsAndAnimatesOnlyWhenShown() {
        StripedProgressBar bar;
        bar.setValue(1.7);
        QCOMPARE(bar.value(), 1.0);
        bar.setValue(-0.2);
        QCOMPARE(bar.value(), 0.0);
        bar.startAnimation();
        QVERIFY(!bar.isAnimating()); // hidden: no timer runs
        bar.show();
        QVERIFY(QTest::qWaitForWindowExposed(&bar));
        QVERIFY(bar.isAnimating());
        bar.hide();
        QVERIFY(!bar.isAnimating());
        bar.show();
        QVERIFY(bar.isAnimating()); // the wish to animate survives hiding
        bar.stopAnimation();
        QVERIFY(!bar.isAnimating());
    }

    void theScrollerShowsWhileScrollingAndDrags() {
        QListWidget list;
        for (int i = 0; i < 200; ++i)
            list.addItem(QStringLiteral("row %1").arg(i));
        list.resize(200, 150);
        auto* scroller = new OverlayScroller(&list);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
        QCOMPARE(list.verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QVERIFY(!scroller->isShowing());
        QCOMPARE(scroller->geometry().right(), list.viewport()->geometry().right());

        list.verticalScrollBar()->setValue(10);
        QVERIFY(scroller->isShowing());
        QTRY_VERIFY_WITH_TIMEOUT(!scroller->isShowing(), OverlayScroller::kHideDelayMs + 2000);

        // Dragging the thumb to the bottom scrolls to the end.
        list.verticalScrollBar()->setValue(0);
        const QRect thumb = scroller->thumbRect();
        QTest::mousePress(scroller, Qt::LeftButton, Qt::NoModifier, thumb.center());
        QTest::mouseMove(scroller, QPoint(thumb.center().x(), scroller->height() + 50));
        QTest::mouseRelease(scroller, Qt::LeftButton, Qt::NoModifier, QPoint(thumb.center().x(), scroller->height()));
        QCOMPARE(list.verticalScrollBar()->value(), list.verticalScrollBar()->maximum());
    }

    // Screen readers read the bar as a progress bar in percent and the scroller as the area's own
    // scroll bar, which they can move.
    void bothReadAsWhatTheyShow() {
        StripedProgressBar bar;
        bar.setAccessibleName(QStringLiteral("Removal progress"));
        QAccessibleInterface* progress = QAccessible::queryAccessibleInterface(&bar);
        QVERIFY(progress && progress->valueInterface());
        QCOMPARE(progress->role(), QAccessible::ProgressBar);
        QCOMPARE(progress->text(QAccessible::Name), QStringLiteral("Removal progress"));
        bar.setValue(0.426);
        QCOMPARE(progress->valueInterface()->currentValue().toInt(), 43);
        QCOMPARE(progress->valueInterface()->maximumValue().toInt(), 100);
        QCOMPARE(progress->text(QAccessible::Value), QStringLiteral("43%"));
        bar.setIndeterminate(true);
        QCOMPARE(progress->valueInterface()->maximumValue().toInt(), 0);
        QVERIFY(progress->text(QAccessible::Value).isEmpty());

        QListWidget list;
        for (int i = 0; i < 200; ++i)
            list.addItem(QStringLiteral("row %1").arg(i));
        list.resize(200, 150);
        auto* scroller = new OverlayScroller(&list);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
        QAccessibleInterface* bar2 = QAccessible::queryAccessibleInterface(scroller);
        QVERIFY(bar2 && bar2->valueInterface());
        QCOMPARE(bar2->role(), QAccessible::ScrollBar);
        QCOMPARE(bar2->valueInterface()->maximumValue().toInt(), list.verticalScrollBar()->maximum());
        bar2->valueInterface()->setCurrentValue(7);
        QCOMPARE(list.verticalScrollBar()->value(), 7);
        QCOMPARE(bar2->valueInterface()->currentValue().toInt(), 7);
    }
};

QTEST_MAIN(TestOverlayControls)
#include "tst_overlaycontrols.moc"
