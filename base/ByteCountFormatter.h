#pragma once

#include <QString>

// Byte counts as the platform's byte-count formatter writes them, en_US: "Zero KB" for zero,
// "1 byte", "N bytes" below one unit, then KB and bytes without a fraction, MB with one digit, GB
// and above with two, trailing zeros dropped. Rounding is half-even on the shortest decimal form of
// the quotient, and the unit is chosen after rounding (999,999 bytes is "1 MB").
namespace ByteCountFormatter {

enum class Style {
    Decimal, // 1 KB = 1000 bytes (also the file style)
    Binary, // 1 KB = 1024 bytes (also the memory style)
};

QString format(qint64 bytes, Style style);
inline QString decimal(qint64 bytes) {
    return format(bytes, Style::Decimal);
}
inline QString binary(qint64 bytes) {
    return format(bytes, Style::Binary);
}

// Rounds a non-negative value half-even to `digits` fraction digits, working on its shortest
// round-trip decimal form, and writes it without trailing zeros ("1.05" at 1 digit is "1").
QString roundedDecimal(double value, int digits);

// An integer with en_US grouping: "1,234,567".
QString grouped(qint64 value);

} // namespace ByteCountFormatter
