#include "base/PathBytes.h"
#include "removal/DiskFixture.h"
#include "removal/Trash.h"
#include "support/TempTree.h"

#include <QRegularExpression>
#include <QtTest>

namespace {

QByteArray infoOf(const QByteArray& trash, const QByteArray& name) {
    const QMap<QByteArray, QByteArray> all = snapshot(trash + "/info");
    return all.value(name + ".trashinfo").mid(2);
}

} // namespace

class TestTrash : public QObject {
    Q_OBJECT

private slots:
    void homeTrashIsMadeAndFilled_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QByteArray>("encoded");
        QTest::newRow("plain") << QByteArray("plain.txt") << QByteArray("plain.txt");
        QTest::newRow("space and accent") << QByteArray("sp \xc3\xa9.txt") << QByteArray("sp%20%C3%A9.txt");
        QTest::newRow("not UTF-8") << QByteArray("\xff\xfe.txt") << QByteArray("%FF%FE.txt");
        QTest::newRow("line break") << QByteArray("new\nline") << QByteArray("new%0Aline");
        QTest::newRow("percent") << QByteArray("100%.txt") << QByteArray("100%25.txt");
    }
    void homeTrashIsMadeAndFilled() {
        QFETCH(QByteArray, name);
        QFETCH(QByteArray, encoded);
        TempEnvironment environment;
        TempTree tree;
        // A data folder that does not exist yet: the trash is made, never the current folder used.
        const QByteArray dataHome = tree.path("data/share");
        qputenv("XDG_DATA_HOME", dataHome);
        const QByteArray item = tree.file("docs/" + name, "content");
        tree.file("docs/sibling", "stays");

        const Trash::Result result = Trash::moveToTrash(item);
        QCOMPARE(result.error, 0);
        QCOMPARE(result.trashDirectory, dataHome + "/Trash");
        QCOMPARE(result.trashedPath, dataHome + "/Trash/files/" + name);
        QVERIFY(!tree.exists("docs/" + name));
        QCOMPARE(tree.read("docs/sibling"), QByteArray("stays"));
        QCOMPARE(tree.read(result.trashedPath), QByteArray("content"));
        const QByteArray info = infoOf(result.trashDirectory, name);
        const QRegularExpression shape(
            QStringLiteral("^\\[Trash Info\\]\nPath=(.*)\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\n$"));
        const QRegularExpressionMatch match = shape.match(QString::fromLatin1(info));
        QVERIFY2(match.hasMatch(), info.constData());
        QCOMPARE(match.captured(1).toLatin1(), PathBytes::percentEncoded(tree.path("docs")) + '/' + encoded);
        struct stat st;
        QCOMPARE(::stat(QByteArray(dataHome + "/Trash").constData(), &st), 0);
        QCOMPARE(st.st_mode & 0777, 0700u);
    }

    void clashesFoldersAndFailures() {
        TempEnvironment environment;
        TempTree tree;
        const QByteArray trash = Trash::homeTrashDirectory();
        QCOMPARE(trash, environment.dataHome() + "/Trash");

        for (int i = 0; i < 3; ++i)
            QVERIFY(Trash::moveToTrash(tree.file("a.txt", QByteArray::number(i))).ok());
        QVERIFY(Trash::moveToTrash(tree.file(".bashrc", "x")).ok());
        QVERIFY(Trash::moveToTrash(tree.file(".bashrc", "y")).ok());
        // A name taken in files/ without an info file is not reused either.
        QVERIFY(::mkdir(QByteArray(trash + "/files").constData(), 0700) == 0 || errno == EEXIST);
        const int foreign
            = ::open(QByteArray(trash + "/files/b.txt").constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
        QVERIFY(foreign >= 0);
        QCOMPARE(::write(foreign, "foreign", 7), ssize_t(7));
        ::close(foreign);
        QCOMPARE(Trash::moveToTrash(tree.file("b.txt", "mine")).trashedPath, trash + "/files/b.2.txt");
        // Folders go whole.
        tree.file("dir/inner/deep.txt", "deep");
        QVERIFY(Trash::moveToTrash(tree.path("dir")).ok());

        const QMap<QByteArray, QByteArray> files = snapshot(trash + "/files");
        QCOMPARE(files.value("a.txt"), QByteArray("f:0"));
        QCOMPARE(files.value("a.2.txt"), QByteArray("f:1"));
        QCOMPARE(files.value("a.3.txt"), QByteArray("f:2"));
        QCOMPARE(files.value(".bashrc.2"), QByteArray("f:y"));
        QCOMPARE(files.value("b.txt"), QByteArray("f:foreign"));
        QCOMPARE(files.value("b.2.txt"), QByteArray("f:mine"));
        QCOMPARE(files.value("dir/inner/deep.txt"), QByteArray("f:deep"));
        QCOMPARE(snapshot(trash + "/info").keys(),
            (QList<QByteArray> { ".bashrc.2.trashinfo", ".bashrc.trashinfo", "a.2.txt.trashinfo", "a.3.txt.trashinfo",
                "a.txt.trashinfo", "b.2.txt.trashinfo", "dir.trashinfo" }));
        QVERIFY(snapshot(tree.root()).isEmpty());

        // Names are counted per name for the run, yet an entry another program makes meanwhile, in
        // files/ or in info/, is never overwritten.
        const auto foreignEntry = [&](const QByteArray& name) {
            QFile entry(QString::fromUtf8(trash + "/files/" + name));
            QVERIFY(entry.open(QIODevice::WriteOnly));
            entry.write("foreign " + name);
            QFile info(QString::fromUtf8(trash + "/info/" + name + ".trashinfo"));
            QVERIFY(info.open(QIODevice::WriteOnly));
            info.write("[Trash Info]\n");
        };
        // Entries of another program fill the trash before the run: a.dat and a.1.dat.
        foreignEntry("a.dat");
        foreignEntry("a.1.dat");
        QVERIFY(Trash::moveToTrash(tree.file("a.dat", "mine 1")).ok());
        foreignEntry("a.3.dat");
        foreignEntry("a.4.dat");
        QVERIFY(Trash::moveToTrash(tree.file("a.dat", "mine 2")).ok());
        QVERIFY(Trash::moveToTrash(tree.file("a.dat", "mine 3")).ok());
        const QMap<QByteArray, QByteArray> counted = snapshot(trash + "/files");
        for (const char* name : { "a.dat", "a.1.dat", "a.3.dat", "a.4.dat" })
            QCOMPARE(counted.value(name), "f:foreign " + QByteArray(name));
        QCOMPARE(counted.value("a.2.dat"), QByteArray("f:mine 1"));
        QCOMPARE(counted.value("a.5.dat"), QByteArray("f:mine 2"));
        QCOMPARE(counted.value("a.6.dat"), QByteArray("f:mine 3"));
        ::unlink(QByteArray(trash + "/info/a.dat.trashinfo").constData());
        for (const char* name : { "a.1.dat", "a.2.dat", "a.3.dat", "a.4.dat", "a.5.dat", "a.6.dat" })
            ::unlink(QByteArray(trash + "/info/" + name + ".trashinfo").constData());

        // A missing item fails and leaves no info file behind.
        QCOMPARE(Trash::moveToTrash(tree.path("gone")).error, ENOENT);
        QCOMPARE(snapshot(trash + "/info").size(), 7);
        QCOMPARE(Trash::candidateName("x.tar.gz", 4), QByteArray("x.tar.4.gz"));

        // A trash emptied by deleting its folders while they are held open is made again.
        QVERIFY(QDir(QString::fromUtf8(trash)).removeRecursively());
        QVERIFY(Trash::moveToTrash(tree.file("a.dat", "after")).ok());
        QCOMPARE(snapshot(trash + "/files").values(), QList<QByteArray> { "f:after" });
        QCOMPARE(snapshot(trash + "/info").size(), 1);
    }

    void otherMountUsesItsTopDirectory_data() {
        QTest::addColumn<QByteArray>("shared"); // how $topdir/.Trash is made: "", "sticky", "plain", "link"
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("no shared trash") << QByteArray() << QByteArray(".Trash-0");
        QTest::newRow("sticky shared trash") << QByteArray("sticky") << QByteArray(".Trash/0");
        QTest::newRow("shared trash without sticky bit") << QByteArray("plain") << QByteArray(".Trash-0");
        QTest::newRow("shared trash as a link") << QByteArray("link") << QByteArray(".Trash-0");
    }
    void otherMountUsesItsTopDirectory() {
        QFETCH(QByteArray, shared);
        QFETCH(QByteArray, expected);
        TempEnvironment environment;
        TempTree tree;
        TmpfsMount mount(tree.path("mnt"));
        if (!mount.ok)
            QSKIP("cannot mount a tmpfs here");
        if (shared == "sticky" || shared == "plain") {
            tree.folder("mnt/.Trash");
            ::chmod(tree.path("mnt/.Trash").constData(), shared == "sticky" ? 01777 : 0777);
        } else if (shared == "link") {
            tree.folder("mnt/elsewhere");
            ::chmod(tree.path("mnt/elsewhere").constData(), 01777);
            tree.symlink("mnt/.Trash", "elsewhere");
        }
        const QByteArray item = tree.file("mnt/sub/\xff name.txt", "on tmpfs");

        const Trash::Result result = Trash::moveToTrash(item);
        QCOMPARE(result.error, 0);
        QCOMPARE(result.trashDirectory, tree.path("mnt/" + expected));
        QCOMPARE(tree.read(result.trashDirectory + "/files/\xff name.txt"), QByteArray("on tmpfs"));
        QVERIFY(infoOf(result.trashDirectory, "\xff name.txt")
                    .contains(QByteArray("\nPath=" + PathBytes::percentEncoded(item) + '\n')));
        QVERIFY(snapshot(environment.dataHome() + "/Trash/files").isEmpty());
    }

    void readOnlyMountFailsWithoutTrace() {
        TempEnvironment environment;
        TempTree tree;
        TmpfsMount mount(tree.path("ro"));
        if (!mount.ok)
            QSKIP("cannot mount a tmpfs here");
        const QByteArray item = tree.file("ro/keep.txt", "here");
        QVERIFY(mount.remountReadOnly());
        const Trash::Result result = Trash::moveToTrash(item);
        QCOMPARE(result.error, EROFS);
        QCOMPARE(tree.read(item), QByteArray("here"));
        QCOMPARE(snapshot(tree.path("ro")).keys(), QList<QByteArray> { "keep.txt" });
        QVERIFY(snapshot(environment.dataHome() + "/Trash/info").isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_trash.moc"
