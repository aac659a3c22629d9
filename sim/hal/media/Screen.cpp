#include "media/Screen.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>

#include "core/SharedBoard.h"

namespace sim {
namespace {

namespace fs = std::filesystem;

}  // namespace

fs::path ScreenPath() {
  return StatePath().empty() ? "" : fs::path(StatePath() + "-screen");
}

fs::path PlayingPath() {
  return StatePath().empty() ? "" : fs::path(StatePath() + "-playing");
}

fs::path HeldScreenPath(uint32_t number) {
  return ScreenPath().empty() ? "" : fs::path(ScreenPath().string() + "-" + std::to_string(number));
}

bool IsPlaying() {
  const int fd = open(PlayingPath().c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool isLocked = flock(fd, LOCK_SH | LOCK_NB) != 0;
  close(fd);
  return isLocked;
}

void HoldScreen(uint32_t from, uint32_t number) {
  if (from == number || StatePath().empty()) return;
  const fs::path held = HeldScreenPath(number);
  const fs::path next = held.string() + ".next";  // readers must not see half a file
  std::error_code error;
  fs::copy_file(from == 0 ? ScreenPath() : HeldScreenPath(from), next,
                fs::copy_options::overwrite_existing, error);
  if (error) return ReleaseScreen(number);
  fs::rename(next, held, error);
}

void ReleaseScreen(uint32_t number) {
  std::error_code ignored;
  fs::remove(HeldScreenPath(number), ignored);
}

}  // namespace sim
