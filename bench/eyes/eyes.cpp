// How often the eyes accept a wrong picture or reject a right one, and how long a verdict takes.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "Captures.h"
#include "Comparison.h"
#include "Judgement.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

using captures::BadCapture;
using captures::Captured;
using captures::Shown;
using eyes::Likeness;
using eyes::Rig;

constexpr char kUsage[] = "usage: bench_eyes [DEFECTS GOOD]\n";

struct Row {
  int pictures = 0;
  int alike = 0;
  double leastColor = 1e9, mostColor = 0;
  double leastStructure = 1e9, mostStructure = 0;
};

/// The picture of a scene, which is made only once.
const eyes::Pixels& Kept(const std::string& filters) {
  static std::map<std::string, eyes::Pixels> kept;
  const auto [entry, isNew] = kept.try_emplace(filters);
  if (isNew) entry->second = Shown(filters);
  return entry->second;
}

double CpuMilliseconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

struct Bench {
  std::map<std::string, Row> rows;
  std::vector<double> milliseconds;
  int rigs = 0;
  int measured = 0;

  void Judge(const std::string& kind, const std::string& what, const eyes::Pixels& reference,
             const eyes::Pixels& capture, const Rig* rig, const BadCapture& bad, bool shouldPass) {
    const double start = CpuMilliseconds();
    const Likeness likeness = Compare(reference, capture, {}, rig != nullptr ? *rig : Rig{},
                                      rig != nullptr ? eyes::kCalibratedRig : eyes::kUnknownRig);
    milliseconds.push_back(CpuMilliseconds() - start);
    Row& row = rows[kind];
    ++row.pictures;
    row.alike += likeness.IsAlike();
    row.leastColor = std::min(row.leastColor, likeness.color);
    row.mostColor = std::max(row.mostColor, likeness.color);
    row.leastStructure = std::min(row.leastStructure, likeness.structure);
    row.mostStructure = std::max(row.mostStructure, likeness.structure);
    if (likeness.IsAlike() == shouldPass) return;
    std::printf("WRONG: %s, %s: colour %.1f structure %.1f shift %.2f, %s; capture %s\n",
                kind.c_str(), what.c_str(), likeness.color, likeness.structure, likeness.shift,
                eyes::Text(likeness.rig).c_str(), bad.Text().c_str());
  }
};

/// Two captures of a picture that should move but is frozen.
void JudgeFrozen(Bench& bench, const captures::Scene& scene, const BadCapture& capture) {
  const eyes::Pixels& shown = Kept(scene.filters);
  const eyes::Rule rule = {"*", "*", "moving",
                           eyes::ParseConditions("moving", shown.width, shown.height)};
  eyes::RulesFile rules;
  rules.trustsBlack = true;
  const eyes::Verdict verdict = Judge(
      rule, rules,
      {{Captured(shown, capture), Captured(shown, capture)}, {}, shown.width, shown.height}, {});
  Row& row = bench.rows["frozen"];
  ++row.pictures;
  row.alike += verdict.answer == eyes::Answer::kYes;
}

/// The rig of a capture, calibrated as before a run.
Rig Measured(const BadCapture& capture, Bench& bench) {
  const eyes::Pixels& shown = Kept(captures::Scenes().front().filters);
  const auto rig = Calibrate(shown, Captured(shown, capture));
  ++bench.rigs;
  bench.measured += rig.has_value();
  if (!rig) std::printf("no calibration: %s\n", capture.Text().c_str());
  return rig.value_or(Rig{});
}

void PrintTable(Bench& bench) {
  std::printf("%-28s %8s %6s %6s %16s %16s\n", "", "pictures", "yes", "no", "colour", "structure");
  for (const auto& [kind, row] : bench.rows) {
    std::printf("%-28s %8d %6d %6d", kind.c_str(), row.pictures, row.alike,
                row.pictures - row.alike);
    if (row.mostColor > 0) {
      std::printf(" %7.1f .. %5.1f %7.1f .. %5.1f", row.leastColor, row.mostColor,
                  row.leastStructure, row.mostStructure);
    }
    std::printf("\n");
  }
  std::ranges::sort(bench.milliseconds);
  std::printf("\n%d of %d rigs measured\n", bench.measured, bench.rigs);
  std::printf("a judgement on one core: %.1f ms in the middle, %.1f ms at most of %zu\n",
              bench.milliseconds[bench.milliseconds.size() / 2], bench.milliseconds.back(),
              bench.milliseconds.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 1 && argc != 3) {
    std::fputs(kUsage, stderr);
    return EXIT_FAILURE;
  }
  const int defects = argc == 3 ? std::atoi(argv[1]) : 200;
  const int frozen = std::max(1, defects / 8);
  const int good = argc == 3 ? std::atoi(argv[2]) : 500;
  av_log_set_level(AV_LOG_ERROR);
  Bench bench;
  std::mt19937 random(18);
  for (const captures::Defect& defect : captures::Defects(static_cast<size_t>(defects - frozen))) {
    const BadCapture capture = captures::Draw(random);
    const Rig rig = Measured(capture, bench);
    bench.Judge(defect.kind, defect.shown, Kept(defect.shown), Captured(Kept(defect.seen), capture),
                &rig, capture, false);
  }
  for (int i = 0; i < good; ++i) {
    const auto& scene = captures::Scenes()[static_cast<size_t>(i) % captures::Scenes().size()];
    const BadCapture capture = captures::Draw(random);
    const Rig rig = Measured(capture, bench);
    const eyes::Pixels seen = Captured(Kept(scene.filters), capture);
    bench.Judge("good, calibrated", scene.name, Kept(scene.filters), seen, &rig, capture, true);
    bench.Judge("good, not calibrated", scene.name, Kept(scene.filters), seen, nullptr, capture,
                true);
  }
  for (int i = 0; i < frozen; ++i) {
    const auto& scenes = captures::Scenes();
    JudgeFrozen(bench, scenes[static_cast<size_t>(i) % scenes.size()], captures::Draw(random));
  }
  PrintTable(bench);
  return EXIT_SUCCESS;
}
