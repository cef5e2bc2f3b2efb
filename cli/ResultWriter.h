#pragma once

#include <QByteArray>
#include <QList>

struct ScanState;

// Writes a finished scan's groups for the command line. JSON keeps every path openable: names that
// are not valid UTF-8 carry each undecodable byte as a "\udcXX" escape, which Python's
// os.fsencode turns back into the original bytes. Text and CSV write the path bytes as they are.
namespace ResultWriter {

enum class Format { Text, Json, Csv };
enum class Source {
    FolderScan, // duplicateMainArray and its figures
    ListScan, // the group dictionaries of the list and photo-library scans
};

QByteArray write(const ScanState& state, Source source, Format format);

// A JSON string literal for a byte path.
QByteArray jsonString(const QByteArray& bytes);
// "1 group", "2 groups": a count with its noun in the right number.
QByteArray counted(qsizetype count, const char* one, const char* many);
// "2026-11-21T10:00:00.123Z"
QByteArray isoUtc(qint64 nanosecondsSinceEpoch);

} // namespace ResultWriter
