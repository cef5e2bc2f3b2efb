#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "cli/CommandLine.h"
#include "cli/ResultWriter.h"
#include "removal/DiskFixture.h"
#include "support/TempTree.h"

#include <sys/stat.h>

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QThread>
#include <QtTest>

namespace {

struct Run {
    int status;
    QByteArray out;
    QByteArray err;
};

QByteArray drain(std::FILE* file) {
    std::fflush(file);
    std::rewind(file);
    QByteArray bytes;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        bytes.append(buffer, static_cast<qsizetype>(n));
    std::fclose(file);
    return bytes;
}

Run twinsift(const QList<QByteArray>& arguments) {
    std::FILE* out = std::tmpfile();
    std::FILE* err = std::tmpfile();
    const int status = CommandLine::run(arguments, out, err);
    return { status, drain(out), drain(err) };
}

// The tab-separated fields of each output line that is not a summary.
QList<QList<QByteArray>> fileLines(const QByteArray& out) {
    QList<QList<QByteArray>> lines;
    for (const QByteArray& line : out.split('\n')) {
        if (!line.isEmpty() && !line.startsWith('#'))
            lines.append(line.split('\t'));
    }
    return lines;
}

QByteArray summaryLine(const QByteArray& out) {
    const qsizetype at = out.lastIndexOf("\n#");
    return at < 0 ? QByteArray() : out.mid(at + 1).trimmed();
}

// Reverses the escapes of text output, to check that they lose nothing.
QByteArray unescaped(const QByteArray& text) {
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
            continue;
        }
        const char kind = text[++i];
        if (kind == 'x') {
            bytes += static_cast<char>(text.mid(i + 1, 2).toInt(nullptr, 16));
            i += 2;
        } else {
            bytes += kind == 't' ? '\t' : kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind;
        }
    }
    return bytes;
}

bool exists(const QByteArray& path) {
    struct stat st;
    return ::lstat(path.constData(), &st) == 0;
}

} // namespace

class TestCommandLine : public QObject {
    Q_OBJECT

private slots:
    void jsonHasTheDocumentedShape() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("A/photo.jpg", "same picture");
        tree.file("B/\xff\xfe.jpg", "same picture");
        tree.file("B/other", "different");
        tree.folder("E1");
        tree.folder("E2");

        const Run run = twinsift({ "scan", "--format", "json", "--min-size", "0", "--no-progress", tree.root() });
        QCOMPARE(run.status, 0);
        QJsonParseError error;
        const QJsonObject json = QJsonDocument::fromJson(run.out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(json.keys(), (QStringList { "groups", "totalCount", "totalDuplicateCount", "wastedSpaceDuplicates" }));
        const QJsonArray groups = json["groups"].toArray();
        QCOMPARE(groups.size(), 2);
        QCOMPARE(json["totalDuplicateCount"].toInt(), 4);

        // Groups come shallow first: the two empty folders, then the pictures.
        const QJsonObject folders = groups[0].toObject();
        QCOMPARE(folders.keys(), (QStringList { "members", "original", "size", "type" }));
        QCOMPARE(folders["type"].toInt(), 20);
        QCOMPARE(folders["size"].toInt(), 0);
        const QJsonObject pictures = groups[1].toObject();
        QCOMPARE(pictures["type"].toInt(), 50);
        const QJsonArray members = pictures["members"].toArray();
        QCOMPARE(members.size(), 2);
        QCOMPARE(members[0].toObject()["path"].toString(), pictures["original"].toString());
        QVERIFY(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z$"))
                    .match(members[0].toObject()["created"].toString())
                    .hasMatch());
        // The undecodable name is written with the escapes os.fsencode reverses.
        QVERIFY(run.out.contains("/B/\\udcff\\udcfe.jpg"));
        // Log lines never reach standard output.
        QVERIFY(!run.out.contains("scanInBGThread"));
    }

