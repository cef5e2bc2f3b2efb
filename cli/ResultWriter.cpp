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
    QList<Group> groups;
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

Summary collect(const ScanState& state, Source source) {
    Summary summary;
    summary.totalCount = state.totalCount;
    if (source == Source::FolderScan) {
        summary.totalDuplicateCount = static_cast<qint64>(state.totalDuplicateCount.load());
        summary.wastedSpace = static_cast<qint64>(state.wastedSpaceDuplicates.load());
        for (const DuplicateGroupPtr& group : state.duplicateMainArray) {
            Group out;
            out.type = group->type() ? QByteArray::number(*group->type()) : QByteArrayLiteral("null");
            out.typeText = group->type() ? categoryName(*group->type()) : QByteArray();
            out.size = group->sizeFile();
            out.original = group->original();
            for (const DuplicateFilePtr& file : group->listAll())
                out.members.append({ file->urlFile(), file->dateFileNs() });
            summary.groups.append(out);
        }
    } else {
        summary.totalDuplicateCount = state.totalDuplicateCountFolder;
        summary.wastedSpace = state.DuplicateWastedSpace;
        for (const GroupDictionary& group : state.DuplicateFileFolderArray) {
            Group out;
            out.type = group.original.type ? jsonString(group.original.type->toUtf8()) : QByteArrayLiteral("null");
            out.typeText = group.original.type ? group.original.type->toUtf8() : QByteArray();
            out.size = group.original.FileSize;
            out.original = group.original.url;
            for (const FileDictionary& file : group.SameFileList)
                out.members.append({ file.url, file.dateNs });
            summary.groups.append(out);
        }
    }
    return summary;
}

QByteArray writeJson(const Summary& summary) {
    QByteArray out = "{\"groups\":[";
    for (qsizetype g = 0; g < summary.groups.size(); ++g) {
        const Group& group = summary.groups[g];
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
    }
    out += "],\"totalCount\":" + QByteArray::number(summary.totalCount)
        + ",\"totalDuplicateCount\":" + QByteArray::number(summary.totalDuplicateCount)
        + ",\"wastedSpaceDuplicates\":" + QByteArray::number(summary.wastedSpace) + "}\n";
    return out;
}

QByteArray csvField(const QByteArray& value) {
    if (!value.contains(',') && !value.contains('"') && !value.contains('\n') && !value.contains('\r'))
        return value;
    QByteArray quoted = value;
    quoted.replace("\"", "\"\"");
    return '"' + quoted + '"';
}

QByteArray writeCsv(const Summary& summary) {
    QByteArray out = "group,type,size,original,path,created\n";
    for (qsizetype g = 0; g < summary.groups.size(); ++g) {
        const Group& group = summary.groups[g];
        for (const Row& row : group.members) {
            out += QByteArray::number(g + 1) + ',' + csvField(group.typeText) + ',' + QByteArray::number(group.size)
                + ',' + csvField(group.original) + ',' + csvField(row.path) + ',' + isoUtc(row.dateNs) + '\n';
        }
    }
    return out;
}

QByteArray writeText(const Summary& summary) {
    QByteArray out;
    for (const Group& group : summary.groups) {
        out += "# " + QByteArray::number(group.members.size()) + " copies of "
            + ByteCountFormatter::decimal(group.size).toUtf8();
        if (!group.typeText.isEmpty())
            out += " (" + group.typeText + ')';
        out += '\n';
        for (const Row& row : group.members)
            out += textPath(row.path) + '\n';
        out += '\n';
    }
    out += "# " + counted(summary.groups.size(), "group", "groups") + ", "
        + counted(summary.totalDuplicateCount, "duplicate", "duplicates") + " taking "
        + ByteCountFormatter::decimal(summary.wastedSpace).toUtf8() + ", "
        + ByteCountFormatter::grouped(summary.totalCount).toUtf8() + " items scanned\n";
    return out;
}

} // namespace

QByteArray counted(qsizetype count, const char* one, const char* many) {
    return QByteArray::number(count) + ' ' + (count == 1 ? one : many);
}

QByteArray jsonString(const QByteArray& bytes) {
    const QString text = PathBytes::decodeSurrogateEscape(bytes);
    QByteArray out;
    out.reserve(bytes.size() + 2);
    out += '"';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        switch (c) {
        case u'"':
            out += "\\\"";
            continue;
        case u'\\':
            out += "\\\\";
            continue;
        case u'\n':
            out += "\\n";
            continue;
        case u'\r':
            out += "\\r";
            continue;
        case u'\t':
            out += "\\t";
            continue;
        default:
            break;
        }
        if (c < 0x20 || QChar::isLowSurrogate(c)) {
            out += QString::asprintf("\\u%04x", static_cast<unsigned>(c)).toLatin1();
        } else if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1].unicode())) {
            out += text.mid(i, 2).toUtf8();
            ++i;
        } else {
            out += QString(QChar(c)).toUtf8();
        }
    }
    out += '"';
    return out;
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
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(nanosecondsSinceEpoch / 1000000, Qt::UTC);
    return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz")).toLatin1() + 'Z';
}

QByteArray write(const ScanState& state, Source source, Format format) {
    const Summary summary = collect(state, source);
    switch (format) {
    case Format::Json:
        return writeJson(summary);
    case Format::Csv:
        return writeCsv(summary);
    case Format::Text:
        break;
    }
    return writeText(summary);
}

} // namespace ResultWriter
