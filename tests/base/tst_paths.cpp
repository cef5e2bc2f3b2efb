#include "base/PathBytes.h"

#include <QtTest>

namespace {

// "%E9" stands for the lone surrogate U+DCE9; everything else is ASCII.
QString escaped(const char* text) {
    QString out;
    for (const char* p = text; *p; ++p) {
        if (*p == '%') {
            out.append(QChar(static_cast<char16_t>(0xDC00 + QByteArray(p + 1, 2).toInt(nullptr, 16))));
            p += 2;
        } else {
            out.append(QLatin1Char(*p));
        }
    }
    return out;
}

} // namespace

class TestPaths : public QObject {
    Q_OBJECT

private slots:
    void extensionFollowsTheFileUrlRule_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("extension");
        QTest::newRow("plain") << QByteArray("/a/b.jpg") << QByteArray("jpg");
        QTest::newRow("case kept") << QByteArray("/a/Photo.JPG") << QByteArray("JPG");
        QTest::newRow("last dot") << QByteArray("/a/b.tar.gz") << QByteArray("gz");
        QTest::newRow("leading dot only") << QByteArray("/a/.hidden") << QByteArray();
        QTest::newRow("hidden with extension") << QByteArray("/a/.scratch.tiff") << QByteArray("tiff");
        QTest::newRow("trailing dot") << QByteArray("/a/name.") << QByteArray();
        QTest::newRow("double leading dot") << QByteArray("/a/..g") << QByteArray("g");
        QTest::newRow("space after dot") << QByteArray("/a/My File.tx t") << QByteArray();
        QTest::newRow("dot in folder only") << QByteArray("/a.b/c") << QByteArray();
        QTest::newRow("bidi control after dot") << QByteArray("/a/x.t\xE2\x80\x8Ext") << QByteArray();
        QTest::newRow("root") << QByteArray("/") << QByteArray();
        QTest::newRow("bundle") << QByteArray("/a/dir.app") << QByteArray("app");
    }
    void extensionFollowsTheFileUrlRule() {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, extension);
        QCOMPARE(PathBytes::pathExtension(path), extension);
    }

    void componentsAndNormalising() {
        QCOMPARE(PathBytes::lastPathComponent("/tmp/scratch.tiff"), QByteArray("scratch.tiff"));
        QCOMPARE(PathBytes::lastPathComponent("/"), QByteArray("/"));
        QCOMPARE(PathBytes::deletingLastPathComponent("/a"), QByteArray("/"));
        QCOMPARE(PathBytes::deletingLastPathComponent("/a/b"), QByteArray("/a"));
        QCOMPARE(PathBytes::normalized("x//y/./z/../w/", "/home/u"), QByteArray("/home/u/x/y/w"));
        QCOMPARE(PathBytes::normalized("/", "/home"), QByteArray("/"));
        QCOMPARE(PathBytes::normalized("../..", "/a"), QByteArray("/"));
        QVERIFY(PathBytes::isDescendant("/a/b", "/a"));
        QVERIFY(!PathBytes::isDescendant("/ab", "/a"));
        QVERIFY(!PathBytes::isDescendant("/a", "/a"));
        QVERIFY(PathBytes::isDescendant("/a", "/"));
        QVERIFY(PathBytes::isPackageExtension("APP"));
        QVERIFY(!PathBytes::isPackageExtension("framework"));
        QCOMPARE(PathBytes::depth("/a/b/c"), 3);
    }

    void surrogateEscapesEveryUndecodableByte_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("latin-1") << QByteArray("caf\xe9.txt") << escaped("caf%E9.txt");
        QTest::newRow("invalid pair") << QByteArray("\xff\xfe") << escaped("%FF%FE");
        // An encoded surrogate must not decode to the very character the escape uses.
        QTest::newRow("encoded surrogate") << QByteArray("\xed\xb3\xa9") << escaped("%ED%B3%A9");
        QTest::newRow("overlong") << QByteArray("\xc0\xaf") << escaped("%C0%AF");
        QTest::newRow("truncated") << QByteArray("a\xe2\x82") << escaped("a%E2%82");
        QTest::newRow("valid multibyte") << QByteArray("\xc3\xa9\xf0\x9f\x98\x80")
                                         << QString::fromUtf8("\xc3\xa9\xf0\x9f\x98\x80");
    }
    void surrogateEscapesEveryUndecodableByte() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(PathBytes::decodeSurrogateEscape(bytes), text);
        QCOMPARE(PathBytes::isValidUtf8(bytes), text == QString::fromUtf8(bytes));
    }

    void fileUrlsEncodeEveryByte() {
        QCOMPARE(PathBytes::fileUrl("/tmp/a b/\xc3\xbc#1.txt"), QByteArray("file:///tmp/a%20b/%C3%BC%231.txt"));
        QCOMPARE(PathBytes::fileUrl("/x/caf\xe9"), QByteArray("file:///x/caf%E9"));
    }
};

QTEST_GUILESS_MAIN(TestPaths)
#include "tst_paths.moc"
