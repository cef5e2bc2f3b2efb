#include "detect/FileType.h"

#include "base/PathBytes.h"

#include <QHash>
#include <QMimeDatabase>
#include <QMutex>
#include <QSet>

namespace FileType {

namespace {

// Archive formats by MIME name. Office documents and e-books are zip files underneath but are not
// archives to the user, so "inherits zip" is deliberately not the test.
const QStringList& archiveTypes() {
    static const QStringList names = {
        QStringLiteral("application/zip"),
        QStringLiteral("application/x-tar"),
        QStringLiteral("application/gzip"),
        QStringLiteral("application/x-compressed-tar"),
        QStringLiteral("application/x-bzip"),
        QStringLiteral("application/x-bzip2"),
        QStringLiteral("application/x-bzip-compressed-tar"),
        QStringLiteral("application/x-bzip2-compressed-tar"),
        QStringLiteral("application/x-xz"),
        QStringLiteral("application/x-xz-compressed-tar"),
        QStringLiteral("application/x-lzma"),
        QStringLiteral("application/x-lzma-compressed-tar"),
        QStringLiteral("application/x-lzip"),
        QStringLiteral("application/x-lz4"),
        QStringLiteral("application/x-compress"),
        QStringLiteral("application/x-7z-compressed"),
        QStringLiteral("application/vnd.rar"),
        QStringLiteral("application/x-rar"),
        QStringLiteral("application/zstd"),
        QStringLiteral("application/x-zstd-compressed-tar"),
        QStringLiteral("application/x-apple-diskimage"),
        QStringLiteral("application/x-cd-image"),
        QStringLiteral("application/x-raw-disk-image"),
        QStringLiteral("application/x-java-archive"),
        QStringLiteral("application/vnd.android.package-archive"),
        QStringLiteral("application/vnd.debian.binary-package"),
        QStringLiteral("application/x-rpm"),
        QStringLiteral("application/x-xar"),
        QStringLiteral("application/vnd.ms-cab-compressed"),
        QStringLiteral("application/x-cpio"),
        QStringLiteral("application/x-archive"),
        QStringLiteral("application/x-arj"),
        QStringLiteral("application/x-lha"),
        QStringLiteral("application/x-stuffit"),
    };
    return names;
}

const QStringList& sourceTypes() {
    static const QStringList names = {
        QStringLiteral("text/x-csrc"),
        QStringLiteral("text/x-chdr"),
        QStringLiteral("text/x-c++src"),
        QStringLiteral("text/x-c++hdr"),
        QStringLiteral("text/x-objcsrc"),
        QStringLiteral("text/x-java"),
        QStringLiteral("text/x-csharp"),
        QStringLiteral("text/x-matlab"),
        QStringLiteral("text/x-python"),
        QStringLiteral("text/x-python3"),
        QStringLiteral("application/x-shellscript"),
        QStringLiteral("application/javascript"),
        QStringLiteral("text/x-go"),
        QStringLiteral("text/rust"),
        QStringLiteral("text/x-kotlin"),
        QStringLiteral("text/x-scala"),
        QStringLiteral("application/x-ruby"),
        QStringLiteral("application/x-perl"),
        QStringLiteral("application/x-php"),
        QStringLiteral("text/x-lua"),
        QStringLiteral("text/x-pascal"),
        QStringLiteral("text/x-fortran"),
        QStringLiteral("text/x-haskell"),
        QStringLiteral("text/x-sql"),
    };
    return names;
}

// Extensions that the MIME database does not know but that are source code all the same.
const QSet<QString>& sourceSuffixes() {
    static const QSet<QString> suffixes = { QStringLiteral("swift"), QStringLiteral("ts"), QStringLiteral("tsx"),
        QStringLiteral("ps1"), QStringLiteral("bat"), QStringLiteral("m"), QStringLiteral("mm") };
    return suffixes;
}

Class classify(const QMimeType& type, const QString& suffix) {
    const QString name = type.name();
    if (name == QLatin1String("application/pdf"))
        return Class::Pdf;
    // Images come before text: SVG inherits text/plain.
    if (name.startsWith(QLatin1String("image/")))
        return Class::Image;
    if (name.startsWith(QLatin1String("audio/")) || name.startsWith(QLatin1String("video/")))
        return Class::AudioVisual;
    for (const QString& archive : archiveTypes()) {
        if (name == archive || type.aliases().contains(archive))
            return Class::Archive;
    }
    for (const QString& source : sourceTypes()) {
        if (type.inherits(source))
            return Class::SourceCode;
    }
    if (sourceSuffixes().contains(suffix))
        return Class::SourceCode;
    if (type.inherits(QStringLiteral("text/plain")))
        return Class::Text;
    return Class::Other;
}

struct Cache {
    QMutex mutex;
    QHash<QString, Class> classes;
    QHash<QString, QString> names;
};

Cache& cache() {
    static Cache c;
    return c;
}

QMimeType mimeOfSuffix(const QString& suffix) {
    static QMimeDatabase database;
    return database.mimeTypeForFile(QStringLiteral("x.") + suffix, QMimeDatabase::MatchExtension);
}

} // namespace

Class classOfExtension(const QByteArray& extension) {
    if (extension.isEmpty())
        return Class::Other;
    const QString suffix = QString::fromUtf8(extension).toLower();
    Cache& c = cache();
    QMutexLocker lock(&c.mutex);
    auto it = c.classes.constFind(suffix);
    if (it != c.classes.cend())
        return *it;
    const Class result = classify(mimeOfSuffix(suffix), suffix);
    c.classes.insert(suffix, result);
    return result;
}

Class classOfPath(const QByteArray& path) {
    return classOfExtension(PathBytes::pathExtension(path));
}

bool isImage(Class c) {
    return c == Class::Image;
}

bool isAudioVisual(Class c) {
    return c == Class::AudioVisual;
}

int categoryOfRegularFile(const QByteArray& path) {
    switch (classOfPath(path)) {
    case Class::Image:
        return Photo;
    case Class::AudioVisual:
        return Media;
    case Class::Text:
    case Class::SourceCode:
    case Class::Pdf:
        return Text;
    case Class::Archive:
        return Archive;
    case Class::Other:
        break;
    }
    return Other;
}

QString typeTextOfCategory(int category) {
    switch (category) {
    case Folder:
        return QStringLiteral("Folder");
    case Photo:
        return QStringLiteral("Photo");
    case Media:
        return QStringLiteral("Media");
    case Text:
        return QStringLiteral("Text");
    default:
        return QStringLiteral("Other"); // archives included: the older list has no archive class
    }
}

QString typeTextOfRegularFile(const QByteArray& path) {
    return typeTextOfCategory(categoryOfRegularFile(path));
}

QString mimeNameOfPath(const QByteArray& path) {
    const QString suffix = QString::fromUtf8(PathBytes::pathExtension(path)).toLower();
    if (suffix.isEmpty())
        return QStringLiteral("application/octet-stream");
    Cache& c = cache();
    QMutexLocker lock(&c.mutex);
    auto it = c.names.constFind(suffix);
    if (it != c.names.cend())
        return *it;
    const QString name = mimeOfSuffix(suffix).name();
    c.names.insert(suffix, name);
    return name;
}

} // namespace FileType
