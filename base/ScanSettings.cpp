#include "base/ScanSettings.h"

#include "base/SettingsStore.h"

#include <QDir>
#include <QFile>
#include <QVariantList>
#include <cmath>

QStringList ScanSettings::defaultIgnoreFileTypeList() {
    return { QStringLiteral("h"), QStringLiteral("m"), QStringLiteral("php"), QStringLiteral("css"),
        QStringLiteral("js"), QStringLiteral("java"), QStringLiteral("jar"), QStringLiteral("c"), QStringLiteral("cpp"),
        QStringLiteral("pch"), QStringLiteral("py"), QStringLiteral("lib"), QStringLiteral("dylib"),
        QStringLiteral("tmp"), QStringLiteral("vsd"), QStringLiteral("xsd"), QStringLiteral("xslt"),
        QStringLiteral("xsl"), QStringLiteral("lprog"), QStringLiteral("entitlements"), QStringLiteral("db"),
        QStringLiteral("framework"), QStringLiteral("plist"), QStringLiteral("info"), QStringLiteral("xib"),
        QStringLiteral("xcodeproj"), QStringLiteral("dae"), QStringLiteral("xcarchive"), QStringLiteral("sqlite") };
}

QList<QByteArray> ScanSettings::defaultIgnoreFolderList() {
    // The user's ~/.local plays the part of the Library folder (application data); ~/.cache holds
    // what browsers and other programs keep to save time, never what people mean to clean up.
    const QByteArray home = QFile::encodeName(QDir::homePath());
    return { home + "/.local", home + "/.cache" };
}

QString plainExtension(const QString& type) {
    QString plain = type.trimmed();
    while (plain.startsWith(QLatin1Char('.')))
        plain.remove(0, 1);
    return plain.toLower();
}

QStringList plainExtensions(const QStringList& types) {
    QStringList out;
    out.reserve(types.size());
    for (const QString& type : types)
        out.append(plainExtension(type));
    return out;
}

namespace {

const QString kIgnoreFolderList = QStringLiteral("ignoreFolderList");
const QString kProtectedFolderList = QStringLiteral("protectedFolderList");

QList<QByteArray> loadPaths(const SettingsStore& store, const QString& key) {
    QList<QByteArray> folders;
    for (const QVariant& value : store.variantList(key))
        folders.append(value.typeId() == QMetaType::QByteArray ? value.toByteArray() : value.toString().toUtf8());
    return folders;
}

void storePaths(SettingsStore& store, const QString& key, const QList<QByteArray>& folders) {
    QVariantList values;
    values.reserve(folders.size());
    for (const QByteArray& folder : folders)
        values.append(folder);
    store.setVariantList(key, values);
}

} // namespace

QList<QByteArray> loadFolderList(const SettingsStore& store) {
    return loadPaths(store, kIgnoreFolderList);
}

void storeFolderList(SettingsStore& store, const QList<QByteArray>& folders) {
    storePaths(store, kIgnoreFolderList, folders);
}

QList<QByteArray> loadProtectedFolderList(const SettingsStore& store) {
    return loadPaths(store, kProtectedFolderList);
}

void storeProtectedFolderList(SettingsStore& store, const QList<QByteArray>& folders) {
    storePaths(store, kProtectedFolderList, folders);
}

qint64 getSizeFromslidervalue(double value) {
    const auto s = static_cast<qint64>(value * 8.0);
    double d;
    if (s < 8) {
        d = std::pow(2.0, static_cast<double>(s));
    } else {
        const float e = static_cast<float>(s) / 40.0f;
        d = std::trunc(std::pow(2.0, static_cast<double>(e))) * 0.5 * 1024.0;
    }
    auto n = static_cast<qint64>(d);
    if (n < 1024)
        n = static_cast<qint64>(static_cast<double>(n) * 0.0078125);
    return n;
}

namespace {

QString loadFlag(SettingsStore& store, const QString& key) {
    if (store.contains(key))
        return store.string(key);
    const QString fallback = QStringLiteral("y");
    store.setValue(key, fallback);
    return fallback;
}

QStringList loadList(SettingsStore& store, const QString& key, const QStringList& fallback) {
    if (store.contains(key))
        return store.stringList(key);
    store.setValue(key, fallback);
    return fallback;
}

} // namespace

void getAppSetting(ScanSettings& settings, SettingsStore& store) {
    settings.checkSubDir = loadFlag(store, QStringLiteral("checkSubDir"));
    settings.checkHdn = loadFlag(store, QStringLiteral("checkHdn"));
    settings.checkPKG = loadFlag(store, QStringLiteral("checkPKG"));

    const QString sliderKey = QStringLiteral("SkipLessThen");
    if (store.contains(sliderKey)) {
        // The position is read through its single-precision value, as the slider stores it.
        settings.SkipLessThen = static_cast<double>(static_cast<float>(store.doubleValue(sliderKey)));
    } else {
        settings.SkipLessThen = 38.318217;
        store.setDouble(sliderKey, settings.SkipLessThen);
    }
    settings.nub = getSizeFromslidervalue(settings.SkipLessThen);

    settings.ignoreFileTypeList = plainExtensions(
        loadList(store, QStringLiteral("ignoreFileTypeList"), ScanSettings::defaultIgnoreFileTypeList()));
    if (store.contains(kIgnoreFolderList)) {
        settings.ignoreFolderList = loadFolderList(store);
    } else {
        settings.ignoreFolderList = ScanSettings::defaultIgnoreFolderList();
        storeFolderList(store, settings.ignoreFolderList);
    }
    if (store.contains(kProtectedFolderList)) {
        settings.protectedFolderList = loadProtectedFolderList(store);
    } else {
        settings.protectedFolderList.clear();
        storeProtectedFolderList(store, settings.protectedFolderList);
    }
    store.synchronize();
}
