#pragma once

#include <QColor>
#include <QFont>
#include <QRect>

class QPainter;

// The badge at the end of a group row. With chosen files: their count on a red swatch 6 points
// from the left, and the group's file count 13 points after the chosen count's width. Without: the
// file count alone at 6 points, grey except on the current row. Its width follows
// StatusTexts::badgeWidth.
class selectedCountView {
public:
    static QColor swatchColor() { return QColor::fromRgbF(0.855f, 0.180f, 0.216f); }
    static QColor greyColor() { return QColor::fromRgbF(0.635f, 0.635f, 0.635f); }
    // The system font at 11.5 points (as pixels at the standard 96 dots per inch).
    static QFont badgeFont(const QFont& base);

    static int widthFor(qsizetype selected, qsizetype all);
    // Draws the badge with its left edge and vertical centre taken from `rect`.
    static void paint(
        QPainter* painter, const QRect& rect, const QFont& base, qsizetype selected, qsizetype all, bool currentRow);
};
