// Groups one million synthetic keys and prints the time it takes: the inverted index must keep
// grouping well under five seconds at this size.
#include "detect/FileHash.h"
#include "detect/Grouping.h"

#include <QElapsedTimer>
#include <cstdio>
#include <random>

int main(int argc, char* argv[]) {
    const qsizetype keys = argc > 1 ? QByteArray(argv[1]).toLongLong() : 1000000;
    std::mt19937_64 random(1);
    FingerprintTable table;
    QElapsedTimer timer;
    timer.start();
    for (qsizetype i = 0; i < keys; ++i) {
        // Folders of 50 items, 8 levels deep at most; one key in five shares its fingerprint.
        QByteArray path = "/bench";
        for (qsizetype level = i / 50; level > 0; level /= 8)
            path += "/d" + QByteArray::number(level % 8);
        path += "/f" + QByteArray::number(i);
        const quint64 content = random() % 5 == 0 ? random() % (keys / 10 + 1) : random();
        table.insert(path, Fingerprint::fromDigest(md5Digest(QByteArray::number(content))));
    }
    const double built = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    timer.restart();
    qsizetype groups = 0;
    qsizetype examined = 0;
    GroupingCallbacks callbacks;
    callbacks.sizeOf = [](const QByteArray&) { return qint64(4096); };
    callbacks.groupFound = [&](const QList<QByteArray>&, qint64) { ++groups; };
    callbacks.keyExamined = [&] { ++examined; };
    groupByFingerprint(DepthOrderedKeys::fromTable(table), 0, callbacks);
    const double grouped = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    std::printf("keys %lld, table built in %.2f s, grouped in %.2f s (target < 5 s): %lld groups, %lld examined\n",
        static_cast<long long>(keys), built, grouped, static_cast<long long>(groups), static_cast<long long>(examined));
    return grouped < 5.0 ? 0 : 1;
}
