#pragma once

#include "detect/FolderTree.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <atomic>
#include <optional>
#include <vector>

class HashPool;
struct ScanSettings;

// Decides which files a scan must read. A file's digest can change the result only when the file
// itself could match another entry of the grouped table (a published file of the same length), or
// when the fingerprint of a folder holding it is needed: a published folder whose shape (the
// multiset of its children's lengths, unit values and sub-folder shapes) another published folder
// shares, or any folder inside such a folder. Every other file is left unread and gets a
// fingerprint that matches nothing, which leaves the groups exactly as reading it would.
//
// Two items of different kinds (a file and a folder, say) can match only when one's bytes spell out
// the other's digest text; like an MD5 collision, that is taken not to happen. Whether a file can be
// read, or is still there, is learnt only by reading it.
//
// Files that share a length with another published file are handed to the pool as soon as the walk
// meets the second one, so reading overlaps the walk; the rest is decided when the walk is done.
class ContentPlanner {
public:
    struct File {
        Fingerprint* slot;
        qint64 size;
        qint32 node; // the folder holding it in the tree, or -1 for a target
        qint32 child; // its index among that folder's children
        QByteArray path; // targets only; files in the tree are named by node and child
    };

    ContentPlanner(HashPool& pool, std::atomic<qint64>& totalCount, bool readEverything);

    // A file met by the walk. `published`: it lands in the grouped table itself.
    void addFile(File file, bool published, const FolderTree* tree);

    // After the walk: marks the folders whose fingerprint is needed, reads the files that need it
    // and leaves the others unread. `tree` may be null when the walk made no folders.
    void finish(FolderTree* tree, const QSet<QString>& ignoredTypes);

private:
    struct SizeBucket {
        int published = 0;
        std::optional<File> first;
    };

    void submit(const File& file, const FolderTree* tree);
    void markNeededFolders(FolderTree& tree, const QSet<QString>& ignoredTypes);

    HashPool& m_pool;
    std::atomic<qint64>& m_totalCount;
    bool m_readEverything;
    QHash<qint64, SizeBucket> m_bySize;
    std::vector<File> m_waiting;
};
