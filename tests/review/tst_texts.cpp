#include "base/ByteCountFormatter.h"
#include "removal/RemovalTexts.h"
#include "review/StatusTexts.h"
#include "review/TextCompare.h"

#include <QtTest>
#include <limits>

class TestTexts : public QObject {
    Q_OBJECT

private slots:
    void byteCounts_data() {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<bool>("binary");
        QTest::addColumn<QString>("text");
        const qint64 max = std::numeric_limits<qint64>::max();
        // Decimal style, including the boundary pairs and the half-even ties.
        const QList<std::pair<qint64, const char*>> decimal = { { 0, "Zero KB" }, { 1, "1 byte" }, { 2, "2 bytes" },
            { -1, "-1 byte" }, { 999, "999 bytes" }, { 1000, "1 KB" }, { 1023, "1 KB" }, { 1499, "1 KB" },
            { 1500, "2 KB" }, { 2500, "2 KB" }, { 11999, "12 KB" }, { 999499, "999 KB" }, { 999500, "1 MB" },
            { 999999, "1 MB" }, { 1050000, "1 MB" }, { 1050001, "1.1 MB" }, { 1150000, "1.2 MB" },
            { 1250000, "1.2 MB" }, { 12345678, "12.3 MB" }, { 123456789, "123.5 MB" }, { 99950000, "100 MB" },
            { 999949999, "999.9 MB" }, { 999950000, "1 GB" }, { 1005000000, "1 GB" }, { 1234567890, "1.23 GB" },
            { 12345678987, "12.35 GB" }, { 999994999999, "999.99 GB" }, { 999995000000, "1 TB" },
            { 1000000000000000, "1 PB" }, { max, "9.22 EB" }, { -999999, "-1 MB" } };
        for (const auto& [bytes, text] : decimal)
            QTest::addRow("decimal %lld", bytes) << bytes << false << QString::fromUtf8(text);
        const QList<std::pair<qint64, const char*>> binary = { { 0, "Zero KB" }, { 1, "1 byte" },
            { 1000, "1,000 bytes" }, { 1023, "1,023 bytes" }, { 1024, "1 KB" }, { 1536, "2 KB" }, { 2560, "2 KB" },
            { 1000000, "977 KB" }, { 1040000, "1,016 KB" }, { 1048063, "1,023 KB" }, { 1048064, "1 MB" },
            { 1310720, "1.2 MB" }, { 123456789, "117.7 MB" }, { 1073689395, "1,023.9 MB" }, { 1073689396, "1 GB" },
            { 1234567890, "1.15 GB" }, { 1000000000000, "931.32 GB" }, { 1099506259066, "1,023.99 GB" },
            { 1099506259067, "1 TB" }, { 1125899906842624, "1 PB" }, { max, "8 EB" }, { -1024, "-1 KB" } };
        for (const auto& [bytes, text] : binary)
            QTest::addRow("binary %lld", bytes) << bytes << true << QString::fromUtf8(text);
    }
    void byteCounts() {
        QFETCH(qint64, bytes);
        QFETCH(bool, binary);
        QFETCH(QString, text);
        QCOMPARE(binary ? ByteCountFormatter::binary(bytes) : ByteCountFormatter::decimal(bytes), text);
    }

    void decimalNumbers() {
        QCOMPARE(StatusTexts::decimalNumber(qint64(0)), QStringLiteral("0"));
        QCOMPARE(StatusTexts::decimalNumber(qint64(999)), QStringLiteral("999"));
        QCOMPARE(StatusTexts::decimalNumber(qint64(1000)), QStringLiteral("1,000"));
        QCOMPARE(StatusTexts::decimalNumber(qint64(100000)), QStringLiteral("100,000"));
        QCOMPARE(StatusTexts::decimalNumber(qint64(-1234567)), QStringLiteral("-1,234,567"));
        QCOMPARE(StatusTexts::decimalNumber(std::numeric_limits<qint64>::max()),
            QStringLiteral("9,223,372,036,854,775,807"));
        QCOMPARE(StatusTexts::decimalNumber(std::numeric_limits<qint64>::min()),
            QStringLiteral("-9,223,372,036,854,775,808"));
        QCOMPARE(StatusTexts::decimalNumber(1234.5678), QStringLiteral("1,234.568"));
        QCOMPARE(StatusTexts::decimalNumber(0.0005), QStringLiteral("0"));
        QCOMPARE(StatusTexts::decimalNumber(0.0015), QStringLiteral("0.002"));
        QCOMPARE(StatusTexts::decimalNumber(-2.5), QStringLiteral("-2.5"));
        QCOMPARE(StatusTexts::scannedCount(1234567, QStringLiteral("en_US")), QStringLiteral("1,234,567"));
    }

