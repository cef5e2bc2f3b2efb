#include "app/CommandLine.h"
#include "engine/SettingsStore.h"
#include "support/TempTree.h"

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

        const Run missing = twinsift({ "scan", "--no-progress", tree.path("gone"), tree.root() });
        QCOMPARE(missing.status, 1);
        QVERIFY(missing.err.contains("gone"));
        QVERIFY(missing.out.contains("items scanned"));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
