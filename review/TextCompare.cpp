#include "review/TextCompare.h"

#include <QList>
#include <algorithm>

namespace TextCompare {

namespace {

// Full case foldings that canonical decomposition followed by simple folding does not already
// give: the sharp s and the Latin and Armenian ligatures, which fold to more than one letter.
struct Expansion {
    char32_t from;
    char32_t to[3];
};

constexpr Expansion kExpansions[] = {
    { 0x00DF, { 's', 's', 0 } },
    { 0x1E9E, { 's', 's', 0 } },
    { 0x0149, { 0x02BC, 'n', 0 } },
    { 0x1E9A, { 'a', 0x02BE, 0 } },
    { 0x0587, { 0x0565, 0x0582, 0 } },
    { 0xFB00, { 'f', 'f', 0 } },
    { 0xFB01, { 'f', 'i', 0 } },
    { 0xFB02, { 'f', 'l', 0 } },
    { 0xFB03, { 'f', 'f', 'i' } },
    { 0xFB04, { 'f', 'f', 'l' } },
    { 0xFB05, { 's', 't', 0 } },
    { 0xFB06, { 's', 't', 0 } },
    { 0xFB13, { 0x0574, 0x0576, 0 } },
    { 0xFB14, { 0x0574, 0x0565, 0 } },
    { 0xFB15, { 0x0574, 0x056B, 0 } },
    { 0xFB16, { 0x057E, 0x0576, 0 } },
    { 0xFB17, { 0x0574, 0x056D, 0 } },
};

// Hands each folded code point of the text to `sink`, in order.
template <typename Sink> void forEachFoldedCodePoint(const QString& text, const Sink& sink) {
    const QString simple = text.normalized(QString::NormalizationForm_D).toCaseFolded();
    for (qsizetype i = 0; i < simple.size(); ++i) {
        char32_t c = simple.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < simple.size() && simple.at(i + 1).isLowSurrogate()) {
            c = QChar::surrogateToUcs4(simple.at(i).unicode(), simple.at(i + 1).unicode());
            ++i;
        }
        // Every expansion starts above U+00DE.
        const auto* hit = c < 0xDF ? std::end(kExpansions)
                                   : std::find_if(std::begin(kExpansions), std::end(kExpansions),
                                       [c](const Expansion& e) { return e.from == c; });
        if (hit == std::end(kExpansions)) {
            sink(c);
            continue;
        }
        for (const char32_t part : hit->to) {
            if (part != 0)
                sink(part);
        }
    }
}

QList<char32_t> foldedCodePoints(const QString& text) {
    QList<char32_t> out;
    out.reserve(text.size());
    forEachFoldedCodePoint(text, [&out](char32_t c) { out.append(c); });
    return out;
}

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else if (c < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

} // namespace

QList<char32_t> caseInsensitiveKey(const QString& text) {
    return foldedCodePoints(text);
}

void appendCaseInsensitiveKey(std::string& out, const QString& text) {
    forEachFoldedCodePoint(text, [&out](char32_t c) { appendUtf8(out, c); });
}

const std::string& KeyFolder::keyOf(char32_t c) {
    const auto found = m_keys.find(c);
    if (found != m_keys.end())
        return found->second;
    std::string key;
    bool startsWithMark = false;
    forEachFoldedCodePoint(QString::fromUcs4(&c, 1), [&](char32_t folded) {
        startsWithMark = startsWithMark || (key.empty() && QChar::combiningClass(folded) != 0);
        appendUtf8(key, folded);
    });
    return m_keys.emplace(c, startsWithMark ? std::string() : std::move(key)).first->second;
}

void KeyFolder::append(std::string& out, const QString& text) {
    // Decomposing character by character gives the decomposition of the whole text as long as no
    // combining mark follows another character: only then could the marks need reordering.
    const size_t start = out.size();
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t c = text.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            c = QChar::surrogateToUcs4(text.at(i).unicode(), text.at(i + 1).unicode());
            ++i;
        }
        if (c < 0x80) {
            out.push_back(static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c));
            continue;
        }
        const std::string* key = QChar::combiningClass(c) == 0 ? &keyOf(c) : nullptr;
        if (!key || key->empty()) {
            out.resize(start);
            appendCaseInsensitiveKey(out, text);
            return;
        }
        out += *key;
    }
}

int caseInsensitiveCompare(const QString& a, const QString& b) {
    const QList<char32_t> left = foldedCodePoints(a);
    const QList<char32_t> right = foldedCodePoints(b);
    const auto order = std::lexicographical_compare_three_way(left.begin(), left.end(), right.begin(), right.end());
    if (order < 0)
        return -1;
    return order > 0 ? 1 : 0;
}

bool containsIgnoringCase(const QString& haystack, const QString& needle) {
    return containsFolded(haystack, foldedNeedle(needle));
}

QString foldedNeedle(const QString& needle) {
    return needle.normalized(QString::NormalizationForm_C).toCaseFolded();
}

bool containsFolded(const QString& haystack, const QString& foldedNeedle) {
    if (foldedNeedle.isEmpty())
        return false;
    // Plain ASCII texts need no normalisation; folding them is lower-casing.
    bool ascii = true;
    for (const QChar c : haystack) {
        if (c.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    const QString folded
        = ascii ? haystack.toLower() : haystack.normalized(QString::NormalizationForm_C).toCaseFolded();
    return folded.contains(foldedNeedle, Qt::CaseSensitive);
}

} // namespace TextCompare
