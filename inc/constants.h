// The values of pi that every result is made with. They are cut to these digits on purpose: more of
// them change the files of a run.
#pragma once

inline constexpr double kTwoPi = 6.2831853;
inline constexpr double kPi = 3.14159265;
