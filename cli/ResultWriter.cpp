#include "cli/ResultWriter.h"

#include "base/ByteCountFormatter.h"
#include "base/PathBytes.h"
#include "engine/ScanState.h"

#include <QDateTime>

namespace ResultWriter {

namespace {

// One member row, whichever list model it comes from.
struct Row {
    QByteArray path;
    qint64 dateNs;
};

struct Group {
    QByteArray type; // JSON value: a number, a string literal or null
    QByteArray typeText; // for text and CSV
    qint64 size;
    QByteArray original;
    QList<Row> members;
};

struct Summary {
    qsizetype groupCount;
    qint64 totalCount;
    qint64 totalDuplicateCount;
    qint64 wastedSpace;
};

QByteArray categoryName(int type) {
    switch (type) {
    case 20:
        return "Folder";
    case 30:
        return "Archive";
    case 40:
        return "Text";
    case 50:
        return "Photo";
    case 60:
        return "Media";
    default:
        return "Other";
    }
}

Summary summaryOf(const ScanState& state, Source source) {
    if (source == Source::FolderScan)
        return { state.duplicateMainArray.size(), state.totalCount,
            static_cast<qint64>(state.totalDuplicateCount.load()),
            static_cast<qint64>(state.wastedSpaceDuplicates.load()) };
    return { state.DuplicateFileFolderArray.size(), state.totalCount, state.totalDuplicateCountFolder,
        state.DuplicateWastedSpace };
}

// One group at a time, whichever list it comes from: a result of a million files is never copied
// whole.
Group groupAt(const ScanState& state, Source source, qsizetype index) {
    Group out;
    if (source == Source::FolderScan) {
        const DuplicateGroupPtr& group = state.duplicateMainArray[index];
        out.type = group->type() ? QByteArray::number(*group->type()) : QByteArrayLiteral("null");
        out.typeText = group->type() ? categoryName(*group->type()) : QByteArray();
        out.size = group->sizeFile();
        out.original = group->original();
        out.members.reserve(group->listAll().size());
        for (const DuplicateFilePtr& file : group->listAll())
            out.members.append({ file->urlFile(), file->dateFileNs() });
    } else {
        const GroupDictionary& group = state.DuplicateFileFolderArray[index];
        out.type = group.original.type ? jsonString(group.original.type->toUtf8()) : QByteArrayLiteral("null");
        out.typeText = group.original.type ? group.original.type->toUtf8() : QByteArray();
        out.size = group.original.FileSize;
        out.original = group.original.url;
        out.members.reserve(group.SameFileList.size());
        for (const FileDictionary& file : group.SameFileList)
            out.members.append({ file.url, file.dateNs });
    }
    return out;
}

// Collects the text and hands it on in pieces of about a megabyte.
class Sink {
public:
    explicit Sink(std::FILE* file)
        : m_file(file) { }
    ~Sink() { write(); }
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;

    QByteArray& text() { return m_text; }
    void spill() {
        if (m_text.size() >= kPiece)
            write();
    }

private:
    static constexpr qsizetype kPiece = 1 << 20;
    void write() {
        std::fwrite(m_text.constData(), 1, static_cast<size_t>(m_text.size()), m_file);
        m_text.clear();
    }

