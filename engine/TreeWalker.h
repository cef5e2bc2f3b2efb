#pragma once

#include "base/FileSystem.h"
#include "detect/FolderTree.h"
#include "detect/IgnoredTypes.h"

#include <QSet>
#include <QString>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

struct ScanSettings;
class ContentPlanner;

// A folder's items as one listing finds them, in name order, each with what statx said of it.
struct FolderListing {
    std::vector<std::pair<QByteArray, FileSystem::ItemInfo>> entries;
    bool opened = false; // false: the folder could not be opened for listing
    bool complete = true; // false: some item could not be read or looked at

    static FolderListing of(const QByteArray& path);
};

// Lists folders on threads of their own, ahead of the walk that needs them: listing (a statx per
// item) is most of a walk's work, and the walk itself then only classifies. The walk says which
// folders it will enter in the order of its stack (the last one given is listed first) and takes
// each listing when it comes to the folder, listing it itself when no thread has started on it.
// Listings holding more than kAhead items in all do not wait to be taken: the listers pause.
class FolderLister {
public:
    explicit FolderLister(int threads);
    ~FolderLister();
    FolderLister(const FolderLister&) = delete;
    FolderLister& operator=(const FolderLister&) = delete;

    // Folders in the order they go on the walk's stack.
    void expect(const std::vector<std::pair<qint32, QByteArray>>& folders);
    FolderListing take(qint32 node, const QByteArray& path);

private:
    static constexpr size_t kAhead = 8192;
    struct Slot {
        QByteArray path;
        enum State { Waiting, Listing, Listed } state;
        FolderListing listing;
    };
    void work();

    std::mutex m_mutex;
    std::condition_variable m_hasWork;
    std::condition_variable m_done;
    std::vector<qint32> m_waiting; // a stack: the next folder to list on top
    std::unordered_map<qint32, Slot> m_slots;
    size_t m_ready = 0; // items in the listings that wait to be taken
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};

struct WalkRules {
    const ScanSettings& settings;
    const IgnoredTypes& ignoredTypes;
    const QSet<QByteArray>& ignoredFolders;
};

// Walks one target folder of a recursive scan into a FolderTree: every folder's children listed in
// name order and classified as the folder nodes classify them, units summed, and every file handed
// to the content planner, which decides whether it is read. Items are counted as the nodes would
// count them (files once their digest is settled), so the live figure rises while the work goes on.
//
// One walker serves every target of a scan and enters each folder (device and inode) once: a bind
// mount, or a target reached again through another path, is a child that matches nothing and is not
// walked. A folder that cannot be listed in full, or lies deeper than the walk goes, is marked so
// (its fingerprint then matches nothing), with a log line.
class TreeWalker {
public:
    TreeWalker(const WalkRules& rules, FolderTree& tree, ContentPlanner& planner, std::atomic<qint64>& totalCount);

    // Returns the index of the target's folder in the tree, or -1 (with a log line) when this
    // folder was already walked in this scan.
    qint32 walkFolder(const QByteArray& path);

    // Folders are not walked deeper than this below their target.
    static constexpr int kMaxDepth = 2048;

private:
    struct Origin {
        dev_t device;
        int depth;
        bool enter;
    };

    qint32 addNode(const QByteArray& path, qint32 parent, const FileSystem::ItemInfo& info, bool enter);
    void listFolder(qint32 index, std::vector<qint32>& pending);
    // Marks the folder as not seen in full and says why in the log.
    void markIncomplete(qint32 index, const QString& reason);

    const WalkRules& m_rules;
    FolderTree& m_tree;
    ContentPlanner& m_planner;
    std::atomic<qint64>& m_totalCount;
    FolderLister m_lister;
    std::vector<Origin> m_origins;
    QSet<QPair<quint64, quint64>> m_entered; // (device, inode) of every folder walked
};

// The fingerprint of a folder or bundle compared as one unit: MD5 of its summed size followed by
// its extension ("4096app").
Fingerprint unitFingerprint(qint64 totalSize, const QByteArray& extension);

// Sums the folder at `path` and gives its unit fingerprint; a folder that could not be summed in
// full gets a fresh time-stamp instead, with a log line. `items` receives the items enumerated.
Fingerprint measuredUnitFingerprint(
    const QByteArray& path, FileSystem::SizeKey key, const QByteArray& extension, qint64* items = nullptr);
