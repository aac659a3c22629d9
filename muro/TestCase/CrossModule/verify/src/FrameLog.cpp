#include "FrameLog.h"

#include <cstdio>

void FrameLog::Flush() {
  std::fwrite(buffer_.data(), 1, used_, stdout);
  used_ = 0;
}
