#include "review/SearchIndex.h"

#include "base/PathBytes.h"
#include "review/SplitWork.h"

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

} // namespace

std::shared_ptr<const SearchIndex> SearchIndex::make(
    const QList<DuplicateGroupPtr>& groups, const std::atomic<bool>& stop) {
    auto index = std::make_shared<SearchIndex>();
    index->m_groups = groups.size();
    // Each range folds its own paths; the ranges are joined in order afterwards.
    const int parts = SplitWork::partsFor(groups.size());
    std::vector<QByteArray> texts(static_cast<size_t>(parts));
    std::vector<std::vector<Folded>> places(static_cast<size_t>(parts));
    std::atomic<bool> stopped { false };
    SplitWork::run(groups.size(), parts, [&](int part, qsizetype begin, qsizetype end) {
        QByteArray& text = texts[static_cast<size_t>(part)];
        std::vector<Folded>& at = places[static_cast<size_t>(part)];
        for (qsizetype g = begin; g < end; ++g) {
            if ((g - begin) % kStopStride == 0 && stop.load(std::memory_order_relaxed)) {
                stopped = true;
                return;
            }
            const QList<DuplicateFilePtr>& files = groups.at(g)->listAll();
            for (qsizetype f = 0; f < files.size(); ++f) {
                const QByteArray& path = files.at(f)->urlFile();
                if (isAscii(path.constData(), path.size()))
                    continue;
                const QString folded = PathBytes::display(path).normalized(QString::NormalizationForm_C).toCaseFolded();
                at.push_back({ static_cast<quint32>(g), static_cast<quint32>(f), static_cast<quint64>(text.size()) });
                text.append(folded.toUtf8());
                text.append('\0');
            }
        }
    });
    if (stopped)
        return nullptr;
    for (size_t part = 0; part < texts.size(); ++part) {
        const auto shift = static_cast<quint64>(index->m_folded.size());
        for (Folded folded : places[part]) {
            folded.offset += shift;
            index->m_foldedAt.push_back(folded);
        }
        index->m_folded.append(texts[part]);
    }
    index->m_folded.squeeze();
    return index;
}

std::optional<std::vector<bool>> SearchIndex::matching(const QList<DuplicateGroupPtr>& groups,
    const QString& foldedNeedle, const std::vector<bool>* within, const std::atomic<bool>& stop) const {
    if (foldedNeedle.isEmpty())
        return std::nullopt;
    const QByteArray needle = foldedNeedle.toUtf8();
    const bool asciiNeedle = isAscii(needle.constData(), needle.size());
    std::vector<bool> out(static_cast<size_t>(m_groups));
    size_t folded = 0;
    for (qsizetype g = 0; g < m_groups; ++g) {
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
