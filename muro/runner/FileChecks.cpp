#include "FileChecks.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

namespace runner {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFormatOptions[] = {
#define RESULT_FORMAT(name, option, help) option,
#include "ResultFormats.def"
};

struct Use {
  const char* option;
  const std::string& path;
};

std::vector<Use> OutputsOf(const Options& options) {
  std::vector<Use> all = {{"--events", options.events}, {"--strip", options.strip}};
  for (std::size_t format = 0; format < options.outputs.size(); ++format)
    all.push_back({kFormatOptions[format], options.outputs[format]});
  return all;
}

/// The path with links resolved as far as it exists.
fs::path Followed(const std::string& path) {
  std::error_code error;
  const fs::path followed = fs::weakly_canonical(fs::absolute(path, error), error);
  return error ? fs::path(path) : followed;
}

bool IsThere(const std::string& path, struct stat& status) {
  return path == "-" ? fstat(STDOUT_FILENO, &status) == 0 : stat(path.c_str(), &status) == 0;
}

/// True if the output for both would be mixed in one file. /dev/null does not count: it discards
/// everything.
bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first = {};
  struct stat second = {};
  struct stat nowhere = {};
  const bool firstIsThere = IsThere(a, first);
  if (firstIsThere != IsThere(b, second)) return false;
  if (!firstIsThere) return Followed(a) == Followed(b);
  if (S_ISCHR(first.st_mode) && stat("/dev/null", &nowhere) == 0 &&
      first.st_rdev == nowhere.st_rdev)
    return false;
  return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// True for the journal, the record and the logs in a result directory.
bool BelongsToDirectory(const std::string& path, const std::string& directory) {
  const fs::path inside = Followed(path).lexically_relative(Followed(directory));
  return !inside.empty() && (inside == "." || inside == "journal" || inside == "results.jsonl" ||
                             *inside.begin() == "logs");
}

}  // namespace

std::string CheckFiles(const Options& options) {
  std::vector<Use> uses;
  for (const Use& output : OutputsOf(options)) {
    if (output.path.empty()) continue;
    for (const Use& other : uses) {
      if (IsSameFile(other.path, output.path))
        return std::string(other.option) + " and " + output.option +
               " are the same file: " + output.path;
    }
    for (const Use& input : {Use{"--answers", options.answers}, Use{"--trace", options.trace},
                             Use{"--shard-times", options.shardTimes}}) {
      if (!input.path.empty() && IsSameFile(input.path, output.path))
        return std::string(output.option) + " would overwrite " + input.option + ": " + output.path;
    }
    if (!options.results.empty() && BelongsToDirectory(output.path, options.results))
      return std::string(output.option) + ": " + output.path + " is a file of --results";
    uses.push_back(output);
  }
  return "";
}

}  // namespace runner
