// Small helpers of the frame: the report's path and centred text.
#pragma once

class Util {
 public:
  /// Path of this run's report file, "/tmp/var/log/MM_DD_HH_MM_SS.txt" from the local time of the
  /// first call. The first call prints the path; later calls return the same one. The directory is
  /// not created. Returns an empty pointer when the local time cannot be had.
  static char* GetTestReportPath();

  /// From now on the report's name is that of a second later, for where another run has this one.
  static void UseNextTestReportPath();

  /// Copies the characters of `src` (without its terminator) over the middle of the text in `dst`,
  /// or to its start when `dst` is empty. `dst` must be zero-filled behind its text and, when
  /// empty, large enough for `src`; a text longer than a non-empty `dst` is cut to its length.
  /// Returns `dst`.
  static char* FormatString(const char* src, char* dst);
};
