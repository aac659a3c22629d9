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

// kMaybe: a word or none, kSome: one or more, kAny: none or more
enum class Takes { kNothing, kOne, kMaybe, kSome, kAny };

struct Row {
  const char* section;  // title above this row and the next ones; null: same as before
  const char* name;
  Takes takes;
  const char* argument;  // as shown; with "|" between the allowed words
  unsigned modes;        // in which it is allowed; 0: it sets the mode itself
  Setter set;
  const char* help;
};

template <Mode mode>
std::string SetMode(Options& options, const std::string&) {
  if (options.mode != Mode::kInteractive) return "cannot be combined with another mode";
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
  return "invalid value '" + value + "': expected seconds from 0 to 10000000";
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
  return "invalid value '" + value + "': expected a number of rounds, at least 1";
}

std::string SetSeed(Options& options, const std::string& value) {
  uint32_t seed = 0;
  if (!ParseWhole(value, seed))
    return "invalid value '" + value + "': expected a number from 0 to 4294967295";
  options.shuffleSeed = seed;
  return "";
}

std::string AddLabel(Options& options, const std::string& value) {
  constexpr char kNameCharacters[] = "abcdefghijklmnopqrstuvwxyz0123456789-_";
  const std::size_t equals = value.find('=');
  const std::string name = value.substr(0, equals);
  if (equals == std::string::npos || name.empty() || equals + 1 == value.size() ||
      name.find_first_not_of(kNameCharacters) != std::string::npos)
    return "invalid value '" + value + "': expected NAME=VALUE, NAME of a-z, 0-9, - and _";
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

/// The words of --list and --run arrive one by one; the first call sets the mode. --list without
/// words arrives with an empty one.
template <Mode mode>
std::string SetModeAndPattern(Options& options, const std::string& value) {
  if (options.mode != mode || value.empty()) {
    std::string wrong = SetMode<mode>(options, "");
    if (!wrong.empty() || value.empty()) return wrong;
  }
  return AddPattern<&Options::patterns>(options, value);
}

constexpr Row kRows[] = {
    {"Modes", "--help", Takes::kNothing, "", 0, SetMode<Mode::kHelp>, "print this help"},
    {nullptr, "--version", Takes::kNothing, "", 0, SetMode<Mode::kVersion>,
     "print version, commit, build and the fingerprint of the HAL interface"},
    {nullptr, "--check-hal", Takes::kMaybe, "FILE", 0,
     SetModeAndText<Mode::kCheckHal, &Options::checkedHal>,
     "check that the board's HAL library, or the library FILE, has all functions that the tests "
     "call; print the missing ones"},
    {nullptr, "--list", Takes::kAny, "PATTERN", 0, SetModeAndPattern<Mode::kList>,
     "list all tests, or the selected ones"},
    {nullptr, "--run", Takes::kSome, "PATTERN", 0, SetModeAndPattern<Mode::kRun>,
     "run the selected tests unattended, each in its own process"},
    {nullptr, "--resume", Takes::kOne, "DIR", 0, SetModeAndText<Mode::kResume, &Options::results>,
     "resume the interrupted run in DIR after the last test recorded in its journal"},
    {nullptr, "--retry-from", Takes::kOne, "DIR", 0,
     SetModeAndText<Mode::kRun, &Options::retryFrom>,
     "run the suspect tests of the run in DIR: those during which the board went down or after "
     "which it was unhealthy"},
    {nullptr, "--verify", Takes::kOne, "CASE", 0,
     SetModeAndText<Mode::kVerify, &Options::verifyCase>,
     "verify the dumps of a playback test case, such as 101, without a board; requires --dump and "
     "--golden"},
    {nullptr, "--record", Takes::kOne, "FILE", Bit(Mode::kInteractive), SetText<&Options::record>,
     "start the interactive console and record the operator's input to FILE, to be used with "
     "--answers"},
    {nullptr, "--document", Takes::kOne, "man|bash", 0,
     SetModeAndText<Mode::kDocument, &Options::document>,
     "print the man page or the bash completion"},

    {"Selection", "--exclude", Takes::kSome, "PATTERN", kListAndRun, AddPattern<&Options::excluded>,
     "exclude these tests from the selection"},
    {nullptr, "--no-operator", Takes::kNothing, "", kListAndRun, SetFlag<&Options::noOperator>,
     "skip tests that prompt for input or need an operator verdict"},
    {nullptr, "--disruptive", Takes::kNothing, "", kRunOnly, SetFlag<&Options::disruptive>,
     "also run tests that change the board permanently; by default they run only if named exactly"},
    {nullptr, "--shard", Takes::kOne, "I/N", kListAndRun, SetShard,
     "select part I of N of the selection; every machine splits it in the same way"},
    {nullptr, "--shard-times", Takes::kOne, "PATH", kListAndRun, SetText<&Options::shardTimes>,
     "result directory or JUnit file of an earlier run, used to balance the duration of the parts"},
    {nullptr, "--format", Takes::kOne, "text|tsv|json", Bit(Mode::kList), SetText<&Options::format>,
     "output format of the list (default: text)"},

    {"Unattended runs", "--answers", Takes::kOne, "FILE", kRunOnly, SetText<&Options::answers>,
     "file with the answers to prompts, one per line: test, prompt and answer separated by tabs"},
    {nullptr, "--eyes", Takes::kOne, "COMMAND", kRunOnly, SetEyes,
     "shell command that inspects the panel and enters the verdict: exit status 0 is yes, 1 is "
     "no, anything else blocks the test"},
    {nullptr, "--eyes-always", Takes::kNothing, "", kRunOnly, SetEyesAlways,
     "also run the command at the end of every test that decides its verdict itself"},
    {nullptr, "--eyes-before", Takes::kNothing, "", kRunOnly, SetEyesBefore,
     "also run the command before every test, for rules that compare before and after"},
    {nullptr, "--eyes-timeout", Takes::kOne, "SECONDS", kRunOnly, SetEyesSeconds,
     "time limit of the --eyes command (default 30; 0 = unlimited)"},
    {nullptr, "--manual-play", Takes::kNothing, "", Bit(Mode::kInteractive) | kRunOnly,
     SetFlag<&Options::manualPlay>,
     "playback tests do not start the player: the operator plays the content and presses a key "
     "when it ends"},
    {nullptr, "--timeout", Takes::kOne, "SECONDS", kRunOnly, SetSeconds<&Limits::timeoutS>,
     "overall time limit per test (default 600; 0 = unlimited)"},
    {nullptr, "--idle-timeout", Takes::kOne, "SECONDS", kRunOnly, SetSeconds<&Limits::idleS>,
     "time limit without output or answer (default 60; 0 = unlimited)"},
    {nullptr, "--health", Takes::kOne, "COMMAND", kRunOnly, SetHealth,
     "shell command that checks the board's health before the first test and after every test "
     "that went wrong; if it fails, the run ends with status 99"},
    {nullptr, "--health-timeout", Takes::kOne, "SECONDS", kRunOnly, SetHealthSeconds,
     "time limit of the --health command (default 60; 0 = unlimited)"},
    {nullptr, "--repeat", Takes::kOne, "N", kRunOnly, SetRepeat, "run the selection N times"},
    {nullptr, "--until-fail", Takes::kNothing, "", kRunOnly, SetFlag<&Options::untilFail>,
     "repeat until a test does not pass, at most --repeat times"},
    {nullptr, "--shuffle", Takes::kOne, "SEED", kRunOnly, SetSeed,
     "shuffle the tests in every round; the same seed gives the same order"},
    {nullptr, "--stop-on-fail", Takes::kNothing, "", kRunOnly, SetFlag<&Options::stopOnFail>,
     "skip the remaining tests after a test that did not pass"},
    {nullptr, "--trace", Takes::kOne, "FILE", kRunOnly, SetText<&Options::trace>,
     "file to which the board's HAL appends its calls; each test's part is saved with its log"},

    {"Results", "--results", Takes::kOne, "DIR", kRunOnly, SetText<&Options::results>,
     "write one log per test and the journal used by --resume to DIR, which must be new or empty"},
    {nullptr, "--label", Takes::kOne, "NAME=VALUE", kRunOnly, AddLabel,
     "label stored in the result directory, such as board=lab-7, build=1431 or run=night; can be "
     "repeated"},
#define RESULT_FORMAT(name, option, help) \
  {nullptr, option, Takes::kOne, "FILE", kRunAndVerify, SetOutput<k##name>, help},
#include "ResultFormats.def"
    {nullptr, "--color", Takes::kOne, "auto|always|never", kRunAndVerify | Bit(Mode::kResume),
     SetText<&Options::color>,
     "colour of the runner's output (default: auto); NO_COLOR in the environment means never"},
    {nullptr, "--verbose", Takes::kNothing, "", kRunOnly | Bit(Mode::kResume),
     SetFlag<&Options::verbose>, "show what the tests print"},

    {"Verification", "--dump", Takes::kOne, "DIR", Bit(Mode::kVerify), SetText<&Options::dump>,
     "directory of the dumps, or an archive of them as packed by the board"},
    {nullptr, "--golden", Takes::kOne, "DIR", Bit(Mode::kVerify), SetText<&Options::golden>,
     "directory of the golden files"},
    {nullptr, "--events", Takes::kOne, "FILE", Bit(Mode::kVerify), SetText<&Options::events>,
     "write every frame event as one JSON object per line"},
    {nullptr, "--strip", Takes::kOne, "FILE", Bit(Mode::kVerify), SetText<&Options::strip>,
     "draw the frame events over time as an SVG picture, one track per stage"},
};

constexpr char kExitStatus[] =
    "0: all tests passed; 1: a test failed, went wrong or was blocked; 2: usage error; 77: no "
    "test\n"
    "ran; 99: the harness or its environment failed.";
constexpr char kPatterns[] =
    "A PATTERN is a case-sensitive glob for a module class (UTVpqModule), a class and number\n"
    "(VscModule/31), a name or a description ('*HDCP*').";
constexpr char kDescription[] =
    "Console test harness for the hardware abstraction layer (HAL) of a television. Without\n"
    "options it starts its interactive menus.";

std::string Shown(const Row& row) {
  switch (row.takes) {
    case Takes::kNothing:
      return row.name;
    case Takes::kOne:
      return std::string(row.name) + " " + row.argument;
    case Takes::kMaybe:
      return std::string(row.name) + " [" + row.argument + "]";
    case Takes::kSome:
      return std::string(row.name) + " " + row.argument + "...";
    case Takes::kAny:
      break;
  }
  return std::string(row.name) + " [" + row.argument + "...]";
}

/// The words that an argument such as "man|bash" allows; empty if any text is allowed.
std::vector<std::string> AllowedWords(const Row& row) {
  std::vector<std::string> words = Split(row.argument, '|');
  if (words.size() == 1) words.clear();
  return words;
}

/// "one, two or three"
std::string OneOf(std::vector<std::string> words) {
  const std::string last = words.back();
  words.pop_back();
  return words.empty() ? last : Joined(words, ", ") + " or " + last;
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
    return std::string(row.name) + ": invalid value '" + value + "': expected " + OneOf(allowed);
  std::string wrong = row.set(options, value);
  return wrong.empty() ? "" : std::string(row.name) + ": " + wrong;
}

/// Consumes the option at `words[0]` and its values from the front of `words`.
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
  if (values.empty() && (row->takes == Takes::kOne || row->takes == Takes::kSome))
    return name + " requires " + row->argument;
  if (!values.empty() && row->takes == Takes::kNothing) return name + " takes no value";
  if (std::ranges::any_of(values, &std::string::empty)) return name + ": must not be empty";
  if (values.empty()) values.emplace_back();
  for (const std::string& value : values) {
    std::string wrong = Set(*row, value, options);
    if (!wrong.empty()) return wrong;
  }
  return "";
}

/// The mode options that `row` can be used with.
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
      return std::string(row->name) + (modes.empty() ? " cannot be combined with other modes"
                                                     : " can only be used with " + modes);
    }
  }
  if (options.mode == Mode::kVerify && (options.dump.empty() || options.golden.empty()))
    return "--verify requires --dump and --golden";
  if (!options.trace.empty() && options.results.empty()) return "--trace requires --results";
  if (!options.labels.empty() && options.results.empty()) return "--label requires --results";
  if (options.manualPlay && options.noOperator)
    return "--manual-play cannot be combined with --no-operator, which skips tests that prompt";
  if (!options.shardTimes.empty() && options.shard.of == 1) return "--shard-times requires --shard";
  if (options.eyes.always && options.eyes.command.empty()) return "--eyes-always requires --eyes";
  if (options.eyes.before && options.eyes.command.empty()) return "--eyes-before requires --eyes";
  if (std::ranges::count(options.outputs, "-") + (options.events == "-") + (options.strip == "-") >
      1)
    return "only one result format can be written to standard output";
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

