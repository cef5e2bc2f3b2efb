#pragma once

#include <QList>
#include <QString>
#include <string>
#include <unordered_map>

// The two text comparisons of the result lists.
namespace TextCompare {

// Case-insensitive order without a locale: both texts are canonically decomposed and fully case
// folded (A-Z to a-z, "ß" to "ss"), then compared code point by code point, a proper prefix first.
// No collation and no numeric order: "file10" comes before "file9", "_" before "z".
// Answers -1, 0 or +1.
int caseInsensitiveCompare(const QString& a, const QString& b);
// The code points that comparison works on: comparing two keys lexicographically gives the same
// order, so a sort can fold each text once.
QList<char32_t> caseInsensitiveKey(const QString& text);
// The same key as UTF-8, appended to `out`: UTF-8 keeps the order of code points, so comparing
// these bytes orders texts as comparing their keys does.
void appendCaseInsensitiveKey(std::string& out, const QString& text);

// Makes the same UTF-8 keys for many texts, remembering the key of each character met: a text
// without combining marks (nearly every file name) is keyed one character at a time, and only its
// characters not met before are decomposed and folded. One folder per thread.
class KeyFolder {
public:
    void append(std::string& out, const QString& text);

private:
    // The key of one character; empty when it decomposes to a combining mark first, which needs
    // the whole text to be ordered.
    const std::string& keyOf(char32_t c);
    std::unordered_map<char32_t, std::string> m_keys;
};

// Plain substring test ignoring case: both texts composed (NFC) and case folded. No wildcards; the
// needle is taken as it stands, and an empty needle matches nothing.
bool containsIgnoringCase(const QString& haystack, const QString& needle);
// The needle as containsFolded takes it, folded once for a whole search.
QString foldedNeedle(const QString& needle);
// containsIgnoringCase with a needle already folded by foldedNeedle.
bool containsFolded(const QString& haystack, const QString& foldedNeedle);

} // namespace TextCompare
