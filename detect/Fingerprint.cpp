#include "detect/Fingerprint.h"

#include <atomic>
#include <cstdio>

QByteArray Hex::fromBytes(const uint8_t* bytes, int length) {
    static const char digits[] = "0123456789abcdef";
    QByteArray out(length * 2, Qt::Uninitialized);
    for (int i = 0; i < length; ++i) {
        out[2 * i] = digits[bytes[i] >> 4];
        out[2 * i + 1] = digits[bytes[i] & 0x0F];
    }
    return out;
}

Fingerprint Fingerprint::fromDigest(const Digest& digest) {
    Fingerprint f;
    f.m_kind = Kind::Digest;
    f.m_payload = digest;
    return f;
}

Fingerprint Fingerprint::noHash() {
    return Fingerprint();
}

Fingerprint Fingerprint::timeStamp(qint64 microsecondsSinceEpoch) {
    Fingerprint f;
    f.m_kind = Kind::TimeStamp;
    std::memcpy(f.m_payload.data(), &microsecondsSinceEpoch, sizeof microsecondsSinceEpoch);
    return f;
}

Fingerprint Fingerprint::unread() {
    static std::atomic<quint64> next { 0 };
    const quint64 serial = next.fetch_add(1, std::memory_order_relaxed);
    Fingerprint f;
    f.m_kind = Kind::Unread;
    std::memcpy(f.m_payload.data(), &serial, sizeof serial);
    return f;
}

Fingerprint Fingerprint::vanished() {
    Fingerprint f;
    f.m_kind = Kind::Vanished;
    return f;
}

QByteArray Fingerprint::text() const {
    QByteArray out;
    appendText(out);
    return out;
}

void Fingerprint::appendText(QByteArray& out) const {
    switch (m_kind) {
    case Kind::Digest:
        out.append(Hex::fromBytes(m_payload.data(), 16));
        return;
    case Kind::NoHash:
        out.append("NOHash");
        return;
    case Kind::TimeStamp: {
        qint64 micros;
        std::memcpy(&micros, m_payload.data(), sizeof micros);
        // "%f" of the seconds, written from the integer so that the six decimals are exact.
        char buffer[48];
        const int n = std::snprintf(buffer, sizeof buffer, "%lld.%06lld", static_cast<long long>(micros / 1000000),
            static_cast<long long>(micros % 1000000));
        out.append(buffer, n);
        return;
    }
    case Kind::Vanished:
        out.append("vanished");
        return;
    case Kind::Unread: {
        quint64 serial;
        std::memcpy(&serial, m_payload.data(), sizeof serial);
        out.append("unread-").append(QByteArray::number(serial));
        return;
    }
    }
}
