#include "removal/Journal.h"

#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_map>

namespace {

QByteArray decoded(const QJsonValue& value) {
    return QByteArray::fromBase64(value.toString().toLatin1());
}

// Makes the folder and its missing parents, each 0700.
bool makeFolders(const QByteArray& path) {
    struct stat st;
    if (::stat(path.constData(), &st) == 0)
        return S_ISDIR(st.st_mode);
    const QByteArray parent = PathBytes::deletingLastPathComponent(path);
    if (!parent.isEmpty() && parent != path && !makeFolders(parent))
        return false;
    return ::mkdir(path.constData(), 0700) == 0 || errno == EEXIST;
}

// The journal is flushed to the disk at most this often while a removal runs. A record written
// with write(2) is the kernel's at once, so a crash of the program loses nothing; only a power cut
// or a crash of the system can lose what was not flushed yet: the records of the last fraction of a
// second. On ext4's default ordered mode those bytes mostly reach the disk before or with the
// renames made after them, so the actions of that fraction of a second are lost with them; where
// they are not, an item is left acted on without its record, which costs its undo but never a
// content: the kept copy stays, and a trashed item keeps its .trashinfo. One flush per item (a
// disk's full round trip) would cost more than everything else a removal does for a small file.
constexpr qint64 kFlushIntervalMs = 200;

qint64 monotonicMs() {
    timespec now {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

// The time now in UTC as "yyyy-MM-ddTHH:mm:ss.zzzZ" (what Qt::ISODateWithMs reads back). The part
// up to the second is formatted once a second, not once per record.
QByteArray isoTimeNow() {
    timespec now {};
    ::clock_gettime(CLOCK_REALTIME, &now);
    thread_local time_t second = -1;
    thread_local QByteArray upToSecond;
    if (now.tv_sec != second) {
        second = now.tv_sec;
        tm parts {};
        ::gmtime_r(&now.tv_sec, &parts);
        char text[32];
        const int length = std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.", parts.tm_year + 1900,
            parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
        upToSecond = QByteArray(text, length);
    }
    const int ms = static_cast<int>(now.tv_nsec / 1000000);
    const char rest[] = { char('0' + ms / 100), char('0' + ms / 10 % 10), char('0' + ms % 10), 'Z' };
    return upToSecond + QByteArrayView(rest, sizeof rest);
}

} // namespace

namespace {

bool actedOn(const Journal::Entry& entry) {
    return entry.state == Journal::Entry::State::Done || entry.state == Journal::Entry::State::Undone;
}

} // namespace

qsizetype Journal::Removal::doneCount() const {
    return std::count_if(entries.cbegin(), entries.cend(), actedOn);
}

qint64 Journal::Removal::doneBytes() const {
    qint64 bytes = 0;
    for (const Entry& entry : entries) {
        if (actedOn(entry))
            bytes += entry.size;
    }
    return bytes;
}

bool Journal::Removal::hasDone() const {
    return std::any_of(entries.cbegin(), entries.cend(), [](const Entry& e) { return e.state == Entry::State::Done; });
}

bool Journal::Removal::undone() const {
    const bool putBack
        = std::any_of(entries.cbegin(), entries.cend(), [](const Entry& e) { return e.state == Entry::State::Undone; });
    return putBack && std::none_of(entries.cbegin(), entries.cend(), [](const Entry& e) {
        return e.state == Entry::State::Done && e.action != QLatin1String("delete");
    });
}

QByteArray Journal::folder() {
    QByteArray dataHome = qgetenv("XDG_DATA_HOME");
    if (!dataHome.startsWith('/'))
        dataHome = qgetenv("HOME") + "/.local/share";
    return PathBytes::normalized(dataHome, "/") + "/twinsift/journal";
}

Journal::~Journal() {
    if (m_fd < 0)
        return;
    flush();
    ::close(m_fd);
}

void Journal::flush() {
    if (m_fd < 0 || !m_unsynced)
        return;
    ::fdatasync(m_fd);
    m_unsynced = false;
    m_syncedAtMs = monotonicMs();
}

bool Journal::append(const QByteArray& line) {
    if (m_fd < 0 || FileSystem::writeAll(m_fd, line) != 0)
        return false;
    m_unsynced = true;
    return true;
}

namespace {

// A record as one line of compact JSON, made in one buffer (a removal writes two per item). Keys
// and the values given here need no escaping: numbers, words, hex digests, base64 and ISO times.
class Line {
public:
    Line() {
        m_line.reserve(768);
        m_line += '{';
    }
    Line& number(const char* key, qint64 value) {
        field(key);
        appendNumber(value);
        return *this;
    }
    // A number written as a string: JSON readers take integers as doubles, which lose nanoseconds.
    Line& quotedNumber(const char* key, qint64 value) {
        field(key);
        m_line += '"';
        appendNumber(value);
        m_line += '"';
        return *this;
    }
    Line& text(const char* key, QByteArrayView value) {
        field(key);
        m_line += '"';
        m_line.append(value.data(), static_cast<size_t>(value.size()));
        m_line += '"';
        return *this;
    }
    // The bytes in base64, as QByteArray::toBase64() writes them and fromBase64() reads them.
    Line& base64(const char* key, QByteArrayView bytes) {
        static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        field(key);
        m_line += '"';
        const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
        const size_t size = static_cast<size_t>(bytes.size());
        size_t i = 0;
        for (; i + 3 <= size; i += 3) {
            const unsigned value = unsigned(in[i]) << 16 | unsigned(in[i + 1]) << 8 | in[i + 2];
            const char quad[]
                = { digits[value >> 18], digits[(value >> 12) & 63], digits[(value >> 6) & 63], digits[value & 63] };
            m_line.append(quad, 4);
        }
        if (i < size) {
            const bool two = i + 1 < size;
            const unsigned value = unsigned(in[i]) << 16 | (two ? unsigned(in[i + 1]) << 8 : 0u);
            const char quad[]
                = { digits[value >> 18], digits[(value >> 12) & 63], two ? digits[(value >> 6) & 63] : '=', '=' };
            m_line.append(quad, 4);
        }
        m_line += '"';
        return *this;
    }
    QByteArray done() {
        m_line += "}\n";
        return QByteArray::fromRawData(m_line.data(), static_cast<qsizetype>(m_line.size()));
    }

private:
    void field(const char* key) {
        m_line += m_line.size() > 1 ? ",\"" : "\"";
        m_line += key;
        m_line += "\":";
    }
    void appendNumber(qint64 value) {
        char text[24];
        m_line.append(text, static_cast<size_t>(std::to_chars(text, text + sizeof text, value).ptr - text));
    }
    std::string m_line;
};

} // namespace

qint64 Journal::begin(const Entry& entry) {
    if (m_fd < 0) {
        const QByteArray dir = folder();
        if (!makeFolders(dir)) {
            Log::line(QStringLiteral("journal folder %1 cannot be made").arg(PathBytes::display(dir)));
            return -1;
        }
        const QByteArray name
            = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")).toLatin1() + '-'
            + QByteArray::number(::getpid());
        // Two removals begun within the same millisecond get numbered names.
        for (int n = 0; m_fd < 0 && n < 100; ++n) {
            m_file = dir + '/' + name + '-' + QByteArray::number(n).rightJustified(2, '0') + ".journal";
            m_fd = ::open(m_file.constData(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600);
            if (m_fd < 0 && errno != EEXIST)
                break;
        }
        if (m_fd < 0) {
            Log::line(QStringLiteral("journal %1 cannot be written").arg(PathBytes::display(m_file)));
            return -1;
        }
    }
    Line line;
    line.number("seq", m_next)
        .text("state", "begin")
        .text("time", isoTimeNow())
        .text("action", entry.action.toLatin1())
        .base64("path", entry.path)
        .number("size", entry.size)
        .quotedNumber("mtime", entry.modifiedNs)
        .number("mode", static_cast<qint64>(entry.mode))
        .text("digest", entry.digest)
        .base64("kept", entry.kept);
    if (!append(line.done()))
        return -1;
    // The record is the kernel's before the item is touched; see kFlushIntervalMs for the disk.
    if (monotonicMs() - m_syncedAtMs >= kFlushIntervalMs)
        flush();
    return m_next++;
}

void Journal::done(qint64 seq, const QByteArray& leftBehind, const QByteArray& trashInfo) {
    Line line;
    line.number("seq", seq).text("state", "done").base64("left", leftBehind).base64("info", trashInfo);
    append(line.done());
}

void Journal::failed(qint64 seq, const QString& reason) {
    const QJsonObject record { { QStringLiteral("seq"), seq }, { QStringLiteral("state"), QStringLiteral("failed") },
        { QStringLiteral("reason"), reason } };
    append(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
}

bool Journal::markUndone(const QByteArray& file, qint64 seq) {
    const int fd = ::open(file.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (fd < 0)
        return false;
    const QJsonObject record { { QStringLiteral("seq"), seq }, { QStringLiteral("state"), QStringLiteral("undone") } };
    const bool ok = FileSystem::writeAll(fd, QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n') == 0
        && ::fdatasync(fd) == 0;
    ::close(fd);
    return ok;
}

std::optional<Journal::Removal> Journal::read(const QByteArray& file) {
    QFile in(QString::fromLocal8Bit(file));
    if (!in.open(QIODevice::ReadOnly))
        return std::nullopt;
    Removal removal;
    removal.file = file;
    removal.id = QString::fromLocal8Bit(PathBytes::lastPathComponent(file));
    removal.id.chop(QStringLiteral(".journal").size());
    QList<Entry>& entries = removal.entries;
    // Each item's place in `entries`, so that a later line finds its item at once.
    std::unordered_map<qint64, qsizetype> indexOf;
    while (!in.atEnd()) {
        const QByteArray line = in.readLine().trimmed();
        if (line.isEmpty())
            continue;
        // A line cut short by a crash ends the journal.
        const QJsonObject record = QJsonDocument::fromJson(line).object();
        if (record.isEmpty())
            break;
        const qint64 seq = record.value(QStringLiteral("seq")).toInteger();
        const QString state = record.value(QStringLiteral("state")).toString();
        if (state == QLatin1String("begin")) {
            Entry entry;
            entry.seq = seq;
            entry.action = record.value(QStringLiteral("action")).toString();
            entry.path = decoded(record.value(QStringLiteral("path")));
            entry.size = record.value(QStringLiteral("size")).toInteger();
            entry.modifiedNs = record.value(QStringLiteral("mtime")).toString().toLongLong();
            entry.mode = static_cast<uint>(record.value(QStringLiteral("mode")).toInteger());
            entry.digest = record.value(QStringLiteral("digest")).toString().toLatin1();
            entry.kept = decoded(record.value(QStringLiteral("kept")));
            if (!removal.started.isValid())
                removal.started
                    = QDateTime::fromString(record.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs);
            indexOf[seq] = entries.size();
            entries.append(entry);
            continue;
        }
        const auto found = indexOf.find(seq);
        if (found == indexOf.end())
            continue;
        Entry& entry = entries[found->second];
        if (state == QLatin1String("done")) {
            entry.state = Entry::State::Done;
            entry.leftBehind = decoded(record.value(QStringLiteral("left")));
            entry.trashInfo = decoded(record.value(QStringLiteral("info")));
        } else if (state == QLatin1String("failed")) {
            entry.state = Entry::State::Failed;
        } else if (state == QLatin1String("undone")) {
            entry.state = Entry::State::Undone;
        }
    }
    return removal;
}

QList<Journal::Removal> Journal::list() {
    QList<Removal> removals;
    const QDir dir(QString::fromLocal8Bit(folder()));
    QStringList names = dir.entryList({ QStringLiteral("*.journal") }, QDir::Files, QDir::Name);
    for (const QString& name : std::as_const(names)) {
        if (std::optional<Removal> removal = read(QFile::encodeName(dir.filePath(name))))
            removals.append(*removal);
    }
    return removals;
}
