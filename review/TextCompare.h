#pragma once

#include <QList>
#include <QString>
#include <string>

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

// Plain substring test ignoring case: both texts composed (NFC) and case folded. No wildcards; the
// needle is taken as it stands, and an empty needle matches nothing.
bool containsIgnoringCase(const QString& haystack, const QString& needle);
// The needle as containsFolded takes it, folded once for a whole search.
QString foldedNeedle(const QString& needle);
// containsIgnoringCase with a needle already folded by foldedNeedle.
bool containsFolded(const QString& haystack, const QString& foldedNeedle);

} // namespace TextCompare
