// The values of pi in every result. They are cut to these digits on purpose: more digits change the
// files of a run.
#pragma once

inline constexpr double kTwoPi = 6.2831853;
inline constexpr double kPi = 3.14159265;
