#pragma once

#include "detect/FingerprintTable.h"
#include "detect/FolderTree.h"
#include "detect/IgnoredTypes.h"

#include <QSet>
#include <QString>
#include <memory>
#include <optional>

struct ScanSettings;

// What a folder node reads and writes: the scan settings and the fingerprint table it publishes to.
struct FolderNodeContext {
    const ScanSettings& settings;
    const IgnoredTypes& ignoredTypes;
    FingerprintTable& table;
    FolderTree& tree;
};

// One folder of a recursive scan. Its fingerprint is the MD5 of its children's fingerprints sorted
// case-insensitively and joined ("NOHASH" when it has none), so two folders match exactly when
// their children's fingerprints match as a multiset, whatever the names. A folder that holds anything
// whose content was not seen gets a fresh time-stamp instead. Before publishing, the
// node filters its children's entries (hidden items unless hidden files are scanned, ignored types,
// files under the minimum size) and adds the rest to the table; a root records itself as well.
// A node runs to completion in its constructor's call, children before parents.
class FolderNode {
public:
    virtual ~FolderNode() = default;

    std::vector<const FolderChild*> getsubFileList() const;
    void performCalculatingSublistDetail();
    bool HashAvailble(qsizetype childIndex) const;
    bool ckeckAllSubFileCompleted() const;
    void updateSelfURL(const QByteArray& url);
    void updateSuperURL(qsizetype childIndex, const Fingerprint& hash);
    void EndALL();
    Fingerprint createRandomBytes() const;

    FolderNode* perentObject() const { return m_perentObject; }
    const QByteArray& selfURL() const { return m_selfURL; }
    std::optional<Fingerprint> selfHash() const { return m_selfHash; }

protected:
    FolderNode(FolderNodeContext& context, qint32 treeIndex);
    void setPerent(FolderNode* parent, qsizetype indexInParent);
    void setTreeIndex(qint32 treeIndex) { m_treeIndex = treeIndex; }
    void start();
    virtual void runChild(qint32 treeIndex, qsizetype childIndex) = 0;

    FolderNodeContext& m_appDel;

private:
    // Filters the children's entries, adds them to the table and reports this folder upward.
    void publish();

    FolderNode* m_perentObject = nullptr;
    qsizetype m_indexInParent = -1;
    qint32 m_treeIndex;
    std::vector<std::optional<Fingerprint>> m_subHashListDir;
    std::optional<Fingerprint> m_selfHash;
    std::vector<const FolderChild*> m_SubfileURLList;
    qint64 m_SubfileURLListCount = 0;
    qint64 m_CheckedListCount = 0;
    QByteArray m_selfURL;
};

// The node of the folder scan: publishes to its table (the folder scan's) in one construction step.
class scanDirectory : public FolderNode {
public:
    static void initWithURL(
        FolderNodeContext& context, qint32 treeIndex, FolderNode* perent = nullptr, qsizetype indexInParent = -1);

private:
    scanDirectory(FolderNodeContext& context, qint32 treeIndex);
    void runChild(qint32 treeIndex, qsizetype childIndex) override;
};

// The node of the list scan: the same rules, built in two steps as the list scan builds it.
class ScanDetail : public FolderNode {
public:
    explicit ScanDetail(FolderNodeContext& context);
    void setPerentObject(FolderNode* parent, qsizetype indexInParent);
    void initself(qint32 treeIndex);

private:
    void runChild(qint32 treeIndex, qsizetype childIndex) override;
};
