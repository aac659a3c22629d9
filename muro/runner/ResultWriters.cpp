#include "ResultWriters.h"

#include "Text.h"

namespace runner {
namespace {

using Make = std::unique_ptr<RunListener> (*)(const std::string& path, int standardOutput);

constexpr Make kMakers[] = {
#define RESULT_FORMAT(name, option, help) Make##name##Writer,
#include "ResultFormats.def"
};

}  // namespace

std::string BaseId(const std::string& id) {
  return id.substr(0, id.find('@'));
}

std::string PlannedTest::Title() const {
  const std::string_view what = Trimmed(description);
  return id + " " + name + (what.empty() ? "" : " (" + std::string(what) + ")");
}

std::string Totals::Text() const {
  const auto count = [](std::size_t number, const char* what) {
    return std::to_string(number) + " " + what;
  };
  return count(listed, "listed = ") + count(Run(), "run + ") +
         count(Of(Verdict::kSkipped), "skipped + ") + count(Of(Verdict::kBlocked), "blocked; ") +
         count(Of(Verdict::kPass), "passed, ") + count(Of(Verdict::kFail), "failed, ") +
         count(Of(Verdict::kError), "errors") +
         (skippedRounds > 0 ? "; " + std::to_string(skippedRounds) + " rounds skipped" : "");
}

std::vector<std::unique_ptr<RunListener>> MakeWriters(const Outputs& outputs, int standardOutput) {
  std::vector<std::unique_ptr<RunListener>> writers;
  for (std::size_t format = 0; format < outputs.size(); ++format) {
    if (!outputs[format].empty())
      writers.push_back(kMakers[format](outputs[format], standardOutput));
  }
  return writers;
}

}  // namespace runner
