#pragma once

/// Style sheets that forms put on their fields to say how these stand.
namespace FieldStyles {

inline constexpr char failing[] = "background-color: #f4cccc;";
inline constexpr char filled[] = "background-color: #98FB98;";
inline constexpr char readOnly[] = "background-color: #dfffd3;";
inline constexpr char plain[] = "background-color: #ffffff;";

} // namespace FieldStyles
