// What a recording says of its own calls: functions, their arguments, records. It is read from the
// recording, so that one of other headers can be read, too.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace record {

struct Record;

/// A number or a record, or several of them.
struct Type {
  uint8_t bytes = 0;  // of a number
  bool isSigned = false;
  bool isText = false;             // its numbers are characters
  const Record* record = nullptr;  // in the arguments; what comes back may have other fields
  const Record* returned = nullptr;
  uint32_t count = 0;          // of an array; 0: no array
  bool isBuffer = false;       // its number of elements precedes it
  bool isAlwaysThere = false;  // present even if the pointer is null

  bool IsNumber() const { return record == nullptr && returned == nullptr; }
};

struct Field {
  std::string name;
  Type type;
  bool isOfProcess = false;  // differs from run to run
};

struct Record {
  std::string name;
  std::vector<Field> fields;
  bool hasBuffers = false;
  std::string unless;  // field that is 0 where `unlessText` is printed
  std::string unlessText;
  std::string text;  // template; empty: all fields
};

/// How an argument is recorded; see Codec.h.
enum class Way {
  kValue,
  kIn,
  kInOut,
  kOut,
  kInBuffer,
  kOutBuffer,
  kSecretIn,
  kSecretOut,
  kHandler,
  kObject,
  kThis,
};

struct Argument {
  Way way;
  Type type;
  std::string name;
};

enum class ResultKind { kNone, kNumber, kObject, kNewObject, kRecord };

struct Function {
  std::string name;
  std::string line;  // of the description
  bool isCallback = false;
  ResultKind resultKind = ResultKind::kNone;
  Type result;
  std::vector<Argument> arguments;
};

class Description {
 public:
  /// Reads the text that generate.py makes. Returns null and sets `error` when it is no such text.
  static std::unique_ptr<Description> Parse(std::string_view text, std::string& error);

  const std::vector<Function>& Functions() const { return functions_; }
  /// The function with this name, or null.
  const Function* Find(std::string_view name) const;
  /// Names of functions that are not described in the same way in both, or only in one of them.
  std::vector<std::string> Differences(const Description& other) const;

 private:
  bool ParseLine(std::string_view line);
  bool ParseRecord(const std::vector<std::string>& parts);
  bool ParseFunction(const std::vector<std::string>& parts, std::string_view line, bool isCallback);
  bool ParseText(std::string_view line);
  bool ParseProcess(std::string_view line);
  bool ParseType(std::string_view word, Type& type) const;
  Record* FindRecord(std::string_view name) const;
  std::string Spelled(const Function& function) const;
  void SpellRecord(const Record* record, std::string& text) const;

  std::map<std::string, std::unique_ptr<Record>, std::less<>> records_;
  std::vector<Function> functions_;
};

}  // namespace record
