#include "detect/FileHash.h"

#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const DigestContext FileHash::md5Context { QCryptographicHash::Md5, 16 };
const DigestContext FileHash::sha1Context { QCryptographicHash::Sha1, 20 };
const DigestContext FileHash::sha512Context { QCryptographicHash::Sha512, 64 };

FileHash::Outcome FileHash::readDigest(
    const QByteArray& path, const DigestContext& context, qint64 expectedSize, QByteArray& digest) {
    // O_NONBLOCK keeps a FIFO that replaced a file since the walk from blocking the open; such an
    // item is then refused because it is not a regular file.
    FileSystem::Fd fd(FileSystem::openPath(path, O_RDONLY | O_NONBLOCK));
    if (!fd.isValid())
        return errno == ENOENT || errno == ENOTDIR ? Outcome::Vanished : Outcome::Unreadable;
    struct stat st;
    if (::fstat(fd.get(), &st) != 0)
        return Outcome::Unreadable;
    if (!S_ISREG(st.st_mode) || (expectedSize >= 0 && st.st_size != expectedSize))
        return Outcome::Changed;
    ::posix_fadvise(fd.get(), 0, 0, POSIX_FADV_SEQUENTIAL);

    QCryptographicHash hash(context.algorithm);
    char buffer[4096];
    qint64 total = 0;
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return Outcome::Unreadable;
        }
        if (n == 0)
            break;
        total += n;
        hash.addData(QByteArrayView(buffer, n));
    }
    if (expectedSize >= 0 && total != expectedSize)
        return Outcome::Changed;
    digest = hash.result();
    digest.truncate(context.digestLength);
    return Outcome::Read;
}

std::optional<QByteArray> FileHash::rawDigest(const QByteArray& path, const DigestContext& context) {
    QByteArray digest;
    if (readDigest(path, context, -1, digest) != Outcome::Read)
        return std::nullopt;
    return digest;
}

Fingerprint FileHash::scanFingerprint(const QByteArray& path, qint64 expectedSize) {
    QByteArray raw;
    switch (readDigest(path, md5Context, expectedSize, raw)) {
    case Outcome::Read: {
        Fingerprint::Digest digest;
        std::memcpy(digest.data(), raw.constData(), digest.size());
        return Fingerprint::fromDigest(digest);
    }
    case Outcome::Unreadable:
        return Fingerprint::noHash();
    case Outcome::Vanished:
        return Fingerprint::vanished();
    case Outcome::Changed:
        break;
    }
    Log::line(QStringLiteral("changed during the scan, compared with nothing: %1").arg(PathBytes::display(path)));
    return createRandomBytes();
}

std::optional<QByteArray> FileHash::hashOfFileAtPath(const QByteArray& path, const DigestContext& context) {
    const std::optional<QByteArray> digest = rawDigest(path, context);
    if (!digest)
        return std::nullopt;
    return Hex::fromBytes(reinterpret_cast<const uint8_t*>(digest->constData()), context.digestLength);
}

std::optional<QByteArray> FileHash::md5HashOfFileAtPath(const QByteArray& path) {
    return hashOfFileAtPath(path, md5Context);
}

std::optional<QByteArray> FileHash::sha1HashOfFileAtPath(const QByteArray& path) {
    return hashOfFileAtPath(path, sha1Context);
}

std::optional<QByteArray> FileHash::sha512HashOfFileAtPath(const QByteArray& path) {
    return hashOfFileAtPath(path, sha512Context);
}

std::optional<Fingerprint::Digest> FileHash::md5DigestOfFileAtPath(const QByteArray& path) {
    const std::optional<QByteArray> digest = rawDigest(path, md5Context);
    if (!digest)
        return std::nullopt;
    Fingerprint::Digest out;
    std::memcpy(out.data(), digest->constData(), out.size());
    return out;
}

Fingerprint::Digest md5Digest(const QByteArray& utf8Text) {
    const qsizetype zero = utf8Text.indexOf('\0');
    const QByteArrayView text = zero < 0 ? QByteArrayView(utf8Text) : QByteArrayView(utf8Text).first(zero);
    const QByteArray digest = QCryptographicHash::hash(text, QCryptographicHash::Md5);
    Fingerprint::Digest out;
    std::memcpy(out.data(), digest.constData(), out.size());
    return out;
}

QByteArray md5(const QByteArray& utf8Text) {
    const Fingerprint::Digest digest = md5Digest(utf8Text);
    return Hex::fromBytes(digest.data(), 16);
}

QByteArray MD5(const QByteArray& data) {
    const QByteArray digest = QCryptographicHash::hash(data, QCryptographicHash::Md5);
    return Hex::fromBytes(reinterpret_cast<const uint8_t*>(digest.constData()), 16);
}

QByteArray MD5Str(const QByteArray& data) {
    return MD5(data);
}

Fingerprint createRandomBytes() {
    static std::atomic<qint64> last { 0 };
    const qint64 now
        = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
              .count();
    qint64 previous = last.load(std::memory_order_relaxed);
    qint64 chosen;
    do {
        chosen = std::max(now, previous + 1);
    } while (!last.compare_exchange_weak(previous, chosen, std::memory_order_relaxed));
    return Fingerprint::timeStamp(chosen);
}
