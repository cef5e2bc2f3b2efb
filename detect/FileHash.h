#pragma once

#include "detect/Fingerprint.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <optional>

// The three operations of a digest and its length, handed to the one streaming routine.
struct DigestContext {
    QCryptographicHash::Algorithm algorithm;
    int digestLength;
};

// Whole-file digests streamed in 4096-byte reads. Nothing is kept between calls, so any thread may
// call at any time. A file that cannot be opened, is not a regular file, or fails in the middle of
// a read gives no value at all.
class FileHash {
public:
    FileHash() = delete;

    static std::optional<QByteArray> hashOfFileAtPath(const QByteArray& path, const DigestContext& context);
    static std::optional<QByteArray> md5HashOfFileAtPath(const QByteArray& path);
    static std::optional<QByteArray> sha1HashOfFileAtPath(const QByteArray& path);
    static std::optional<QByteArray> sha512HashOfFileAtPath(const QByteArray& path);

    // The MD5 as raw bytes, the form the scan keeps.
    static std::optional<Fingerprint::Digest> md5DigestOfFileAtPath(const QByteArray& path);

    // The scan's read of a file the walk saw with `expectedSize` bytes: its MD5; "NOHash" when it
    // cannot be opened or read; vanished() when it is gone; a fresh time-stamp (matching nothing),
    // with a log line, when it is no longer a regular file or its length changed before or during
    // the read, since what was read is then not what the walk saw.
    static Fingerprint scanFingerprint(const QByteArray& path, qint64 expectedSize);

    static const DigestContext md5Context;
    static const DigestContext sha1Context;
    static const DigestContext sha512Context;

private:
    enum class Outcome { Read, Unreadable, Vanished, Changed };
    static Outcome readDigest(
        const QByteArray& path, const DigestContext& context, qint64 expectedSize, QByteArray& digest);
    static std::optional<QByteArray> rawDigest(const QByteArray& path, const DigestContext& context);
};

// MD5 of a text's UTF-8 bytes up to the first zero byte, as 32 lower-case hex digits.
QByteArray md5(const QByteArray& utf8Text);
Fingerprint::Digest md5Digest(const QByteArray& utf8Text);

// MD5 of a whole byte buffer as 32 hex digits (the controller's byte-buffer helpers).
QByteArray MD5(const QByteArray& data);
QByteArray MD5Str(const QByteArray& data);

// The time-stamp fingerprint: the current time as "%f" seconds. Each call returns a later time
// than the call before, at least by one microsecond, so that two excluded items never share one.
Fingerprint createRandomBytes();
