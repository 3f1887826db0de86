#pragma once

/// What a reader without a window prints to the standard output, for printf: %s is the path in
/// the local 8-bit encoding.
namespace BatchTexts {

inline constexpr char wrongSize[] = "File %s has wrong size. Ignoring it.\n";
inline constexpr char tooSlow[] = "File %s is dead. More than 60mins to read. Aborting\n";

} // namespace BatchTexts
