#include "base/ByteCountFormatter.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

namespace ByteCountFormatter {

namespace {

// Adds the thousands separators to a run of integer digits.
std::string groupDigits(const std::string& digits) {
    std::string out;
    const size_t n = digits.size();
    for (size_t i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0)
            out.push_back(',');
        out.push_back(digits[i]);
    }
    return out;
}

// Half-even rounding of a plain decimal digit string ("123.456") to `digits` fraction digits.
std::string roundDigits(const std::string& text, int digits) {
    const size_t point = text.find('.');
    std::string integer = point == std::string::npos ? text : text.substr(0, point);
    std::string fraction = point == std::string::npos ? std::string() : text.substr(point + 1);
    if (static_cast<int>(fraction.size()) <= digits) {
        fraction.resize(static_cast<size_t>(digits), '0');
    } else {
        const std::string rest = fraction.substr(static_cast<size_t>(digits));
        fraction.resize(static_cast<size_t>(digits));
        bool up = false;
        if (rest[0] > '5') {
            up = true;
        } else if (rest[0] == '5') {
            const bool beyond = rest.find_first_not_of('0', 1) != std::string::npos;
            const char last = digits > 0 ? fraction.back() : integer.back();
            up = beyond || ((last - '0') % 2 == 1);
        }
        if (up) {
            std::string all = integer + fraction;
            int i = static_cast<int>(all.size()) - 1;
            while (i >= 0 && all[static_cast<size_t>(i)] == '9') {
                all[static_cast<size_t>(i)] = '0';
                --i;
            }
            if (i < 0)
                all.insert(all.begin(), '1');
            else
                ++all[static_cast<size_t>(i)];
            integer = all.substr(0, all.size() - static_cast<size_t>(digits));
            fraction = all.substr(all.size() - static_cast<size_t>(digits));
        }
    }
    while (!fraction.empty() && fraction.back() == '0')
        fraction.pop_back();
    return fraction.empty() ? integer : integer + '.' + fraction;
}

std::string shortestFixed(double value) {
    std::array<char, 64> buffer {};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed);
    return std::string(buffer.data(), result.ptr);
}

} // namespace

QString roundedDecimal(double value, int digits) {
    return QString::fromStdString(roundDigits(shortestFixed(value), digits));
}

QString grouped(qint64 value) {
    const bool negative = value < 0;
    const unsigned long long magnitude
        = negative ? 0ull - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    // The sign goes in as a QString: GCC 12 at -O3 takes `"-" + std::string` for an overlapping copy
    // and warns (a false positive, but warnings are errors in the checked builds).
    const QString digits = QString::fromStdString(groupDigits(std::to_string(magnitude)));
    if (!negative)
        return digits;
    return QLatin1Char('-') + digits;
}

QString format(qint64 bytes, Style style) {
    if (bytes == 0)
        return QStringLiteral("Zero KB");
    const bool negative = bytes < 0;
    const unsigned long long magnitude
        = negative ? 0ull - static_cast<unsigned long long>(bytes) : static_cast<unsigned long long>(bytes);
    const double base = style == Style::Decimal ? 1000.0 : 1024.0;
    const QString sign = negative ? QStringLiteral("-") : QString();

    if (static_cast<double>(magnitude) < base) {
        if (magnitude == 1)
            return sign + QStringLiteral("1 byte");
        return sign + grouped(static_cast<qint64>(magnitude)) + QStringLiteral(" bytes");
    }

    static const char* const units[] = { "KB", "MB", "GB", "TB", "PB", "EB" };
    static const int fractionDigits[] = { 0, 1, 2, 2, 2, 2 };
    double divisor = base;
    std::string text;
    int unit = 0;
    for (; unit < 6; ++unit, divisor *= base) {
        text = roundDigits(shortestFixed(static_cast<double>(magnitude) / divisor), fractionDigits[unit]);
        if (unit == 5 || std::strtod(text.c_str(), nullptr) < base)
            break;
    }
    const size_t point = text.find('.');
    const std::string integer = point == std::string::npos ? text : text.substr(0, point);
    const std::string fraction = point == std::string::npos ? std::string() : text.substr(point);
    return sign + QString::fromStdString(groupDigits(integer) + fraction) + QLatin1Char(' ')
        + QLatin1String(units[unit]);
}

} // namespace ByteCountFormatter
