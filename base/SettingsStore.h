#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <memory>

// The user-defaults store: an INI file at $XDG_CONFIG_HOME/twinsift/twinsift.ini (default
// ~/.config). The location is read from the environment on every construction, so tests can move it.
class SettingsStore {
public:
    SettingsStore();
    explicit SettingsStore(const QString& filePath);

    static QString defaultFilePath();
    QString filePath() const;

    bool contains(const QString& key) const;
    QString string(const QString& key) const;
    // INI files flatten one-element lists to a string and an empty list to an invalid value; both
    // come back here as the lists they were.
    QStringList stringList(const QString& key) const;
    double doubleValue(const QString& key) const;
    QByteArray bytes(const QString& key) const;
    // A list whose items keep their own types (byte arrays stay byte arrays); one stored item, or
    // an empty list flattened by the INI file, comes back as a list too.
    QVariantList variantList(const QString& key) const;

    void setValue(const QString& key, const QString& value);
    void setValue(const QString& key, const QStringList& value);
    void setDouble(const QString& key, double value);
    void setBytes(const QString& key, const QByteArray& value);
    void setVariantList(const QString& key, const QVariantList& value);
    void remove(const QString& key);
    void synchronize();

private:
    std::unique_ptr<QSettings> m_settings;
};
