#pragma once

#include <QByteArray>
#include <QList>
#include <cstdio>

struct ScanState;

// Writes a finished scan's groups for the command line. JSON keeps every path openable: names that
// are not valid UTF-8 carry each undecodable byte as a "\udcXX" escape, which Python's
// os.fsencode turns back into the original bytes. Text writes paths through textPath(); CSV
// writes the path bytes as they are, quoted where needed.
namespace ResultWriter {

enum class Format { Text, Json, Csv };
enum class Source {
    FolderScan, // duplicateMainArray and its figures
    ListScan, // the group dictionaries of the list and photo-library scans
};

// Writes to `out` as it goes, so that a large result is never held as text in full.
void write(const ScanState& state, Source source, Format format, std::FILE* out);

// A byte path as every text line of the command line shows it: one line, nothing a terminal acts
// on, and reversible to the exact bytes. A backslash is written "\\", tab, line feed and carriage
// return "\t", "\n" and "\r"; every other control character (also U+0080 to U+009F) and every
// byte that is not part of valid UTF-8 is written "\xHH" (the byte, in lower-case hex).
QByteArray textPath(const QByteArray& path);
// A JSON string literal for a byte path.
QByteArray jsonString(const QByteArray& bytes);
// "1 group", "2 groups": a count with its noun in the right number.
QByteArray counted(qsizetype count, const char* one, const char* many);
// "2026-11-21T10:00:00.123Z"
QByteArray isoUtc(qint64 nanosecondsSinceEpoch);

} // namespace ResultWriter
