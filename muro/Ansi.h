// Colours of the console, as escape sequences.
#pragma once

namespace ansi {

inline constexpr char kHeading[] = "\033[1;33m";
inline constexpr char kText[] = "\033[1;37m";
inline constexpr char kPlain[] = "\033[0;37m";
inline constexpr char kGrey[] = "\033[1;30m";
inline constexpr char kList[] = "\033[0;32;32m";
inline constexpr char kBlue[] = "\033[1;34m";
inline constexpr char kPass[] = "\033[1;32m";
inline constexpr char kFail[] = "\033[0;32;31m";
inline constexpr char kReset[] = "\033[m";

}  // namespace ansi
