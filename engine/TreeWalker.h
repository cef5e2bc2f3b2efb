#pragma once

#include "base/FileSystem.h"
#include "detect/FolderTree.h"

#include <QSet>
#include <QString>
#include <atomic>
#include <vector>

struct ScanSettings;
class ContentPlanner;

struct WalkRules {
    const ScanSettings& settings;
    const QSet<QString>& ignoredTypes;
    const QSet<QByteArray>& ignoredFolders;
};

// Walks one target folder of a recursive scan into a FolderTree: every folder's children listed in
// name order and classified as the folder nodes classify them, units summed, and every file handed
// to the content planner, which decides whether it is read. Items are counted as the nodes would
// count them (files once their digest is settled), so the live figure rises while the work goes on.
class TreeWalker {
public:
    TreeWalker(const WalkRules& rules, FolderTree& tree, ContentPlanner& planner, std::atomic<qint64>& totalCount);

    // Returns the index of the target's folder in the tree.
    qint32 walkFolder(const QByteArray& path);

private:
    struct Origin {
        qint32 parent;
        dev_t device;
        ino_t inode;
        int depth;
        bool enter;
    };

    qint32 addNode(const QByteArray& path, qint32 parent, const FileSystem::ItemInfo& info, bool enter);
    void listFolder(qint32 index, std::vector<qint32>& pending);
    bool mayEnter(qint32 parent, const FileSystem::ItemInfo& info) const;

    const WalkRules& m_rules;
    FolderTree& m_tree;
    ContentPlanner& m_planner;
    std::atomic<qint64>& m_totalCount;
    std::vector<Origin> m_origins;
};

// The fingerprint of a folder or bundle compared as one unit: MD5 of its summed size followed by
// its extension ("4096app").
Fingerprint unitFingerprint(qint64 totalSize, const QByteArray& extension);
