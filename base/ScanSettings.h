#pragma once

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
    QStringList ignoreFileTypeList;
    QStringList ignoreFolderList;

    static QStringList defaultIgnoreFileTypeList();
    static QStringList defaultIgnoreFolderList();
};

// Maps the size slider's position to the minimum file size in bytes, odd steps included: positions
// below 1 give 0 bytes, 1 to 5 give 4 bytes, and above that 512 bytes times a power of two.
qint64 getSizeFromslidervalue(double value);

// Loads every key in a fixed order; an absent key gets its default, written back at once.
void getAppSetting(ScanSettings& settings, SettingsStore& store);
