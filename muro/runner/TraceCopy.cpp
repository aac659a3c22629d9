#include "TraceCopy.h"

#include <sys/stat.h>
#include <unistd.h>

#include "InputFile.h"
#include "OutputFile.h"

namespace runner {
namespace {

off_t SizeOf(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_size : 0;
}

}  // namespace

TraceCopy::TraceCopy(const std::string& path)
    : path_(path), begin_(path.empty() ? 0 : SizeOf(path)) {}

bool TraceCopy::Keep(const std::string& copyPath) const {
  if (path_.empty()) return true;
  const int from = OpenInputFile(path_);
  if (from < 0) return true;  // the HAL has not been called yet
  // A file that became shorter was restarted.
  lseek(from, SizeOf(path_) < begin_ ? 0 : begin_, SEEK_SET);
  OutputFile copy(copyPath, -1);
  char block[65536];
  for (ssize_t got = 0; (got = read(from, block, sizeof block)) > 0;)
    copy.Write({block, static_cast<std::size_t>(got)});
  close(from);
  return copy.Good();
}

}  // namespace runner
