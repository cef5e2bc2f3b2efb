#include "base/DigestCache.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

DigestCache::Key keyOf(quint64 inode, qint64 modifiedNs = 1) {
    return { 7, inode, 4096 + static_cast<qint64>(inode), modifiedNs, 2 };
}

DigestCache::Digest digestOf(uint8_t fill) {
    DigestCache::Digest digest;
    digest.fill(fill);
    return digest;
}

} // namespace

class TestDigestCache : public QObject {
    Q_OBJECT

private slots:
    // What a run learns of one file in several steps, written in different batches or in another
    // run, is found together; an entry of the same file under another key is replaced.
    void partsOfOneFileAreFoundTogether() {
        QTemporaryDir folder;
        {
            auto cache = DigestCache::open(folder.path());
            QVERIFY(cache);
            cache->store(keyOf(1), { 11, std::nullopt, std::nullopt, std::nullopt });
            cache->store(keyOf(2), { 21, std::nullopt, std::nullopt, std::nullopt });
            // Enough other files in between that the parts land in different batches.
            for (quint64 inode = 100; inode < 40100; ++inode)
                cache->store(keyOf(inode), { std::nullopt, std::nullopt, std::nullopt, digestOf(3) });
            cache->store(keyOf(1), { std::nullopt, 12, std::nullopt, std::nullopt });
            cache->store(keyOf(1), { std::nullopt, std::nullopt, digestOf(13), std::nullopt });
            cache->store(keyOf(2, 5), { std::nullopt, 22, std::nullopt, std::nullopt });
        }
        {
            auto cache = DigestCache::open(folder.path());
            QVERIFY(cache);
            const std::optional<DigestCache::Entry> one = cache->find(keyOf(1));
            QVERIFY(one);
            QCOMPARE(one->first, std::optional<quint64>(11));
            QCOMPARE(one->last, std::optional<quint64>(12));
            QCOMPARE(one->whole, std::optional<DigestCache::Digest>(digestOf(13)));
            QVERIFY(!one->fast);
            QVERIFY(!cache->find(keyOf(2)));
            QCOMPARE(cache->find(keyOf(2, 5))->last, std::optional<quint64>(22));
            QVERIFY(!cache->find(keyOf(2, 5))->first);
            QCOMPARE(cache->find(keyOf(40099))->fast, std::optional<DigestCache::Digest>(digestOf(3)));
            QVERIFY(!cache->find(keyOf(1, 9)));
            // A later run adds to what the file's entry already holds.
            cache->store(keyOf(1), { std::nullopt, std::nullopt, std::nullopt, digestOf(14) });
        }
        auto cache = DigestCache::open(folder.path());
        const std::optional<DigestCache::Entry> one = cache->find(keyOf(1));
        QVERIFY(one && one->first && one->last && one->whole);
        QCOMPARE(one->fast, std::optional<DigestCache::Digest>(digestOf(14)));
    }
};

QTEST_GUILESS_MAIN(TestDigestCache)
#include "tst_digestcache.moc"
