#pragma once

/// The telescope: its place, and the tilt of the plane in which its beams lie against the
/// meridian. What is multiplied out here is used so, for results must not change in the last
/// digit.
namespace Tools::Site {

inline constexpr double ls = 0.8173688208920868;           ///< sine of the latitude
inline constexpr double lc = 0.5761147547437746;           ///< cosine of the latitude
inline constexpr double eastLongitude = 2.508666666666667; ///< hours
inline constexpr double tc = 0.9999644171630251;           ///< cosine of the tilt
inline constexpr double ts = 0.008435899940825067;         ///< sine of the tilt
inline constexpr double twoLsTc = 1.6346794731811694;      ///< 2 ls tc

} // namespace Tools::Site
