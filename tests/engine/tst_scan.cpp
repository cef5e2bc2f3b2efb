#include "base/DigestCache.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "detect/FileHash.h"
#include "detect/FolderNode.h"
#include "engine/ScanEngine.h"
#include "engine/ScanHarness.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"
#include "engine/TreeWalker.h"
#include "support/TempTree.h"
#include "support/Unprivileged.h"

#include <QRegularExpression>
#include <QtTest>
#include <fcntl.h>
#include <functional>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray md5Of(const QByteArray& text) {
    return md5(text);
}

// The fingerprint a folder gets from its children's fingerprints.
QByteArray folderHash(QList<QByteArray> childTexts) {
    std::sort(childTexts.begin(), childTexts.end(),
        [](const QByteArray& a, const QByteArray& b) { return a.toLower() < b.toLower(); });
    const QByteArray joined = childTexts.join();
    return md5Of(joined.isEmpty() ? QByteArrayLiteral("NOHASH") : joined);
}

bool isTimeStamp(const QByteArray& text) {
    static const QRegularExpression pattern(QStringLiteral("^\\d+\\.\\d{6}$"));
    return pattern.match(QString::fromLatin1(text)).hasMatch();
}

qint64 allocatedSize(const QByteArray& path) {
    FileSystem::ItemInfo info;
    FileSystem::stat(path, info);
    return info.allocated;
}

// Groups as text, one group a line, members joined by "|": what a child process hands back.
QByteArray groupsText(const QList<QList<QByteArray>>& groups) {
    QByteArray out;
    for (const QList<QByteArray>& group : groups)
        out += group.join('|') + '\n';
    return out;
}

// A bind mount made for one test, undone when the test ends (before its tree is removed).
class BindMount {
public:
    BindMount(const QByteArray& source, const QByteArray& target)
        : m_target(target)
        , m_mounted(::mount(source.constData(), target.constData(), nullptr, MS_BIND, nullptr) == 0) { }
    ~BindMount() {
        if (m_mounted)
            ::umount2(m_target.constData(), MNT_DETACH);
    }
    bool isMounted() const { return m_mounted; }

private:
    QByteArray m_target;
    bool m_mounted;
};

} // namespace

