#include "review/StatusTexts.h"

#include "review/ByteCountFormatter.h"

#include <QLocale>

namespace StatusTexts {

QString convertNumberToString(qint64 bytes) {
    if (bytes == 0)
        return QStringLiteral("0 Byte");
    return ByteCountFormatter::decimal(bytes);
}

QString mainToolBarText(
    int typetoolbar, quint64 totalDuplicateCount, quint64 wastedSpaceDuplicates, qsizetype selectedCount) {
    const QString result = QStringLiteral("%1 Duplicates. Total: %2 \n Select duplicates for removal.")
                               .arg(totalDuplicateCount)
                               .arg(convertNumberToString(static_cast<qint64>(wastedSpaceDuplicates)));
    switch (typetoolbar) {
    case 0:
    case 1:
        return QStringLiteral("Select folders to scan.");
    case 3:
        return QStringLiteral("No duplicates found.");
    case 5:
        return result;
    case 6:
        if (selectedCount > 0)
            return QStringLiteral("%1 of %2 duplicates selected \n click on Remove for review.")
                .arg(selectedCount)
                .arg(totalDuplicateCount);
        return result;
    default:
        return QString();
    }
}

bool toolBarBusyIndicatorShown(int typetoolbar) {
    return typetoolbar >= 2 && typetoolbar <= 4;
}

QString scannedCount(qint64 count, const QString& localeName) {
    const QLocale locale = localeName.isEmpty() ? QLocale::system() : QLocale(localeName);
    return locale.toString(count);
}

} // namespace StatusTexts
