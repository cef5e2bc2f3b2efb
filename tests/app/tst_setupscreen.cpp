#include "AppFixture.h"

#include "app/FolderListModel.h"
#include "app/FolderRowDelegate.h"
#include "base/PathBytes.h"
#include "base/SettingsStore.h"
#include "review/StatusTexts.h"

#include <QListView>
#include <QMimeData>
#include <QPushButton>
#include <QtTest>

namespace {

// A drag as a file manager offers it: text/uri-list with percent-encoded file URLs.
std::unique_ptr<QMimeData> uriList(const QList<QByteArray>& urls) {
    auto mime = std::make_unique<QMimeData>();
    mime->setData(QStringLiteral("text/uri-list"), urls.join("\r\n") + "\r\n");
    return mime;
}

QByteArray fileUrl(const QByteArray& path) {
    return PathBytes::fileUrl(path);
}

// Sends enter and drop; answers whether the drag was accepted and whether the view was tinted.
std::pair<bool, bool> dragAndDrop(mainView* view, const QMimeData* mime) {
    const QPoint centre = view->rect().center();
    QDragEnterEvent enter(centre, Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view, &enter);
    const bool tinted = view->isTinted();
    if (!enter.isAccepted())
        return { false, tinted };
    QDropEvent drop(QPointF(centre), Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view, &drop);
    return { drop.isAccepted(), tinted };
}

qint64 allocatedBelow(const QByteArray& folder) {
    return FileSystem::sumUnit(folder, FileSystem::SizeKey::Allocated).bytes;
}

} // namespace

class TestSetupScreen : public QObject {
    Q_OBJECT

private slots:
    // The list works from the keyboard: the arrows pick a row and Delete removes it.
    void deleteRemovesTheCurrentRow() {
        AppFixture f;
        TempTree tree;
        tree.folder("one");
        tree.folder("two");
        f.setup()->checkAndReloadTableView({ tree.path("one"), tree.path("two") });
        QListView* list = f.setup()->mainScanList();
        QCOMPARE(list->focusPolicy(), Qt::StrongFocus);
        list->setCurrentIndex(list->model()->index(0, 0));
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(f.setup()->folderList(), QList<QByteArray> { tree.path("one") });
    }

    void dropsTakeFoldersOnly_data() {
        QTest::addColumn<QList<QByteArray>>("items"); // relative to the tree; "http:" rows are URLs
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QList<QByteArray>>("added");
        QTest::addColumn<int>("repeats"); // log lines "added"
        using List = QList<QByteArray>;
        QTest::newRow("folder") << List { "dir" } << true << List { "dir" } << 0;
        QTest::newRow("file only") << List { "file.txt" } << false << List {} << 0;
        QTest::newRow("folder and file") << List { "file.txt", "dir" } << true << List { "dir" } << 0;
        // A link stands for the folder it names; one that names nothing is not taken.
        QTest::newRow("link to a folder") << List { "link" } << true << List { "dir" } << 0;
        QTest::newRow("link and its folder") << List { "dir", "link" } << true << List { "dir" } << 1;
        QTest::newRow("dangling link") << List { "dangling" } << false << List {} << 0;
        QTest::newRow("missing") << List { "gone" } << false << List {} << 0;
        QTest::newRow("web address") << List { "http://example.org/dir" } << false << List {} << 0;
        QTest::newRow("name not UTF-8") << List { "caf\xe9" } << true << List { "caf\xe9" } << 0;
        QTest::newRow("same folder twice") << List { "dir", "dir/" } << true << List { "dir" } << 1;
    }
    void dropsTakeFoldersOnly() {
        QFETCH(QList<QByteArray>, items);
        QFETCH(bool, accepted);
        QFETCH(QList<QByteArray>, added);
        QFETCH(int, repeats);
        TempTree tree;
        tree.folder("dir");
        tree.folder("caf\xe9");
        tree.file("file.txt", "text");
        tree.symlink("link", tree.path("dir"));
        tree.symlink("dangling", "gone");
        QList<QByteArray> urls;
        for (const QByteArray& item : items)
            urls.append(item.startsWith("http:") ? item : fileUrl(tree.path(item)));
        QList<QByteArray> expected;
        for (const QByteArray& item : added)
            expected.append(tree.path(item));

        AppFixture f;
        const auto mime = uriList(urls);
        const auto [dropAccepted, tinted] = dragAndDrop(f.setup(), mime.get());
        QCOMPARE(dropAccepted, accepted);
        QCOMPARE(tinted, accepted);
        QVERIFY(!f.setup()->isTinted());
        if (accepted)
            QTRY_COMPARE(f.setup()->folderList(), expected);
        QTest::qWait(150); // past the hand-over delay
        QCOMPARE(f.setup()->folderList(), expected);
        QCOMPARE(f.app->typetoolbar(), expected.isEmpty() ? 0 : 1);
        QCOMPARE(f.log.count(QStringLiteral("added")), repeats);
    }

