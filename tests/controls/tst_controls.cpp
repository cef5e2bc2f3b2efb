#include "controls/AppIcons.h"
#include "controls/TokenField.h"
#include "support/TempTree.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QLineEdit>
#include <QMimeDatabase>
#include <QtTest>

class TestControls : public QObject {
    Q_OBJECT

private slots:
    void themeFallsBackToAdwaita() {
        if (!QFileInfo::exists(QStringLiteral("/usr/share/icons/Adwaita/index.theme")))
            QSKIP("adwaita-icon-theme is not installed");
        AppIcons::setUpTheme();
        QVERIFY(!QIcon::fromTheme(QStringLiteral("folder")).isNull());
        QVERIFY(!AppIcons::applicationIcon().isNull());
    }

    void everyTypeGetsAnIcon_data() {
        QTest::addColumn<QString>("theme");
        QTest::newRow("Adwaita") << QStringLiteral("Adwaita");
        QTest::newRow("no theme") << QStringLiteral("no-such-theme");
    }

    void everyTypeGetsAnIcon() {
        QFETCH(QString, theme);
        const QString previous = QIcon::themeName();
        QIcon::setThemeName(theme);
        const QMimeDatabase database;
        // Adwaita has no PDF icon and the bare platform has no icons at all: the program's own fill in.
        for (const char* name : { "application/pdf", "inode/directory", "text/x-python", "image/heif",
                 "application/x-zerosize", "application/octet-stream", "audio/flac" }) {
            const QIcon icon = AppIcons::iconForMimeType(database.mimeTypeForName(QLatin1String(name)));
            QVERIFY2(!icon.pixmap(32, 32).isNull(), name);
        }
        QVERIFY(!AppIcons::applicationIcon().pixmap(64, 64).isNull());
        QIcon::setThemeName(previous);
    }

    void typeIsReadFromBytePaths() {
        TempTree tree;
        QImage image(4, 4, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QByteArray png;
        {
            QBuffer buffer(&png);
            buffer.open(QIODevice::WriteOnly);
            image.save(&buffer, "PNG");
        }
        QCOMPARE(AppIcons::mimeTypeForPath(tree.file("\xff\xfe", png)).name(), QStringLiteral("image/png"));
        QCOMPARE(AppIcons::mimeTypeForPath(tree.folder("d.txt")).name(), QStringLiteral("inode/directory"));
        QCOMPARE(AppIcons::mimeTypeForPath(tree.path("missing.pdf")).name(), QStringLiteral("application/pdf"));
    }

    void tokenFieldSplitsAtItsCharacter() {
        const QChar pi(0x03C0);
        TokenField field;
        field.setTokenizingCharacter(pi);
        field.setText(QStringLiteral("aπππb,cπ"));
        QCOMPARE(field.tokens(), (QStringList { "a", "b,c" }));
        QSignalSpy finished(&field, &TokenField::editingFinished);

        field.show();
        QVERIFY(QTest::qWaitForWindowExposed(&field));
        QTest::keyClicks(field.input(), QStringLiteral("d"));
        QTest::sendKeyEvent(QTest::Click, field.input(), Qt::Key_unknown, QString(pi), Qt::NoModifier);
        QTest::keyClicks(field.input(), QStringLiteral("e"));
        QCOMPARE(field.tokens(), (QStringList { "a", "b,c", "d" }));
        QCOMPARE(field.text(), QStringLiteral("aπb,cπdπe")); // typed text counts before it is a token
        QCOMPARE(finished.size(), 0);

        QTest::keyClick(field.input(), Qt::Key_Backspace);
        QTest::keyClick(field.input(), Qt::Key_Backspace); // the input is empty: the last token goes
        QCOMPARE(field.tokens(), (QStringList { "a", "b,c" }));
        QTest::keyClick(field.input(), Qt::Key_Return);
        QCOMPARE(finished.size(), 1);
        QTest::keyClick(field.input(), Qt::Key_Return); // nothing changed since
        QCOMPARE(finished.size(), 1);
    }

    void chipRemoveMarkRemovesItsToken() {
        TokenField field;
        field.setText(QStringLiteral("oneπtwo"));
        field.resize(300, 80);
        field.show();
        QVERIFY(QTest::qWaitForWindowExposed(&field));
        QSignalSpy finished(&field, &TokenField::editingFinished);
        QWidget* first = nullptr;
        for (QWidget* child : field.findChildren<QWidget*>()) {
            if (child->toolTip() == QLatin1String("one"))
                first = child;
        }
        QVERIFY(first);
        QTest::mouseClick(first, Qt::LeftButton, {}, QPoint(first->width() - 12, first->height() / 2));
        QCOMPARE(field.tokens(), QStringList { "two" });
        QCOMPARE(finished.size(), 1);
    }

    // From the keyboard: Left at the start of the input reaches the chips, the arrows walk them,
    // Delete removes the one in focus and hands the focus to its neighbour; Right past the last
    // chip is the input again. A screen reader sees each chip as a button named after its token,
    // which removes it when pressed.
    void chipsByKeysAndForScreenReaders() {
        TokenField field;
        field.setText(QStringLiteral("zipπpdfπgz"));
        field.resize(300, 80);
        field.show();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        QSignalSpy finished(&field, &TokenField::editingFinished);
        const auto chipNamed = [&field](const QString& name) -> QWidget* {
            for (QWidget* child : field.findChildren<QWidget*>()) {
                if (child->inherits("TokenChip") && child->isVisible() && child->accessibleName() == name)
                    return child;
            }
            return nullptr;
        };
        field.input()->setFocus();
        QTest::keyClicks(field.input(), QStringLiteral("ab"));
        QTest::keyClick(field.input(), Qt::Key_Left); // within the typed text: the input keeps it
        QCOMPARE(QApplication::focusWidget(), field.input());
        QTest::keyClick(field.input(), Qt::Key_Home);
        QTest::keyClick(field.input(), Qt::Key_Left); // what was typed is a token now
        QCOMPARE(QApplication::focusWidget(), chipNamed(QStringLiteral("ab")));
        QCOMPARE(finished.size(), 1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
        QCOMPARE(QApplication::focusWidget(), chipNamed(QStringLiteral("gz")));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Delete);
        QCOMPARE(field.tokens(), (QStringList { "zip", "gz", "ab" }));
        QCOMPARE(finished.size(), 2);
        QCOMPARE(QApplication::focusWidget(), chipNamed(QStringLiteral("gz")));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
        QCOMPARE(QApplication::focusWidget(), field.input());

        QAccessibleInterface* chip = QAccessible::queryAccessibleInterface(chipNamed(QStringLiteral("zip")));
        QVERIFY(chip && chip->actionInterface());
        QCOMPARE(chip->role(), QAccessible::Button);
        QCOMPARE(chip->text(QAccessible::Name), QStringLiteral("zip"));
        QCOMPARE(chip->actionInterface()->actionNames(), QStringList { QAccessibleActionInterface::pressAction() });
        chip->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(field.tokens(), (QStringList { "gz", "ab" }));
    }
};

QTEST_MAIN(TestControls)
#include "tst_controls.moc"
