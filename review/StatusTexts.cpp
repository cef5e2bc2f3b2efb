#include "review/StatusTexts.h"

#include "base/ByteCountFormatter.h"

#include <QLocale>
#include <cmath>

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

QString decimalNumber(qint64 value) {
    return ByteCountFormatter::grouped(value);
}

QString decimalNumber(double value) {
    const QString magnitude = ByteCountFormatter::roundedDecimal(std::fabs(value), 3);
    const qsizetype point = magnitude.indexOf(QLatin1Char('.'));
    const QString integer = point < 0 ? magnitude : magnitude.left(point);
    const QString fraction = point < 0 ? QString() : magnitude.mid(point);
    const bool negative = value < 0 && magnitude != QLatin1String("0");
    return (negative ? QStringLiteral("-") : QString()) + ByteCountFormatter::grouped(integer.toLongLong()) + fraction;
}

QString bottomStatus(qsizetype selectedCount, qint64 selectedBytes, qint64 totalDuplicateCountFolder,
    qint64 totalDuplicateCountFiles, qint64 DuplicateWastedSpace) {
    const qint64 all = totalDuplicateCountFolder + totalDuplicateCountFiles;
    if (selectedCount > 0) {
        return QStringLiteral("%1 of %2 %3 (%4) selected")
            .arg(selectedCount)
            .arg(all)
            .arg(selectedCount == 1 ? QStringLiteral("Duplicate") : QStringLiteral("Duplicates"),
                ByteCountFormatter::decimal(selectedBytes));
    }
    return QStringLiteral("%1 %2 (%3)")
        .arg(totalDuplicateCountFolder)
        .arg(all == 1 ? QStringLiteral("Duplicate") : QStringLiteral("Duplicates"),
            ByteCountFormatter::decimal(DuplicateWastedSpace));
}

QString addOrDragText() {
    return QStringLiteral("Add or Drag Files and Folders");
}

QString popoverCount(qint64 count) {
    return QString::number(count);
}

QString popoverWastedSpace(qint64 bytes) {
    const QString text = ByteCountFormatter::decimal(bytes);
    return text == QLatin1String("Zero KB") ? QStringLiteral("0 byte") : text;
}

float popoverProgress(qint64 totalDuplicateCountFolderTemp, qint64 totalDuplicateCountFiles) {
    if (totalDuplicateCountFolderTemp == 0 || totalDuplicateCountFiles == 0)
        return 0.0f;
    return static_cast<float>(totalDuplicateCountFolderTemp) / static_cast<float>(totalDuplicateCountFiles);
}

int badgeWidth(qsizetype selectedCount, qsizetype fileCount) {
    const auto digits = [](qsizetype n) { return static_cast<int>(QString::number(n).size()); };
    if (selectedCount > 0)
        return (digits(selectedCount) + digits(fileCount)) * 6 + 24;
    return digits(fileCount) * 7 + 13;
}

QString groupDetails(qsizetype fileCount, qint64 sizeFile) {
    return QStringLiteral("%1 items, %2").arg(fileCount).arg(convertNumberToString(sizeFile * fileCount));
}

QString listCountOf(qsizetype selectedCount, qsizetype allCount) {
    return QStringLiteral("%1 of %2").arg(selectedCount).arg(allCount);
}

QString listGroupSize(qint64 bytes) {
    return QStringLiteral("Size: %1").arg(ByteCountFormatter::decimal(bytes));
}

QString listSizesSelected(qint64 selectedBytes, qint64 allBytes) {
    return QStringLiteral("%1 of %2 selected")
        .arg(ByteCountFormatter::decimal(selectedBytes), ByteCountFormatter::decimal(allBytes));
}

QString scannedCount(qint64 count, const QString& localeName) {
    const QLocale locale = localeName.isEmpty() ? QLocale::system() : QLocale(localeName);
    return locale.toString(count);
}

} // namespace StatusTexts
