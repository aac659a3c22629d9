#include "reader/Description.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace record {
namespace {

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (;;) {
    const size_t end = text.find(separator);
    parts.emplace_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

bool TakePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

bool ParseNumber(std::string_view text, uint32_t& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

constexpr struct {
  std::string_view word;
  Way way;
} kWays[] = {
    {"val", Way::kValue},    {"in", Way::kIn},          {"io", Way::kInOut},
    {"out", Way::kOut},      {"inb", Way::kInBuffer},   {"outb", Way::kOutBuffer},
    {"sin", Way::kSecretIn}, {"sout", Way::kSecretOut}, {"cb", Way::kHandler},
    {"obj", Way::kObject},   {"this", Way::kThis},
};

constexpr struct {
  std::string_view word;
  ResultKind kind;
} kResults[] = {
    {"none", ResultKind::kNone},     {"val", ResultKind::kNumber},   {"obj", ResultKind::kObject},
    {"new", ResultKind::kNewObject}, {"given", ResultKind::kRecord},
};

}  // namespace

std::unique_ptr<Description> Description::Parse(std::string_view text, std::string& error) {
  auto description = std::make_unique<Description>();
  unsigned number = 0;
  while (!text.empty()) {
    const size_t end = std::min(text.find('\n'), text.size());
    ++number;
    if (!description->ParseLine(text.substr(0, end))) {
      error = "malformed description in line " + std::to_string(number);
      return nullptr;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  if (description->functions_.empty()) {
    error = "no description of functions";
    return nullptr;
  }
  return description;
}

bool Description::ParseLine(std::string_view line) {
  const std::string_view whole = line;
  if (TakePrefix(line, "record ")) return ParseRecord(Split(line, '|'));
  if (TakePrefix(line, "call ")) return ParseFunction(Split(line, '|'), whole, false);
  if (TakePrefix(line, "callback ")) return ParseFunction(Split(line, '|'), whole, true);
  if (TakePrefix(line, "text ")) return ParseText(line);
  if (TakePrefix(line, "process ")) return ParseProcess(line);
  return line.starts_with("mark ");
}

bool Description::ParseRecord(const std::vector<std::string>& parts) {
  auto record = std::make_unique<Record>();
  record->name = parts[0];
  for (size_t i = 1; i < parts.size(); ++i) {
    const size_t space = parts[i].rfind(' ');
    Field field;
    if (space == std::string::npos || !ParseType(parts[i].substr(0, space), field.type))
      return false;
    field.name = parts[i].substr(space + 1);
    record->hasBuffers = record->hasBuffers || field.type.isBuffer;
    record->fields.push_back(std::move(field));
  }
  return records_.emplace(parts[0], std::move(record)).second;
}

bool Description::ParseFunction(const std::vector<std::string>& parts, std::string_view line,
                                bool isCallback) {
  if (parts.size() < 2) return false;
  Function function;
  function.name = parts[0];
  function.line = line;
  function.isCallback = isCallback;
  const std::vector<std::string> result = Split(parts[1], ' ');
  const auto kind =
      std::ranges::find(kResults, result[0], [](const auto& row) { return row.word; });
  if (result.size() != 2 || kind == std::end(kResults)) return false;
  function.resultKind = kind->kind;
  if (!ParseType(result[1], function.result)) return false;
  for (size_t i = 2; i < parts.size(); ++i) {
    if (parts[i].empty()) continue;
    const std::vector<std::string> words = Split(parts[i], ' ');
    const auto way = std::ranges::find(kWays, words[0], [](const auto& row) { return row.word; });
    Argument argument{};
    if (words.size() != 3 || way == std::end(kWays)) return false;
    if (!ParseType(words[1], argument.type)) return false;
    argument.way = way->way;
    argument.name = words[2];
    function.arguments.push_back(std::move(argument));
  }
  functions_.push_back(std::move(function));
  return true;
}

bool Description::ParseText(std::string_view line) {
  const size_t space = line.find(' ');
  if (space == std::string_view::npos) return false;
  Record* const record = FindRecord(line.substr(0, space));
  if (record == nullptr) return true;  // a record that no function of these headers uses
  line.remove_prefix(space + 1);
  if (TakePrefix(line, "unless ")) {
    const size_t end = line.find(' '), bar = line.find(" | ");
    if (end == std::string_view::npos || bar == std::string_view::npos || bar < end) return false;
    record->unless = line.substr(0, end);
    record->unlessText = line.substr(end + 1, bar - end - 1);
    line.remove_prefix(bar + 3);
  }
  record->text = line;
  return true;
}

bool Description::ParseProcess(std::string_view line) {
  const size_t space = line.find(' ');
  if (space == std::string_view::npos) return false;
  Record* const record = FindRecord(line.substr(0, space));
  if (record == nullptr) return true;
  for (Field& field : record->fields) {
    field.isOfProcess = field.isOfProcess || field.name == line.substr(space + 1);
  }
  return true;
}

bool Description::ParseType(std::string_view word, Type& type) const {
  type.isBuffer = TakePrefix(word, "buf ");
  if (word.ends_with(']')) {
    const size_t open = word.find('[');
    if (open == std::string_view::npos) return false;
    if (!ParseNumber(word.substr(open + 1, word.size() - open - 2), type.count)) return false;
    if (type.count == 0) return false;
    word = word.substr(0, open);
  }
  uint32_t bits = 0;
  type.isText = word == "char";
  if (type.isText || ((word[0] == 'u' || word[0] == 'i') && ParseNumber(word.substr(1), bits))) {
    type.bytes = static_cast<uint8_t>(type.isText ? 1 : bits / 8);
    type.isSigned = type.isText || word[0] == 'i';
    return type.bytes == 1 || type.bytes == 2 || type.bytes == 4 || type.bytes == 8;
  }
  type.record = FindRecord(std::string(word) + ".entry");
  type.returned = FindRecord(std::string(word) + ".return");
  const Record* const both = FindRecord(word);
  if (type.record == nullptr) type.record = both;
  if (type.returned == nullptr) type.returned = both;
  for (const Record* const record : {type.record, type.returned}) {
    type.isAlwaysThere = type.isAlwaysThere || (record != nullptr && record->hasBuffers);
  }
  return !type.IsNumber();
}

Record* Description::FindRecord(std::string_view name) const {
  const auto found = records_.find(name);
  return found == records_.end() ? nullptr : found->second.get();
}

const Function* Description::Find(std::string_view name) const {
  const auto found = std::ranges::find(functions_, name, &Function::name);
  return found == functions_.end() ? nullptr : &*found;
}

void Description::SpellRecord(const Record* record, std::string& text) const {
  if (record == nullptr) return;
  for (const Field& field : record->fields) {
    text += '|' + field.name + ' ' + std::to_string(field.type.bytes * 10 + field.type.isSigned) +
            ' ' + std::to_string(field.type.count) + (field.type.isBuffer ? "b" : "");
    SpellRecord(field.type.record, text);
  }
}

// A function is different if one of its records is different.
std::string Description::Spelled(const Function& function) const {
  std::string text = function.line;
  for (const Argument& argument : function.arguments) {
    SpellRecord(argument.type.record, text);
    SpellRecord(argument.type.returned, text);
  }
  SpellRecord(function.result.returned, text);
  return text;
}

std::vector<std::string> Description::Differences(const Description& other) const {
  std::set<std::string> names;
  for (const auto& [one, two] : {std::pair{this, &other}, std::pair{&other, this}}) {
    for (const Function& function : one->functions_) {
      const Function* const same = two->Find(function.name);
      if (same == nullptr || two->Spelled(*same) != one->Spelled(function)) {
        names.insert(function.name);
      }
    }
  }
  return {names.begin(), names.end()};
}

}  // namespace record
