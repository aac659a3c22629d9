#include "TemporaryDirectory.h"

#include <cstdlib>
#include <filesystem>

namespace runner {

namespace fs = std::filesystem;

TemporaryDirectory::TemporaryDirectory() {
  std::error_code error;
  std::string name = (fs::temp_directory_path(error) / "cvntester-XXXXXX").string();
  if (!error && mkdtemp(name.data()) != nullptr) path_ = name;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  if (!path_.empty()) fs::remove_all(path_, ignored);
}

}  // namespace runner
