#include "detect/FileHash.h"
#include "detect/FileType.h"
#include "support/TempTree.h"

#include <QCryptographicHash>
#include <QtTest>

class TestHash : public QObject {
    Q_OBJECT

private slots:
    void fileDigestsMatchTheWholeContent_data() {
        QTest::addColumn<qint64>("size");
        QTest::newRow("empty") << qint64(0);
        QTest::newRow("one byte") << qint64(1);
        QTest::newRow("one block") << qint64(4096);
        QTest::newRow("block and a byte") << qint64(4097);
        QTest::newRow("many blocks") << qint64(3 * 1024 * 1024 + 17);
    }
    void fileDigestsMatchTheWholeContent() {
        QFETCH(qint64, size);
        TempTree tree;
        QByteArray content(size, Qt::Uninitialized);
        for (qint64 i = 0; i < size; ++i)
            content[i] = static_cast<char>((i * 131) ^ (i >> 8));
        const QByteArray path = tree.file("f", content);
        QCOMPARE(
            *FileHash::md5HashOfFileAtPath(path), QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex());
        QCOMPARE(
            *FileHash::sha1HashOfFileAtPath(path), QCryptographicHash::hash(content, QCryptographicHash::Sha1).toHex());
        QCOMPARE(FileHash::sha512HashOfFileAtPath(path)->size(), 128);
        if (size == 0)
            QCOMPARE(*FileHash::md5HashOfFileAtPath(path), QByteArray("d41d8cd98f00b204e9800998ecf8427e"));
    }

    void itemsThatCannotBeReadGiveNoValue() {
        TempTree tree;
        tree.folder("dir");
        tree.fifo("pipe"); // must not block
        tree.file("target", "x");
        tree.symlink("link", "target"); // links are not followed
        QVERIFY(!FileHash::md5HashOfFileAtPath(tree.path("missing")));
        QVERIFY(!FileHash::md5HashOfFileAtPath(tree.path("dir")));
        QVERIFY(!FileHash::md5HashOfFileAtPath(tree.path("pipe")));
        QVERIFY(!FileHash::md5HashOfFileAtPath(tree.path("link")));
        QVERIFY(FileHash::md5HashOfFileAtPath(tree.path("target")));
    }

    void longAndOddPathsAreReached() {
        TempTree tree;
        QByteArray relative;
        while (relative.size() < 5000)
            relative += QByteArray(200, 'd') + '/';
        const QByteArray deep = tree.file(relative + "caf\xe9", "deep");
        QVERIFY(deep.size() > 4096);
        QCOMPARE(*FileHash::md5HashOfFileAtPath(deep), md5("deep"));
    }

    void textDigests() {
        QCOMPARE(md5("0"), QByteArray("cfcd208495d565ef66e7dff9f98764da"));
        QCOMPARE(md5(QByteArray("ab\0cd", 5)), md5("ab")); // up to the first zero byte
        QCOMPARE(MD5(QByteArray("ab\0cd", 5)),
            QCryptographicHash::hash(QByteArray("ab\0cd", 5), QCryptographicHash::Md5).toHex());
        QCOMPARE(MD5Str("abc"), MD5("abc"));
    }

    void timeStampsAreUniqueAndFormatted() {
        QByteArray previous;
        for (int i = 0; i < 1000; ++i) {
            const QByteArray text = createRandomBytes().text();
            QVERIFY(
                QRegularExpression(QStringLiteral("^\\d{10}\\.\\d{6}$")).match(QString::fromLatin1(text)).hasMatch());
            QVERIFY2(text != previous, text.constData());
            previous = text;
        }
        QCOMPARE(Fingerprint::timeStamp(1700000000123456).text(), QByteArray("1700000000.123456"));
        QCOMPARE(Fingerprint::noHash().text(), QByteArray("NOHash"));
    }

    void typeClassesComeFromTheExtension_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<int>("category");
        QTest::addColumn<QString>("text");
        QTest::newRow("jpeg caps") << QByteArray("/a/IMG.JPG") << 50 << "Photo";
        QTest::newRow("svg is an image, not text") << QByteArray("/a/logo.svg") << 50 << "Photo";
        QTest::newRow("video") << QByteArray("/a/m.mkv") << 60 << "Media";
        QTest::newRow("audio") << QByteArray("/a/s.mp3") << 60 << "Media";
        QTest::newRow("pdf") << QByteArray("/a/d.pdf") << 40 << "Text";
        QTest::newRow("source") << QByteArray("/a/x.cpp") << 40 << "Text";
        QTest::newRow("plain") << QByteArray("/a/x.md") << 40 << "Text";
        QTest::newRow("archive") << QByteArray("/a/x.tar.gz") << 30 << "Other";
        QTest::newRow("zip") << QByteArray("/a/x.zip") << 30 << "Other";
        QTest::newRow("office is not an archive") << QByteArray("/a/x.docx") << 70 << "Other";
        QTest::newRow("no extension") << QByteArray("/a/README") << 70 << "Other";
    }
    void typeClassesComeFromTheExtension() {
        QFETCH(QByteArray, path);
        QFETCH(int, category);
        QFETCH(QString, text);
        QCOMPARE(FileType::categoryOfRegularFile(path), category);
        QCOMPARE(FileType::typeTextOfRegularFile(path), text);
    }
};

QTEST_GUILESS_MAIN(TestHash)
#include "tst_hash.moc"
