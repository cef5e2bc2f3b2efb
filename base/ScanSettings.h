#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

class SettingsStore;

// The scan options, loaded from the store before every folder scan. The flags stay the one-letter
// strings "y" and "n": every test compares the string, and only an exact "n" means no.
struct ScanSettings {
    QString checkSubDir = QStringLiteral("y");
    QString checkHdn = QStringLiteral("y");
    QString checkPKG = QStringLiteral("y");
    double SkipLessThen = 38.318217;
    qint64 nub = 102400;
    QStringList ignoreFileTypeList; // plain lower-case extensions ("pdf")
    QList<QByteArray> ignoreFolderList; // absolute folder paths, as the file system's bytes
    // Folders scanned as usual whose copies are never chosen or removed (absolute, as bytes).
    QList<QByteArray> protectedFolderList;

    static QStringList defaultIgnoreFileTypeList();
    static QList<QByteArray> defaultIgnoreFolderList();
};

// An ignored type as it is kept and shown: trimmed, without leading dots, lower-cased (".PDF" and
// "PDF" are both "pdf").
QString plainExtension(const QString& type);
QStringList plainExtensions(const QStringList& types);

// The ignored-folder list in the store, under "ignoreFolderList": each path kept as bytes, so a name
// that is not valid UTF-8 comes back exactly. Lists stored as text by earlier versions are read as
// their UTF-8 bytes.
QList<QByteArray> loadFolderList(const SettingsStore& store);
void storeFolderList(SettingsStore& store, const QList<QByteArray>& folders);
// The protected folders, kept the same way under "protectedFolderList".
QList<QByteArray> loadProtectedFolderList(const SettingsStore& store);
void storeProtectedFolderList(SettingsStore& store, const QList<QByteArray>& folders);

// Maps the size slider's position to the minimum file size in bytes, odd steps included: positions
// below 1 give 0 bytes, 1 to 5 give 4 bytes, and above that 512 bytes times a power of two.
qint64 getSizeFromslidervalue(double value);

// Loads every key in a fixed order; an absent key gets its default, written back at once.
void getAppSetting(ScanSettings& settings, SettingsStore& store);