    void toolbarAndStatusLine() {
        QCOMPARE(StatusTexts::mainToolBarText(5, 1, 0, 0),
            QStringLiteral("1 Duplicates. Total: 0 Byte \n Select duplicates for removal."));

        // The number counts folders only, the word folders and files together.
        QCOMPARE(StatusTexts::bottomStatus(0, 0, 0, 1, 4096), QStringLiteral("0 Duplicate (4 KB)"));
        QCOMPARE(StatusTexts::bottomStatus(0, 0, 2, 1, 0), QStringLiteral("2 Duplicates (Zero KB)"));
        QCOMPARE(StatusTexts::bottomStatus(1, 1500, 2, 3, 0), QStringLiteral("1 of 5 Duplicate (2 KB) selected"));
        QCOMPARE(StatusTexts::bottomStatus(2, 0, 2, 3, 0), QStringLiteral("2 of 5 Duplicates (Zero KB) selected"));

        QCOMPARE(StatusTexts::popoverWastedSpace(0), QStringLiteral("0 byte"));
        QCOMPARE(StatusTexts::popoverWastedSpace(999999), QStringLiteral("1 MB"));
        QCOMPARE(StatusTexts::popoverCount(1234), QStringLiteral("1234"));
        QCOMPARE(StatusTexts::popoverProgress(0, 10), 0.0f);
        QCOMPARE(StatusTexts::popoverProgress(5, 0), 0.0f);
        QCOMPARE(StatusTexts::popoverProgress(1, 4), 0.25f);

        QCOMPARE(StatusTexts::badgeWidth(0, 3), 7 + 13);
        QCOMPARE(StatusTexts::badgeWidth(0, 12), 14 + 13);
        QCOMPARE(StatusTexts::badgeWidth(2, 12), 3 * 6 + 24);
        QCOMPARE(StatusTexts::badgeWidth(10, 120), 5 * 6 + 24);

        QCOMPARE(StatusTexts::groupDetails(3, 1000), QStringLiteral("3 items, 3 KB"));
        QCOMPARE(StatusTexts::groupDetails(2, 0), QStringLiteral("2 items, 0 Byte"));
        QCOMPARE(StatusTexts::listCountOf(1, 3), QStringLiteral("1 of 3"));
        QCOMPARE(StatusTexts::listGroupSize(0), QStringLiteral("Size: Zero KB"));
        QCOMPARE(StatusTexts::listSizesSelected(1500, 12345678), QStringLiteral("2 KB of 12.3 MB selected"));
    }

    void confirmationTexts_data() {
        using A = RemovalActions::Action;
        QTest::addColumn<int>("action");
        QTest::addColumn<qsizetype>("count");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("informative");
        QTest::newRow("trash one") << int(A::MoveToTrash) << qsizetype(1)
                                   << QStringLiteral("Are you sure you want move selected item to trash?")
                                   << QStringLiteral("If you choose Yes, item will resides in Trash.\n");
        QTest::newRow("trash none") << int(A::MoveToTrash) << qsizetype(0)
                                    << QStringLiteral("Are you sure you want move selected items to trash?")
                                    << QStringLiteral("If you choose Yes, items will resides in Trash.\n");
        QTest::newRow("delete two") << int(A::PermanentDelete) << qsizetype(2)
                                    << QStringLiteral("Are you sure you want permanent erase selected items?")
                                    << QStringLiteral("If you choose Yes, you can not recover items.\n");
        QTest::newRow("alias one") << int(A::ReplaceWithAlias) << qsizetype(1)
                                   << QStringLiteral("Are you sure you want replace selected item with alias?")
                                   << QString::fromUtf8(
                                          "If you choose Yes, item will replaced with original file\u2019s alias.");
        QTest::newRow("symlink three")
            << int(A::ReplaceWithSymlink) << qsizetype(3)
            << QStringLiteral("Are you sure you want replace selected items with symlink?")
            << QString::fromUtf8("If you choose Yes, items will replaced with original file\u2019s symbolic link.");
        QTest::newRow("hardlink one") << int(A::ReplaceWithHardlink) << qsizetype(1)
                                      << QStringLiteral("Are you sure you want replace selected item with hardlink?")
                                      << QStringLiteral(
                                             "If you choose Yes, item will replaced with original file's hard link.");
    }
    void confirmationTexts() {
        QFETCH(int, action);
        QFETCH(qsizetype, count);
        QFETCH(QString, message);
        QFETCH(QString, informative);
        const RemovalTexts::Confirmation texts
            = RemovalTexts::confirmation(static_cast<RemovalActions::Action>(action), count);
        QCOMPARE(texts.messageText, message);
        QCOMPARE(texts.informativeText, informative);
    }

