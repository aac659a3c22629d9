// Small helpers of the frame: the report's path and centred text.
#pragma once

class Util {
 public:
  /// Path of this run's report file, "/tmp/var/log/MM_DD_HH_MM_SS.txt" with the local time of the
  /// first call. The first call prints the path; later calls return the same one. The directory is
  /// not created. Returns null if the local time is not available.
  static char* GetTestReportPath();

  /// Moves the time in the report's name one second ahead, because another run uses the present
  /// name.
  static void UseNextTestReportPath();

  /// Copies the characters of `src` (without its terminator) over the middle of the text in `dst`,
  /// or to its start if `dst` is empty. `dst` must be zero-filled after its text and, if empty,
  /// large enough for `src`; a text longer than a non-empty `dst` is cut to its length. Returns
  /// `dst`.
  static char* FormatString(const char* src, char* dst);
};