/// What the completion offers after an option: words, files, directories or tests.
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
    if (!IsOption(rest[0])) return "unexpected argument '" + rest[0] + "'";
    std::string wrong = TakeOption(rest, options, used);
    if (!wrong.empty()) return wrong;
  }
  return CheckCombination(options, used);
}

/// An option and its description, which begins in a fixed column and is wrapped at 80.
std::string HelpOf(const Row& row) {
  constexpr std::size_t kColumn = 28, kWidth = 80;
  std::string text, line = "  " + Shown(row);
  line.resize(std::max(line.size() + 2, kColumn), ' ');
  std::size_t used = 0;  // words of the description printed in this line
  for (const std::string& word : Split(row.help, ' ')) {
    if (line.size() + (used > 0) + word.size() > kWidth) {
      text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
      line = std::string(kColumn, ' ');
      used = 0;
    }
    line += (used++ > 0 ? " " : "") + word;
  }
  return text + line + "\n";
}

std::string HelpText() {
  std::string text = std::string("usage: cvntester [OPTION]...\n") + kDescription + "\n";
  for (const Row& row : kRows) {
    if (row.section != nullptr) text += std::string("\n") + row.section + ":\n";
    text += HelpOf(row);
  }
  return text + "\n" + kPatterns + "\n\nExit status: " + kExitStatus + "\n";
}

std::string Document(const std::string& kind) {
  return kind == "man" ? ManPage() : BashCompletion();
}

}  // namespace runner
