#include "Util.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

char reportPath[320] = "";
std::time_t reportTime = 0;

/// Names the report after `time`. False if the local time is not available.
bool NameReport(std::time_t time) {
  const std::tm* local = std::localtime(&time);
  if (local == nullptr) return false;
  char name[255];
  std::snprintf(name, sizeof name, "%02d_%02d_%02d_%02d_%02d.txt", local->tm_mon + 1,
                local->tm_mday, local->tm_hour, local->tm_min, local->tm_sec);
  std::snprintf(reportPath, sizeof reportPath, "/tmp/var/log/%s", name);
  reportTime = time;
  return true;
}

}  // namespace

char* Util::GetTestReportPath() {
  if (reportPath[0] != '\0') return reportPath;
  if (!NameReport(std::time(nullptr))) return nullptr;
  std::printf("Test Report file path : %s\n", reportPath);
  return reportPath;
}

void Util::UseNextTestReportPath() {
  NameReport(reportTime + 1);
}

char* Util::FormatString(const char* src, char* dst) {
  const std::size_t textLength = std::strlen(src);
  const std::size_t lineLength = std::strlen(dst);
  if (lineLength == 0) {
    std::copy_n(src, textLength, dst);
    return dst;
  }
  const std::size_t copied = std::min(textLength, lineLength);
  std::copy_n(src, copied, dst + (lineLength / 2 - copied / 2));
  return dst;
}
