#include "Util.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

char* Util::GetTestReportPath() {
  static char path[320] = "";
  if (path[0] != '\0') return path;

  const std::time_t now = std::time(nullptr);
  const std::tm* local = std::localtime(&now);
  if (local == nullptr) return nullptr;

  char name[255];
  std::snprintf(name, sizeof name, "%02d_%02d_%02d_%02d_%02d.txt", local->tm_mon + 1,
                local->tm_mday, local->tm_hour, local->tm_min, local->tm_sec);
  std::snprintf(path, sizeof path, "/tmp/var/log/%s", name);
  std::printf("Test Report file path : %s\n", path);
  return path;
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