    std::FILE* m_file;
    QByteArray m_text;
};

void writeJson(const ScanState& state, Source source, Sink& sink) {
    const Summary summary = summaryOf(state, source);
    QByteArray& out = sink.text();
    out += "{\"groups\":[";
    for (qsizetype g = 0; g < summary.groupCount; ++g) {
        const Group group = groupAt(state, source, g);
        if (g > 0)
            out += ',';
        out += "{\"type\":" + group.type + ",\"size\":" + QByteArray::number(group.size)
            + ",\"original\":" + jsonString(group.original) + ",\"members\":[";
        for (qsizetype m = 0; m < group.members.size(); ++m) {
            if (m > 0)
                out += ',';
            out += "{\"path\":" + jsonString(group.members[m].path) + ",\"created\":\""
                + isoUtc(group.members[m].dateNs) + "\"}";
        }
        out += "]}";
        sink.spill();
    }
    out += "],\"totalCount\":" + QByteArray::number(summary.totalCount)
        + ",\"totalDuplicateCount\":" + QByteArray::number(summary.totalDuplicateCount)
        + ",\"wastedSpaceDuplicates\":" + QByteArray::number(summary.wastedSpace) + "}\n";
}

QByteArray csvField(const QByteArray& value) {
    if (!value.contains(',') && !value.contains('"') && !value.contains('\n') && !value.contains('\r'))
        return value;
    QByteArray quoted = value;
    quoted.replace("\"", "\"\"");
    return '"' + quoted + '"';
}

void writeCsv(const ScanState& state, Source source, Sink& sink) {
    const Summary summary = summaryOf(state, source);
    QByteArray& out = sink.text();
    out += "group,type,size,original,path,created\n";
    for (qsizetype g = 0; g < summary.groupCount; ++g) {
        const Group group = groupAt(state, source, g);
        for (const Row& row : group.members) {
            out += QByteArray::number(g + 1) + ',' + csvField(group.typeText) + ',' + QByteArray::number(group.size)
                + ',' + csvField(group.original) + ',' + csvField(row.path) + ',' + isoUtc(row.dateNs) + '\n';
        }
        sink.spill();
    }
}

void writeText(const ScanState& state, Source source, Sink& sink) {
    const Summary summary = summaryOf(state, source);
    QByteArray& out = sink.text();
    for (qsizetype g = 0; g < summary.groupCount; ++g) {
        const Group group = groupAt(state, source, g);
        out += "# " + QByteArray::number(group.members.size()) + " copies of "
            + ByteCountFormatter::decimal(group.size).toUtf8();
        if (!group.typeText.isEmpty())
            out += " (" + group.typeText + ')';
        out += '\n';
        for (const Row& row : group.members)
            out += textPath(row.path) + '\n';
        out += '\n';
        sink.spill();
    }
    out += "# " + counted(summary.groupCount, "group", "groups") + ", "
        + counted(summary.totalDuplicateCount, "duplicate", "duplicates") + " taking "
        + ByteCountFormatter::decimal(summary.wastedSpace).toUtf8() + ", "
        + ByteCountFormatter::grouped(summary.totalCount).toUtf8() + " items scanned\n";
}

} // namespace

QByteArray counted(qsizetype count, const char* one, const char* many) {
    return QByteArray::number(count) + ' ' + (count == 1 ? one : many);
}

namespace {

// The length of the valid UTF-8 sequence at `at`, or 0 when the byte there does not start one
// (a stray continuation byte, a cut-off or overlong sequence, a surrogate or a value past U+10FFFF).
qsizetype utf8SequenceLength(const QByteArray& bytes, qsizetype at) {
    const auto byte = [&bytes](qsizetype i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned char lead = byte(at);
    qsizetype length;
    char32_t value;
    if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
        value = lead & 0x1f;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        value = lead & 0x0f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        value = lead & 0x07;
    } else {
        return 0;
    }
    if (at + length > bytes.size())
        return 0;
    for (qsizetype i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xc0) != 0x80)
            return 0;
        value = (value << 6) | (byte(at + i) & 0x3f);
    }
    const char32_t smallest = length == 2 ? 0x80 : length == 3 ? 0x800 : 0x10000;
    if (value < smallest || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff))
        return 0;
    return length;
}

void appendByteEscape(QByteArray& out, unsigned char byte) {
    static const char digits[] = "0123456789abcdef";
    out += "\\x";
    out += digits[byte >> 4];
    out += digits[byte & 0xf];
}

} // namespace

