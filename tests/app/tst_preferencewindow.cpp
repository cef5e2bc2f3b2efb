#include "app/IgnoredFolderModel.h"
#include "app/PreferenceWindow.h"
#include "base/DigestCache.h"
#include "base/PathBytes.h"
#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "controls/TokenField.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>

namespace {

const QChar pi(0x03C0);

QUrl urlOf(const QByteArray& path) {
    return QUrl::fromEncoded(PathBytes::fileUrl(path));
}

// Drags the URLs over the table and drops them, as a file manager would.
bool dropOn(QTableView* table, const QList<QUrl>& urls) {
    QMimeData data;
    data.setUrls(urls);
    QWidget* target = table->viewport();
    const QPoint at(20, 10);
    QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &move);
    if (!move.isAccepted())
        return false;
    QDropEvent drop(QPointF(at), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

} // namespace

class TestPreferenceWindow : public QObject {
    Q_OBJECT

    struct Fixture {
        TempEnvironment environment;
        SettingsStore store;
        ScanSettings settings;
        ScriptedPrompter prompter;
        std::unique_ptr<PreferenceWindow> window;
        QList<QUrl> opened;

        explicit Fixture(const QList<QByteArray>& folders = {}) {
            if (!folders.isEmpty())
                storeFolderList(store, folders);
            getAppSetting(settings, store);
            window = std::make_unique<PreferenceWindow>(settings, store, prompter);
            window->openUrl = [this](const QUrl& url) {
                opened.append(url);
                return true;
            };
        }
        // What another reader of the settings file sees.
        SettingsStore reread() const { return SettingsStore(store.filePath()); }
    };

private slots:
    void checkBoxesWriteTheirFlag_data() {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("key");
        QTest::newRow("subfolders") << "checkSubdirectory"
                                    << "checkSubDir";
        QTest::newRow("hidden") << "checkHiddenFiles"
                                << "checkHdn";
        QTest::newRow("packages") << "checkPackge"
                                  << "checkPKG";
    }

    void checkBoxesWriteTheirFlag() {
        QFETCH(QString, box);
        QFETCH(QString, key);
        Fixture f;
        PreferenceWindow& w = *f.window;
        const QHash<QString, QCheckBox*> boxes { { QStringLiteral("checkSubdirectory"), w.checkSubdirectory },
            { QStringLiteral("checkHiddenFiles"), w.checkHiddenFiles },
            { QStringLiteral("checkPackge"), w.checkPackge } };
        const QHash<QString, QString*> fields { { QStringLiteral("checkSubDir"), &f.settings.checkSubDir },
            { QStringLiteral("checkHdn"), &f.settings.checkHdn },
            { QStringLiteral("checkPKG"), &f.settings.checkPKG } };
        QCheckBox* checkBox = boxes.value(box);
        QVERIFY(checkBox->isChecked());

        checkBox->click();
        QCOMPARE(*fields.value(key), QStringLiteral("n"));
        QCOMPARE(f.reread().string(key), QStringLiteral("n"));
        // The other two keys are untouched.
        for (auto it = fields.cbegin(); it != fields.cend(); ++it) {
            if (it.key() != key)
                QCOMPARE(*it.value(), QStringLiteral("y"));
        }
        checkBox->click();
        QCOMPARE(*fields.value(key), QStringLiteral("y"));
        QCOMPARE(f.reread().string(key), QStringLiteral("y"));
    }

    void windowShowsTheStoredFlags() {
        TempEnvironment environment;
        SettingsStore store;
        store.setValue(QStringLiteral("checkHdn"), QStringLiteral("n"));
        store.setValue(QStringLiteral("checkPKG"), QStringLiteral("no")); // only "y" means on
        ScanSettings settings;
        getAppSetting(settings, store);
        ScriptedPrompter prompter;
        PreferenceWindow w(settings, store, prompter);
        QVERIFY(w.checkSubdirectory->isChecked());
        QVERIFY(!w.checkHiddenFiles->isChecked());
        QVERIFY(!w.checkPackge->isChecked());
    }

