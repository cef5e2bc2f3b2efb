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

// The scanned count grouped by the given locale's rules (the user's locale in the window).
QString scannedCount(qint64 count, const QString& localeName = QString());

} // namespace StatusTexts
