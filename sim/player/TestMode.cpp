#include "TestMode.h"

#include <charconv>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace player {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kModeKey = "testmode=";
constexpr std::string_view kPathKey = "testresult=";

struct DriverNode {
  Stage stage;
  const char* path;
  std::string_view pathKey;  // precedes the dump's path
};
constexpr DriverNode kNodes[] = {
    {Stage::kVdec, "dev/cvnvdec", kPathKey}, {Stage::kDvo, "dev/cvndvo", kPathKey},
    {Stage::kVo, "dev/vodev", kPathKey},     {Stage::kScaler, "dev/vscdev", kPathKey},
    {Stage::kAudio, "dev/cvnaudio", ""},
};
constexpr char kPictureQualityNode[] = "dev/vpqdev";

// The OMX layer reads a file instead; its first line is for the output, the second for the input.
constexpr char kOmxFile[] = "tmp/OMX_MURO_CONFIG";
constexpr Stage kOmxStages[] = {Stage::kOmxOut, Stage::kOmxIn};

std::vector<std::string> WordsOf(const fs::path& path) {
  std::ifstream file(path);
  return {std::istream_iterator<std::string>(file), {}};
}

/// The text after the key in the first word that starts with the key followed by `next`.
std::optional<std::string> ValueOf(const std::vector<std::string>& words, std::string_view key,
                                   std::string_view next = "") {
  const std::string start = std::string(key).append(next);
  for (const std::string& word : words) {
    if (word.starts_with(start)) return word.substr(key.size());
  }
  return std::nullopt;
}

int ModeOf(const std::vector<std::string>& words) {
  int mode = 0;
  const std::string text = ValueOf(words, kModeKey).value_or("");
  std::from_chars(text.data(), text.data() + text.size(), mode);
  return mode;
}

fs::path Below(const fs::path& root, const std::string& path) {
  return root / fs::path(path).relative_path();
}

void ReadOmx(const fs::path& root, DumpPaths& dumps) {
  std::size_t next = 0;
  for (const std::string& word : WordsOf(root / kOmxFile)) {
    if (next == std::size(kOmxStages)) return;
    if (!word.starts_with(kPathKey)) continue;
    dumps[static_cast<std::size_t>(kOmxStages[next++])] = Below(root, word.substr(kPathKey.size()));
  }
}

}  // namespace

TestMode ReadTestMode(const fs::path& root) {
  TestMode mode;
  for (const DriverNode& node : kNodes) {
    const auto words = WordsOf(root / node.path);
    const auto path = ValueOf(words, node.pathKey, "/");
    if (ModeOf(words) != 0 && path)
      mode.dumps[static_cast<std::size_t>(node.stage)] = Below(root, *path);
  }
  ReadOmx(root, mode.dumps);
  mode.display = {fs::exists(root / "tmp/GST_DVO_FREERUN"),
                  fs::exists(root / "tmp/GST_DVO_FORCE_ADAPTIVE"),
                  ModeOf(WordsOf(root / kPictureQualityNode))};
  return mode;
}

}  // namespace player
