#include "base/SettingsStore.h"
#include "cli/CommandLine.h"
#include "support/TempTree.h"

#include <sys/stat.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
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
        const QList<QByteArray> escaped = { paths[0], paths[1], tree.path("\xff\\n.txt") };

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
            QVERIFY(exists(QByteArray(fields[2]).replace("\\n", "\n")));
        }
        QCOMPARE(summaryLine(run.out), QByteArray("# 2 done, 0 failed; left: 0 groups, 1 duplicate taking 0 Byte"));
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
        QCOMPARE(summaryLine(failed.out), QByteArray("# 0 done, 1 failed; left: 0 groups, 1 duplicate taking 0 Byte"));
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
            { { "scan", "--keep", "oldest", "--format", "json", tree.root() }, "--keep" },
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
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
