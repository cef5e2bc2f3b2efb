#include "review/ResultIndex.h"

#include "base/PathBytes.h"
#include "review/TextCompare.h"

#include <algorithm>
#include <cstring>
#include <numeric>

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

// Whether the ASCII text contains the needle (lower case, ASCII), ignoring case.
bool containsAsciiIgnoringCase(const char* text, qsizetype size, const QByteArray& needle) {
    const qsizetype length = needle.size();
    const char first = needle.at(0);
    const char firstUpper = first >= 'a' && first <= 'z' ? static_cast<char>(first - 'a' + 'A') : first;
    for (qsizetype i = 0; i + length <= size; ++i) {
        if (text[i] != first && text[i] != firstUpper)
            continue;
        qsizetype j = 1;
        while (j < length && lowered(text[i + j]) == needle.at(j))
            ++j;
        if (j == length)
            return true;
    }
    return false;
}

// The key the name sort compares, as UTF-8: the case-folded code points of the displayed name.
// UTF-8 keeps the order of code points, so comparing these bytes orders names as comparing their
// folded code points does; a plain ASCII name folds to its lower case.
void appendNameKey(QByteArray& keys, const QByteArray& name) {
    if (isAscii(name.constData(), name.size())) {
        const qsizetype start = keys.size();
        keys.append(name);
        for (qsizetype i = start; i < keys.size(); ++i)
            keys[i] = lowered(keys.at(i));
        return;
    }
    const QList<char32_t> folded = TextCompare::caseInsensitiveKey(PathBytes::display(name));
    keys.append(QString::fromUcs4(folded.constData(), folded.size()).toUtf8());
}

} // namespace

std::shared_ptr<const ResultIndex> ResultIndex::make(
    const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop) {
    auto index = std::make_shared<ResultIndex>();
    const auto count = static_cast<size_t>(groups.size());
    index->m_types.reserve(count);

    QByteArray keys;
    std::vector<qsizetype> keyStart;
    keyStart.reserve(count + 1);
    for (qsizetype g = 0; g < groups.size(); ++g) {
        if (g % kStopStride == 0 && stop.load(std::memory_order_relaxed))
            return nullptr;
        const duplicates& group = *groups.at(g);
        index->m_types.push_back(group.type());
        keyStart.push_back(keys.size());
        appendNameKey(keys, PathBytes::lastPathComponent(group.original()));
        const QList<DuplicateFilePtr>& files = group.listAll();
        for (qsizetype f = 0; f < files.size(); ++f) {
            const QByteArray& path = files.at(f)->urlFile();
            if (isAscii(path.constData(), path.size()))
                continue;
            const QString text = PathBytes::display(path).normalized(QString::NormalizationForm_C).toCaseFolded();
            index->m_foldedAt.push_back(
                { static_cast<quint32>(g), static_cast<quint32>(f), static_cast<quint64>(index->m_folded.size()) });
            index->m_folded.append(text.toUtf8());
            index->m_folded.append('\0');
        }
    }
    keyStart.push_back(keys.size());
    index->m_folded.squeeze();

    const auto keyOf = [&](quint32 g) {
        return std::string_view(keys.constData() + keyStart[g], static_cast<size_t>(keyStart[g + 1] - keyStart[g]));
    };
    index->m_byName.resize(count);
    std::iota(index->m_byName.begin(), index->m_byName.end(), quint32(0));
    std::stable_sort(
        index->m_byName.begin(), index->m_byName.end(), [&](quint32 a, quint32 b) { return keyOf(a) < keyOf(b); });
    index->m_sameNameAsBefore.resize(count);
    for (size_t i = 1; i < count; ++i)
        index->m_sameNameAsBefore[i] = keyOf(index->m_byName[i]) == keyOf(index->m_byName[i - 1]);
    return index;
}

std::optional<std::vector<quint32>> ResultIndex::order(const QList<DuplicateGroupPtr>& groups, quint64 key,
    bool descending, const std::unordered_set<const duplicateFile*>& chosen, const std::atomic<bool>& stop) const {
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
            std::unordered_set<const duplicateFile*> counted;
            for (const DuplicateFilePtr& file : group.listAll()) {
                if (chosen.count(file.get()))
                    counted.insert(file.get());
            }
            keys[g] = counted.size();
        }
    }
    // The two-outcome comparison the program has always used for these keys: "the left goes after
    // the right" when descending differs from (right < left), else "the same". Applied by a stable
    // sort it reverses equal keys when descending.
    std::stable_sort(out.begin(), out.end(),
        [&keys, descending](quint32 a, quint32 b) { return descending != (keys[a] < keys[b]); });
    return out;
}

std::optional<std::vector<bool>> ResultIndex::matching(const QList<DuplicateGroupPtr>& groups,
    const QString& foldedNeedle, const std::vector<bool>* within, const std::atomic<bool>& stop) const {
    if (foldedNeedle.isEmpty())
        return std::nullopt;
    const QByteArray needle = foldedNeedle.toUtf8();
    const bool asciiNeedle = isAscii(needle.constData(), needle.size());
    std::vector<bool> out(static_cast<size_t>(size()));
    size_t folded = 0;
    for (qsizetype g = 0; g < size(); ++g) {
        if (g % kStopStride == 0 && stop.load(std::memory_order_relaxed))
            return std::nullopt;
        if (within && !(*within)[static_cast<size_t>(g)])
            continue;
        while (folded < m_foldedAt.size() && m_foldedAt[folded].group < g)
            ++folded;
        const QList<DuplicateFilePtr>& files = groups.at(g)->listAll();
        bool found = false;
        for (qsizetype f = 0; f < files.size() && !found; ++f) {
            if (folded < m_foldedAt.size() && m_foldedAt[folded].group == g && m_foldedAt[folded].file == f) {
                const char* text = m_folded.constData() + m_foldedAt[folded].offset;
                found = std::string_view(text).find(std::string_view(needle.constData(), needle.size()))
                    != std::string_view::npos;
                ++folded;
            } else if (asciiNeedle) {
                const QByteArray& path = files.at(f)->urlFile();
                found = containsAsciiIgnoringCase(path.constData(), path.size(), needle);
            }
        }
        out[static_cast<size_t>(g)] = found;
    }
    return out;
}