    void sliderStoresPositionAndShowsBinarySize_data() {
        QTest::addColumn<int>("ticks");
        QTest::addColumn<double>("position");
        QTest::addColumn<QString>("text");
        QTest::newRow("left end") << 0 << 0.0 << "0 byte";
        QTest::newRow("one byte") << 9 << 0.9 << "1 byte";
        QTest::newRow("four bytes") << 10 << 1.0 << "4 bytes";
        QTest::newRow("1 KB") << 50 << 5.0 << "1 KB";
        QTest::newRow("128 KB binary") << 400 << 40.0 << "128 KB";
        QTest::newRow("right end") << 800 << 80.0 << "32 MB";
    }

    void sliderStoresPositionAndShowsBinarySize() {
        QFETCH(int, ticks);
        QFETCH(double, position);
        QFETCH(QString, text);
        Fixture f;
        QCOMPARE(f.window->textSlider->text(), QStringLiteral("100 KB")); // the default 102,400 bytes
        f.window->sizeSlider->setValue(ticks);
        QCOMPARE(f.window->textSlider->text(), text);
        QCOMPARE(f.reread().doubleValue(QStringLiteral("SkipLessThen")), position);
        // The scan's minimum changes only when it reloads the store.
        QCOMPARE(f.settings.nub, qint64(102400));
        QCOMPARE(f.settings.SkipLessThen, 38.318217);
    }

    void typedTypesAreStoredLowerCase() {
        Fixture f;
        TokenField* field = f.window->tokenView;
        QSignalSpy stored(f.window.get(), &PreferenceWindow::ignoredTypesStored);
        QCOMPARE(field->tokens(), f.settings.ignoreFileTypeList);

        QTest::keyClicks(field->input(), QStringLiteral("JPG"));
        QTest::sendKeyEvent(QTest::Click, field->input(), Qt::Key_unknown, QString(pi), Qt::NoModifier);
        QTest::keyClicks(field->input(), QStringLiteral("Tar.GZ"));
        QTest::sendKeyEvent(QTest::Click, field->input(), Qt::Key_unknown, QString(pi), Qt::NoModifier);
        QTest::keyClicks(field->input(), QStringLiteral(".PDF"));
        QTest::keyClick(field->input(), Qt::Key_Return);
        QVERIFY(stored.wait());

        QStringList expected = ScanSettings::defaultIgnoreFileTypeList();
        expected << QStringLiteral("jpg") << QStringLiteral("tar.gz") << QStringLiteral("pdf");
        QCOMPARE(f.settings.ignoreFileTypeList, expected);
        QCOMPARE(f.reread().stringList(QStringLiteral("ignoreFileTypeList")), expected);
        QTRY_COMPARE(field->tokens(), expected); // the field shows what was stored
    }

    void setobjSplitsAtPiKeepingEmptyPieces_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("types");
        QTest::newRow("empty pieces") << QStringLiteral("MOVππ.Mkv%1").arg(pi) << QStringList { "mov", "", "mkv", "" };
        QTest::newRow("punctuation stays") << QStringLiteral("a,b;c") << QStringList { "a,b;c" };
        QTest::newRow("empty field") << QString() << QStringList { "" };
    }

    void setobjSplitsAtPiKeepingEmptyPieces() {
        QFETCH(QString, text);
        QFETCH(QStringList, types);
        Fixture f;
        f.window->setobj(text);
        QCOMPARE(f.settings.ignoreFileTypeList, types);
        QCOMPARE(f.reread().stringList(QStringLiteral("ignoreFileTypeList")), types);
    }

    void removingAChipStoresTheRest() {
        Fixture f;
        QSignalSpy stored(f.window.get(), &PreferenceWindow::ignoredTypesStored);
        f.window->tokenView->setText(QStringLiteral("aπbπc"));
        f.window->tokenView->input()->setFocus();
        QTest::keyClick(f.window->tokenView->input(), Qt::Key_Backspace);
        QTest::keyClick(f.window->tokenView->input(), Qt::Key_Return);
        QVERIFY(stored.wait());
        QCOMPARE(f.settings.ignoreFileTypeList, (QStringList { "a", "b" }));
    }

