#pragma once

#include <QString>
#include <optional>
#include <vector>

/// Numbers that a user types, read alike in every language: digits with a point or a comma as
/// the decimal mark, maybe a sign and an exponent. No mark parts thousands: "1,234" is 1.234, and
/// a text with two marks is no number. Blanks before and after do not count.
namespace Tools {

/// @return nothing where the text is no number or not a finite one
std::optional<double> typedNumber(const QString &text);

/// A number without a decimal mark and without a fraction, "16384" or "1e4". "58,000" is none:
/// who types it means 58 thousand points, not 58.
///
/// @return nothing where the text is no such number; beyond the range the nearest end of it
std::optional<qint64> typedWhole(const QString &text);

/// Numbers with blanks between them.
///
/// @return empty when one of them is no number
std::vector<double> typedNumbers(const QString &text);

/// What a field takes, for messages.
inline constexpr char allowedNumber[] = "digits, with a point or a comma before decimals";
inline constexpr char allowedWhole[] = "a whole number";

} // namespace Tools
