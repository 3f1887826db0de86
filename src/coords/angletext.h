#pragma once

#include <QString>

/// Texts of angles and times of day. Fields are padded with zeros to two digits; hours and
/// degrees may take more. What is not finite becomes "nan", "inf" or "-inf".
namespace Tools {

/// Brings hours into 0 to 24, 24 excluded, by whole days.
double wrappedHours(double hours);

/// "hh:mm:ss" of hours, every step cut off, not rounded; "-" before a negative value.
QString hoursToText(double hours);

/// "dd°mm′ss″" of degrees, every step cut off, not rounded; "-" before a negative value.
QString degreesToText(double degrees);

/// "hh:mm:ss.ss". The seconds are rounded after the minutes were cut off, so the last half
/// hundredth of a minute reads 60.00.
QString secondsToHms(double seconds);

/// `pattern` with %1 and %2 replaced by two digits each and %3 by `seconds` with two decimals,
/// "-" before it when any part is negative; "nan" when the seconds are not a number.
QString sexagesimalText(const QString &pattern, double units, double minutes, double seconds);

/// "dd°mm′ss″" of a text "dd:mm:ss"; empty for any other text.
QString angleTextFromTime(const QString &text);

/// "hh:mm:ss" of the characters 1-2, 4-5 and the last two of a text; empty where these are no
/// time of day.
QString normalisedTime(const QString &text);

/// Pads the parts of "h:m:s", with or without a fraction, to two digits. Any other text comes
/// back unchanged.
QString normalisedLooseTime(const QString &text);

} // namespace Tools
