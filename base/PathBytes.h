#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>

// Paths are kept as the file system's bytes. These helpers work on absolute paths without a
// trailing slash (the root is "/"), the form every table of the scan uses.
namespace PathBytes {

QByteArray lastPathComponent(const QByteArray& path);
QByteArray deletingLastPathComponent(const QByteArray& path);
QByteArray appendingComponent(const QByteArray& folder, const QByteArray& name);

// The file-URL extension rule: the text after the last dot of the last component, case kept;
// none when that dot leads the name, ends it, or a space (or a bidirectional control) follows it.
QByteArray pathExtension(const QByteArray& path);
// The same extension as a view into `path`, for callers that only look at it.
QByteArrayView extensionView(QByteArrayView path);
// The extension lower-cased, as the ignored-type list compares it.
QString lowerExtension(const QByteArray& path);

// Number of "/" separators: the depth used to visit shallow paths first.
int depth(const QByteArray& path);

// A name beginning with "." is hidden.
bool isHiddenName(const QByteArray& name);
inline bool isHidden(const QByteArray& path) {
    return isHiddenName(lastPathComponent(path));
}

// Folders presented as one document or bundle: known bundle extensions, compared case-insensitively.
bool isPackageExtension(const QByteArray& extension);

// True when `path` lies strictly below `folder`.
bool isDescendant(const QByteArray& path, const QByteArray& folder);

// Makes a path absolute against `cwd` and removes empty, "." and ".." components and any trailing
// slash, without touching the disk.
QByteArray normalized(const QByteArray& path, const QByteArray& cwd);
// The one of `folders` that `path` is or lies in (the innermost), or nothing.
QByteArray enclosingFolderIn(const QByteArray& path, const QSet<QByteArray>& folders);
QByteArray currentDirectory();

// Text for display and search: invalid bytes show as U+FFFD.
inline QString display(const QByteArray& path) {
    return QString::fromUtf8(path);
}

// Strict UTF-8 decoding in which every byte that is not part of a valid sequence (overlong forms,
// surrogates and code points above U+10FFFF included) becomes the lone surrogate U+DC00 + byte, the
// convention that Python's os.fsencode reverses.
QString decodeSurrogateEscape(const QByteArray& bytes);
bool isValidUtf8(const QByteArray& bytes);

// file:// URL with every byte outside the unreserved set and "/" percent-encoded.
QByteArray fileUrl(const QByteArray& path);
QByteArray percentEncoded(const QByteArray& path);

} // namespace PathBytes
