#include "review/ResultIndex.h"

#include "base/PathBytes.h"
#include "review/SplitWork.h"
#include "review/TextCompare.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <string_view>

namespace {

// How many groups pass between two looks at the stop flag.
constexpr qsizetype kStopStride = 4096;

bool isAscii(const char* bytes, qsizetype size) {
    for (qsizetype i = 0; i < size; ++i) {
        if (static_cast<unsigned char>(bytes[i]) >= 0x80)
            return false;
    }
    return true;
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The keys the name sort compares, for one range of groups: the case-folded code points of each
// original's displayed name, as UTF-8. UTF-8 keeps the order of code points, so comparing these
// bytes orders names as comparing their folded code points does; a plain ASCII name folds to its
// lower case.
struct NameKeys {
    qsizetype first = 0;
    std::string bytes;
    std::vector<size_t> start;
    TextCompare::KeyFolder folder;

    std::string_view at(qsizetype group) const {
        const auto local = static_cast<size_t>(group - first);
        return std::string_view(bytes).substr(start[local], start[local + 1] - start[local]);
    }

    void append(const QByteArray& path) {
        start.push_back(bytes.size());
        // The last component, read in place: the name is not copied out of the path first.
        qsizetype from = path == "/" ? 0 : path.lastIndexOf('/') + 1;
        const char* name = path.constData() + from;
        const qsizetype size = path.size() - from;
        if (isAscii(name, size)) {
            for (qsizetype i = 0; i < size; ++i)
                bytes.push_back(lowered(name[i]));
            return;
        }
        folder.append(bytes, PathBytes::display(QByteArray::fromRawData(name, size)));
    }
};

// A place in the name order: the first sixteen bytes of the key, big-endian, decide most
// comparisons without reading the key itself; the rest of the key is read only on a tie.
struct Place {
    quint64 head;
    quint64 next;
    const char* rest;
    quint32 restSize;
    quint32 group;

    bool operator<(const Place& other) const {
        if (head != other.head)
            return head < other.head;
        if (next != other.next)
            return next < other.next;
        const int order = std::string_view(rest, restSize).compare(std::string_view(other.rest, other.restSize));
        return order != 0 ? order < 0 : group < other.group;
    }
    bool sameKey(const Place& other) const {
        return head == other.head && next == other.next
            && std::string_view(rest, restSize) == std::string_view(other.rest, other.restSize);
    }
};

// Names hold no zero byte, so a short key padded with zeros still sorts before a longer one.
quint64 bigEndianAt(std::string_view key, size_t from) {
    quint64 value = 0;
    for (size_t i = from; i < from + 8; ++i)
        value = value << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0u);
    return value;
}

Place placeOf(std::string_view key, qsizetype group) {
    const std::string_view rest = key.substr(std::min<size_t>(16, key.size()));
    return { bigEndianAt(key, 0), bigEndianAt(key, 8), rest.data(), static_cast<quint32>(rest.size()),
        static_cast<quint32>(group) };
}

} // namespace

std::shared_ptr<const ResultIndex> ResultIndex::make(
    const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop) {
    auto index = std::make_shared<ResultIndex>();
    const qsizetype count = groups.size();
    index->m_types.resize(static_cast<size_t>(count));

    // Each range folds its names and sorts them; the sorted ranges are merged afterwards.
    const int parts = SplitWork::partsFor(count);
    std::vector<NameKeys> keys(static_cast<size_t>(parts));
    std::vector<Place> places(static_cast<size_t>(count));
    std::vector<qsizetype> partStart(static_cast<size_t>(parts) + 1, count);
    std::atomic<bool> stopped { false };
    SplitWork::run(count, parts, [&](int part, qsizetype begin, qsizetype end) {
        partStart[static_cast<size_t>(part)] = begin;
        NameKeys& mine = keys[static_cast<size_t>(part)];
        mine.first = begin;
        mine.start.reserve(static_cast<size_t>(end - begin) + 1);
        mine.bytes.reserve(static_cast<size_t>(end - begin) * 16);
        for (qsizetype g = begin; g < end; ++g) {
            if ((g - begin) % kStopStride == 0 && stop.load(std::memory_order_relaxed)) {
                stopped = true;
                return;
            }
            const duplicates& group = *groups.at(g);
            index->m_types[static_cast<size_t>(g)] = group.type();
            mine.append(group.original());
        }
        mine.start.push_back(mine.bytes.size());
        for (qsizetype g = begin; g < end; ++g)
            places[static_cast<size_t>(g)] = placeOf(mine.at(g), g);
    });
    if (stopped)
        return nullptr;
    // The ranges' keys are in place now: each range is sorted, then merged into the ones before.
    SplitWork::run(count, parts,
        [&](int, qsizetype begin, qsizetype end) { std::sort(places.begin() + begin, places.begin() + end); });
    for (int part = 1; part < parts; ++part) {
        std::inplace_merge(places.begin(), places.begin() + partStart[static_cast<size_t>(part)],
            places.begin() + partStart[static_cast<size_t>(part) + 1]);
    }
    if (stop.load())
        return nullptr;

    index->m_byName.resize(static_cast<size_t>(count));
    index->m_sameNameAsBefore.resize(static_cast<size_t>(count));
    for (size_t i = 0; i < places.size(); ++i) {
        index->m_byName[i] = places[i].group;
        index->m_sameNameAsBefore[i] = i > 0 && places[i].sameKey(places[i - 1]);
    }
    return index;
}

std::optional<std::vector<quint32>> ResultIndex::order(const QList<DuplicateGroupPtr>& groups, quint64 key,
    bool descending, const FileSet& chosen, const std::atomic<bool>& stop) const {
    const auto count = static_cast<size_t>(size());
    std::vector<quint32> out(count);
    std::iota(out.begin(), out.end(), quint32(0));
    switch (key) {
    case 0: // name
        if (!descending)
            return m_byName;
        // Descending keeps equal names in the result's order: the runs of equal names, last first.
        out.clear();
        for (size_t end = count; end > 0;) {
            size_t start = end - 1;
            while (start > 0 && m_sameNameAsBefore[start])
                --start;
            out.insert(out.end(), m_byName.begin() + static_cast<qsizetype>(start),
                m_byName.begin() + static_cast<qsizetype>(end));
            end = start;
        }
        return out;
    case 3: // type, a key-based sort: ties keep their order both ways
        std::stable_sort(out.begin(), out.end(), [this, descending](quint32 a, quint32 b) {
            return descending ? m_types[b] < m_types[a] : m_types[a] < m_types[b];
        });
        return out;
    case 1:
    case 2:
    case 4:
        break;
    default:
        return std::nullopt;
    }
    std::vector<quint64> keys(count);
    for (size_t g = 0; g < count; ++g) {
        if (g % kStopStride == 0 && stop.load(std::memory_order_relaxed))
            return std::nullopt;
        const duplicates& group = *groups.at(static_cast<qsizetype>(g));
        const auto files = static_cast<quint64>(group.listAll().size());
        if (key == 1) {
            keys[g] = static_cast<quint64>(group.sizeFile()) * files;
        } else if (key == 2) {
            keys[g] = files;
        } else {
            keys[g] = static_cast<quint64>(chosen.countOf(group.listAll()));
        }
    }
    // The two-outcome comparison the program has always used for these keys: "the left goes after
    // the right" when descending differs from (right < left), else "the same". Applied by a stable
    // sort it reverses equal keys when descending.
    std::stable_sort(out.begin(), out.end(),
        [&keys, descending](quint32 a, quint32 b) { return descending != (keys[a] < keys[b]); });
    return out;
}
