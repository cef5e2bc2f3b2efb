#include "review/ListModel.h"
#include "review/ListSelection.h"
#include "review/ResultFixture.h"
#include "review/ResultIndex.h"
#include "review/ResultLists.h"
#include "review/SearchIndex.h"
#include "review/Selection.h"
#include "review/SplitWork.h"
#include "review/TextCompare.h"

#include <QtTest>
#include <numeric>

namespace {

// Originals named b, A, B, a (the case-folding example), with keys that tie in every numeric sort.
struct Fixture {
    ScanState state;
    Selection selection;
    ResultLists lists { state, selection };
    DuplicateGroupPtr b = makeGroup({ "/d/b", "/d/x1", "/d/x2" }, 10, 40); // wasted 30, count 3
    DuplicateGroupPtr A = makeGroup({ "/d/A", "/e/Photos/y1" }, 12, 50); // wasted 24, count 2
    DuplicateGroupPtr B = makeGroup({ "/d/B", "/d/z1" }, 5, 40); // wasted 10, count 2
    DuplicateGroupPtr a = makeGroup({ "/d/a", "/d/w1" }, 15, std::nullopt); // wasted 30, count 2

    Fixture() {
        state.duplicateMainArray = { b, A, B, a };
        // Chosen per group: b 1, A 0, B 2, a 1 (a repeated record counts once).
        selection.duplicateSelectedArray
            = { b->listAll()[1], B->listAll()[0], B->listAll()[1], a->listAll()[0], a->listAll()[0] };
    }
};

} // namespace

