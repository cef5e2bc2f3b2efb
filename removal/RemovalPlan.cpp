#include "removal/RemovalPlan.h"

#include "base/PathBytes.h"

#include <QSet>
#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace {

struct FileKey {
    dev_t device;
    ino_t inode;
    bool operator==(const FileKey& other) const { return device == other.device && inode == other.inode; }
};

struct FileKeyHash {
    size_t operator()(const FileKey& key) const {
        return std::hash<quint64>()(static_cast<quint64>(key.inode) * 1000003u ^ static_cast<quint64>(key.device));
    }
};

FileKey keyOf(const duplicateFile& file) {
    return { file.identity().device, file.identity().inode };
}

// The chosen records still to be acted on, with the look-ups the survival test needs: by path (for
// the folders around an item and the items inside a folder) and by file (device and inode).
class ActiveChoice {
public:
    // Without folders anywhere in the result, no item lies in another and the path look-ups are
    // skipped: a choice of files alone costs a few hash look-ups per member.
    explicit ActiveChoice(bool withFolders)
        : m_withFolders(withFolders) { }

    void add(const duplicateFile* file) {
        m_records.insert(file);
        if (m_withFolders)
            m_byPath.emplace(file->urlFile(), file);
        if (file->identity().known)
            m_byFile.emplace(keyOf(*file), file);
    }

    void remove(const duplicateFile* file) {
        m_records.erase(file);
        if (m_withFolders)
            eraseFrom(m_byPath, m_byPath.equal_range(file->urlFile()), file);
        if (file->identity().known)
            eraseFrom(m_byFile, m_byFile.equal_range(keyOf(*file)), file);
    }

    bool contains(const duplicateFile* file) const { return m_records.count(file) > 0; }

    // The chosen folders `path` lies in, innermost first.
    std::vector<const duplicateFile*> foldersAround(const QByteArray& path) const {
        std::vector<const duplicateFile*> found;
        if (!m_withFolders)
            return found;
        for (qsizetype slash = path.lastIndexOf('/'); slash > 0; slash = path.lastIndexOf('/', slash - 1)) {
            const auto [first, last] = m_byPath.equal_range(path.left(slash));
            for (auto it = first; it != last; ++it) {
                if (it->second->identity().folder)
                    found.push_back(it->second);
            }
        }
        return found;
    }

    // Whether anything blocks `member` (see blockersOf), without listing what.
    bool blocks(const duplicateFile& member) const {
        if (contains(&member))
            return true;
        if (member.identity().known) {
            const auto [first, last] = m_byFile.equal_range(keyOf(member));
            for (auto it = first; it != last; ++it) {
                if (it->second != &member)
                    return true;
            }
        }
        if (!m_withFolders)
            return false;
        if (!foldersAround(member.urlFile()).empty())
            return true;
        if (member.identity().folder) {
            const QByteArray& folder = member.urlFile();
            const auto inside = m_byPath.lower_bound(folder + '/');
            return inside != m_byPath.end() && inside->first < folder + '0';
        }
        return false;
    }

    // What must stay chosen-free for `member` to survive: itself, the chosen folders around it, the
    // chosen items that are the same file, and for a folder the chosen items inside it.
    std::vector<const duplicateFile*> blockersOf(const duplicateFile& member) const {
        std::vector<const duplicateFile*> blockers = foldersAround(member.urlFile());
        if (contains(&member))
            blockers.push_back(&member);
        if (member.identity().known) {
            const auto [first, last] = m_byFile.equal_range(keyOf(member));
            for (auto it = first; it != last; ++it) {
                if (it->second != &member)
                    blockers.push_back(it->second);
            }
        }
        if (member.identity().folder) {
            // Everything whose path starts with "<folder>/": '0' is the byte after '/'.
            const QByteArray& folder = member.urlFile();
            for (auto it = m_byPath.lower_bound(folder + '/'); it != m_byPath.end() && it->first < folder + '0'; ++it)
                blockers.push_back(it->second);
        }
        return blockers;
    }

private:
    template <typename Map, typename Range> static void eraseFrom(Map& map, Range range, const duplicateFile* file) {
        for (auto it = range.first; it != range.second; ++it) {
            if (it->second == file) {
                map.erase(it);
                return;
            }
        }
    }