    void foldersAddedThroughThePanel() {
        TempTree tree;
        const QByteArray listed = tree.folder("listed");
        const QByteArray first = tree.folder("new one");
        const QByteArray second = tree.folder("caf\xc3\xa9");
        Fixture f({ listed });
        f.prompter.expectPanel(Prompter::OK, { first, listed, second + '/' });
        f.window->Add_Folder();

        QCOMPARE(f.prompter.panelsShown.size(), 1);
        const Prompter::OpenPanel& panel = f.prompter.panelsShown.first();
        QVERIFY(!panel.canChooseFiles);
        QVERIFY(panel.canChooseDirectories);
        QVERIFY(panel.allowsMultipleSelection);
        QVERIFY(panel.canCreateDirectories);
        QVERIFY(!panel.shouldEnable(listed));
        QVERIFY(!panel.shouldEnable(listed + '/'));
        QVERIFY(panel.shouldEnable(tree.folder("another")));

        const QList<QByteArray> expected { listed, first, second };
        QCOMPARE(f.settings.ignoreFolderList, expected);
        // The table and the store follow half a second later.
        QCOMPARE(f.window->ignoreScrollview->model()->rowCount(), 1);
        QTRY_COMPARE(loadFolderList(f.reread()), expected);
        QCOMPARE(f.window->ignoreScrollview->model()->rowCount(), 3);

        f.prompter.expectPanel(Prompter::Cancel, { tree.folder("other") });
        f.window->Add_Folder();
        QTest::qWait(600);
        QCOMPARE(f.settings.ignoreFolderList, expected);
        QVERIFY(f.prompter.allAnswered());
    }

    void dropAddsOnlyNewFolders() {
        TempTree tree;
        const QByteArray listed = tree.folder("listed");
        const QByteArray folder = tree.folder("dropped \xff");
        const QByteArray file = tree.file("a file", "x");
        Fixture f({ listed });
        QTableView* table = f.window->ignoreScrollview;

        QVERIFY(!dropOn(table, { urlOf(file) }));
        QVERIFY(dropOn(table, { urlOf(file), urlOf(folder), urlOf(listed), urlOf(folder) }));
        // Stored as bytes: the name that is not UTF-8 comes back exactly.
        const QList<QByteArray> expected { listed, folder };
        QTRY_COMPARE(f.settings.ignoreFolderList, expected);
        QTRY_COMPARE(loadFolderList(f.reread()), expected);
        QCOMPARE(table->model()->rowCount(), 2);
        QCOMPARE(table->model()->index(1, 0).data().toString(), QString::fromUtf8(folder));

        // A folder already listed adds nothing.
        QVERIFY(dropOn(table, { urlOf(listed) }));
        QTest::qWait(200);
        QCOMPARE(f.settings.ignoreFolderList, expected);
    }

    void removesTheSelectedRows_data() {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("remove button") << false;
        QTest::newRow("delete key") << true;
    }