    void theTintFollowsTheDrag() {
        TempTree tree;
        tree.folder("dir");
        AppFixture f;
        QCOMPARE(mainView::dragTint(), QColor::fromRgbF(0.2756f, 0.5725f, 0.7843f, 0.2f));
        const auto mime = uriList({ fileUrl(tree.path("dir")) });
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(f.setup(), &enter);
        QVERIFY(f.setup()->isTinted());
        QCOMPARE(f.setup()->draggingList(), QList<QByteArray> { tree.path("dir") });
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(f.setup(), &leave);
        QVERIFY(!f.setup()->isTinted());
        QVERIFY(f.setup()->draggingList().isEmpty());
    }

    void aRunningScanFreezesTheList() {
        TempTree tree;
        tree.folder("one");
        tree.folder("two");
        AppFixture f;
        f.setup()->checkAndReloadTableView({ tree.path("one") });
        f.app->state().isScanRunning = true;
        const auto mime = uriList({ fileUrl(tree.path("two")) });
        QCOMPARE(dragAndDrop(f.setup(), mime.get()), std::make_pair(false, false));
        f.setup()->removeFromList(0);
        f.setup()->checkAndReloadTableView({ tree.path("two") });
        QCOMPARE(f.setup()->folderList(), QList<QByteArray> { tree.path("one") });
        f.app->state().isScanRunning = false;
    }

    void rowsShowTheirSizeAndCanBeRemoved() {
        TempTree tree;
        tree.sizedFile("one/a", 70000);
        tree.sizedFile("one/sub/b", 5000);
        tree.sizedFile("two/c", 9000);
        AppFixture f;
        FolderListModel* model = f.setup()->model();
        f.setup()->checkAndReloadTableView({ tree.path("one"), tree.path("two") });
        // The sizes arrive through this thread's event loop, so they are not known yet.
        QCOMPARE(model->index(0).data(FolderListModel::SizeRole).toString(), QStringLiteral("Calculating..."));
        QCOMPARE(model->index(0).data(FolderListModel::NameRole).toString(), QStringLiteral("one"));
        const QString sizeOne = StatusTexts::convertNumberToString(allocatedBelow(tree.path("one")));
        QTRY_COMPARE(model->index(0).data(FolderListModel::SizeRole).toString(), sizeOne);
        QTRY_COMPARE(model->index(1).data(FolderListModel::SizeRole).toString(),
            StatusTexts::convertNumberToString(allocatedBelow(tree.path("two"))));

        // The remove button of the first row.
        QListView* list = f.setup()->mainScanList();
        QVERIFY(QTest::qWaitForWindowExposed(f.app->window()));
        const QRect button = FolderRowDelegate::removeButtonRect(list->visualRect(model->index(0)));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, button.center());
        QCOMPARE(f.setup()->folderList(), QList<QByteArray> { tree.path("two") });
        QCOMPARE(f.app->typetoolbar(), 1);
        f.setup()->removeFromList(0);
        QCOMPARE(f.app->typetoolbar(), 0);

