#include "Options.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <span>

#include "Text.h"

namespace runner {
namespace {

using Setter = std::string (*)(Options& options, const std::string& value);

constexpr unsigned Bit(Mode mode) {
  return 1U << static_cast<unsigned>(mode);
}
constexpr unsigned kRunOnly = Bit(Mode::kRun);
constexpr unsigned kListAndRun = Bit(Mode::kList) | Bit(Mode::kRun);
constexpr std::size_t kMostShards = 9999;
constexpr unsigned kRunAndVerify = Bit(Mode::kRun) | Bit(Mode::kVerify);

enum class Takes { kNothing, kOne, kSome, kAny };  // kSome: one or more words, kAny: none or more

struct Row {
  const char* section;  // title above this row and the next ones; null: as before
  const char* name;
  Takes takes;
  const char* argument;  // as shown; with "|" between the allowed words
  unsigned modes;        // where it may stand; 0: it sets the mode itself
  Setter set;
  const char* help;
};

template <Mode mode>
std::string SetMode(Options& options, const std::string&) {
  if (options.mode != Mode::kInteractive) return "one of the things to do only";
  options.mode = mode;
  return "";
}

template <std::string Options::*member>
std::string SetText(Options& options, const std::string& value) {
  options.*member = value;
  return "";
}

template <ResultFormat format>
std::string SetOutput(Options& options, const std::string& value) {
  options.outputs[format] = value;
  return "";
}

std::string SetEyes(Options& options, const std::string& value) {
  options.eyes.command = value;
  return "";
}

std::string SetEyesAlways(Options& options, const std::string&) {
  options.eyes.always = true;
  return "";
}

std::string SetEyesBefore(Options& options, const std::string&) {
  options.eyes.before = true;
  return "";
}

template <bool Options::*member>
std::string SetFlag(Options& options, const std::string&) {
  options.*member = true;
  return "";
}

template <class Number>
bool ParseWhole(const std::string& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

std::string ReadSeconds(const std::string& value, double& seconds) {
  if (ParseWhole(value, seconds) && seconds >= 0 && seconds <= 1e7) return "";
  return "'" + value + "' is no number of seconds from 0 to 10000000";
}

template <double Limits::*member>
std::string SetSeconds(Options& options, const std::string& value) {
  return ReadSeconds(value, options.limits.*member);
}

std::string SetEyesSeconds(Options& options, const std::string& value) {
  return ReadSeconds(value, options.eyes.limitS);
}

std::string SetShard(Options& options, const std::string& value) {
  const std::vector<std::string> parts = Split(value, '/');
  Shard& shard = options.shard;
  if (parts.size() == 2 && ParseWhole(parts[0], shard.number) && ParseWhole(parts[1], shard.of) &&
      shard.number >= 1 && shard.number <= shard.of && shard.of <= kMostShards)
    return "";
  return "invalid shard '" + value + "': expected I/N with I from 1 to N and N up to 9999";
}

std::string SetHealth(Options& options, const std::string& value) {
  options.health.command = value;
  return "";
}

std::string SetHealthSeconds(Options& options, const std::string& value) {
  return ReadSeconds(value, options.health.limitS);
}

std::string SetRepeat(Options& options, const std::string& value) {
  options.repeatGiven = true;
  if (ParseWhole(value, options.repeat) && options.repeat >= 1) return "";
  return "'" + value + "' is no number of rounds from 1 on";
}

std::string SetSeed(Options& options, const std::string& value) {
  uint32_t seed = 0;
  if (!ParseWhole(value, seed)) return "'" + value + "' is no number from 0 to 4294967295";
  options.shuffleSeed = seed;
  return "";
}

std::string AddLabel(Options& options, const std::string& value) {
  constexpr char kNameCharacters[] = "abcdefghijklmnopqrstuvwxyz0123456789-_";
  const std::size_t equals = value.find('=');
  const std::string name = value.substr(0, equals);
  if (equals == std::string::npos || name.empty() || equals + 1 == value.size() ||
      name.find_first_not_of(kNameCharacters) != std::string::npos)
    return "'" + value + "' is no NAME=VALUE with a name of a-z, 0-9, - and _";
  options.labels.push_back({name, CleanLine(value.substr(equals + 1))});
  return "";
}

template <std::vector<std::string> Options::*member>
std::string AddPattern(Options& options, const std::string& value) {
  (options.*member).push_back(value);
  return "";
}

template <Mode mode, std::string Options::*member>
std::string SetModeAndText(Options& options, const std::string& value) {
  std::string wrong = SetMode<mode>(options, "");
  return wrong.empty() ? SetText<member>(options, value) : wrong;
}

/// The words of --list and --run come one by one; the first call sets the mode. --list without any
/// comes with an empty one.
template <Mode mode>
std::string SetModeAndPattern(Options& options, const std::string& value) {
  if (options.mode != mode || value.empty()) {
    std::string wrong = SetMode<mode>(options, "");
    if (!wrong.empty() || value.empty()) return wrong;
  }
  return AddPattern<&Options::patterns>(options, value);
}

constexpr Row kRows[] = {
    {"What to do", "--help", Takes::kNothing, "", 0, SetMode<Mode::kHelp>, "print this help"},
    {nullptr, "--version", Takes::kNothing, "", 0, SetMode<Mode::kVersion>, "print the version"},
    {nullptr, "--list", Takes::kAny, "PATTERN", 0, SetModeAndPattern<Mode::kList>,
     "list all tests, or those selected"},
    {nullptr, "--run", Takes::kSome, "PATTERN", 0, SetModeAndPattern<Mode::kRun>,
     "run the selected tests without an operator, each in a process of its own"},
    {nullptr, "--resume", Takes::kOne, "DIR", 0, SetModeAndText<Mode::kResume, &Options::results>,
     "go on with the run whose results are in DIR, behind the last test in its journal"},
    {nullptr, "--retry-from", Takes::kOne, "DIR", 0,
     SetModeAndText<Mode::kRun, &Options::retryFrom>,
     "run the suspect tests of the run whose results are in DIR: those in which the board went "
     "down "
     "or after which it was not well"},
    {nullptr, "--verify", Takes::kOne, "CASE", 0,
     SetModeAndText<Mode::kVerify, &Options::verifyCase>,
     "verify the dumps of a playback test case (101) without a board; needs --dump and --golden"},
    {nullptr, "--record", Takes::kOne, "FILE", Bit(Mode::kInteractive), SetText<&Options::record>,
     "open the console as ever and write what the operator answers as a file for --answers"},
    {nullptr, "--document", Takes::kOne, "man|bash", 0,
     SetModeAndText<Mode::kDocument, &Options::document>,
     "print the man page or the completion for bash"},

    {"Selection", "--exclude", Takes::kSome, "PATTERN", kListAndRun, AddPattern<&Options::excluded>,
     "leave these out of the selection"},
    {nullptr, "--no-operator", Takes::kNothing, "", kListAndRun, SetFlag<&Options::noOperator>,
     "leave out tests that ask or have to be judged; a run counts them as skipped"},
    {nullptr, "--disruptive", Takes::kNothing, "", kRunOnly, SetFlag<&Options::disruptive>,
     "also run tests that change the board for good; without it only those that are named exactly"},
    {nullptr, "--shard", Takes::kOne, "I/N", kListAndRun, SetShard,
     "part I of N of the selection; the parts are the same on every machine and together all of "
     "it"},
    {nullptr, "--shard-times", Takes::kOne, "PATH", kListAndRun, SetText<&Options::shardTimes>,
     "result directory or JUnit file of an earlier run, by which parts take equally long"},
    {nullptr, "--format", Takes::kOne, "text|tsv|json", Bit(Mode::kList), SetText<&Options::format>,
     "of the list"},

    {"Running", "--answers", Takes::kOne, "FILE", kRunOnly, SetText<&Options::answers>,
     "answers to prompts, a line each: test, prompt and answer with tabs between"},
    {nullptr, "--eyes", Takes::kOne, "COMMAND", kRunOnly, SetEyes,
     "shell command that looks at the panel and answers the question for the verdict: status 0 is "
     "yes, 1 no, anything else blocks the test"},
    {nullptr, "--eyes-always", Takes::kNothing, "", kRunOnly, SetEyesAlways,
     "the command also looks at the end of every test that judges itself"},
    {nullptr, "--eyes-before", Takes::kNothing, "", kRunOnly, SetEyesBefore,
     "the command also looks before every test, for what is to be compared with that"},
    {nullptr, "--eyes-timeout", Takes::kOne, "SECONDS", kRunOnly, SetEyesSeconds,
     "limit of one look (30); 0 is none"},
    {nullptr, "--manual-play", Takes::kNothing, "", Bit(Mode::kInteractive) | kRunOnly,
     SetFlag<&Options::manualPlay>,
     "playback tests start no player: somebody plays the content and presses a key at its end"},
    {nullptr, "--timeout", Takes::kOne, "SECONDS", kRunOnly, SetSeconds<&Limits::timeoutS>,
     "limit of one test in all (600); 0 is none"},
    {nullptr, "--idle-timeout", Takes::kOne, "SECONDS", kRunOnly, SetSeconds<&Limits::idleS>,
     "limit without output or answer (60); 0 is none"},
    {nullptr, "--health", Takes::kOne, "COMMAND", kRunOnly, SetHealth,
     "shell command that looks whether the board is well, before the first test and after every "
     "one that went wrong; when it fails, the run ends with status 99"},
    {nullptr, "--health-timeout", Takes::kOne, "SECONDS", kRunOnly, SetHealthSeconds,
     "limit of that command (60); 0 is none"},
    {nullptr, "--repeat", Takes::kOne, "N", kRunOnly, SetRepeat, "run the selection N times"},
    {nullptr, "--until-fail", Takes::kNothing, "", kRunOnly, SetFlag<&Options::untilFail>,
     "repeat until a test does not pass, at most as often as --repeat says"},
    {nullptr, "--shuffle", Takes::kOne, "SEED", kRunOnly, SetSeed,
     "another order in every round, the same for the same seed"},
    {nullptr, "--stop-on-fail", Takes::kNothing, "", kRunOnly, SetFlag<&Options::stopOnFail>,
     "skip what is left when a test did not pass"},
    {nullptr, "--trace", Takes::kOne, "FILE", kRunOnly, SetText<&Options::trace>,
     "file to which the board's HAL appends its calls; each test's part is kept with its log"},

    {"Results", "--results", Takes::kOne, "DIR", kRunOnly, SetText<&Options::results>,
     "a new directory for a log a test and the journal that --resume needs"},
    {nullptr, "--label", Takes::kOne, "NAME=VALUE", kRunOnly, AddLabel,
     "a fact about the run for its result directory, such as board=lab-7, build=1431 or run=night; "
     "can be repeated"},
#define RESULT_FORMAT(name, option, help) \
  {nullptr, option, Takes::kOne, "FILE", kRunAndVerify, SetOutput<k##name>, help},
#include "ResultFormats.def"
    {nullptr, "--color", Takes::kOne, "auto|always|never", kRunAndVerify | Bit(Mode::kResume),
     SetText<&Options::color>, "of the runner's own output; NO_COLOR in the environment is never"},
    {nullptr, "--verbose", Takes::kNothing, "", kRunOnly | Bit(Mode::kResume),
     SetFlag<&Options::verbose>, "show what the tests print"},

    {"Verifying", "--dump", Takes::kOne, "DIR", Bit(Mode::kVerify), SetText<&Options::dump>,
     "directory of the kept dumps, or an archive of them as the board packs it"},
    {nullptr, "--golden", Takes::kOne, "DIR", Bit(Mode::kVerify), SetText<&Options::golden>,
     "directory of the golden files"},
    {nullptr, "--events", Takes::kOne, "FILE", Bit(Mode::kVerify), SetText<&Options::events>,
     "one JSON object a line for everything that happened to frames"},
    {nullptr, "--strip", Takes::kOne, "FILE", Bit(Mode::kVerify), SetText<&Options::strip>,
     "the same as a picture (SVG): a track for each stage over the time"},
};

constexpr char kExitStatus[] =
    "0 all passed, 1 a test failed, went wrong or was blocked, 2 wrong usage, 77 nothing ran,\n"
    "99 the harness or its environment failed.";
constexpr char kPatterns[] =
    "A PATTERN is a glob for a module class (UTVpqModule), class and number (VscModule/31), a\n"
    "name or a description ('*HDCP*'), case-sensitive.";
constexpr char kDescription[] =
    "A console test harness for the hardware abstraction layer of a television. Without options\n"
    "it opens its menus for an operator.";

std::string Shown(const Row& row) {
  switch (row.takes) {
    case Takes::kNothing:
      return row.name;
    case Takes::kOne:
      return std::string(row.name) + " " + row.argument;
    case Takes::kSome:
      return std::string(row.name) + " " + row.argument + "...";
    case Takes::kAny:
      break;
  }
  return std::string(row.name) + " [" + row.argument + "...]";
}

/// The words that an argument such as "man|bash" allows; none when it is free.
std::vector<std::string> AllowedWords(const Row& row) {
  std::vector<std::string> words = Split(row.argument, '|');
  if (words.size() == 1) words.clear();
  return words;
}

const Row* FindRow(const std::string& name) {
  const auto* row = std::ranges::find_if(kRows, [&](const Row& r) { return name == r.name; });
  return row == std::end(kRows) ? nullptr : row;
}

bool IsOption(const std::string& word) {
  return word.size() > 1 && word[0] == '-';
}

std::string Set(const Row& row, const std::string& value, Options& options) {
  const std::vector<std::string> allowed = AllowedWords(row);
  if (!allowed.empty() && std::ranges::find(allowed, value) == allowed.end())
    return std::string(row.name) + ": '" + value + "' is none of " + row.argument;
  std::string wrong = row.set(options, value);
  return wrong.empty() ? "" : std::string(row.name) + ": " + wrong;
}

/// Takes the option at `words[0]` with its values from the front of `words`.
std::string TakeOption(std::span<const std::string>& words, Options& options,
                       std::vector<const Row*>& used) {
  const std::size_t equals = words[0].find('=');
  const std::string name = words[0].substr(0, equals);
  const Row* row = FindRow(name);
  if (row == nullptr) return "unknown option " + name;
  used.push_back(row);
  std::vector<std::string> values;
  if (equals != std::string::npos) values.push_back(words[0].substr(equals + 1));
  words = words.subspan(1);
  const bool several = row->takes == Takes::kSome || row->takes == Takes::kAny;
  while (!words.empty() && !IsOption(words[0]) && row->takes != Takes::kNothing &&
         (several || values.empty())) {
    values.push_back(words[0]);
    words = words.subspan(1);
  }
  // A single "-" is a value, but no option.
  if (values.empty() && row->takes != Takes::kNothing && row->takes != Takes::kAny)
    return name + " needs " + row->argument;
  if (!values.empty() && row->takes == Takes::kNothing) return name + " takes no value";
  if (std::ranges::any_of(values, &std::string::empty)) return name + ": must not be empty";
  if (values.empty()) values.emplace_back();
  for (const std::string& value : values) {
    std::string wrong = Set(*row, value, options);
    if (!wrong.empty()) return wrong;
  }
  return "";
}

/// The options that say what to do and that `row` goes with.
std::vector<std::string> ModesOf(const Row& row) {
  std::vector<std::string> names;
  for (const Row& mode : kRows) {
    Options probe;
    if (mode.modes == 0 && mode.set(probe, "x").empty() && (row.modes & Bit(probe.mode)) != 0)
      names.emplace_back(mode.name);
  }
  return names;
}

std::string CheckCombination(const Options& options, const std::vector<const Row*>& used) {
  for (const Row* row : used) {
    if (row->modes != 0 && (row->modes & Bit(options.mode)) == 0) {
      const std::string modes = Joined(ModesOf(*row), ", ");
      return std::string(row->name) + " does not belong here; it " +
             (modes.empty() ? "stands alone" : "goes with " + modes);
    }
  }
  if (options.mode == Mode::kVerify && (options.dump.empty() || options.golden.empty()))
    return "--verify needs --dump and --golden";
  if (!options.trace.empty() && options.results.empty()) return "--trace needs --results";
  if (!options.labels.empty() && options.results.empty()) return "--label needs --results";
  if (options.manualPlay && options.noOperator)
    return "--manual-play needs an operator or --answers, and --no-operator leaves out such tests";
  if (!options.shardTimes.empty() && options.shard.of == 1) return "--shard-times needs --shard";
  if (options.eyes.always && options.eyes.command.empty()) return "--eyes-always needs --eyes";
  if (options.eyes.before && options.eyes.command.empty()) return "--eyes-before needs --eyes";
  if (std::ranges::count(options.outputs, "-") + (options.events == "-") + (options.strip == "-") >
      1)
    return "only one kind of result can go to standard output";
  return "";
}

std::string RoffText(const std::string& text) {
  std::string roff;
  for (const char c : text) {
    if (c == '-' || c == '\\') roff += '\\';
    roff += c == '\\' ? 'e' : c;
  }
  return roff;
}

std::string ManPage() {
  std::string page = ".TH CVNTESTER 1 \"\" \"cvntester " CVN_VERSION "\"\n.SH NAME\n" +
                     RoffText("cvntester - test harness for television HALs") +
                     "\n.SH SYNOPSIS\n.B cvntester\n[\\fIOPTION\\fR]...\n.SH DESCRIPTION\n" +
                     RoffText(kDescription) + "\n.PP\n" + RoffText(kPatterns) + "\n";
  for (const Row& row : kRows) {
    if (row.section != nullptr) page += ".SH " + RoffText(row.section) + "\n";
    page += ".TP\n.B " + RoffText(Shown(row)) + "\n" + RoffText(row.help) + "\n";
  }
  return page + ".SH EXIT STATUS\n" + RoffText(kExitStatus) + "\n";
}

/// What the completion does behind an option: words, files, directories or tests.
std::string CompletionOf(const Row& row) {
  const std::string argument = row.argument;
  const std::string words = Joined(AllowedWords(row), " ");
  if (!words.empty()) return "COMPREPLY=($(compgen -W '" + words + "' -- \"$cur\"))";
  if (argument == "FILE" || argument == "PATH") return "COMPREPLY=($(compgen -f -- \"$cur\"))";
  if (argument == "DIR") return "COMPREPLY=($(compgen -d -- \"$cur\"))";
  if (argument != "PATTERN") return "COMPREPLY=()";
  return "COMPREPLY=($(compgen -W \"$(cvntester --list --format tsv 2>/dev/null |"
         " cut -f1,2 | tr '\\t' '\\n' | sort -u)\" -- \"$cur\"))";
}

std::string BashCompletion() {
  std::vector<std::string> names;
  std::string cases;
  for (const Row& row : kRows) {
    names.emplace_back(row.name);
    if (row.takes != Takes::kNothing)
      cases += "    " + std::string(row.name) + ") " + CompletionOf(row) + " ;;\n";
  }
  return "# Completion of cvntester's options for bash.\n"
         "_cvntester() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]} i=$((COMP_CWORD - 1))\n"
         "  if [[ $cur == -* ]]; then\n"
         "    COMPREPLY=($(compgen -W '" +
         Joined(names, " ") +
         "' -- \"$cur\"))\n"
         "    return\n"
         "  fi\n"
         "  while ((i > 0)) && [[ ${COMP_WORDS[i]} != -* ]]; do ((i--)); done\n"
         "  case ${COMP_WORDS[i]} in\n" +
         cases +
         "    *) COMPREPLY=() ;;\n"
         "  esac\n"
         "}\n"
         "complete -F _cvntester cvntester\n";
}

}  // namespace

std::string ParseOptions(const std::vector<std::string>& words, Options& options) {
  std::span<const std::string> rest = words;
  std::vector<const Row*> used;
  while (!rest.empty()) {
    if (!IsOption(rest[0])) return "'" + rest[0] + "' is no option";
    std::string wrong = TakeOption(rest, options, used);
    if (!wrong.empty()) return wrong;
  }
  return CheckCombination(options, used);
}

std::string HelpText() {
  std::string text = std::string("usage: cvntester [OPTION]...\n") + kDescription + "\n";
  for (const Row& row : kRows) {
    if (row.section != nullptr) text += std::string("\n") + row.section + ":\n";
    std::string left = "  " + Shown(row);
    left.resize(std::max<std::size_t>(left.size() + 2, 28), ' ');
    text += left + row.help + "\n";
  }
  return text + "\n" + kPatterns + "\n\nExit status: " + kExitStatus + "\n";
}

std::string Document(const std::string& kind) {
  return kind == "man" ? ManPage() : BashCompletion();
}

}  // namespace runner
