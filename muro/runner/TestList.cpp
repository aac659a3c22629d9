#include "TestList.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <map>
#include <sstream>

#include "ModuleList.h"
#include "Text.h"

namespace runner {
namespace {

int IndexIn(Case& menu, const Case* child) {
  for (unsigned short i = 0; i < menu.getChildCount(); ++i) {
    if (menu.getChild(i) == child) return i;
  }
  return -1;
}

void AddPlace(TestEntry& entry) {
  std::vector<std::string> menus;
  std::vector<std::string> choices;
  for (Case* child = entry.test; Case* menu = child->getParaent(); child = menu) {
    if (menu->getParaent() != nullptr) menus.insert(menus.begin(), menu->getName());
    choices.insert(choices.begin(), std::to_string(IndexIn(*menu, child)));
  }
  entry.menuPath = Joined(menus, " > ");
  entry.position = Joined(choices, " ");
}

TestEntry MakeEntry(const ModuleEntry& module, TestCase& test, std::map<int, int>& seen) {
  const std::string moduleClass = module.className;
  TestEntry entry{&test, moduleClass, moduleClass + "/" + std::to_string(test.getId()),
                  "",    "",          module.order == TestOrder::kKept};
  const int times = ++seen[test.getId()];
  if (times > 1) entry.id.append(".").append(std::to_string(times));
  AddPlace(entry);
  return entry;
}

using Field = std::string (*)(const TestEntry&);
struct Column {
  const char* title;
  bool isText;  // quoted in JSON
  Field field;
};

std::string Truth(bool value) {
  return value ? "true" : "false";
}

constexpr Column kColumns[] = {
    {"test", true, [](const TestEntry& entry) { return entry.id; }},
    {"module", true, [](const TestEntry& entry) { return entry.moduleClass; }},
    {"menu", true, [](const TestEntry& entry) { return entry.menuPath; }},
    {"position", true, [](const TestEntry& entry) { return entry.position; }},
    {"id", false, [](const TestEntry& entry) { return std::to_string(entry.test->getId()); }},
    {"name", true, [](const TestEntry& entry) { return CleanLine(entry.test->getName()); }},
    {"description", true,
     [](const TestEntry& entry) { return CleanLine(entry.test->getDescription()); }},
    {"judge", true,
     [](const TestEntry& entry) -> std::string {
       return entry.test->isAutoJudged() ? "test" : "operator";
     }},
    {"prompts", false, [](const TestEntry& entry) { return Truth(entry.test->asks()); }},
    {"disruptive", false, [](const TestEntry& entry) { return Truth(entry.test->isDisruptive()); }},
};

std::string FormatTsv(const std::vector<TestEntry>& tests) {
  std::vector<std::string> titles;
  for (const Column& column : kColumns) titles.emplace_back(column.title);
  std::string text = Joined(titles, "\t") + '\n';
  for (const TestEntry& entry : tests) {
    std::vector<std::string> fields;
    for (const Column& column : kColumns) fields.push_back(column.field(entry));
    text += Joined(fields, "\t") + '\n';
  }
  return text;
}

std::string FormatJson(const std::vector<TestEntry>& tests) {
  std::vector<std::string> objects;
  for (const TestEntry& entry : tests) {
    std::vector<std::string> fields;
    for (const Column& column : kColumns) {
      const std::string value = column.field(entry);
      fields.push_back(JsonText(column.title) + ": " + (column.isText ? JsonText(value) : value));
    }
    objects.push_back(Joined(fields, ", "));
  }
  if (objects.empty()) return "[]\n";
  std::string text = "[\n{";
  return text.append(Joined(objects, "},\n{")).append("}\n]\n");
}

std::string FormatText(const std::vector<TestEntry>& tests) {
  std::ostringstream out;
  std::string menu;
  for (const TestEntry& entry : tests) {
    if (entry.menuPath != menu) out << (menu.empty() ? "" : "\n") << entry.menuPath << '\n';
    menu = entry.menuPath;
    out << "  " << std::left << std::setw(22) << entry.id << ' ' << std::setw(30)
        << CleanLine(entry.test->getName()) << ' ' << CleanLine(entry.test->getDescription());
    if (entry.test->asks()) out << "  [prompts]";
    if (!entry.test->isAutoJudged()) out << "  [operator judges]";
    if (entry.test->isDisruptive()) out << "  [disruptive]";
    out << '\n';
  }
  return out.str();
}

/// The names by which a pattern can select this test alone.
std::array<std::string, 4> NamesOf(const TestEntry& entry) {
  return {entry.moduleClass + "/" + std::to_string(entry.test->getId()), entry.id,
          entry.test->getName(), entry.test->getDescription()};
}

bool MatchesAny(const TestEntry& entry, const std::vector<std::string>& patterns) {
  return std::ranges::any_of(patterns,
                             [&](const auto& pattern) { return Matches(entry, pattern); });
}

}  // namespace

std::string TestEntry::DottedId() const {
  std::string dotted = id;
  std::replace(dotted.begin(), dotted.end(), '/', '.');
  return dotted;
}

std::vector<TestEntry> AllTests() {
  std::vector<TestEntry> tests;
  for (const ModuleEntry& module : ModuleList()) {
    std::map<int, int> seen;
    for (const auto& test : module.instance()->Tests())
      tests.push_back(MakeEntry(module, *test, seen));
  }
  return tests;
}

bool Matches(const TestEntry& entry, const std::string& pattern) {
  const auto names = NamesOf(entry);
  // A name may contain characters that are special in a glob.
  return MatchesGlob(pattern, entry.moduleClass) || IsNamed(entry, {pattern}) ||
         std::ranges::any_of(names, [&](const auto& name) { return MatchesGlob(pattern, name); });
}

bool IsNamed(const TestEntry& entry, const std::vector<std::string>& patterns) {
  const auto names = NamesOf(entry);
  return std::ranges::find_first_of(names, patterns) != names.end();
}

std::vector<TestEntry> Select(const std::vector<TestEntry>& tests,
                              const std::vector<std::string>& patterns,
                              const std::vector<std::string>& excluded, std::string& unmatched) {
  for (const auto* list : {&patterns, &excluded}) {
    for (const std::string& pattern : *list) {
      if (std::ranges::none_of(tests, [&](const auto& test) { return Matches(test, pattern); }))
        unmatched = pattern;
    }
  }
  std::vector<TestEntry> selected;
  for (const TestEntry& entry : tests) {
    if ((patterns.empty() || MatchesAny(entry, patterns)) && !MatchesAny(entry, excluded))
      selected.push_back(entry);
  }
  return selected;
}

std::string FormatList(const std::vector<TestEntry>& tests, const std::string& format) {
  if (format == "json") return FormatJson(tests);
  return format == "tsv" ? FormatTsv(tests) : FormatText(tests);
}

}  // namespace runner