class TestScan : public QObject {
    Q_OBJECT

private slots:
    void foldersMatchByTheirChildrenAlone() {
        TempTree tree;
        tree.file("A/one.txt", "alpha");
        tree.file("A/two.txt", "beta");
        tree.file("B/uno.txt", "alpha");
        tree.file("B/dos.txt", "beta");
        tree.file("C/x", "alpha");
        tree.file("C/y", "beta");
        tree.file("C/.hidden", "hidden files are not children");
        tree.file("D/x", "alpha");
        tree.file("D/sub/y", "beta");

        ScanHarness scan;
        scan.scan({ tree.root() });

        const QByteArray expected = folderHash({ md5Of("alpha"), md5Of("beta") });
        QCOMPARE(scan.table.value(tree.path("A")), expected);
        QCOMPARE(scan.table.value(tree.path("C")), expected);
        QVERIFY(scan.table.value(tree.path("D")) != expected); // another arrangement of the same files
        QCOMPARE(scan.table.value(tree.path("D/sub")), folderHash({ md5Of("beta") }));
        QCOMPARE(scan.table.value(tree.path("A/one.txt")), md5Of("alpha"));
        QVERIFY(!scan.table.contains(tree.path("C/.hidden")));
        QVERIFY(scan.table.contains(tree.root()));

        // The contents of grouped folders are pruned: D/x finds no partner left.
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { tree.path("A"), tree.path("B"), tree.path("C") } }));
        QCOMPARE(scan.state.totalDuplicateCount.load(), 3u);
        QCOMPARE(scan.state.totalDuplicateCountTemp.load(), quint64(scan.table.size()));
        QCOMPARE(scan.state.duplicateMainArray.first()->type(), std::optional<int>(20));
        // Every item examined is counted: four folders, eight files, one sub-folder and the root.
        QCOMPARE(scan.state.totalCount.load(), qint64(14));
    }

    void opaqueChildrenFollowThePackageSetting() {
        TempTree tree;
        tree.file("E/pkg.app/Contents/f", "content");
        tree.file("E/keep.txt", "same");
        tree.file("F/pkg.app/Contents/f", "content");
        tree.file("F/keep.txt", "same");
        tree.file("G/.git/objects", "1");
        tree.file("G/Lib.framework/bin", "22");

        ScanHarness unique;
        unique.state.settings.checkPKG = QStringLiteral("n");
        unique.scan({ tree.path("E"), tree.path("F"), tree.path("G") });
        QCOMPARE(unique.table.value(tree.path("E/pkg.app")), md5Of(tree.path("E/pkg.app")));
        QVERIFY(unique.table.value(tree.path("E")) != unique.table.value(tree.path("F")));
        QCOMPARE(unique.groups(), (QList<QList<QByteArray>> { { tree.path("E/keep.txt"), tree.path("F/keep.txt") } }));

        ScanHarness units;
        units.state.settings.checkHdn = QStringLiteral("n");
        units.scan({ tree.path("E"), tree.path("F"), tree.path("G") });
        // Bundles are summed by logical size and named by extension: 7 bytes in an .app.
        QCOMPARE(units.table.value(tree.path("E/pkg.app")), md5Of("7app"));
        QVERIFY(!units.table.contains(tree.path("G/Lib.framework"))); // "framework" is an ignored type
        QVERIFY(!units.table.contains(tree.path("G/.git"))); // hidden, and hidden items are not published
        QCOMPARE(units.groups(), (QList<QList<QByteArray>> { { tree.path("E"), tree.path("F") } }));
        // E and F: a file, the bundle's two items and the folder itself; G: the one item of .git,
        // the ignored framework and the folder itself.
        QCOMPARE(units.state.totalCount.load(), qint64(4 + 4 + 3));
    }

    void excludedChildrenMakeTheirFolderUnique() {
        TempTree tree;
        tree.file("I/a.plist", "p");
        tree.file("I/b.txt", "shared");
        tree.file("J/a.plist", "p");
        tree.file("J/b.txt", "shared");
        tree.file("K/skip/inner.txt", "shared");
        tree.file("K/other.txt", "unrelated");

        ScanHarness scan;
        scan.state.settings.ignoreFolderList = { tree.path("K/skip") };
        scan.scan({ tree.root() });

        QVERIFY(scan.table.value(tree.path("I")) != scan.table.value(tree.path("J")));
        QVERIFY(!scan.table.contains(tree.path("I/a.plist")));
        QVERIFY(!scan.table.contains(tree.path("K/skip")));
        QVERIFY(!scan.table.contains(tree.path("K/skip/inner.txt")));
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { tree.path("I/b.txt"), tree.path("J/b.txt") } }));
    }

    void minimumSizeIsMeasuredOnDisk() {
        TempTree tree;
        tree.file("M/tiny", "1");
        tree.sizedFile("M/big", 20000, 'b');
        tree.file("N/tiny", "2");
        tree.sizedFile("N/big", 20000, 'b');
        const QByteArray single = tree.sizedFile("exact.bin", 5000, 'e');
        tree.sizedFile("exact copy.bin", 5000, 'e');
        const qint64 onDisk = allocatedSize(single);
        QVERIFY(onDisk > 5000);

        ScanHarness scan;
        scan.state.settings.nub = onDisk;
        scan.scan({ tree.path("M"), tree.path("N"), single, tree.path("exact copy.bin") });
        // Small files still take part in their folder's fingerprint but are not candidates.
        QVERIFY(scan.table.value(tree.path("M")) != scan.table.value(tree.path("N")));
        QVERIFY(!scan.table.contains(tree.path("M/tiny")));
        QCOMPARE(scan.groups(),
            (QList<QList<QByteArray>> {
                { tree.path("exact copy.bin"), single }, { tree.path("M/big"), tree.path("N/big") } }));

        ScanHarness above;
        above.state.settings.nub = onDisk + 1;
        above.scan({ single, tree.path("exact copy.bin") });
        QVERIFY(above.table.isEmpty());
        QCOMPARE(above.state.totalCount.load(), qint64(0)); // skipped without counting
    }

    void targetsFollowTheTopLevelRules() {
        TempTree tree;
        const QByteArray hiddenFile = tree.file(".profile", "x");
        const QByteArray hiddenFolder = tree.file(".config/app/settings", "12345");
        const QByteArray plist = tree.file("Info.PLIST", "x");
        const QByteArray notFramework = tree.file("Kit.Framework/a", "x");
        const QByteArray framework = tree.file("Kit.framework/Versions/a", "abc");
        const QByteArray ignored = tree.file("Library/Caches/c", "x");
        const QByteArray link = tree.symlink("link", "Kit.framework");

        ScanHarness scan;
        scan.state.settings.ignoreFolderList = { tree.path("Library") };
        scan.scan({ hiddenFile, tree.path(".config"), plist, tree.path("Kit.Framework"), tree.path("Kit.framework"),
            tree.path("Library/Caches"), link, tree.path("missing") });
        Q_UNUSED(hiddenFolder);
        Q_UNUSED(notFramework);
        Q_UNUSED(framework);
        Q_UNUSED(ignored);

        QVERIFY(!scan.table.contains(hiddenFile));
        QCOMPARE(scan.table.value(tree.path(".config")),
            md5Of(QByteArray::number(allocatedSize(tree.path(".config/app/settings")))));
        QVERIFY(isTimeStamp(scan.table.value(plist))); // the extension is lower-cased before the test
        QVERIFY(scan.table.contains(tree.path("Kit.Framework/a"))); // a capital F is not a framework
        QCOMPARE(scan.table.value(tree.path("Kit.framework")), md5Of("3framework"));
        QVERIFY(!scan.table.contains(tree.path("Library/Caches")));
        QVERIFY(!scan.table.contains(link));
        // .config, Info.PLIST, Kit.Framework (its file and itself), Kit.framework, Library/Caches.
        QCOMPARE(scan.state.totalCount.load(), qint64(6));
    }

    void flatRoutineComparesFoldersAsUnits() {
        TempTree tree;
        const QByteArray code = tree.file("code.c", "int main(){}");
        tree.folder("empty1");
        tree.folder("empty2");
        tree.folder("p.d");
        tree.file("full/x", "x");

        ScanHarness scan;
        scan.state.settings.checkSubDir = QStringLiteral("n");
        scan.scan({ code, tree.path("empty1"), tree.path("empty2"), tree.path("p.d"), tree.path("full") });
        QCOMPARE(scan.table.value(code), md5Of("int main(){}")); // ignored types still hashed here
        QCOMPARE(scan.table.value(tree.path("empty1")), md5Of("0"));
        QCOMPARE(scan.table.value(tree.path("p.d")), md5Of("0d"));
        QVERIFY(!scan.table.contains(tree.path("full/x")));
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { tree.path("empty1"), tree.path("empty2") } }));
    }

    void oddNamesAndSpecialItemsAreHandled() {
        TempTree tree;
        const QByteArray latin = tree.file("names/caf\xe9.txt", "same bytes");
        const QByteArray invalid = tree.file("names/\xff\xfe.bin", "same bytes");
        const QByteArray newline = tree.file("names/two\nlines", "same bytes");
        tree.fifo("names/pipe");
        tree.symlink("names/loop", ".");
        tree.symlink("names/dangling", "nowhere");

        ScanHarness scan;
        scan.scan({ tree.path("names") });
        QCOMPARE(scan.table.value(latin), md5Of("same bytes"));
        QVERIFY(!scan.table.contains(tree.path("names/pipe")));
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { latin, newline, invalid } }));
    }

    void filesNothingCouldMatchAreNotRead() {
        TempTree tree;
        tree.sizedFile("lone/unique.bin", 300000, 'u');
        tree.sizedFile("lone/small.txt", 10, 's');
        // Same length: told apart by the first block, by the last, or only by reading them whole.
        tree.sizedFile("pair/a.bin", 200000, 'a');
        tree.sizedFile("pair/b.bin", 200000, 'b');
        QByteArray middle(150000, 'm');
        tree.file("ends/a.bin", middle + QByteArray(50000, 'a'));
        tree.file("ends/b.bin", middle + QByteArray(50000, 'b'));
        middle[75000] = 'x';
        tree.file("ends/c.bin", middle + QByteArray(50000, 'b'));
        // Thirty small files each: not candidates themselves, but the folders share a shape and are
        // large enough to be reported.
        for (int i = 0; i < 30; ++i) {
            tree.file("twin1/x" + QByteArray::number(i), "same " + QByteArray::number(i));
            tree.file("twin2/y" + QByteArray::number(i), "same " + QByteArray::number(i));
        }

        ScanHarness scan;
        scan.readEverything = false;
        scan.state.settings.nub = 100000;
        scan.scan({ tree.root() });
        QVERIFY(scan.table.value(tree.path("lone/unique.bin")).startsWith("unread"));
        QVERIFY(scan.table.value(tree.path("pair/a.bin")).startsWith("unread"));
        QVERIFY(scan.table.value(tree.path("ends/a.bin")).startsWith("unread"));
        // Read whole, though not with MD5: no folder takes in their digests.
        QVERIFY(!scan.table.value(tree.path("ends/c.bin")).startsWith("unread"));
        QVERIFY(scan.table.value(tree.path("ends/c.bin")) != scan.table.value(tree.path("ends/b.bin")));
        QVERIFY(scan.table.value(tree.path("lone")).startsWith("unread"));
        // Folders of the same shape need their fingerprints, and so their files' digests.
        QVERIFY(!scan.table.value(tree.path("twin1")).startsWith("unread"));
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { tree.path("twin1"), tree.path("twin2") } }));
    }

    // Random trees with planted duplicate files and folders: leaving unread what nothing could match
    // must give the very groups and counts that reading everything gives.
    void unreadFilesNeverChangeTheGroups_data() {
        QTest::addColumn<int>("seed");
        QTest::addColumn<qint64>("nub");
        for (int seed = 1; seed <= 6; ++seed) {
            QTest::addRow("seed %d, no minimum", seed) << seed << qint64(0);
            QTest::addRow("seed %d, 8 KiB minimum", seed) << seed << qint64(8192);
        }
    }
    void unreadFilesNeverChangeTheGroups() {
        QFETCH(int, seed);
        QFETCH(qint64, nub);
        TempTree tree;
        std::mt19937 random(static_cast<unsigned>(seed));
        // Same lengths that differ in the first block, only in the last, or only in the middle.
        QByteArray late(9000, 'x');
        late[8999] = 'l';
        QByteArray head(70000, 'h');
        QByteArray tail = head;
        tail[69999] = 't';
        QByteArray middle = head;
        middle[35000] = 'm';
        const QList<QByteArray> contents { "a", "bb", "alpha", QByteArray(9000, 'x'), QByteArray(9000, 'y'), late,
            QByteArray(20000, 'z'), "", "plist?", head, tail, middle };
        auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
        QList<QByteArray> folders { "" };
        for (int i = 0; i < 40; ++i) {
            const QByteArray parent = folders[pick(folders.size())];
            const QByteArray folder = (parent.isEmpty() ? QByteArray() : parent + '/') + "d" + QByteArray::number(i);
            tree.folder(folder);
            folders.append(folder);
            for (int f = pick(4); f > 0; --f) {
                const char* names[] = { "f", "g.txt", "h.plist", ".hidden", "k.jpg" };
                tree.file(folder + '/' + names[pick(5)] + QByteArray::number(pick(3)), contents[pick(contents.size())]);
            }
        }
        // Planted copies of whole folders.
        for (int i = 0; i < 3; ++i) {
            const QByteArray source = folders[1 + pick(folders.size() - 1)];
            const QByteArray copy = "copy" + QByteArray::number(i);
            std::function<void(const QByteArray&, const QByteArray&)> copyTree
                = [&](const QByteArray& from, const QByteArray& to) {
                      tree.folder(to);
                      FileSystem::enumerateTree(
                          tree.path(from), [&](const QByteArray& path, const FileSystem::ItemInfo& info) {
                              const QByteArray relative = to + path.mid(tree.path(from).size());
                              if (info.kind == FileSystem::Kind::Directory)
                                  tree.folder(relative);
                              else
                                  tree.file(relative, tree.read(path));
                          });
                  };
            copyTree(source, copy);
        }

        ScanHarness all;
        all.state.settings.nub = nub;
        all.scan({ tree.root() });
        ScanHarness planned;
        planned.readEverything = false;
        planned.state.settings.nub = nub;
        planned.scan({ tree.root() });
        QCOMPARE(planned.groups(), all.groups());
        QCOMPARE(planned.state.totalCount.load(), all.state.totalCount.load());
        QCOMPARE(planned.state.wastedSpaceDuplicates.load(), all.state.wastedSpaceDuplicates.load());

        // The same through the digest cache: filling it, then answered from it.
        QTemporaryDir cache;
        for (int run = 0; run < 2; ++run) {
            ScanHarness cached;
            cached.readEverything = false;
            cached.state.digestCacheFolder = cache.path();
            cached.state.settings.nub = nub;
            cached.scan({ tree.root() });
            QCOMPARE(cached.groups(), all.groups());
            QCOMPARE(cached.state.totalCount.load(), all.state.totalCount.load());
            if (run == 1)
                QVERIFY(cached.state.contentBytesRead.load() < planned.state.contentBytesRead.load());
        }
    }

    // A rescan through the cache reads only what changed, and groups as a full read does, whatever
    // happened to the files or to the cache in between.
    void digestCacheNeverChangesTheGroups_data() {
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("reads"); // the second scan reads content
        QTest::addColumn<bool>("logged"); // the cache was refused with one log line
        QTest::newRow("nothing") << "nothing" << false << false;
        QTest::newRow("folder renamed") << "rename" << false << false;
        QTest::newRow("size") << "size" << true << false;
        QTest::newRow("modification time") << "time" << true << false;
        QTest::newRow("content, size and time restored") << "content" << true << false;
        QTest::newRow("corrupt cache file") << "corrupt" << true << true;
        QTest::newRow("cache folder is a file") << "blocked" << true << true;
        QTest::newRow("read-only cache folder") << "readonly" << true << true;
    }
    void digestCacheNeverChangesTheGroups() {
        QFETCH(QString, change);
        QFETCH(bool, reads);
        QFETCH(bool, logged);
        if (change == QLatin1String("readonly") && ::geteuid() == 0)
            QSKIP("root writes into read-only folders; run this row as another user");
        TempTree tree;
        // Pairs told apart only by whole reads (same first and last blocks) and one real pair.
        QByteArray base(50000, 'c');
        const QByteArray a = tree.file("one/a.bin", base);
        tree.file("two/b.bin", base);
        base[20000] = 'd';
        tree.file("three/c.bin", base);
        QTemporaryDir cacheHome;
        const QString folder = cacheHome.path() + QStringLiteral("/twinsift");

        auto scan = [&](const QString& cacheFolder) {
            auto harness = std::make_unique<ScanHarness>();
            harness->readEverything = cacheFolder.isNull();
            harness->state.digestCacheFolder = cacheFolder;
            harness->scan({ tree.root() });
            return harness;
        };
        QCOMPARE(scan(folder)->groups().size(), 1);

        FileSystem::ItemInfo before;
        FileSystem::stat(a, before);
        auto changedSince = [&](const QByteArray& path) {
            struct stat st;
            ::stat(path.constData(), &st);
            return st.st_ctim.tv_sec * 1000000000ll + st.st_ctim.tv_nsec;
        };
        const qint64 ctime = changedSince(a);
        if (change == QLatin1String("rename")) {
            // Renaming a file stamps its change time, renaming its folder does not: the entry
            // follows the file to its new path.
            QVERIFY(::rename(tree.path("one").constData(), tree.path("uno").constData()) == 0);
        } else if (change == QLatin1String("size")) {
            tree.file("one/a.bin", base + "more");
            tree.file("two/b.bin", base + "more");
        } else if (change == QLatin1String("time")) {
            const struct timespec times[2] = { { 0, UTIME_OMIT }, { 1000000000, 0 } };
            QVERIFY(::utimensat(AT_FDCWD, a.constData(), times, 0) == 0);
        } else if (change == QLatin1String("content")) {
            QFile file(QString::fromUtf8(a));
            QVERIFY(file.open(QIODevice::ReadWrite));
            file.seek(20000);
            file.write("d");
            file.close();
            const struct timespec times[2]
                = { { 0, UTIME_OMIT }, { before.modifiedNs / 1000000000, before.modifiedNs % 1000000000 } };
            // The change time moves on with each change, once the clock's tick has passed.
            do
                QVERIFY(::utimensat(AT_FDCWD, a.constData(), times, 0) == 0);
            while (changedSince(a) == ctime);
        } else if (change == QLatin1String("corrupt")) {
            QFile::remove(DigestCache::fileIn(folder) + QStringLiteral("-wal"));
            QFile::remove(DigestCache::fileIn(folder) + QStringLiteral("-shm"));
            QFile file(DigestCache::fileIn(folder));
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(QByteArray(8192, 'j'));
        } else if (change == QLatin1String("blocked")) {
            QDir(folder).removeRecursively();
            QFile file(folder);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else if (change == QLatin1String("readonly")) {
            DigestCache::clear(folder);
            QVERIFY(::chmod(QFile::encodeName(folder).constData(), 0555) == 0);
        }

        QStringList lines;
        Log::setSink([&](const QString& line) {
            if (line.contains(QLatin1String("digest cache")))
                lines.append(line);
        });
        const auto rescan = scan(folder);
        Log::setSink({});
        QCOMPARE(rescan->groups(), scan(QString())->groups());
        QCOMPARE(rescan->state.contentBytesRead.load() > 0, reads);
        QCOMPARE(lines.size(), logged ? 1 : 0);
        if (change == QLatin1String("readonly"))
            ::chmod(QFile::encodeName(folder).constData(), 0755);
    }

    // Listings made ahead of the walk reach the folder they belong to, whichever thread made them and
    // in whatever order they are taken; a folder nobody announced is listed on the spot.
    void listersHandEachFolderItsOwnListing() {
        TempTree tree;
        for (int f = 0; f < 40; ++f) {
            for (int i = 0; i <= f % 5; ++i)
                tree.file("d" + QByteArray::number(f) + "/n" + QByteArray::number(i), "x");
        }
        auto names = [](const FolderListing& listing) {
            QList<QByteArray> out;
            for (const auto& [name, info] : listing.entries)
                out.append(name);
            return out;
        };
        FolderLister lister(3);
        std::vector<std::pair<qint32, QByteArray>> folders;
        for (qint32 f = 0; f < 40; ++f)
            folders.emplace_back(f, tree.path("d" + QByteArray::number(f)));
        lister.expect(folders);
        for (qint32 f : { 7, 39, 0, 21, 22, 3 }) {
            const FolderListing listing = lister.take(f, tree.path("d" + QByteArray::number(f)));
            QVERIFY(listing.opened && listing.complete);
            QCOMPARE(names(listing), names(FolderListing::of(tree.path("d" + QByteArray::number(f)))));
            QCOMPARE(listing.entries.size(), size_t(f % 5 + 1));
        }
        QVERIFY(!lister.take(99, tree.path("missing")).opened);
    }

    // One folder reached through two paths is walked once: nothing in it is its own duplicate, and
    // it is counted once.
    void aFolderIsWalkedOncePerScan_data() {
        QTest::addColumn<QList<QByteArray>>("targets");
        QTest::addColumn<bool>("bind");
        QTest::addColumn<QList<QByteArray>>("reference");
        QTest::newRow("bind mount inside a target") << QList<QByteArray> { "" } << true << QList<QByteArray> { "" };
        QTest::newRow("bind mount as a second target")
            << QList<QByteArray> { "A", "B" } << true << QList<QByteArray> { "A" };
        QTest::newRow("target inside a target")
            << QList<QByteArray> { "A/sub", "A" } << false << QList<QByteArray> { "A" };
        QTest::newRow("target given twice, once by a link")
            << QList<QByteArray> { "A", "linkA", "A" } << false << QList<QByteArray> { "A" };
    }
    void aFolderIsWalkedOncePerScan() {
        QFETCH(QList<QByteArray>, targets);
        QFETCH(bool, bind);
        QFETCH(QList<QByteArray>, reference);
        TempTree tree;
        tree.file("A/x.txt", "one");
        tree.file("A/y.txt", "two");
        tree.file("A/sub/z.txt", "three");
        tree.folder("B");
        tree.symlink("linkA", "A");
        auto absolute = [&](const QList<QByteArray>& relative) {
            QList<QByteArray> out;
            for (const QByteArray& path : relative)
                out.append(tree.path(path));
            return out;
        };
        ScanHarness before;
        before.scan(absolute(reference));

        std::optional<BindMount> mount;
        if (bind) {
            if (!Unprivileged::available())
                QSKIP("bind mounts need root");
            mount.emplace(tree.path("A"), tree.path("B"));
            if (!mount->isMounted())
                QSKIP("bind mounts are not allowed here");
        }
        ScanHarness scan;
        scan.scan(absolute(targets));
        QCOMPARE(scan.groups(), QList<QList<QByteArray>>());
        QCOMPARE(scan.state.totalCount.load(), before.state.totalCount.load());
        for (auto it = scan.table.cbegin(); it != scan.table.cend(); ++it)
            QVERIFY2(!it.key().startsWith(tree.path("B")) || !bind, it.key().constData());
    }

    void linkedTargetsAreScannedAsTheFolderTheyName() {
        TempTree tree;
        tree.file("real/a.txt", "alpha");
        tree.file("real/b.txt", "beta");
        tree.file("copy/a.txt", "alpha");
        tree.file("copy/b.txt", "beta");
        const QByteArray link = tree.symlink("links/docs", "../real");
        tree.symlink("links/chain", "docs");
        tree.symlink("links/dangling", "nowhere");
        tree.symlink("links/loop", "loop");

        ScanHarness scan;
        scan.scan(
            { tree.path("links/chain"), tree.path("copy"), tree.path("links/dangling"), tree.path("links/loop") });
        QCOMPARE(scan.groups(), (QList<QList<QByteArray>> { { tree.path("copy"), tree.path("real") } }));
        QVERIFY(!scan.table.contains(link));
        QCOMPARE(FileSystem::resolveTarget(link), tree.path("real"));
        QCOMPARE(FileSystem::resolveTarget(tree.path("links/loop")), QByteArray());
        QCOMPARE(FileSystem::resolveTarget(tree.path("links/dangling")), QByteArray());
        QCOMPARE(FileSystem::resolveTarget(tree.path("copy")), tree.path("copy"));
    }

    // An ignored folder is neither walked nor published, whether it is an ordinary folder, a hidden
    // one or a bundle (compared as units otherwise), or has a name that is not UTF-8; a twin of it
    // elsewhere then has no partner.
    void ignoredFoldersAreSkippedWhateverTheirKind_data() {
        QTest::addColumn<QByteArray>("ignored");
        QTest::addColumn<QByteArray>("twin");
        QTest::newRow("ordinary") << QByteArray("skip") << QByteArray("other/skip");
        QTest::newRow("hidden") << QByteArray(".local") << QByteArray("other/.local");
        QTest::newRow("bundle") << QByteArray("Tool.app") << QByteArray("other/Tool.app");
        QTest::newRow("not UTF-8") << QByteArray("caf\xe9") << QByteArray("other/caf\xe9");
    }
    void ignoredFoldersAreSkippedWhateverTheirKind() {
        QFETCH(QByteArray, ignored);
        QFETCH(QByteArray, twin);
        TempTree tree;
        tree.file("home/" + ignored + "/data.bin", "payload");
        tree.file("home/" + ignored + "/more/notes.txt", "notes");
        tree.file("home/" + twin + "/data.bin", "payload");
        tree.file("home/" + twin + "/more/notes.txt", "notes");

        ScanHarness scan;
        scan.state.settings.ignoreFolderList = { tree.path("home/" + ignored) };
        scan.scan({ tree.path("home") });
        const QByteArray skipped = tree.path("home/" + ignored);
        for (auto it = scan.table.cbegin(); it != scan.table.cend(); ++it)
            QVERIFY2(it.key() != skipped && !PathBytes::isDescendant(it.key(), skipped), it.key().constData());
        QCOMPARE(scan.groups(), QList<QList<QByteArray>>());
    }

    // Run as an ordinary user: a file is readable when its open succeeds (an ACL may allow what the
    // mode bits do not), and content nobody could read - unreadable files, folders that could not
    // be listed - matches nothing, not even itself.
    void unreadContentMatchesNothing() {
        if (!Unprivileged::available())
            QSKIP("needs root to switch to the user nobody");
        TempTree tree;
        QVERIFY(::chmod(tree.root().constData(), 0755) == 0);
        auto locked = [&](const QByteArray& relative, const QByteArray& content, mode_t mode = 0600) {
            const QByteArray path = tree.file(relative, content);
            ::chmod(path.constData(), mode);
            return path;
        };
        const QByteArray aclA = locked("scan/acl/a.bin", "shared through an ACL");
        const QByteArray aclB = locked("scan/acl/b.bin", "shared through an ACL");
        if (!Unprivileged::grantReadByAcl(aclA) || !Unprivileged::grantReadByAcl(aclB))
            QSKIP("setfacl is missing or the file system keeps no ACLs");
        locked("scan/locked/p", "first");
        locked("scan/locked/q", "second");
        locked("scan/U1/s", "one secret");
        locked("scan/U2/s", "another secret");
        tree.folder("scan/E1");
        locked("scan/L1/x", "hidden away");
        locked("scan/L2/y", "elsewhere");
        ::chmod(tree.path("scan/L1").constData(), 0700);
        ::chmod(tree.path("scan/L2").constData(), 0700);
        // Search right without listing, and listing without search right: neither is seen in full.
        tree.file("scan/L3/z", "z");
        ::chmod(tree.path("scan/L3").constData(), 0711);
        tree.file("scan/L4/w", "w");
        ::chmod(tree.path("scan/L4").constData(), 0744);
        const QByteArray t1 = locked("t1.bin", "same bytes");
        const QByteArray t2 = locked("t2.bin", "same bytes");

        const std::optional<QByteArray> out = Unprivileged::run([&]() -> QByteArray {
            ScanHarness scan;
            scan.scan({ tree.path("scan") });
            ScanHarness targets;
            targets.scan({ t1, t2 });
            return groupsText(scan.groups()) + "--\n" + scan.table.value(tree.path("scan/locked/p")) + '\n'
                + QByteArray::number(targets.state.totalCount.load()) + '\n' + groupsText(targets.groups());
        });
        QVERIFY(out.has_value());
        QCOMPARE(*out,
            groupsText({ { aclA, aclB } }) + "--\n" + "NOHash\n"
                + "2\n"); // both unreadable targets counted, and not grouped
    }

    // A file gone between the walk and its read is left out; one whose length changed meanwhile, or
    // that is no longer a file, is compared with nothing. A folder holding either matches nothing.
    void filesChangedAfterTheWalkAreNotCompared() {
        TempTree tree;
        const QByteArray kept = tree.file("F/kept", "12345");
        const QByteArray grown = tree.file("F/grown", "123456");
        const QByteArray pipe = tree.fifo("F/pipe");
        QCOMPARE(FileHash::scanFingerprint(kept, 5).text(), md5Of("12345"));
        QVERIFY(isTimeStamp(FileHash::scanFingerprint(grown, 5).text()));
        QVERIFY(isTimeStamp(FileHash::scanFingerprint(pipe, 0).text()));
        QCOMPARE(FileHash::scanFingerprint(tree.path("F/gone"), 5).kind(), Fingerprint::Kind::Vanished);
        QCOMPARE(FileHash::scanFingerprint(tree.path("F/kept/below"), 5).kind(), Fingerprint::Kind::Vanished);

        // Folded by hand: two folders alike but for a file that vanished, and one with an unreadable file.
        FingerprintTable table;
        FolderTree folders;
        auto file = [](const QByteArray& name, const Fingerprint& fingerprint) {
            FolderChild child;
            child.name = name;
            child.fingerprint = fingerprint;
            return child;
        };
        const Fingerprint same = Fingerprint::fromDigest(md5Digest("same"));
        folders.nodes.push_back({ tree.path("P"), { file("a", same), file("b", Fingerprint::vanished()) }, -1 });
        folders.nodes.push_back({ tree.path("Q"), { file("a", same), file("b", Fingerprint::vanished()) }, -1 });
        folders.nodes.push_back({ tree.path("R"), { file("a", same) }, -1 });
        folders.nodes.push_back({ tree.path("S"), { file("a", same), file("c", Fingerprint::noHash()) }, -1 });
        ScanSettings settings;
        settings.nub = 0;
        const IgnoredTypes noTypes;
        FolderNodeContext context { settings, noTypes, table, folders };
        for (qint32 i = 0; i < 4; ++i)
            scanDirectory::initWithURL(context, i);
        const QHash<QByteArray, QByteArray> texts = table.toTextMap();
        QVERIFY(!texts.contains(tree.path("P/b")));
        QCOMPARE(texts.value(tree.path("P/a")), md5Of("same"));
        QCOMPARE(texts.value(tree.path("S/c")), QByteArray("NOHash"));
        for (const char* folder : { "P", "Q", "S" })
            QVERIFY2(isTimeStamp(texts.value(tree.path(folder))), folder);
        QCOMPARE(texts.value(tree.path("R")), folderHash({ md5Of("same") }));
    }

    void listAndPhotoScansFillTheGroupDictionaries() {
        TempTree tree;
        tree.file("lib/2020/a.jpg", "jpeg bytes");
        tree.file("lib/2021/b.JPG", "jpeg bytes");
        tree.file("lib/notes/c.txt", "jpeg bytes");
        tree.file("lib/clip.mp4", "movie");
        tree.file("lib/clip copy.mov", "movie");
        tree.file("lib/tiny.png", "t");
        tree.file("lib/tiny copy.png", "t");

        ScanHarness photos;
        photos.state.settings.nub = allocatedSize(tree.path("lib/clip.mp4"));
        tree.file("lib/tiny.png", QByteArray()); // empty: below the minimum size on disk
        tree.file("lib/tiny copy.png", QByteArray());
        ScanEngine engine(photos.state, photos);
        engine.performScanningSelectorForPhoto({ tree.path("lib") });
        QCOMPARE(photos.state.DuplicateFileFolderArray.size(), 2);
        QVERIFY(!photos.listTable.contains(tree.path("lib/notes/c.txt")));
        QVERIFY(!photos.listTable.contains(tree.path("lib/tiny.png")));
        QCOMPARE(photos.state.totalCount.load(), qint64(4));
        QSet<QString> types;
        for (const GroupDictionary& group : photos.state.DuplicateFileFolderArray) {
            QCOMPARE(group.SameFileList.size(), 2);
            QCOMPARE(group.original, group.SameFileList.first());
            types.insert(*group.original.type);
        }
        QCOMPARE(types, (QSet<QString> { QStringLiteral("Photo"), QStringLiteral("Media") }));
        QCOMPARE(photos.state.filterSegmentItem.first(), QStringLiteral("All"));

        // The list scan records top-level files in the file table, which is not grouped.
        tree.file("top/one.txt", "dup");
        tree.file("top/two.txt", "dup");
        ScanHarness list;
        ScanEngine listEngine(list.state, list);
        listEngine.performScanningSelector({ tree.path("top/one.txt"), tree.path("top/two.txt"), tree.path("top") });
        QCOMPARE(list.state.DuplicateFileFolderArray.size(), 1);
        QCOMPARE(
            list.state.DuplicateFileFolderArray.first().original.type, std::optional<QString>(QStringLiteral("Text")));
        QCOMPARE(list.state.totalDuplicateCountFolder.load(), qint64(2));
    }
};

QTEST_GUILESS_MAIN(TestScan)
#include "tst_scan.moc"