    void completionTexts() {
        QCOMPARE(RemovalTexts::congoSummary(1, 1500),
            QStringLiteral("You have successfully removed 1 duplicate item and freedup 2 KB."));
        QCOMPARE(RemovalTexts::congoSummary(0, 0),
            QStringLiteral("You have successfully removed 0 duplicate items and freedup Zero KB."));
        QCOMPARE(RemovalTexts::shareText(1, RemovalTexts::shareLink()),
            QStringLiteral("I just cleared 1 duplicate using Twinsift for Mac. Check it out here: "
                           "https://twinsift.app/ #twinsift #brindlewick"));
        QCOMPARE(RemovalTexts::shareText(3, QStringLiteral("L")),
            QStringLiteral(
                "I just cleared 3 duplicates using Twinsift for Mac. Check it out here: L #twinsift #brindlewick"));
        QCOMPARE(RemovalTexts::shareServices({ "Mail", "Twitter", "Facebook", "facebook" }),
            QStringList({ "Twitter", "Facebook" }));
        QCOMPARE(RemovalActions::actionForTitle(QStringLiteral("Replace with Symlink")),
            RemovalActions::Action::ReplaceWithSymlink);
        QCOMPARE(RemovalActions::actionForTitle(QStringLiteral("anything else")),
            RemovalActions::Action::ReplaceWithHardlink);
    }

    void caseInsensitiveOrder_data() {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("order");
        QTest::newRow("a B") << "a"
                             << "B" << -1;
        QTest::newRow("same letters") << "abc"
                                      << "ABC" << 0;
        QTest::newRow("not numeric") << "file10"
                                     << "file9" << -1;
        QTest::newRow("prefix first") << "a"
                                      << "ab" << -1;
        QTest::newRow("space before dash") << "file 2"
                                           << "file-2" << -1;
        QTest::newRow("underscore before z") << "a_b"
                                             << "aZ" << -1;
        QTest::newRow("folds to lower") << "Z"
                                        << "_" << 1;
        QTest::newRow("accent case") << QString::fromUtf8("É") << QString::fromUtf8("é") << 0;
        QTest::newRow("decomposed before f") << QString::fromUtf8("é") << "f" << -1;
        QTest::newRow("longer after decomposition") << QString::fromUtf8("é") << "e" << 1;
        QTest::newRow("umlaut before z") << QString::fromUtf8("ä") << "z" << -1;
        QTest::newRow("sharp s") << QString::fromUtf8("ß") << "ss" << 0;
        QTest::newRow("ligature") << QString::fromUtf8("\uFB01le") << "FILE" << 0;
        QTest::newRow("astral after bmp") << QString::fromUtf8("\U0001F600") << QString::fromUtf8("\uFFFD") << 1;
    }
    void caseInsensitiveOrder() {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(int, order);
        QCOMPARE(TextCompare::caseInsensitiveCompare(a, b), order);
        QCOMPARE(TextCompare::caseInsensitiveCompare(b, a), -order);
    }

    void searchContainment_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("found");
        const QString path = QStringLiteral("/Users/Ann/Photos/IMG_1.JPG");
        QTest::newRow("case") << path << "img_1.jpg" << true;
        QTest::newRow("folder part") << path << "PHOTOS/" << true;
        QTest::newRow("no wildcard") << path << "img*1" << false;
        QTest::newRow("not trimmed") << path << " photos" << false;
        QTest::newRow("empty") << path << "" << false;
        QTest::newRow("decomposed on disk")
            << QString::fromUtf8("/Users/Ann/Cafe\u0301/x") << QString::fromUtf8("CAFÉ") << true;
    }
    void searchContainment() {
        QFETCH(QString, path);
        QFETCH(QString, text);
        QFETCH(bool, found);
        QCOMPARE(TextCompare::containsIgnoringCase(path, text), found);
    }
};

QTEST_GUILESS_MAIN(TestTexts)
#include "tst_texts.moc"
