#include "Commands.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "Capture.h"
#include "Comparison.h"
#include "Image.h"
#include "Judgement.h"

namespace eyes {
namespace {

namespace fs = std::filesystem;

constexpr char kBeforeQuestion[] = "before the test";

struct Options {
  std::vector<std::string> names;  // arguments that are not options
  std::string from, test, question, evidence, state;
  bool yes = false;
};

struct OptionName {
  const char* name;
  const char* variable;  // default from the environment; nullptr: none
  std::string Options::*member;
  const char* help;
};
constexpr OptionName kOptions[] = {
    {"--from", nullptr, &Options::from,
     "SOURCE     capture from SOURCE instead of the 'from' of the rules"},
    {"--test", "CVN_TEST", &Options::test, "ID         id of the test (default: $CVN_TEST)"},
    {"--question", "CVN_QUESTION", &Options::question,
     "TEXT   question to be answered (default: $CVN_QUESTION)"},
    {"--evidence", "CVN_EVIDENCE", &Options::evidence,
     "DIR    directory for pictures (default: $CVN_EVIDENCE)"},
    {"--state", nullptr, &Options::state,
     "COMMAND   learn: command that prints the board's state, stored with a reference"},
};

Options ParseOptions(const std::vector<std::string>& words) {
  Options options;
  for (const OptionName& option : kOptions) {
    const char* value = option.variable != nullptr ? std::getenv(option.variable) : nullptr;
    if (value != nullptr) options.*option.member = value;
  }
  for (size_t i = 0; i < words.size(); ++i) {
    const auto* option = std::ranges::find(kOptions, words[i], &OptionName::name);
    if (words[i] == "--yes") {
      options.yes = true;
    } else if (option != std::end(kOptions)) {
      if (i + 1 == words.size()) throw UseError(words[i] + " requires a value");
      options.*option->member = words[++i];
    } else if (words[i].starts_with("--")) {
      throw UseError("unknown option '" + words[i] + "'; try 'cvneyes --help'");
    } else {
      options.names.push_back(words[i]);
    }
  }
  return options;
}

/// Writes a PNG file that exists completely or not at all.
void WritePicture(const std::string& path, const AVFrame& frame) {
  const picture::Bytes bytes = picture::ToPng(frame);
  const std::string next = path + ".part";
  std::ofstream out(next, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  out.close();
  std::error_code error;
  if (out) fs::rename(next, path, error);
  if (!out || error) throw UseError("cannot write " + path);
}

/// Keeps a picture as evidence, at most 960 wide.
void KeepPicture(const Options& options, const char* name, const Pixels& pixels) {
  constexpr int kMostWidth = 960;
  if (options.evidence.empty()) return;
  picture::Picture frame = ToFrame(pixels);
  if (pixels.width > kMostWidth)
    frame = picture::Filtered(*frame, picture::Printed("scale=%d:-1:flags=area", kMostWidth));
  WritePicture((fs::path(options.evidence) / name).string(), *frame);
}

Captures Take(const Options& options, const RulesFile& rules) {
  return Capture(options.from.empty() ? rules.from : options.from, rules);
}

KnownRig RigOf(const RulesFile& rules) {
  if (rules.calibration.empty()) return {};
  return ReadCalibration(rules.PathOf(rules.calibration));
}

RulesFile RulesOf(const Options& options, size_t names, const char* usage) {
  if (options.names.size() != names) throw UseError(std::string("usage: cvneyes ") + usage);
  return ReadRules(options.names[0]);
}

Answer KeepBefore(const Options& options, const RulesFile& rules, std::ostream& out) {
  if (options.evidence.empty()) throw UseError("no directory for the picture; use --evidence");
  KeepPicture(options, "before.png", Take(options, rules).pictures.back());
  out << "picture taken\n";
  return Answer::kYes;
}

const Rule& RuleOf(const Options& options, const RulesFile& rules) {
  if (options.test.empty()) throw UseError("no test: --test, or CVN_TEST");
  if (const Rule* rule = FindRule(rules, options.test, options.question)) return *rule;
  throw UseError("no rule for " + options.test + " and '" + options.question + "'");
}

Answer JudgeOnce(const Options& options, std::ostream& out) {
  const RulesFile rules = RulesOf(options, 1, "judge RULES");
  if (options.question == kBeforeQuestion) return KeepBefore(options, rules, out);
  const Rule& rule = RuleOf(options, rules);
  const KnownRig rig = RigOf(rules);
  Captures captures = Take(options, rules);
  KeepPicture(options, "capture.png", captures.pictures.back());
  const fs::path before = fs::path(options.evidence) / "before.png";
  if (!options.evidence.empty() && fs::exists(before)) {
    captures.before = PictureOf(before.string());
    if (captures.before->width != rules.width || captures.before->height != rules.height)
      captures.before.reset();
  }
  const Verdict verdict = Judge(rule, rules, captures, rig);
  if (verdict.reference) {
    KeepPicture(options, "reference.png", *verdict.reference);
    KeepPicture(options, "difference.png",
                DifferenceOf(*verdict.reference, captures.pictures.back()));
  }
  out << verdict.reason << '\n';
  return verdict.answer;
}

/// The operator's terminal. A run starts its commands in the background, where they cannot read
/// from it, so this process moves to the foreground while the object exists.
class Terminal {
 public:
  Terminal() : descriptor_(open("/dev/tty", O_RDWR | O_CLOEXEC)) {
    if (descriptor_ < 0) throw UseError("no terminal to ask the operator; use --yes");
    std::signal(SIGTTOU, SIG_IGN);
    before_ = tcgetpgrp(descriptor_);
    tcsetpgrp(descriptor_, getpgrp());
  }
  ~Terminal() {
    if (before_ > 0) tcsetpgrp(descriptor_, before_);
    close(descriptor_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// The first character of the line that is typed; a blank if there is none.
  char Ask(const std::string& question) {
    if (write(descriptor_, question.data(), question.size()) < 0) return ' ';
    std::string line;
    for (char character; read(descriptor_, &character, 1) == 1 && character != '\n';)
      line += character;
    return line.empty() ? ' ' : line[0];
  }

 private:
  int descriptor_;
  pid_t before_ = -1;
};

/// The operator's answer, in lower case.
char AskOperator(const Options& options) {
  if (options.yes) return 'y';
  const char answer = Terminal().Ask(
      options.test + ": is the panel as it should be? Y takes the picture as reference: ");
  return static_cast<char>(std::tolower(static_cast<unsigned char>(answer)));
}

/// "VscModule/29" becomes "VscModule.29.png".
std::string FileNameOf(const std::string& test) {
  std::string name = test.substr(0, test.find('@'));
  std::ranges::replace(name, '/', '.');
  return name + ".png";
}

std::string OutputOf(const std::string& command) {
  std::string output;
  if (command.empty()) return output;
  std::FILE* const pipe = popen(command.c_str(), "re");
  if (pipe == nullptr) throw UseError("cannot start " + command);
  char block[4096];
  for (size_t got; (got = fread(block, 1, sizeof block, pipe)) > 0;) output.append(block, got);
  if (pclose(pipe) != 0) throw UseError("'" + command + "' failed");
  return output;
}

void WriteNote(const std::string& path, const Options& options, const RulesFile& rules,
               const Captures& captures) {
  std::ofstream note(path);
  note << "test: " << options.test << "\nquestion: " << options.question
       << picture::Printed("\nrules: %08x\ncapture: %dx%d\n", rules.checksum, captures.width,
                           captures.height)
       << "state:\n"
       << OutputOf(options.state);
  note.close();
  if (!note) throw UseError("cannot write " + path);
}

/// Stores the picture as the test's reference and adds a rule if none uses it.
Answer Learn(const Options& options, std::ostream& out) {
  const RulesFile rules = RulesOf(options, 1, "learn RULES");
  if (options.question == kBeforeQuestion) return KeepBefore(options, rules, out);
  if (options.test.empty()) throw UseError("no test: --test, or CVN_TEST");
  const Captures captures = Take(options, rules);
  const Pixels& now = captures.pictures.back();
  const char answer = AskOperator(options);
  if (answer != 'y') {
    out << (answer == 'n' ? "the operator said no\n" : "no answer\n");
    return answer == 'n' ? Answer::kNo : Answer::kCannotTell;
  }
  const std::string name = FileNameOf(options.test);
  const Likeness itself = Compare(now, now, {}, {}, kUnknownRig);
  if (itself.patches < kFewestPatches)
    throw UseError("the picture has too few flat areas for a comparison of colours");
  WritePicture(rules.PathOf(name), *ToFrame(now));
  WriteNote(rules.PathOf(name + ".txt"), options, rules, captures);
  if (FindRule(rules, options.test, options.question) == nullptr) {
    std::ofstream file(options.names[0], std::ios::app);
    file << options.test.substr(0, options.test.find('@')) << "\t*\treference " << name << '\n';
    file.close();
    if (!file) throw UseError("cannot write " + options.names[0]);
  }
  out << "learned " << name << '\n';
  return Answer::kYes;
}

Answer CalibrateRig(const Options& options, std::ostream& out) {
  const RulesFile rules = RulesOf(options, 2, "calibrate RULES REFERENCE");
  if (rules.calibration.empty()) throw UseError("no 'calibration' in " + options.names[0]);
  const Captures captures = Take(options, rules);
  const Pixels reference = PictureOf(options.names[1]);
  if (reference.width != rules.width || reference.height != rules.height)
    throw UseError(options.names[1] + " differs in size from the judged picture");
  KeepPicture(options, "capture.png", captures.pictures.back());
  const auto rig = Calibrate(reference, captures.pictures.back());
  if (!rig) throw UseError("the capture does not show " + options.names[1]);
  WriteCalibration(rules.PathOf(rules.calibration), *rig);
  out << Text(*rig) << '\n';
  return Answer::kYes;
}

/// Makes references from recipes: one per line, a name and filters separated by a tab; {NAME} is
/// replaced by the filters of an earlier line.
Answer MakeReferences(const Options& options, std::ostream& out) {
  if (options.names.size() != 2) throw UseError("usage: cvneyes make RECIPES DIR");
  std::ifstream in(options.names[0]);
  if (!in) throw UseError("cannot read " + options.names[0]);
  std::vector<std::pair<std::string, std::string>> made;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.empty() || line.starts_with('#')) continue;
    const size_t tab = line.find('\t');
    if (tab == std::string::npos) {
      throw UseError(options.names[0] + ":" + std::to_string(number) +
                     ": a recipe is a name and filters with a tab between");
    }
    const std::string name = line.substr(0, tab);
    std::string filters = line.substr(tab + 1);
    for (const auto& [known, text] : made) {
      const std::string place = "{" + known + "}";
      for (size_t at; (at = filters.find(place)) != std::string::npos;)
        filters.replace(at, place.size(), text);
    }
    try {
      const std::string file = name + ".png";
      WritePicture((fs::path(options.names[1]) / file).string(), *picture::Generate(filters));
    } catch (const std::runtime_error& error) {
      throw UseError(options.names[0] + ":" + std::to_string(number) + ": " + error.what());
    }
    made.emplace_back(name, filters);
  }
  out << made.size() << " references\n";
  return Answer::kYes;
}

struct Task {
  const char* name;
  const char* usage;
  const char* help;
  Answer (*run)(const Options& options, std::ostream& out);
};
constexpr Task kTasks[] = {
    {"judge", "judge RULES", "judge the panel: exit status 0 is yes, 1 no, 2 cannot tell",
     JudgeOnce},
    {"learn", "learn RULES [--yes]", "store the picture as reference if the operator says yes",
     Learn},
    {"calibrate", "calibrate RULES REFERENCE", "calibrate the rig with a picture on the panel",
     CalibrateRig},
    {"make", "make RECIPES DIR", "make references from recipes", MakeReferences},
};

}  // namespace

std::string HelpText() {
  std::string text = "usage: cvneyes TASK ...\n";
  for (const Task& task : kTasks) text += picture::Printed("  %-28s %s\n", task.usage, task.help);
  text += "options:\n";
  for (const OptionName& option : kOptions)
    text += picture::Printed("  %s %s\n", option.name, option.help);
  return text;
}

Answer RunCommandLine(const std::vector<std::string>& words, std::ostream& out) {
  const std::string name = words.empty() ? "" : words.front();
  if (name == "--help") {
    out << HelpText();
    return Answer::kYes;
  }
  const auto* task = std::ranges::find(kTasks, name, &Task::name);
  if (task == std::end(kTasks)) throw UseError("unknown task '" + name + "'\n" + HelpText());
  return task->run(ParseOptions({words.begin() + 1, words.end()}), out);
}

}  // namespace eyes
