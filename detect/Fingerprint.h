#pragma once

#include <QByteArray>
#include <QHashFunctions>
#include <array>
#include <cstdint>
#include <cstring>

// The value that decides equality between two scanned items. Its text is one of: 32 lower-case hex
// digits of an MD5 digest, the literal "NOHash" for an unreadable file, or a time-stamp ("%f" of
// seconds since 1970) for an item that must match nothing. Kept in 17 bytes: millions live at once.
// A fourth kind marks an item whose content was not read because nothing could match it; each such
// value is unique, so it matches nothing either. A fifth marks a file that was gone when the scan came
// to read it: such an entry is left out of the table.
//
// "NOHash" is shared by every unreadable file, yet nothing was compared: grouping never makes a group
// of it (see canMatch).
class Fingerprint {
public:
    enum class Kind : uint8_t { Digest, NoHash, TimeStamp, Unread, Vanished };
    using Digest = std::array<uint8_t, 16>;

    Fingerprint() = default;
    static Fingerprint fromDigest(const Digest& digest);
    static Fingerprint noHash();
    static Fingerprint timeStamp(qint64 microsecondsSinceEpoch);
    static Fingerprint unread();
    static Fingerprint vanished();

    Kind kind() const { return m_kind; }
    const Digest& digest() const { return m_payload; }
    // False for the values that stand for content nobody saw ("NOHash", a vanished file).
    bool canMatch() const { return m_kind != Kind::NoHash && m_kind != Kind::Vanished; }
    QByteArray text() const;
    // Appends the text to `out` without a temporary (folder fingerprints join thousands).
    void appendText(QByteArray& out) const;

    friend bool operator==(const Fingerprint& a, const Fingerprint& b) {
        return a.m_kind == b.m_kind && a.m_payload == b.m_payload;
    }
    friend bool operator<(const Fingerprint& a, const Fingerprint& b) {
        if (a.m_kind != b.m_kind)
            return a.m_kind < b.m_kind;
        return a.m_payload < b.m_payload;
    }
    friend size_t qHash(const Fingerprint& f, size_t seed = 0) {
        uint64_t word;
        std::memcpy(&word, f.m_payload.data(), sizeof word);
        return qHashMulti(seed, word, static_cast<uint8_t>(f.m_kind));
    }

private:
    Digest m_payload {};
    Kind m_kind = Kind::NoHash;
};

namespace Hex {
QByteArray fromBytes(const uint8_t* bytes, int length);
}