class TestResultLists : public QObject {
    Q_OBJECT

private slots:
    void sortKeysInBothDirections_data() {
        QTest::addColumn<quint64>("key");
        QTest::addColumn<quint64>("order");
        QTest::addColumn<QStringList>("names");
        // Name and type sorts keep ties in their order both ways; the two-outcome comparator of the
        // numeric keys reverses ties when descending.
        QTest::newRow("name asc") << quint64(0) << quint64(5) << QStringList { "A", "a", "b", "B" };
        QTest::newRow("name desc") << quint64(0) << quint64(6) << QStringList { "b", "B", "A", "a" };
        QTest::newRow("wasted asc") << quint64(1) << quint64(5) << QStringList { "B", "A", "b", "a" };
        QTest::newRow("wasted desc") << quint64(1) << quint64(6) << QStringList { "a", "b", "A", "B" };
        QTest::newRow("count asc") << quint64(2) << quint64(5) << QStringList { "A", "B", "a", "b" };
        QTest::newRow("count desc") << quint64(2) << quint64(6) << QStringList { "b", "a", "B", "A" };
        QTest::newRow("type asc") << quint64(3) << quint64(5) << QStringList { "a", "b", "B", "A" };
        QTest::newRow("type desc") << quint64(3) << quint64(6) << QStringList { "A", "b", "B", "a" };
        QTest::newRow("selected asc") << quint64(4) << quint64(5) << QStringList { "A", "b", "a", "B" };
        QTest::newRow("selected desc") << quint64(4) << quint64(6) << QStringList { "B", "a", "b", "A" };
    }
    void sortKeysInBothDirections() {
        QFETCH(quint64, key);
        QFETCH(quint64, order);
        QFETCH(QStringList, names);
        Fixture f;
        f.lists.typesort = key;
        f.lists.typesortorder = order;
        f.lists.getDiplayListAndReloadMainList();
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), names);
        // The scan's own list is never reordered.
        QCOMPARE(originalNames(f.state.duplicateMainArray), (QStringList { "b", "A", "B", "a" }));
    }

    void sortMenuRulesAndLogLines() {
        Fixture f;
        LogCapture log;
        QVERIFY(!f.lists.sortDuplicatesFor(0)); // the active key
        QVERIFY(!f.lists.sortDuplicatesFor(5)); // the active direction
        QVERIFY(f.lists.sortDuplicatesFor(6));
        QCOMPARE(f.lists.typesortorder, quint64(6));
        QVERIFY(!f.lists.sortDuplicatesFor(6));
        QVERIFY(f.lists.sortDuplicatesFor(2));
        QCOMPARE(f.lists.typesort, quint64(2));
        QCOMPARE(f.lists.typesortorder, quint64(6)); // a key keeps the direction
        QVERIFY(f.lists.isSortItemChecked(2) && f.lists.isSortItemChecked(6));
        QVERIFY(!f.lists.isSortItemChecked(0) && !f.lists.isSortItemChecked(5));
        QCOMPARE(
            log.lines, (QStringList { "no need to sort", "no need to sort", "sorting", "no need to sort", "sorting" }));

        // An unknown key leaves the filtered order as it is and logs "error".
        QVERIFY(f.lists.sortDuplicatesFor(9));
        log.lines.clear();
        f.lists.selectedMain = 3;
        f.lists.getDiplayListAndReloadMainList();
        QCOMPARE(log.lines, QStringList { "error" });
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), (QStringList { "b", "A", "B", "a" }));
        QCOMPARE(f.lists.selectedMain, 0);

        f.lists.resetSortAndFilter();
        QCOMPARE(f.lists.typesort, quint64(0));
        QCOMPARE(f.lists.typesortorder, quint64(5));
        QCOMPARE(f.lists.typefilter, quint64(10));
    }

    void filterAndSearch() {
        Fixture f;
        f.lists.getDiplayListAndReloadMainList();
        QVERIFY(!f.lists.filterUsingTypeAction(10)); // the active filter: nothing happens
        QVERIFY(f.lists.filterUsingTypeAction(40));
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), (QStringList { "b", "B" }));

        // A match on a non-original file keeps the whole group; the type filter still applies.
        f.lists.searchText = QStringLiteral("Z1");
        f.lists.getDiplayListAndReloadMainList();
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), QStringList { "B" });
        f.lists.searchText = QStringLiteral("photos/");
        f.lists.getDiplayListAndReloadMainList();
        QVERIFY(f.lists.duplicateDisplayArray.isEmpty());
        QVERIFY(f.lists.filterUsingTypeAction(10));
        QCOMPARE(originalNames(f.lists.duplicateDisplayArray), QStringList { "A" });

        // A group without a type shows only under all types.
        f.lists.searchText.clear();
        for (const quint64 type : { 20, 30, 40, 50, 60, 70 }) {
            f.lists.filterUsingTypeAction(type);
            QVERIFY(!originalNames(f.lists.duplicateDisplayArray).contains("a"));
        }
        // The selection is never touched by sorting, filtering or searching.
        QCOMPARE(f.selection.duplicateSelectedArray.size(), 5);
    }

    // A result this large is rebuilt on another thread. A rebuild asked for while an older one runs
    // makes the older one stale: only the newer list is shown, once. Whatever is kept between
    // rebuilds (the index, the orders, the last search) gives the lists a fresh start gives, the
    // selection's order follows the selection, and the folded names sort as the text comparison does.
    void largeResultsRebuildInTheBackground() {
        ScanState state;
        Selection selection;
        ResultLists lists { state, selection };
        const char* names[] = { "b", "A", "\xc3\xa4x", "Ab", "a",
            "Stra\xc3\x9f"
            "e",
            "strasse", "B", "ax" };
        const int count = static_cast<int>(ResultLists::kBackgroundFrom) + 1000;
        for (int i = 0; i < count; ++i) {
            const QByteArray number = QByteArray::number(i);
            QList<QByteArray> paths { "/d" + QByteArray::number(i % 50) + '/' + names[i % 9],
                "/copy/" + number + "/Caf\xc3\xa9 " + QByteArray::number(i % 13) };
            if (i % 4 == 0)
                paths.append("/third/" + number);
            state.duplicateMainArray.append(makeGroup(paths, (i * 7919) % 1000 + 1, i % 2 ? 50 : 40));
        }
        QObject context;
        int shown = 0;
        lists.setDisplayListener(&context, [&shown] { ++shown; });
        const auto fresh = [&] {
            ResultLists other { state, selection };
            other.typesort = lists.typesort;
            other.typesortorder = lists.typesortorder;
            other.typefilter = lists.typefilter;
            other.searchText = lists.searchText;
            other.getDiplayListAndReloadMainList();
            return other.duplicateDisplayArray.toList();
        };

        QVERIFY(!lists.rebuildDisplayList());
        QVERIFY(lists.isBusy());
        QVERIFY(lists.setTypeFilter(50));
        QVERIFY(!lists.rebuildDisplayList());
        QTRY_VERIFY(!lists.isBusy());
        QCOMPARE(shown, 1);
        QCOMPARE(lists.duplicateDisplayArray.size(), count / 2);
        QCOMPARE(lists.duplicateDisplayArray.toList(), fresh());

        lists.setTypeFilter(ResultLists::AllTypes);
        selection.duplicateSelectedArray = { state.duplicateMainArray[7]->listAll()[0] };
        for (const QString& search : { QString(), QStringLiteral("CAF\u00c9 1"), QStringLiteral("caf\u00e9 12") }) {
            lists.searchText = search;
            for (quint64 key = ResultLists::OriginalFilename; key <= ResultLists::DuplicateSelected; ++key) {
                for (const quint64 direction : { ResultLists::Ascending, ResultLists::Descending }) {
                    lists.typesort = key;
                    lists.typesortorder = direction;
                    if (!lists.rebuildDisplayList())
                        QTRY_VERIFY(!lists.isBusy());
                    QCOMPARE(lists.duplicateDisplayArray.toList(), fresh());
                }
            }
            selection.duplicateSelectedArray.append(state.duplicateMainArray[11]->listAll());
        }
        // The last search: the groups with a path holding the text, ignoring case.
        const QList<DuplicateGroupPtr> shownGroups = lists.duplicateDisplayArray.toList();
        qsizetype matching = 0;
        for (const DuplicateGroupPtr& group : std::as_const(state.duplicateMainArray)) {
            for (const DuplicateFilePtr& file : group->listAll()) {
                if (TextCompare::containsIgnoringCase(QString::fromUtf8(file->urlFile()), lists.searchText)) {
                    ++matching;
                    QVERIFY(shownGroups.contains(group));
                    break;
                }
            }
        }
        QCOMPARE(shownGroups.size(), matching);

        lists.searchText.clear();
        lists.typesort = ResultLists::OriginalFilename;
        lists.typesortorder = ResultLists::Ascending;
        lists.getDiplayListAndReloadMainList();
        const QList<DuplicateGroupPtr> byName = lists.duplicateDisplayArray.toList();
        QHash<const duplicates*, qsizetype> position;
        for (qsizetype i = 0; i < state.duplicateMainArray.size(); ++i)
            position.insert(state.duplicateMainArray[i].get(), i);
        const QStringList shownNames = originalNames(byName);
        for (qsizetype i = 1; i < byName.size(); ++i) {
            const int order = TextCompare::caseInsensitiveCompare(shownNames[i - 1], shownNames[i]);
            QVERIFY(order < 0 || (order == 0 && position[byName[i - 1].get()] < position[byName[i].get()]));
        }
    }

    // A result large enough to be indexed by every core: the name order and the search must be
    // those a plain sort and a plain search give, across the seams between the cores' ranges.
    void largeIndexesMatchPlainSortAndSearch() {
        // Names that tie over their first sixteen bytes, fold alike (case, "ß", the "ﬁ" ligature,
        // composed or not), are prefixes of each other, or reach beyond the basic plane; and marks
        // that decomposition must put in order ("é" then a dot below, a Tibetan vowel sign).
        const QList<QByteArray> names { "Holiday Pictures 2023 - 10.jpg", "holiday pictures 2023 - 1.jpg",
            "HOLIDAY PICTURES 2023 - 10.JPG",
            "Stra\xc3\x9f"
            "e",
            "STRASSE", "\xef\xac\x81le", "file", "caf\xc3\xa9", "cafe\xcc\x81 x", "\xf0\x9f\x93\xb7 photo", "a", "A",
            "ab", "Zeta", "caf\xc3\xa9\xcc\xa3", "cafe\xcc\xa3\xcc\x81", "\xe0\xbd\x80\xe0\xbd\xb3" };
        const qsizetype count = SplitWork::kSplitFrom + 7;
        QList<DuplicateGroupPtr> groups;
        for (qsizetype i = 0; i < count; ++i) {
            const QByteArray name = names[i % names.size()] + (i % 3 ? QByteArray() : QByteArray::number(i % 97));
            groups.append(
                makeGroup({ "/d/" + QByteArray::number(i % 31) + '/' + name,
                              "/copy/" + QByteArray::number(i) + "/Caf\xc3\xa9 " + QByteArray::number(i % 13) },
                    1, 40));
        }
        const std::atomic<bool> never { false };
        const std::shared_ptr<const ResultIndex> index = ResultIndex::make(groups, never);
        QVERIFY(index);
        std::vector<QList<char32_t>> keys;
        for (const DuplicateGroupPtr& group : groups)
            keys.push_back(TextCompare::caseInsensitiveKey(originalNames({ group }).first()));
        for (const bool descending : { false, true }) {
            std::vector<quint32> expected(static_cast<size_t>(count));
            std::iota(expected.begin(), expected.end(), quint32(0));
            std::stable_sort(expected.begin(), expected.end(),
                [&](quint32 a, quint32 b) { return descending ? keys[b] < keys[a] : keys[a] < keys[b]; });
            QCOMPARE(index->order(groups, ResultLists::OriginalFilename, descending, {}, never), expected);
        }

        const std::shared_ptr<const SearchIndex> search = SearchIndex::make(groups, never);
        QVERIFY(search);
        for (const QString& needle : { QStringLiteral("CAF\u00c9 1"), QStringLiteral("/7/"),
                 QStringLiteral("stra\u00dfe"), QStringLiteral("\U0001F4F7") }) {
            const std::optional<std::vector<bool>> found
                = search->matching(groups, TextCompare::foldedNeedle(needle), nullptr, never);
            QVERIFY(found);
            for (qsizetype g = 0; g < count; ++g) {
                bool expected = false;
                for (const DuplicateFilePtr& file : groups[g]->listAll())
                    expected
                        = expected || TextCompare::containsIgnoringCase(QString::fromUtf8(file->urlFile()), needle);
                QCOMPARE((*found)[static_cast<size_t>(g)], expected);
            }
        }
    }

    void olderListSorting() {
        ScanState state;
        ListSelection selection(state);
        ListModel model(state, selection);
        auto member = [](const char* url, qint64 size, const char* type) {
            return FileDictionary { url, 0, size,
                type ? std::optional<QString>(QString::fromUtf8(type)) : std::nullopt };
        };
        const GroupDictionary photos { { member("/p/b.jpg", 10, "Photo"), member("/q/b.jpg", 10, "Photo") },
            member("/p/b.jpg", 10, "Photo") };
        const GroupDictionary texts { { member("/p/A.txt", 2, "Text"), member("/q/A.txt", 2, "Text"),
                                          member("/r/A.txt", 2, "Text") },
            member("/p/A.txt", 2, "Text") };
        const GroupDictionary folders { { member("/p/c", 50, "Folder"), member("/q/c", 50, "Folder") },
            member("/p/c", 50, "Folder") };
        state.DuplicateFileFolderArray = { photos, texts, folders };
        auto order = [&state] {
            QStringList names;
            for (const GroupDictionary& g : state.DuplicateFileFolderArray)
                names.append(QString::fromUtf8(g.original.url));
            return names;
        };

        model.sortResult(QStringLiteral("Original Filename"));
        QCOMPARE(order(), (QStringList { "/p/A.txt", "/p/b.jpg", "/p/c" }));
        QCOMPARE(model.SortItemList(8), QStringLiteral("Z to A")); // direction: re-sorts by the remembered title
        QVERIFY(!model.a2z && model.sortItemChecked[8] && !model.sortItemChecked[7]);
        QCOMPARE(order(), (QStringList { "/p/c", "/p/b.jpg", "/p/A.txt" }));
        // Equal counts keep their order in both directions.
        QCOMPARE(model.SortItemList(2), QStringLiteral("Duplicate Count"));
        QCOMPARE(order(), (QStringList { "/p/A.txt", "/p/c", "/p/b.jpg" }));
        QCOMPARE(model.SortItemList(7), QStringLiteral("A to Z"));
        QCOMPARE(order(), (QStringList { "/p/c", "/p/b.jpg", "/p/A.txt" }));
        QCOMPARE(model.SortItemList(3), QStringLiteral("Duplicate Type"));
        QCOMPARE(order(), (QStringList { "/p/c", "/p/b.jpg", "/p/A.txt" }));
        // An untitled key item stands for the one at index 1.
        QCOMPARE(model.SortItemList(5), QStringLiteral("Wasted Size"));
        QCOMPARE(model.typeSort, QStringLiteral("Wasted Size"));
        QVERIFY(model.sortItemChecked[1] && !model.sortItemChecked[3] && !model.sortItemChecked[5]);
        QCOMPARE(order(), (QStringList { "/p/A.txt", "/p/b.jpg", "/p/c" }));
        selection.SelectedFileFolderArray = texts.SameFileList;
        selection.SelectedFileFolderArray.append(photos.SameFileList[1]);
        model.SortItemList(4);
        QCOMPARE(order(), (QStringList { "/p/c", "/p/b.jpg", "/p/A.txt" }));

        // Type segments keep "All" and the known types in a fixed order.
        state.filterSegmentItem = { "All", "Text", "Other", "Photo", "Folder" };
        model.makeListOfTypes();
        QCOMPARE(state.filterSegmentItem, (QStringList { "All", "Folder", "Photo", "Text", "Other" }));

        // Search and segment narrow the shown list; the saved result stays whole.
        model.saveResult();
        model.searchForEnteredString(QStringLiteral("/Q/"));
        QCOMPARE(state.DuplicateFileFolderArray.size(), 3);
        model.searchForEnteredString(QStringLiteral("r/a.TXT"));
        QCOMPARE(order(), QStringList { "/p/A.txt" });
        model.segmentType = QStringLiteral("Photo");
        model.searchForEnteredString(QString());
        QCOMPARE(order(), QStringList { "/p/b.jpg" });
        QCOMPARE(model.saveResultArray.size(), 3);

        state.mainArray = { "/p" };
        model.NewScanBack();
        QVERIFY(state.mainArray.isEmpty() && state.DuplicateFileFolderArray.isEmpty());
        QVERIFY(selection.SelectedFileFolderArray.isEmpty() && model.saveResultArray.isEmpty());
        QVERIFY(model.searchText.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestResultLists)
#include "tst_resultlists.moc"
