#include "detect/FolderNode.h"

#include "base/Log.h"
#include "base/PathBytes.h"
#include "base/ScanSettings.h"
#include "detect/FileHash.h"

#include <algorithm>

FolderNode::FolderNode(FolderNodeContext& context, qint32 treeIndex)
    : m_appDel(context)
    , m_treeIndex(treeIndex) { }

void FolderNode::setPerent(FolderNode* parent, qsizetype indexInParent) {
    m_perentObject = parent;
    m_indexInParent = indexInParent;
}

void FolderNode::start() {
    const FolderTreeNode& folder = m_appDel.tree.nodes[static_cast<size_t>(m_treeIndex)];
    m_selfURL = folder.path;
    m_SubfileURLList = getsubFileList();
    m_SubfileURLListCount = static_cast<qint64>(m_SubfileURLList.size());
    m_subHashListDir.assign(m_SubfileURLList.size(), std::nullopt);
    m_CheckedListCount = 0;
    if (m_SubfileURLList.empty())
        updateSelfURL(m_selfURL);
    else
        performCalculatingSublistDetail();
}

std::vector<const FolderChild*> FolderNode::getsubFileList() const {
    const FolderTreeNode& folder = m_appDel.tree.nodes[static_cast<size_t>(m_treeIndex)];
    std::vector<const FolderChild*> list;
    list.reserve(folder.children.size());
    for (const FolderChild& child : folder.children)
        list.push_back(&child);
    return list;
}

Fingerprint FolderNode::createRandomBytes() const {
    return ::createRandomBytes();
}

bool FolderNode::HashAvailble(qsizetype childIndex) const {
    return m_subHashListDir[static_cast<size_t>(childIndex)].has_value();
}

bool FolderNode::ckeckAllSubFileCompleted() const {
    return m_SubfileURLListCount == m_CheckedListCount;
}

void FolderNode::performCalculatingSublistDetail() {
    for (qsizetype i = 0; i < static_cast<qsizetype>(m_SubfileURLList.size()); ++i) {
        if (HashAvailble(i))
            continue;
        const FolderChild& child = *m_SubfileURLList[static_cast<size_t>(i)];
        if (child.marker == ChildMarker::D && !child.excluded) {
            // The child node reports back through updateSuperURL, which counts it as checked.
            runChild(child.node, i);
            continue;
        }
        m_subHashListDir[static_cast<size_t>(i)] = child.excluded ? createRandomBytes() : child.fingerprint;
        ++m_CheckedListCount;
    }
    if (ckeckAllSubFileCompleted())
        updateSelfURL(m_selfURL);
}

void FolderNode::updateSuperURL(qsizetype childIndex, const Fingerprint& hash) {
    m_subHashListDir[static_cast<size_t>(childIndex)] = hash;
    ++m_CheckedListCount;
    if (ckeckAllSubFileCompleted())
        updateSelfURL(m_selfURL);
}

void FolderNode::EndALL() {
    if (ckeckAllSubFileCompleted())
        updateSelfURL(m_selfURL);
}

namespace {

bool caseInsensitiveLess(const QByteArray& a, const QByteArray& b) {
    const qsizetype n = std::min(a.size(), b.size());
    for (qsizetype i = 0; i < n; ++i) {
        const char ca = (a[i] >= 'A' && a[i] <= 'Z') ? static_cast<char>(a[i] + 32) : a[i];
        const char cb = (b[i] >= 'A' && b[i] <= 'Z') ? static_cast<char>(b[i] + 32) : b[i];
        if (ca != cb)
            return static_cast<uchar>(ca) < static_cast<uchar>(cb);
    }
    return a.size() < b.size();
}

} // namespace

