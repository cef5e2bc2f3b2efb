#include "detect/FileHash.h"
#include "detect/Grouping.h"

#include <QtTest>

namespace {

Fingerprint fp(const char* text) {
    return Fingerprint::fromDigest(md5Digest(text));
}

struct Outcome {
    QList<QList<QByteArray>> groups;
    QList<qint64> sizes;
    int examined = 0;
};

Outcome group(FingerprintTable& table, qint64 minimum, const QHash<QByteArray, qint64>& sizes = {}) {
    Outcome outcome;
    GroupingCallbacks callbacks;
    callbacks.sizeOf = [&](const QByteArray& path) { return sizes.value(path, 100); };
    callbacks.groupFound = [&](const QList<QByteArray>& paths, qint64 size) {
        outcome.groups.append(paths);
        outcome.sizes.append(size);
    };
    callbacks.keyExamined = [&] { ++outcome.examined; };
    groupByFingerprint(DepthOrderedKeys::fromTable(table), minimum, callbacks);
    return outcome;
}

} // namespace

class TestGrouping : public QObject {
    Q_OBJECT

private slots:
    void groupedFoldersSwallowTheirContents() {
        FingerprintTable table;
        // Recorded deepest first, as the folder nodes publish; grouping visits shallow first.
        table.insert("/r/A/f", fp("file"));
        table.insert("/r/B/f", fp("file"));
        table.insert("/r/C/f", fp("file"));
        table.insert("/r/A", fp("folder"));
        table.insert("/r/B", fp("folder"));
        table.insert("/r/lonely", fp("unique"));
        const Outcome outcome = group(table, 0);
        QCOMPARE(outcome.groups, (QList<QList<QByteArray>> { { "/r/A", "/r/B" } }));
        QCOMPARE(outcome.examined, 6); // one step per key, pruned or single ones included
        QVERIFY(table.isEmpty());
    }

    void bundleContentsAreNotPruned() {
        FingerprintTable table;
        table.insert("/r/A", fp("folder"));
        table.insert("/r/B", fp("folder"));
        table.insert("/r/A/x.app/Contents/f", fp("inner"));
        table.insert("/r/A/plain/f", fp("inner"));
        table.insert("/r/C/f", fp("inner"));
        const Outcome outcome = group(table, 0);
        QCOMPARE(
            outcome.groups, (QList<QList<QByteArray>> { { "/r/A", "/r/B" }, { "/r/C/f", "/r/A/x.app/Contents/f" } }));
    }

    void minimumSizeDropsGroupsButStillPrunes() {
        FingerprintTable table;
        table.insert("/r/A", fp("folder"));
        table.insert("/r/B", fp("folder"));
        table.insert("/r/A/f", fp("file"));
        table.insert("/r/C/f", fp("file"));
        table.insert("/r/D", fp("big"));
        table.insert("/r/E", fp("big"));
        const QHash<QByteArray, qint64> sizes { { "/r/A", 99 }, { "/r/D", 100 } };
        const Outcome outcome = group(table, 100, sizes);
        // A and B are below the minimum: no group, yet A/f is gone, so C/f finds no partner.
        QCOMPARE(outcome.groups, (QList<QList<QByteArray>> { { "/r/D", "/r/E" } }));
        QCOMPARE(outcome.sizes, QList<qint64> { 100 });
        QCOMPARE(outcome.examined, 6);
    }

    void unreadableItemsNeverGroup() {
        FingerprintTable table;
        table.insert("/r/a", Fingerprint::noHash());
        table.insert("/r/b", Fingerprint::noHash());
        table.insert("/r/c/d", Fingerprint::noHash());
        table.insert("/r/e", fp("x"));
        table.insert("/r/f", fp("x"));
        const Outcome outcome = group(table, 0);
        QCOMPARE(outcome.groups, (QList<QList<QByteArray>> { { "/r/e", "/r/f" } }));
        QCOMPARE(outcome.examined, 5);
    }

    void aRepeatedPathKeepsItsPlaceAndItsLastValue() {
        FingerprintTable table;
        table.insert("/r/a", fp("old"));
        table.insert("/r/b", fp("new"));
        table.insert("/r/c", fp("old"));
        table.insert("/r/a", fp("new"));
        const Outcome outcome = group(table, 0);
        QCOMPARE(outcome.groups, (QList<QList<QByteArray>> { { "/r/a", "/r/b" } }));
        QCOMPARE(outcome.examined, 3);
    }

    void rootTargetPrunesEverything() {
        FingerprintTable table;
        table.insert("/", fp("x"));
        table.insert("/other", fp("x"));
        table.insert("/a/b", fp("y"));
        table.insert("/c", fp("y"));
        QCOMPARE(group(table, 0).groups, (QList<QList<QByteArray>> { { "/", "/other" } }));
        QVERIFY(prunedBelow("/", "/a/b"));
        QVERIFY(!prunedBelow("/a", "/ab"));
        QVERIFY(!prunedBelow("/a", "/a/x.pkg/y"));
        QVERIFY(prunedBelow("/a/x.pkg", "/a/x.pkg/y"));
    }
};

QTEST_GUILESS_MAIN(TestGrouping)
#include "tst_grouping.moc"
