#pragma once

#include <QByteArrayView>
#include <QSet>
#include <QString>
#include <string>
#include <string_view>
#include <unordered_map>

// The ignored file types of a scan (lower-case extensions), asked about every item a walk meets.
// Each distinct extension is lower-cased and looked up once; after that a name costs one hash
// probe on its extension's bytes. The answers are remembered without a lock: one thread asks.
class IgnoredTypes {
public:
    explicit IgnoredTypes(QSet<QString> types = {})
        : m_types(std::move(types)) { }

    const QSet<QString>& types() const { return m_types; }
    // Whether the extension of the last component of `path` (a name, or a whole path) is ignored.
    bool matches(QByteArrayView path) const;

private:
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    QSet<QString> m_types;
    mutable std::unordered_map<std::string, bool, Hash, std::equal_to<>> m_known;
};
