#include "base/PathBytes.h"

#include <QList>
#include <unistd.h>

namespace PathBytes {

QByteArray lastPathComponent(const QByteArray& path) {
    if (path == "/")
        return path;
    const qsizetype slash = path.lastIndexOf('/');
    return slash < 0 ? path : path.mid(slash + 1);
}

QByteArray deletingLastPathComponent(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArray();
    if (slash == 0)
        return QByteArrayLiteral("/");
    return path.left(slash);
}

QByteArray appendingComponent(const QByteArray& folder, const QByteArray& name) {
    if (folder.endsWith('/'))
        return folder + name;
    QByteArray out;
    out.reserve(folder.size() + 1 + name.size());
    out.append(folder).append('/').append(name);
    return out;
}

namespace {

// The bidirectional controls U+061C, U+200E, U+200F, U+202A..U+202E and U+2066..U+2069 end the
// search for an extension just as a space does. `end` is the index just past the character.
bool endsWithBidiControl(QByteArrayView name, qsizetype end) {
    if (end >= 2 && static_cast<uchar>(name[end - 2]) == 0xD8 && static_cast<uchar>(name[end - 1]) == 0x9C)
        return true;
    if (end < 3 || static_cast<uchar>(name[end - 3]) != 0xE2)
        return false;
    const uchar b1 = static_cast<uchar>(name[end - 2]);
    const uchar b2 = static_cast<uchar>(name[end - 1]);
    if (b1 == 0x80)
        return b2 == 0x8E || b2 == 0x8F || (b2 >= 0xAA && b2 <= 0xAE);
    if (b1 == 0x81)
        return b2 >= 0xA6 && b2 <= 0xA9;
    return false;
}

} // namespace

QByteArrayView extensionView(QByteArrayView path) {
    if (path == "/")
        return {};
    const QByteArrayView name = path.sliced(path.lastIndexOf('/') + 1);
    for (qsizetype i = name.size() - 1; i >= 0; --i) {
        const char c = name[i];
        if (c == '.') {
            if (i == 0 || i == name.size() - 1)
                return {};
            return name.sliced(i + 1);
        }
        // A bidirectional control ends in a byte above 0x7F: plain bytes need no further test.
        if (c == ' ' || c == '/' || (static_cast<uchar>(c) >= 0x80 && endsWithBidiControl(name, i + 1)))
            return {};
    }
    return {};
}

QByteArray pathExtension(const QByteArray& path) {
    const QByteArrayView extension = extensionView(path);
    return extension.isEmpty() ? QByteArray() : extension.toByteArray();
}

QString lowerExtension(const QByteArray& path) {
    return QString::fromUtf8(pathExtension(path)).toLower();
}

int depth(const QByteArray& path) {
    return static_cast<int>(path.count('/'));
}

bool isHiddenName(const QByteArray& name) {
    return name.startsWith('.');
}

bool isPackageExtension(const QByteArray& extension) {
    static const QList<QByteArray> kinds = { "app", "appex", "bundle", "kext", "mpkg", "pkg", "plugin", "rtfd", "xpc",
        "xcodeproj", "xcworkspace", "xcarchive", "photoslibrary", "sparsebundle" };
    if (extension.isEmpty() || extension.size() > 13)
        return false;
    const QByteArray lower = extension.toLower();
    return kinds.contains(lower);
}

bool isDescendant(const QByteArray& path, const QByteArray& folder) {
    if (folder == "/")
        return path.size() > 1 && path.startsWith('/');
    return path.size() > folder.size() + 1 && path.startsWith(folder) && path[folder.size()] == '/';
}

QByteArray normalized(const QByteArray& path, const QByteArray& cwd) {
    const QByteArray full = path.startsWith('/') ? path : cwd + '/' + path;
    QList<QByteArray> parts;
    for (const QByteArray& part : full.split('/')) {
        if (part.isEmpty() || part == ".")
            continue;
        if (part == "..") {
            if (!parts.isEmpty())
                parts.removeLast();
            continue;
        }
        parts.append(part);
    }
    if (parts.isEmpty())
        return QByteArrayLiteral("/");
    QByteArray out;
    for (const QByteArray& part : parts)
        out.append('/').append(part);
    return out;
}

QByteArray currentDirectory() {
    QByteArray buffer(4096, '\0');
    while (!::getcwd(buffer.data(), static_cast<size_t>(buffer.size()))) {
        if (errno != ERANGE)
            return QByteArrayLiteral("/");
        buffer.resize(buffer.size() * 2);
    }
    return QByteArray(buffer.constData());
}

namespace {

// Length of the valid UTF-8 sequence starting at `i`, or 0 when the byte there starts none.
int validSequenceLength(const uchar* s, qsizetype i, qsizetype n) {
    const uchar c = s[i];
    if (c < 0x80)
        return 1;
    auto cont = [&](qsizetype k) { return k < n && (s[k] & 0xC0) == 0x80; };
    if (c >= 0xC2 && c <= 0xDF)
        return cont(i + 1) ? 2 : 0;
    if (c >= 0xE0 && c <= 0xEF) {
        if (!cont(i + 1) || !cont(i + 2))
            return 0;
        const uchar c1 = s[i + 1];
        if (c == 0xE0 && c1 < 0xA0)
            return 0; // overlong
        if (c == 0xED && c1 >= 0xA0)
            return 0; // UTF-16 surrogate
        return 3;
    }
    if (c >= 0xF0 && c <= 0xF4) {
        if (!cont(i + 1) || !cont(i + 2) || !cont(i + 3))
            return 0;
        const uchar c1 = s[i + 1];
        if (c == 0xF0 && c1 < 0x90)
            return 0; // overlong
        if (c == 0xF4 && c1 >= 0x90)
            return 0; // above U+10FFFF
        return 4;
    }
    return 0;
}

} // namespace

bool isValidUtf8(const QByteArray& bytes) {
    const auto* s = reinterpret_cast<const uchar*>(bytes.constData());
    const qsizetype n = bytes.size();
    for (qsizetype i = 0; i < n;) {
        const int len = validSequenceLength(s, i, n);
        if (len == 0)
            return false;
        i += len;
    }
    return true;
}

QString decodeSurrogateEscape(const QByteArray& bytes) {
    const auto* s = reinterpret_cast<const uchar*>(bytes.constData());
    const qsizetype n = bytes.size();
    QString out;
    out.reserve(n);
    for (qsizetype i = 0; i < n;) {
        const int len = validSequenceLength(s, i, n);
        if (len == 0) {
            out.append(QChar(static_cast<char16_t>(0xDC00 + s[i])));
            ++i;
            continue;
        }
        out.append(QString::fromUtf8(bytes.constData() + i, len));
        i += len;
    }
    return out;
}

QByteArray percentEncoded(const QByteArray& path) {
    return path.toPercentEncoding("/");
}

QByteArray fileUrl(const QByteArray& path) {
    return QByteArrayLiteral("file://") + percentEncoded(path);
}

} // namespace PathBytes

QByteArray PathBytes::enclosingFolderIn(const QByteArray& path, const QSet<QByteArray>& folders) {
    if (folders.isEmpty())
        return {};
    if (folders.contains(path))
        return path;
    for (qsizetype slash = path.lastIndexOf('/'); slash >= 0;) {
        const QByteArray folder = slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
        if (folders.contains(folder))
            return folder;
        if (slash == 0)
            break;
        slash = path.lastIndexOf('/', slash - 1);
    }
    return {};
}
