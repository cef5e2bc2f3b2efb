#pragma once

#include <QString>

// The texts the program shows about a scan and its result, as functions of the figures.
namespace StatusTexts {

// A byte count for display: "0 Byte" for zero, otherwise the decimal byte-count text.
QString convertNumberToString(qint64 bytes);

// The toolbar text of toolbar state 0 to 6 (see setMainToolBarText:); an empty text where the
// state shows none (scanning states and unknown states).
QString mainToolBarText(
    int typetoolbar, quint64 totalDuplicateCount, quint64 wastedSpaceDuplicates, qsizetype selectedCount);
// Whether the toolbar's busy indicator shows in a state.
bool toolBarBusyIndicatorShown(int typetoolbar);

// Numbers as the decimal number style writes them in en_US: groups of three digits, up to three
// fraction digits rounded half-even, no trailing zeros ("1,234.568", "0.002", "-1,234,567").
QString decimalNumber(qint64 value);
QString decimalNumber(double value);

// The status line under the older list (setBottomStatus). With n chosen files: "n of N
// Duplicate(s) (size) selected", N being folders and files together. With none: the folder count
// alone, the word following folders and files together, and the wasted space. Zero bytes are
// passed to the formatter as they are ("Zero KB").
QString bottomStatus(qsizetype selectedCount, qint64 selectedBytes, qint64 totalDuplicateCountFolder,
    qint64 totalDuplicateCountFiles, qint64 DuplicateWastedSpace);
// The status line of the setup screen with no folders; the status popover does not open on it.
QString addOrDragText();

// The status popover's figures: counts as "%ld", the wasted space as the byte-count text except
// "0 byte" where that would be "Zero KB", and the grouping progress as a fraction from 0 to 1
// (0 when either figure is 0).
QString popoverCount(qint64 count);
QString popoverWastedSpace(qint64 bytes);
float popoverProgress(qint64 totalDuplicateCountFolderTemp, qint64 totalDuplicateCountFiles);

// Width in points of a group row's badge: (digits of chosen + digits of all) x 6 + 24 with chosen
// files, digits of all x 7 + 13 without.
int badgeWidth(qsizetype selectedCount, qsizetype fileCount);

// The group details of the result screen: "%ld items, %@" with the file count and the size of all
// its files (convertNumberToString).
QString groupDetails(qsizetype fileCount, qint64 sizeFile);

// The older list's texts, all with the decimal byte-count style: "%lu of %lu" (chosen, then all
// files of a group or of a type), "Size: %@" (a group's total size) and "%@ of %@ selected"
// (sizes of a type's chosen and of all its files).
QString listCountOf(qsizetype selectedCount, qsizetype allCount);
QString listGroupSize(qint64 bytes);
QString listSizesSelected(qint64 selectedBytes, qint64 allBytes);

// The scanned count grouped by the given locale's rules (the user's locale in the window).
QString scannedCount(qint64 count, const QString& localeName = QString());

} // namespace StatusTexts