        // Adding to an empty list forgets the old size texts.
        f.setup()->checkAndReloadTableView({ tree.path("one") });
        QCOMPARE(model->tempSizeCount().size(), 1);
        QCOMPARE(model->tempSizeCount().value(tree.path("one")), QStringLiteral("Calculating..."));
        model->waitForSizes();
    }

    void aSizeWalkStopsWhenTold() {
        TempTree tree;
        tree.sizedFile("one/a", 5000);
        tree.sizedFile("two/b", 5000);
        const std::atomic<bool> stop { true };
        const FileSystem::UnitSum sum = FileSystem::sumUnit(tree.path("one"), FileSystem::SizeKey::Allocated, &stop);
        QVERIFY(!sum.complete);
        QCOMPARE(sum.items, 0);

        // Removing a row, or starting a scan, stops the walks concerned: no size is shown for them.
        AppFixture f;
        FolderListModel* model = f.setup()->model();
        f.setup()->checkAndReloadTableView({ tree.path("one"), tree.path("two") });
        f.setup()->removeFromList(0);
        f.app->StartScan(f.setup()->folderList());
        model->waitForSizes();
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 3, kScanTimeoutMs);
        QCOMPARE(model->runningSizeWalks(), 0);
        QCOMPARE(model->tempSizeCount().value(tree.path("one")), QStringLiteral("Calculating..."));
        QCOMPARE(model->tempSizeCount().value(tree.path("two")), QStringLiteral("Calculating..."));
    }

    void theHomeScanAsksOnceAndRemembersTheGrant() {
        TempTree home;
        home.sizedFile("Documents/a.bin", 150000, 'h');
        home.sizedFile("Pictures/b.bin", 150000, 'h');
        const QByteArray oldHome = qgetenv("HOME");
        qputenv("HOME", home.root());
        AppFixture f;
        QCOMPARE(mainView::homeFolder(), home.root());

        // A folder the panel does not enable is no answer at all.
        f.prompter.expectPanel(Prompter::OK, { home.path("Documents") });
        QTest::mouseClick(f.setup()->homeButton(), Qt::LeftButton);
        QVERIFY(!SettingsStore().contains(QStringLiteral("SaveUserDirectory")));
        QCOMPARE(f.app->typewindow(), 0);

        f.prompter.expectPanel(Prompter::OK, { home.root() });
        QTest::mouseClick(f.setup()->homeButton(), Qt::LeftButton);
        QCOMPARE(f.prompter.panelsShown.size(), 2);
        const Prompter::OpenPanel panel = f.prompter.panelsShown.last();
        QCOMPARE(panel.prompt, QStringLiteral("Confirm Access"));
        QCOMPARE(panel.message, QStringLiteral("Give access for scanning in your HardDisk"));
        QCOMPARE(panel.directory, home.root());
        QVERIFY(!panel.canChooseFiles && panel.canChooseDirectories && !panel.allowsMultipleSelection);
        QVERIFY(panel.shouldEnable(home.root()));
        QVERIFY(panel.shouldEnable(home.root() + "/"));
        QVERIFY(panel.shouldEnable(PathBytes::deletingLastPathComponent(home.root())));
        QVERIFY(panel.shouldEnable("/"));
        QVERIFY(!panel.shouldEnable(home.path("Documents")));
        QVERIFY(!panel.shouldEnable("/usr"));
        QCOMPARE(SettingsStore().bytes(QStringLiteral("SaveUserDirectory")), home.root());

        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);
        QCOMPARE(f.app->typewindow(), 1);
        QVERIFY(f.log.lines().contains(QStringLiteral("(file://%1)").arg(QString::fromUtf8(home.root()))));

        // Back to the setup screen through the results; the second home scan asks nothing.
        f.app->nextButtonAction_toolbar();
        f.app->backButtonAction_toolbar();
        QCOMPARE(f.app->typetoolbar(), 0);
        QTest::mouseClick(f.setup()->homeButton(), Qt::LeftButton);
        QCOMPARE(f.app->typetoolbar(), 2);
        QCOMPARE(f.prompter.panelsShown.size(), 2);
        QTRY_COMPARE_WITH_TIMEOUT(f.app->typetoolbar(), 4, kScanTimeoutMs);

        // A grant whose folder is gone asks again; cancelling changes nothing.
        f.app->nextButtonAction_toolbar();
        f.app->backButtonAction_toolbar();
        f.app->settingsStore().setBytes(QStringLiteral("SaveUserDirectory"), home.path("moved-away"));
        f.prompter.expectPanel(Prompter::Cancel);
        QTest::mouseClick(f.setup()->homeButton(), Qt::LeftButton);
        QCOMPARE(f.prompter.panelsShown.size(), 3);
        QCOMPARE(f.app->typewindow(), 0);
        QVERIFY(f.prompter.allAnswered());
        qputenv("HOME", oldHome);
    }
};

QTEST_MAIN(TestSetupScreen)
#include "tst_setupscreen.moc"
