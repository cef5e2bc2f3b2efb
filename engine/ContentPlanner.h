#pragma once

#include "base/FileSystem.h"
#include "detect/FolderTree.h"
#include "detect/IgnoredTypes.h"
#include "engine/HashPool.h"

#include <QHash>
#include <QSet>
#include <QString>
#include <atomic>
#include <deque>
#include <optional>
#include <vector>

struct ScanSettings;

// The digest-cache key of an item as the walk saw it; only regular files are ever looked up.
DigestCache::Key cacheKeyOf(const FileSystem::ItemInfo& info);

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
// Files that share a length with another published file are looked at as soon as the walk meets the
// second one, so reading overlaps the walk; the rest is decided when the walk is done. Files longer
// than a block are first told apart by their first block and, where that ties on a larger file, by
// their last: a file whose block differs from every other candidate of its length cannot match any
// of them and is left unread (unless a folder needs it). Only files that still tie are read whole,
// in the order they lie on the disk, with a faster digest than MD5 where no folder needs theirs:
// like MD5's, its collisions are taken not to happen. Files of one block or less always take the
// faster digest, so that the choice follows from the length alone.
class ContentPlanner {
public:
    struct File {
        Fingerprint* slot;
        DigestCache::Key key; // as the walk saw it: its length, and its entry in the digest cache
        qint32 node; // the folder holding it in the tree, or -1 for a target
        qint32 child; // its index among that folder's children
        QByteArray path; // targets only; files in the tree are named by node and child
        qint64 size() const { return key.size; }
    };

    ContentPlanner(HashPool& pool, std::atomic<qint64>& totalCount, bool readEverything);

    // A file met by the walk. `published`: it lands in the grouped table itself.
    void addFile(File file, bool published, const FolderTree* tree);
    // The walk is done with a folder: what it queued goes to the pool.
    void endFolder() { flush(); }

    // After the walk: marks the folders whose fingerprint is needed, reads the files that need it
    // and leaves the others unread. `tree` may be null when the walk made no folders.
    void finish(FolderTree* tree, const IgnoredTypes& ignoredTypes);

private:
    struct SizeBucket {
        int published = 0;
        std::optional<File> first;
    };
    struct Probe {
        File file;
        BlockProbe blocks;
    };

    HashPool::Job jobFor(const File& file, const FolderTree* tree, HashPool::Part part) const;
    void queue(HashPool::Job&& job);
    // Hands the queued jobs to the pool, then waits while it is far behind.
    void flush();
    // Waits until every job handed over so far is done.
    void drain();
    static bool isNeeded(const File& file, const FolderTree* tree);
    void submit(
        const File& file, const FolderTree* tree, quint64 order = 0, HashPool::Part part = HashPool::Part::Whole);
    void start(File file, const FolderTree* tree);
    void settleUnread(const File& file, const FolderTree* tree);
    void splitProbes(const FolderTree* tree);
    // `blocks`, when given, holds the first-block digests of the longer files in the folders
    // already marked, which tell apart folders of the same shape.
    void markNeededFolders(
        FolderTree& tree, const IgnoredTypes& ignoredTypes, const QHash<const Fingerprint*, quint64>* blocks);

    HashPool& m_pool;
    std::atomic<qint64>& m_totalCount;
    bool m_readEverything;
    QHash<qint64, SizeBucket> m_bySize;
    std::vector<File> m_waiting;
    std::deque<Probe> m_probes; // the pool writes into them: addresses stay put
    std::vector<HashPool::Job> m_batch;
};