QByteArray jsonString(const QByteArray& bytes) {
    static const char digits[] = "0123456789abcdef";
    QByteArray out;
    out.reserve(bytes.size() + 2);
    out += '"';
    const char* data = bytes.constData();
    for (qsizetype i = 0, plain = 0; i <= bytes.size(); ++i) {
        // Runs of bytes that stand for themselves are copied in one step.
        const unsigned char c = i < bytes.size() ? static_cast<unsigned char>(data[i]) : 0;
        if (i < bytes.size() && c >= 0x20 && c < 0x80 && c != '"' && c != '\\')
            continue;
        out.append(data + plain, i - plain);
        plain = i + 1;
        if (i == bytes.size())
            break;
        if (c >= 0x80) {
            const qsizetype length = utf8SequenceLength(bytes, i);
            if (length > 0) {
                // A valid sequence is its own JSON text.
                out.append(data + i, length);
                i += length - 1;
            } else {
                // A byte that is not UTF-8 is the lone surrogate U+DC00 + byte, written as an escape.
                out += "\\udc";
                out += digits[c >> 4];
                out += digits[c & 0xf];
            }
            plain = i + 1;
            continue;
        }
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            out += "\\u00";
            out += digits[c >> 4];
            out += digits[c & 0xf];
            break;
        }
    }
    out += '"';
    return out;
}

QByteArray textPath(const QByteArray& path) {
    QByteArray out;
    out.reserve(path.size());
    for (qsizetype i = 0; i < path.size();) {
        const unsigned char c = static_cast<unsigned char>(path[i]);
        if (c < 0x80) {
            if (c == '\\')
                out += "\\\\";
            else if (c == '\t')
                out += "\\t";
            else if (c == '\n')
                out += "\\n";
            else if (c == '\r')
                out += "\\r";
            else if (c < 0x20 || c == 0x7f)
                appendByteEscape(out, c);
            else
                out += static_cast<char>(c);
            ++i;
            continue;
        }
        const qsizetype length = utf8SequenceLength(path, i);
        // U+0080 to U+009F (0xc2 0x80 to 0xc2 0x9f) are control characters too: a terminal may act on them.
        const bool control = length == 2 && c == 0xc2 && static_cast<unsigned char>(path[i + 1]) < 0xa0;
        if (length == 0) {
            appendByteEscape(out, c);
            ++i;
        } else if (control) {
            appendByteEscape(out, c);
            appendByteEscape(out, static_cast<unsigned char>(path[i + 1]));
            i += 2;
        } else {
            out += path.mid(i, length);
            i += length;
        }
    }
    return out;
}

QByteArray isoUtc(qint64 nanosecondsSinceEpoch) {
    const qint64 ms = nanosecondsSinceEpoch / 1000000;
    // Dates from 1970 to 9999 are written directly: a result lists many thousands of them.
    constexpr qint64 kEndOf9999 = 253402300800000;
    if (ms < 0 || ms >= kEndOf9999) {
        const QDateTime time = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
        return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")).toLatin1() + 'Z';
    }
    // Days to the civil date (Howard Hinnant's algorithm, for days from 1970 on).
    const qint64 days = ms / 86400000;
    const qint64 inDay = ms % 86400000;
    const qint64 z = days + 719468;
    const qint64 era = z / 146097;
    const qint64 dayOfEra = z - era * 146097;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 mp = (5 * dayOfYear + 2) / 153;
    const qint64 day = dayOfYear - (153 * mp + 2) / 5 + 1;
    const qint64 month = mp < 10 ? mp + 3 : mp - 9;
    const qint64 year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    char text[25];
    auto digits = [&text](int at, qint64 value, int count) {
        for (int i = count - 1; i >= 0; --i, value /= 10)
            text[at + i] = static_cast<char>('0' + value % 10);
    };
    digits(0, year, 4);
    text[4] = '-';
    digits(5, month, 2);
    text[7] = '-';
    digits(8, day, 2);
    text[10] = 'T';
    digits(11, inDay / 3600000, 2);
    text[13] = ':';
    digits(14, inDay / 60000 % 60, 2);
    text[16] = ':';
    digits(17, inDay / 1000 % 60, 2);
    text[19] = '.';
    digits(20, inDay % 1000, 3);
    text[23] = 'Z';
    return QByteArray(text, 24);
}

void write(const ScanState& state, Source source, Format format, std::FILE* out) {
    Sink sink(out);
    switch (format) {
    case Format::Json:
        writeJson(state, source, sink);
        return;
    case Format::Csv:
        writeCsv(state, source, sink);
        return;
    case Format::Text:
        break;
    }
    writeText(state, source, sink);
}

} // namespace ResultWriter