void FolderNode::updateSelfURL(const QByteArray& url) {
    Q_UNUSED(url);
    // Reached twice for the last child (its report, then the end of the loop): the first call counts.
    if (m_selfHash)
        return;

    const FolderTreeNode& folder = m_appDel.tree.nodes[static_cast<size_t>(m_treeIndex)];
    // A folder holding something nobody saw (an unreadable or vanished file, a folder that could not
    // be listed) equals no other folder, whatever the rest holds.
    const bool unseen = !folder.listedInFull
        || std::any_of(m_subHashListDir.cbegin(), m_subHashListDir.cend(),
            [](const std::optional<Fingerprint>& hash) { return hash && !hash->canMatch(); });
    if (unseen) {
        m_selfHash = createRandomBytes();
        publish();
        return;
    }
    if (!folder.needsFingerprint) {
        // Nothing could share this folder's fingerprint: it is not worked out.
        m_selfHash = Fingerprint::unread();
        publish();
        return;
    }
    std::vector<QByteArray> texts;
    texts.reserve(m_subHashListDir.size());
    for (const std::optional<Fingerprint>& hash : m_subHashListDir) {
        if (hash)
            texts.push_back(hash->text());
    }
    std::sort(texts.begin(), texts.end(), caseInsensitiveLess);
    QByteArray joined;
    joined.reserve(static_cast<qsizetype>(texts.size()) * 32);
    for (const QByteArray& text : texts)
        joined.append(text);
    if (joined.isEmpty())
        joined = QByteArrayLiteral("NOHASH");
    m_selfHash = Fingerprint::fromDigest(md5Digest(joined));
    publish();
}

void FolderNode::publish() {
    const ScanSettings& settings = m_appDel.settings;
    const bool keepHidden = settings.checkHdn == QLatin1String("y");
    for (size_t i = 0; i < m_SubfileURLList.size(); ++i) {
        if (!m_subHashListDir[i])
            continue;
        const FolderChild& child = *m_SubfileURLList[i];
        if (m_subHashListDir[i]->kind() == Fingerprint::Kind::Vanished) {
            Log::line(QStringLiteral("gone before it was read: %1")
                          .arg(PathBytes::display(PathBytes::appendingComponent(m_selfURL, child.name))));
            continue;
        }
        if (child.excluded && child.marker == ChildMarker::D)
            continue; // an ignored folder, or one already walked through another path
        if (!keepHidden && PathBytes::isHiddenName(child.name))
            continue;
        // A file is excluded for its type alone, so the walk's answer stands for files.
        if (child.marker == ChildMarker::F ? child.excluded : m_appDel.ignoredTypes.matches(child.name))
            continue;
        if (child.marker == ChildMarker::F && settings.nub > child.allocated)
            continue;
        m_appDel.table.insert(PathBytes::appendingComponent(m_selfURL, child.name), *m_subHashListDir[i]);
    }
    std::vector<std::optional<Fingerprint>>().swap(m_subHashListDir);
    // Nothing reads this folder's children again: their names and digests go now, so the tree
    // shrinks while the table grows.
    m_SubfileURLList.clear();
    std::vector<FolderChild>().swap(m_appDel.tree.nodes[static_cast<size_t>(m_treeIndex)].children);

    if (m_perentObject)
        m_perentObject->updateSuperURL(m_indexInParent, *m_selfHash);
    else
        m_appDel.table.insert(m_selfURL, *m_selfHash);
}

scanDirectory::scanDirectory(FolderNodeContext& context, qint32 treeIndex)
    : FolderNode(context, treeIndex) { }

void scanDirectory::initWithURL(
    FolderNodeContext& context, qint32 treeIndex, FolderNode* perent, qsizetype indexInParent) {
    scanDirectory node(context, treeIndex);
    node.setPerent(perent, indexInParent);
    node.start();
}

void scanDirectory::runChild(qint32 treeIndex, qsizetype childIndex) {
    initWithURL(m_appDel, treeIndex, this, childIndex);
}

ScanDetail::ScanDetail(FolderNodeContext& context)
    : FolderNode(context, -1) { }

void ScanDetail::setPerentObject(FolderNode* parent, qsizetype indexInParent) {
    setPerent(parent, indexInParent);
}

void ScanDetail::initself(qint32 treeIndex) {
    setTreeIndex(treeIndex);
    start();
}

void ScanDetail::runChild(qint32 treeIndex, qsizetype childIndex) {
    ScanDetail child(m_appDel);
    child.setPerentObject(this, childIndex);
    child.initself(treeIndex);
}