    void removesTheSelectedRows() {
        QFETCH(bool, byKey);
        Fixture f({ "/a", "/b", "/c", "/d" });
        QTableView* table = f.window->ignoreScrollview;
        table->selectionModel()->select(
            table->model()->index(0, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        table->selectionModel()->select(
            table->model()->index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        if (byKey)
            f.window->DeleteRowfromTable();
        else
            f.window->Remove_Folder();
        const QList<QByteArray> expected { "/b", "/d" };
        QCOMPARE(f.settings.ignoreFolderList, expected);
        QCOMPARE(loadFolderList(f.reread()), expected);
        QCOMPARE(table->model()->rowCount(), 2);
        QCOMPARE(table->model()->index(1, 0).data().toString(), QStringLiteral("/d"));
    }

    // From the keyboard: the arrows pick a folder, Delete removes it, and Tab goes on to the next
    // control rather than from cell to cell.
    void theFolderTableByKeys() {
        Fixture f({ "/a", "/b", "/c" });
        f.window->show();
        QVERIFY(QTest::qWaitForWindowActive(f.window.get()));
        QTableView* table = f.window->ignoreScrollview;
        table->setFocus(Qt::TabFocusReason);
        QTest::keyClick(table, Qt::Key_Down);
        QTest::keyClick(table, Qt::Key_Delete);
        QCOMPARE(f.settings.ignoreFolderList, (QList<QByteArray> { "/a", "/c" }));
        QTest::keyClick(table, Qt::Key_Tab);
        QVERIFY(QApplication::focusWidget() != table);
    }

    void tabChangeResizesAroundTheTopEdge() {
        Fixture f;
        PreferenceWindow& w = *f.window;
        w.move(300, 120);
        w.show();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.size(), PreferenceWindow::firstTabSize);
        const QRect frame = w.frameGeometry();
        const int top = frame.top();

        // Already at the first tab's height: nothing moves.
        w.tabViewDidSelectTabViewItem(0);
        QCOMPARE(w.frameGeometry(), frame);
        const qint64 x = w.Xposition;
        const qint64 y = w.Yposition;
        QCOMPARE(x, frame.left());
        QCOMPARE(y, w.screen()->geometry().height() - (frame.top() + frame.height()));

        w.tabView->setCurrentIndex(1);
        QCOMPARE(w.size(), PreferenceWindow::otherTabSize);
        QCOMPARE(w.Xposition, x + 61);
        QCOMPARE(w.Yposition, y + 387);
        QTRY_COMPARE(w.frameGeometry().top(), top);
        QCOMPARE(w.frameGeometry().left(), frame.left() + 61);

        w.tabViewDidSelectTabViewItem(1);
        QCOMPARE(w.size(), PreferenceWindow::otherTabSize);
        QCOMPARE(w.Xposition, x + 61);
        QCOMPARE(w.Yposition, y + 387);

        w.tabView->setCurrentIndex(0);
        QCOMPARE(w.size(), PreferenceWindow::firstTabSize);
        QCOMPARE(w.Xposition, x);
        QCOMPARE(w.Yposition, y);
        QTRY_COMPARE(w.frameGeometry(), frame);
    }

    void cacheSizeAndClearing() {
        Fixture f;
        PreferenceWindow& w = *f.window;
        QTemporaryDir folder;
        w.cacheFolder = folder.path();
        w.refreshCacheSize();
        QCOMPARE(w.cacheSizeText->text(), QStringLiteral("Digests of earlier scans take 0 bytes."));
        QVERIFY(!w.clearCacheButton->isEnabled());

        QFile file(DigestCache::fileIn(folder.path()));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4000, 'x'));
        file.close();
        QFile journal(DigestCache::fileIn(folder.path()) + QStringLiteral("-wal"));
        QVERIFY(journal.open(QIODevice::WriteOnly));
        journal.write(QByteArray(1000, 'x'));
        journal.close();
        w.show();
        QCOMPARE(w.cacheSizeText->text(), QStringLiteral("Digests of earlier scans take 5 KB."));
        QVERIFY(w.clearCacheButton->isEnabled());
        w.clearCacheButton->click();
        QVERIFY(!file.exists());
        QVERIFY(!journal.exists());
        QCOMPARE(w.cacheSizeText->text(), QStringLiteral("Digests of earlier scans take 0 bytes."));
        QVERIFY(!w.clearCacheButton->isEnabled());
    }

    void aboutTabAndLinks() {
        Fixture f;
        QCOMPARE(f.window->nameApp->text(), QStringLiteral("Twinsift"));
        QCOMPARE(f.window->versionApp->text(),
            QStringLiteral("Version %1 (%2)").arg(QLatin1String(TWINSIFT_VERSION), QLatin1String(TWINSIFT_BUILD)));
        QVERIFY(!f.window->logoApp->pixmap().isNull());
        emit f.window->websiteApp->linkActivated(PreferenceWindow::websiteUrl().toString());
        f.window->support();
        QCOMPARE(f.opened, (QList<QUrl> { PreferenceWindow::websiteUrl(), PreferenceWindow::supportUrl() }));
    }
};

QTEST_MAIN(TestPreferenceWindow)
#include "tst_preferencewindow.moc"