    void optionsOverrideWithoutWritingTheStore() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("a.txt", "x");
        tree.file("b.txt", "x");
        const Run flat = twinsift({ "scan", "--subdirs=n", "--min-size", "0", "--ignore-types", "", "--ignore-folder",
            tree.path("nothing"), "--format", "csv", tree.path("a.txt"), tree.path("b.txt") });
        QCOMPARE(flat.status, 0);
        QVERIFY(flat.out.startsWith("group,type,size,original,path,created\n"));
        QCOMPARE(flat.out.count('\n'), 3);
        SettingsStore store;
        QCOMPARE(store.string(QStringLiteral("checkSubDir")), QStringLiteral("y"));
        QCOMPARE(store.stringList(QStringLiteral("ignoreFileTypeList")).size(), 29);
    }

    void digestCacheIsKeptUnlessRefused() {
        TempEnvironment environment;
        TempTree tree;
        tree.sizedFile("a.bin", 10000, 'a');
        tree.sizedFile("b.bin", 10000, 'a');
        tree.sizedFile("c.bin", 10000, 'c');
        const QByteArray cacheFile = environment.cacheHome() + "/twinsift/digests.sqlite";
        const QList<QByteArray> refused { "scan", "--min-size", "0", "--no-progress", "--no-cache", tree.root() };
        const Run plain = twinsift(refused);
        QVERIFY(!exists(cacheFile));
        const Run first = twinsift({ "scan", "--min-size", "0", "--no-progress", tree.root() });
        QVERIFY(exists(cacheFile));
        const Run second = twinsift({ "scan", "--min-size", "0", "--no-progress", tree.root() });
        QCOMPARE(first.out, plain.out);
        QCOMPARE(second.out, plain.out);
        QCOMPARE(fileLines(plain.out).size(), 2);
    }

    void removalPlanChangesNothing() {
        TempEnvironment environment;
        TempTree tree;
        // One group of three; one name is not UTF-8 and holds a line break.
        const QList<QByteArray> paths
            = { tree.file("1.txt", "same"), tree.file("2.txt", "same"), tree.file("\xff\n.txt", "same") };
        const QList<QByteArray> escaped = { paths[0], paths[1], tree.path("\\xff\\n.txt") };

        QByteArray keptByRule[2];
        for (const char* rule : { "oldest", "newest" }) {
            const Run plan = twinsift(
                { "scan", "--min-size", "0", "--no-progress", "--keep", rule, "--action", "symlink", tree.root() });
            QCOMPARE(plan.status, 0);
            const QList<QList<QByteArray>> lines = fileLines(plan.out);
            QCOMPARE(lines.size(), 2);
            QList<QByteArray> seen;
            for (const QList<QByteArray>& fields : lines) {
                QCOMPARE(fields.size(), 3);
                QCOMPARE(fields[0], QByteArray("symlink"));
                QCOMPARE(fields[2], lines[0][2]);
                seen << fields[1];
            }
            seen << lines[0][2];
            std::sort(seen.begin(), seen.end());
            QCOMPARE(seen, escaped);
            QCOMPARE(summaryLine(plan.out),
                QByteArray("# 2 files chosen in 1 group (8 KB); nothing changed: add --yes to symlink them"));
            keptByRule[rule[0] == 'n'] = lines[0][2];
        }
        // The two rules keep the two ends of the group.
        QVERIFY(keptByRule[0] != keptByRule[1]);
        for (const QByteArray& path : paths)
            QCOMPARE(tree.read(path), QByteArray("same"));

        const Run chosen = twinsift({ "scan", "--min-size=0", "--no-progress", "--keep=oldest", tree.root() });
        QCOMPARE(chosen.status, 0);
        QCOMPARE(fileLines(chosen.out).size(), 2);
        QCOMPARE(fileLines(chosen.out)[0][0], QByteArray("chosen"));
        QCOMPARE(summaryLine(chosen.out), QByteArray("# 2 files chosen in 1 group (8 KB)"));
    }

    void removalWithYes() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("1.txt", "same");
        tree.file("2.txt", "same");
        tree.file("\xff\n.txt", "same");
        const Run run = twinsift({ "scan", "--min-size", "0", "--no-progress", "--keep", "oldest", "--action", "trash",
            "--yes", tree.root() });
        QCOMPARE(run.status, 0);
        const QList<QList<QByteArray>> lines = fileLines(run.out);
        QCOMPARE(lines.size(), 2);
        for (const QList<QByteArray>& fields : lines) {
            QCOMPARE(fields[0], QByteArray("trashed"));
            QVERIFY(exists(unescaped(fields[2])));
        }
        QCOMPARE(summaryLine(run.out),
            QByteArray("# 2 done, 0 failed, 0 left alone; remaining: 0 groups, 0 duplicates taking 0 Byte"));
        int left = 0;
        for (const char* name : { "1.txt", "2.txt", "\xff\n.txt" })
            left += tree.exists(name);
        QCOMPARE(left, 1);
        QVERIFY(exists(environment.dataHome() + "/Trash/info"));

        // A hard link cannot replace a folder: the failure is reported and the exit status is 1.
        TempTree folders;
        folders.file("D1/f", "inner");
        folders.file("D2/f", "inner");
        const Run failed = twinsift({ "scan", "--min-size", "0", "--no-progress", "--keep", "oldest", "--action",
            "hardlink", "--yes", folders.root() });
        QCOMPARE(failed.status, 1);
        const QList<QList<QByteArray>> failedLines = fileLines(failed.out);
        QCOMPARE(failedLines.size(), 1);
        QCOMPARE(failedLines[0].size(), 4);
        QCOMPARE(failedLines[0][0], QByteArray("failed"));
        QCOMPARE(failedLines[0][3], QByteArray("Operation not permitted"));
        QCOMPARE(summaryLine(failed.out),
            QByteArray("# 0 done, 1 failed, 0 left alone; remaining: 1 group, 2 duplicates taking 8 KB"));
    }

    void textPaths_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("plain and UTF-8") << QByteArray("/a/caf\xc3\xa9 \xf0\x9f\x93\xb7.jpg")
                                         << QByteArray("/a/caf\xc3\xa9 \xf0\x9f\x93\xb7.jpg");
        QTest::newRow("named escapes") << QByteArray("/a\tb\nc\rd\\e") << QByteArray("/a\\tb\\nc\\rd\\\\e");
        QTest::newRow("other controls") << QByteArray("/\x1b[31m\x7f\x01") << QByteArray("/\\x1b[31m\\x7f\\x01");
        QTest::newRow("NUL") << QByteArray("a\0b", 3) << QByteArray("a\\x00b");
        QTest::newRow("C1 control") << QByteArray("/\xc2\x9b\xc2\xa0") << QByteArray("/\\xc2\\x9b\xc2\xa0");
        QTest::newRow("invalid bytes") << QByteArray("/\xff\xfe") << QByteArray("/\\xff\\xfe");
        QTest::newRow("cut-off sequence") << QByteArray("/\xc3") << QByteArray("/\\xc3");
        QTest::newRow("cut-off before ASCII") << QByteArray("/\xe2\x82z") << QByteArray("/\\xe2\\x82z");
        QTest::newRow("overlong") << QByteArray("/\xc0\xaf\xe0\x80\xaf") << QByteArray("/\\xc0\\xaf\\xe0\\x80\\xaf");
        QTest::newRow("surrogate") << QByteArray("/\xed\xa0\x80") << QByteArray("/\\xed\\xa0\\x80");
        QTest::newRow("past U+10FFFF") << QByteArray("/\xf4\x90\x80\x80") << QByteArray("/\\xf4\\x90\\x80\\x80");
        QTest::newRow("largest code point") << QByteArray("/\xf4\x8f\xbf\xbf") << QByteArray("/\xf4\x8f\xbf\xbf");
    }
    void textPaths() {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, text);
        const QByteArray escaped = ResultWriter::textPath(path);
        QCOMPARE(escaped, text);
        QCOMPARE(unescaped(escaped), path);
        QVERIFY(QUtf8StringView(escaped).isValidUtf8());
    }

    void pathsAreEscapedAlikeInEveryTextLine() {
        TempEnvironment environment;
        TempTree tree;
        const QList<QByteArray> names = { "\xff\n.txt", "tab\t\x1b[2J.txt", "plain.txt" };
        QList<QByteArray> expected;
        for (const QByteArray& name : names)
            expected << ResultWriter::textPath(tree.file(name, "same"));
        std::sort(expected.begin(), expected.end());

        const Run listing = twinsift({ "scan", "--min-size", "0", "--no-progress", tree.root() });
        QCOMPARE(listing.status, 0);
        QList<QByteArray> listed;
        for (const QList<QByteArray>& fields : fileLines(listing.out))
            listed << fields.join('\t');
        std::sort(listed.begin(), listed.end());
        QCOMPARE(listed, expected);

        const Run plan = twinsift(
            { "scan", "--min-size", "0", "--no-progress", "--keep", "oldest", "--action", "delete", tree.root() });
        QCOMPARE(plan.status, 0);
        QList<QByteArray> planned;
        for (const QList<QByteArray>& fields : fileLines(plan.out)) {
            QCOMPARE(fields.size(), 3);
            planned << fields[1];
        }
        planned << fileLines(plan.out)[0][2];
        std::sort(planned.begin(), planned.end());
        QCOMPARE(planned, expected);

        const Run missing = twinsift({ "scan", "--no-progress", tree.path("gone\x1b\xff") });
        QCOMPARE(missing.status, 1);
        QVERIFY2(missing.err.contains("gone\\x1b\\xff: No such file"), missing.err.constData());
    }

    void helpAfterTheCommand_data() {
        QTest::addColumn<QList<QByteArray>>("arguments");
        QTest::newRow("--help") << QList<QByteArray> { "--help" };
        QTest::newRow("scan --help") << QList<QByteArray> { "scan", "--help" };
        QTest::newRow("scan -h") << QList<QByteArray> { "scan", "-h" };
        QTest::newRow("photos -h") << QList<QByteArray> { "photos", "-h" };
        QTest::newRow("after options and a path") << QList<QByteArray> { "scan", "--min-size", "0", "/nowhere", "-h" };
    }
    void helpAfterTheCommand() {
        QFETCH(QList<QByteArray>, arguments);
        const Run help = twinsift(arguments);
        QCOMPARE(help.status, 0);
        QVERIFY(help.out.startsWith("Usage: twinsift scan"));
        QVERIFY(help.err.isEmpty());
    }

    void standardErrorCarriesOnlyWhatWasAskedFor_data() {
        QTest::addColumn<QList<QByteArray>>("options");
        QTest::addColumn<bool>("progress");
        QTest::addColumn<bool>("log");
        QTest::newRow("quiet") << QList<QByteArray> { "--no-progress" } << false << false;
        QTest::newRow("progress") << QList<QByteArray> { "--progress" } << true << false;
        QTest::newRow("verbose") << QList<QByteArray> { "--no-progress", "--verbose" } << false << true;
        QTest::newRow("both") << QList<QByteArray> { "--verbose", "--progress" } << true << true;
    }
    void standardErrorCarriesOnlyWhatWasAskedFor() {
        QFETCH(QList<QByteArray>, options);
        QFETCH(bool, progress);
        QFETCH(bool, log);
        TempEnvironment environment;
        TempTree tree;
        tree.file("a", "same");
        tree.file("b", "same");
        const Run run
            = twinsift(QList<QByteArray> { "scan", "--min-size", "0" } + options + QList<QByteArray> { tree.root() });
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.contains("# 1 group"));
        QVERIFY(!run.out.contains("scanInBGThread"));
        QCOMPARE(run.err.contains("scanInBGThread"), log);
        // The status line (if the scan outlasts its first tick) is cleared at the end.
        QCOMPARE(run.err.contains("\033[K"), progress);
        if (!progress && !log)
            QCOMPARE(run.err, QByteArray());
    }

    // A copy directly in the target grouped with the copies inside two folders before the folders
    // are grouped: whatever the rule and the action, some real file still holds every content, the
    // plan lists what it leaves, and the outcome and its summary agree with the disk (JSON here).
    void nestedGroupsKeepEveryContent_data() {
        QTest::addColumn<QByteArray>("action");
        QTest::addColumn<QByteArray>("keep");
        for (const char* action : { "trash", "delete", "alias", "symlink", "hardlink" }) {
            for (const char* keep : { "newest", "oldest" })
                QTest::addRow("%s, keep %s", action, keep) << QByteArray(action) << QByteArray(keep);
        }
    }
    void nestedGroupsKeepEveryContent() {
        QFETCH(QByteArray, action);
        QFETCH(QByteArray, keep);
        TempEnvironment environment;
        TempTree tree;
        const NestedCopies copies(tree);
        const QByteArray& f3 = copies.f3;
        const QByteArray& g = copies.g;
        const QList<QByteArray> common
            = { "scan", "--min-size", "0", "--no-progress", "--keep", keep, "--action", action, "--format", "json" };

        const Run plan = twinsift(common + QList<QByteArray> { tree.path("t") });
        QCOMPARE(plan.status, 0);
        const Run run = twinsift(common + QList<QByteArray> { "--yes", tree.path("t") });
        QList<QJsonObject> items;
        for (const QByteArray& line : run.out.split('\n')) {
            if (line.isEmpty())
                continue;
            QJsonParseError error;
            items.append(QJsonDocument::fromJson(line, &error).object());
            QCOMPARE(error.error, QJsonParseError::NoError);
        }
        const QJsonObject summary = items.takeLast()["summary"].toObject();
        QVERIFY(summary["left"].toInt() >= 1);
        QCOMPARE(run.status, 1); // something was left alone
        QCOMPARE(plan.out.count("\"status\":\"left\""), summary["left"].toInt());

        // Every content is still in a real file somewhere in the tree.
        QStringList contents;
        QDirIterator it(QString::fromUtf8(tree.path("t")), QDir::Files | QDir::Hidden | QDir::NoSymLinks,
            QDirIterator::Subdirectories);
        while (it.hasNext()) {
            QFile file(it.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            contents.append(QString::fromLatin1(file.readAll().toHex()));
        }
        QVERIFY(contents.contains(QString::fromLatin1(f3.toHex())));
        QVERIFY(contents.contains(QString::fromLatin1(g.toHex())));
        QVERIFY(contents.contains(QString::fromLatin1(QByteArray("a\n").toHex())));
        for (const QJsonObject& item : items) {
            if (item["status"].toString() != QLatin1String("left"))
                QVERIFY(exists(item["kept"].toString().toUtf8()));
        }
    }

    // --protect: the keep rules keep the protected copy, nothing inside is listed, and the stored
    // settings are not changed.
    void protectedFoldersOnTheCommandLine() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("master/a.txt", "same");
        QThread::msleep(20);
        tree.file("copy/a.txt", "same");
        tree.file("copy/own.txt", "only here");
        const Run plan = twinsift({ "scan", "--min-size", "0", "--no-progress", "--keep", "newest", "--action",
            "delete", "--protect", tree.path("master"), tree.root() });
        QCOMPARE(plan.status, 0);
        const QList<QList<QByteArray>> lines = fileLines(plan.out);
        QCOMPARE(lines.size(), 1);
        QCOMPARE(lines[0][1], tree.path("copy/a.txt"));
        QCOMPARE(lines[0][2], tree.path("master/a.txt"));
        SettingsStore store;
        QVERIFY(loadProtectedFolderList(store).isEmpty());
    }

    // journal and undo: the last removal is listed (text and JSON), undo without --yes changes
    // nothing, with --yes puts the files back, and then there is nothing left to undo.
    void journalAndUndo() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("A/a.txt", "same");
        QThread::msleep(20);
        tree.file("B/a.txt", "same");
        tree.file("B/own.txt", "only here");
        QCOMPARE(twinsift({ "scan", "--min-size", "0", "--no-progress", "--keep", "oldest", "--action", "symlink",
                              "--yes", tree.root() })
                     .status,
            0);
        const Run journal = twinsift({ "journal" });
        QCOMPARE(journal.status, 0);
        QCOMPARE(journal.out.count('\n'), 1);
        QVERIFY(journal.out.contains("\tsymlink\t1 item\t"));
        const Run json = twinsift({ "journal", "--format", "json" });
        QCOMPARE(QJsonDocument::fromJson(json.out).object()["count"].toInt(), 1);

        const Run plan = twinsift({ "undo" });
        QCOMPARE(plan.status, 0);
        QVERIFY(plan.out.startsWith(QByteArray("undo\tsymlink\t" + tree.path("B/a.txt") + "\n")));
        QCOMPARE(snapshot(tree.path("B")).value("a.txt"), "l:" + tree.path("A/a.txt"));
        const Run undone = twinsift({ "undo", "--yes" });
        QCOMPARE(undone.status, 0);
        QCOMPARE(tree.read("B/a.txt"), QByteArray("same"));
        QCOMPARE(snapshot(tree.path("B")).value("a.txt"), QByteArray("f:same"));
        const Run nothing = twinsift({ "undo", "--yes" });
        QCOMPARE(nothing.status, 1);
        QVERIFY(nothing.err.contains("nothing to undo"));
    }

    void badUsageAndMissingPaths() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("f", "x");
        const Run bad = twinsift({ "scan", "--frobnicate", tree.root() });
        QCOMPARE(bad.status, 2);
        QVERIFY(bad.err.contains("--frobnicate"));
        QCOMPARE(bad.err.count('\n'), 1);
        QCOMPARE(twinsift({ "scan", "--subdirs", "maybe", tree.root() }).status, 2);
        QCOMPARE(twinsift({ "scan", "--min-size", "-3", tree.root() }).status, 2);
        QCOMPARE(twinsift({ "scan" }).status, 2);
        QCOMPARE(twinsift({ "clean", tree.root() }).status, 2);
        const QList<std::pair<QList<QByteArray>, QByteArray>> removalMisuse = {
            { { "scan", "--keep", "sideways", tree.root() }, "--keep" },
            { { "scan", "--action", "trash", tree.root() }, "--action" },
            { { "scan", "--keep", "oldest", "--action", "burn", tree.root() }, "--action" },
            { { "scan", "--keep", "oldest", "--yes", tree.root() }, "--yes" },
            { { "photos", "--keep", "oldest", tree.root() }, "--keep" },
            { { "scan", "--keep", "oldest", "--format", "csv", tree.root() }, "--keep" },
        };
        for (const auto& [arguments, option] : removalMisuse) {
            const Run misuse = twinsift(arguments);
            QCOMPARE(misuse.status, 2);
            QVERIFY2(misuse.err.contains(option), misuse.err.constData());
            QCOMPARE(misuse.err.count('\n'), 1);
            QVERIFY(misuse.out.isEmpty());
        }
        const Run help = twinsift({ "--help" });
        QVERIFY(help.out.contains("--keep newest|oldest") && help.out.contains("--action ACTION")
            && help.out.contains("--yes"));

        const Run missing = twinsift({ "scan", "--no-progress", tree.path("gone"), tree.root() });
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.err.contains("gone"));
        QVERIFY(missing.out.contains("items scanned"));
        // A link that names nothing is a missing path, by the same words and status.
        for (const QByteArray& link : { tree.symlink("dangling", "gone"), tree.symlink("loop", "loop") }) {
            const Run broken = twinsift({ "scan", "--no-progress", link, tree.root() });
            QCOMPARE(broken.status, 1);
            QCOMPARE(broken.err, "twinsift: " + link + ": No such file or directory\n");
        }
        // An empty word is refused before anything is scanned.
        const Run empty = twinsift({ "scan", "--keep", "oldest", "--action", "delete", "--yes", "" });
        QCOMPARE(empty.status, 2);
        QVERIFY(empty.out.isEmpty());
        QVERIFY(empty.err.contains("empty PATH"));
    }

    void aLinkedTargetIsScannedAsItsFolder() {
        TempEnvironment environment;
        TempTree tree;
        tree.file("real/a.jpg", "same picture");
        tree.file("real/b.jpg", "same picture");
        const Run run = twinsift({ "scan", "--no-progress", "--min-size", "0", tree.symlink("Pictures", "real") });
        QCOMPARE(run.status, 0);
        QVERIFY2(run.out.contains(tree.path("real/a.jpg")) && run.out.contains(tree.path("real/b.jpg")),
            run.out.constData());
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