    bool m_withFolders;
    std::unordered_set<const duplicateFile*> m_records;
    std::multimap<QByteArray, const duplicateFile*> m_byPath;
    std::unordered_multimap<FileKey, const duplicateFile*, FileKeyHash> m_byFile;
};

} // namespace

QString RemovalPlan::notOnScreenText() {
    return QStringLiteral("not in the result on screen");
}

QString RemovalPlan::lastCopyText() {
    return QStringLiteral("the last copy of its content");
}

QString RemovalPlan::sameFileText() {
    return QStringLiteral("the same file as the kept copy");
}

QString RemovalPlan::protectedText() {
    return QStringLiteral("inside a protected folder");
}

RemovalPlan::RemovalPlan(const QList<DuplicateFilePtr>& chosen, const QList<DuplicateGroupPtr>& groups,
    const QList<QByteArray>& protectedFolders) {
    const QSet<QByteArray> shielded(protectedFolders.cbegin(), protectedFolders.cend());
    std::unordered_set<const duplicateFile*> wanted;
    std::unordered_set<FileKey, FileKeyHash> wantedFiles;
    for (const DuplicateFilePtr& file : chosen) {
        wanted.insert(file.get());
        if (file->identity().known)
            wantedFiles.insert(keyOf(*file));
    }
    // One pass over every member of the result, which may hold millions: each chosen record's group
    // (the first on screen that holds it), whether any member is a folder, the folders, and the
    // groups a choice of files alone can leave without a survivor (those holding a chosen record or
    // the same file as one).
    std::unordered_map<const duplicateFile*, DuplicateGroupPtr> groupOf;
    bool withFolders = false;
    std::vector<const duplicateFile*> folders;
    std::vector<bool> touched(static_cast<size_t>(groups.size()), false);
    for (qsizetype i = 0; i < groups.size(); ++i) {
        const DuplicateGroupPtr& group = groups[i];
        for (const DuplicateFilePtr& member : group->listAll()) {
            const duplicateFile& record = *member;
            if (wanted.count(&record)) {
                groupOf.emplace(&record, group);
                touched[static_cast<size_t>(i)] = true;
            } else if (record.identity().known && wantedFiles.count(keyOf(record))) {
                touched[static_cast<size_t>(i)] = true;
            }
            if (record.identity().folder) {
                withFolders = true;
                folders.push_back(&record);
            }
        }
    }
    std::vector<Item> candidates;
    std::unordered_map<const duplicateFile*, size_t> indexOf;
    ActiveChoice active(withFolders);
    for (const DuplicateFilePtr& file : chosen) {
        if (indexOf.count(file.get()))
            continue;
        indexOf.emplace(file.get(), candidates.size());
        Item item;
        item.file = file;
        const auto found = groupOf.find(file.get());
        if (found == groupOf.end()) {
            item.leftReason = notOnScreenText();
        } else if (!PathBytes::enclosingFolderIn(file->urlFile(), shielded).isEmpty()
            || std::any_of(shielded.cbegin(), shielded.cend(),
                [&](const QByteArray& folder) { return PathBytes::isDescendant(folder, file->urlFile()); })) {
            // Inside a protected folder, or a folder that holds one.
            item.leftReason = protectedText();
        } else {
            item.group = found->second;
            active.add(file.get());
        }
        candidates.push_back(std::move(item));
    }

    const auto sizeOf = [&](const duplicateFile* file) { return groupOf.at(file)->sizeFile(); };
    // The folders of the result that are not chosen: an item inside one keeps it from being whole.
    QSet<QByteArray> unchosenFolders;
    for (const duplicateFile* folder : folders) {
        if (!active.contains(folder))
            unchosenFolders.insert(folder->urlFile());
    }
    const auto insideUnchosenFolder = [&](const QByteArray& path) {
        for (qsizetype slash = path.lastIndexOf('/'); slash > 0; slash = path.lastIndexOf('/', slash - 1)) {
            if (unchosenFolders.contains(path.left(slash)))
                return true;
        }
        return false;
    };
    const auto survives = [&](const duplicateFile& member) { return !active.blocks(member); };

    // Leaving an item alone never takes a survivor away from any group, so one pass over the groups
    // settles them all: a group found without a survivor gets the cheapest one back. Without
    // folders, a group that holds neither a chosen record nor the same file as one keeps every copy.
    for (qsizetype i = 0; i < groups.size(); ++i) {
        if (!withFolders && !touched[static_cast<size_t>(i)])
            continue;
        const QList<DuplicateFilePtr>& members = groups[i]->listAll();
        if (members.isEmpty() || std::any_of(members.cbegin(), members.cend(), [&](const DuplicateFilePtr& member) {
                return survives(*member);
            }))
            continue;
        const DuplicateFilePtr* best = nullptr;
        std::vector<const duplicateFile*> bestBlockers;
        std::pair<qint64, qsizetype> bestCost;
        for (const DuplicateFilePtr& member : members) {
            std::vector<const duplicateFile*> blockers = active.blockersOf(*member);
            std::sort(blockers.begin(), blockers.end());
            blockers.erase(std::unique(blockers.begin(), blockers.end()), blockers.end());
            // What stays on disk first (+1: of two equal sizes, fewer items stay); then, of two
            // equal choices, the one whose items also keep an unchosen folder whole.
            std::pair<qint64, qsizetype> cost { 0, 0 };
            for (const duplicateFile* blocker : blockers) {
                cost.first += sizeOf(blocker) + 1;
                cost.second += insideUnchosenFolder(blocker->urlFile()) ? 0 : 1;
            }
            if (!best || cost < bestCost) {
                best = &member;
                bestCost = cost;
                bestBlockers = std::move(blockers);
            }
        }
        for (const duplicateFile* blocker : bestBlockers) {
            active.remove(blocker);
            Item& item = candidates[indexOf.at(blocker)];
            item.leftReason = blocker != best->get() && (*best)->identity().sameFileAs(blocker->identity())
                ? sameFileText()
                : lastCopyText();
        }
    }

    // Each group's kept copy: its original when that survives, else its first survivor.
    std::unordered_map<const duplicates*, DuplicateFilePtr> keptOf;
    const auto keptFor = [&](const DuplicateGroupPtr& group) {
        auto found = keptOf.find(group.get());
        if (found != keptOf.end())
            return found->second;
        DuplicateFilePtr kept;
        for (const DuplicateFilePtr& member : group->listAll()) {
            if (!survives(*member))
                continue;
            if (member->urlFile() == group->original()) {
                kept = member;
                break;
            }
            if (!kept)
                kept = member;
        }
        keptOf.emplace(group.get(), kept);
        return kept;
    };

    std::vector<Item> acting;
    std::vector<Item> inside;
    std::vector<Item> left;
    for (Item& item : candidates) {
        if (item.isLeft()) {
            left.push_back(std::move(item));
            continue;
        }
        item.kept = keptFor(item.group);
        if (active.foldersAround(item.file->urlFile()).empty())
            acting.push_back(std::move(item));
        else
            inside.push_back(std::move(item));
    }
    m_leftCount = static_cast<qsizetype>(left.size());
    m_items = std::move(acting);
    std::unordered_map<const duplicateFile*, qsizetype> actingIndex;
    for (size_t i = 0; i < m_items.size(); ++i)
        actingIndex.emplace(m_items[i].file.get(), static_cast<qsizetype>(i));
    // Innermost container first; items inside are placed after every outermost folder, and a folder
    // inside another comes before what lies inside it because paths of folders are shorter.
    std::stable_sort(inside.begin(), inside.end(),
        [](const Item& a, const Item& b) { return a.file->urlFile().size() < b.file->urlFile().size(); });
    for (Item& item : inside) {
        const std::vector<const duplicateFile*> around = active.foldersAround(item.file->urlFile());
        item.container = actingIndex.at(around.front());
        actingIndex.emplace(item.file.get(), static_cast<qsizetype>(m_items.size()));
        m_items.push_back(std::move(item));
    }
    for (Item& item : left)
        m_items.push_back(std::move(item));
}
