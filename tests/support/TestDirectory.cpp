#include "TestDirectory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace test {
namespace {

namespace fs = std::filesystem;

constexpr char kVariable[] = "TEST_TMPDIR";  // read by GoogleTest's TempDir()

/// Creates a directory before each test as its working directory and removes it with its contents
/// afterwards: some tests of the harness save a picture under the name that was typed.
class TestDirectories : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo&) override {
    directory_ = (base_ / "cvntest-XXXXXX").string();
    if (mkdtemp(directory_.data()) == nullptr) {
      std::perror(directory_.c_str());
      std::exit(1);
    }
    chmod(directory_.c_str(), 0755);  // some tests also run as other users
    setenv(kVariable, directory_.c_str(), 1);
    fs::current_path(directory_);
  }

  void OnTestEnd(const testing::TestInfo&) override {
    std::error_code ignored;
    fs::current_path(home_, ignored);
    fs::remove_all(directory_, ignored);
    unsetenv(kVariable);
  }

  const fs::path home_ = fs::current_path();
  const fs::path base_ = testing::TempDir();
  std::string directory_;
};

[[maybe_unused]] const bool kListening = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new TestDirectories);
  return true;
}();

bool NewMountNamespace() {
  const uid_t user = getuid();
  if (unshare(CLONE_NEWNS) == 0) return true;
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
  return true;
}

/// Waits until no other process holds the lock, then holds it until this process ends.
bool TakesItsTurn(const std::string& lock) {
  const int file = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  return file >= 0 && flock(file, LOCK_EX) == 0;
}

}  // namespace

bool HaveAlone(const char* directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  return (NewMountNamespace() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
          mount("tmpfs", directory, "tmpfs", 0, "size=256m") == 0) ||
         TakesItsTurn(std::string(directory).append(".lock"));
}

}  // namespace test
