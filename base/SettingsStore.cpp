#include "base/SettingsStore.h"

#include <QDir>

SettingsStore::SettingsStore()
    : SettingsStore(defaultFilePath()) { }

SettingsStore::SettingsStore(const QString& filePath)
    : m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat)) { }

QString SettingsStore::defaultFilePath() {
    QString base = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.config");
    return base + QStringLiteral("/twinsift/twinsift.ini");
}

QString SettingsStore::filePath() const {
    return m_settings->fileName();
}

bool SettingsStore::contains(const QString& key) const {
    return m_settings->contains(key);
}

QString SettingsStore::string(const QString& key) const {
    return m_settings->value(key).toString();
}

QStringList SettingsStore::stringList(const QString& key) const {
    const QVariant value = m_settings->value(key);
    if (!value.isValid())
        return QStringList();
    if (value.typeId() == QMetaType::QString)
        return QStringList { value.toString() };
    return value.toStringList();
}

QVariantList SettingsStore::variantList(const QString& key) const {
    const QVariant value = m_settings->value(key);
    if (!value.isValid())
        return QVariantList();
    if (value.typeId() == QMetaType::QVariantList)
        return value.toList();
    if (value.typeId() == QMetaType::QStringList) {
        QVariantList out;
        for (const QString& item : value.toStringList())
            out.append(item);
        return out;
    }
    return QVariantList { value };
}

double SettingsStore::doubleValue(const QString& key) const {
    return m_settings->value(key).toDouble();
}

QByteArray SettingsStore::bytes(const QString& key) const {
    return m_settings->value(key).toByteArray();
}

void SettingsStore::setValue(const QString& key, const QString& value) {
    m_settings->setValue(key, value);
}

void SettingsStore::setValue(const QString& key, const QStringList& value) {
    m_settings->setValue(key, value);
}

void SettingsStore::setDouble(const QString& key, double value) {
    m_settings->setValue(key, value);
}

void SettingsStore::setBytes(const QString& key, const QByteArray& value) {
    m_settings->setValue(key, value);
}

void SettingsStore::setVariantList(const QString& key, const QVariantList& value) {
    m_settings->setValue(key, value);
}

void SettingsStore::remove(const QString& key) {
    m_settings->remove(key);
}

void SettingsStore::synchronize() {
    m_settings->sync();
}
