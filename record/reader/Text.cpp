#include "reader/Text.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>

#include "text/NumberText.h"

namespace record {
namespace {

constexpr size_t kMostShownElements = 11;

std::string NumberText(uint64_t number, const Type& type) {
  return type.isSigned ? std::to_string(static_cast<int64_t>(number)) : std::to_string(number);
}

std::string CrcText(Bytes bytes) {
  char text[9];
  std::snprintf(text, sizeof text, "%08lx", crc32_z(0, bytes.data(), bytes.size()));
  return text;
}

std::string Characters(Bytes bytes) {
  const auto end = std::ranges::find(bytes, 0);
  return {bytes.begin(), end};
}

uint64_t Element(const Value& array, size_t index) {
  Type one = *array.type;
  uint64_t number = 0;
  std::memcpy(&number, array.bytes.data() + index * one.bytes, one.bytes);
  const unsigned shift = 64 - 8U * one.bytes;
  if (!one.isSigned || shift == 0) return number;
  return static_cast<uint64_t>(static_cast<int64_t>(number << shift) >> shift);
}

std::string NumbersText(const Value& array) {
  if (array.count > kMostShownElements) {
    std::vector<uint8_t> elements;
    for (size_t i = 0; i < array.count; ++i) {
      const auto element = static_cast<uint32_t>(Element(array, i));
      for (int shift = 0; shift < 32; shift += 8) {
        elements.push_back(static_cast<uint8_t>(element >> shift));
      }
    }
    return std::to_string(array.count) + " elements crc32=" + CrcText(elements);
  }
  std::string text = "[";
  for (size_t i = 0; i < array.count; ++i) {
    text.append(i == 0 ? "" : " ").append(NumberText(Element(array, i), *array.type));
  }
  return text + "]";
}

std::string BufferText(const Value& buffer) {
  return std::to_string(buffer.bytes.size()) + " bytes crc32=" + CrcText(buffer.bytes);
}

std::string Quoted(Bytes characters) {
  return std::string("\"").append(Characters(characters)).append("\"");
}

std::string AllFields(const Value& value) {
  std::string text = "{";
  for (size_t i = 0; i < value.items.size(); ++i) {
    text += (i == 0 ? "" : ", ") + value.record->fields[i].name + '=' + ValueText(value.items[i]);
  }
  return text + '}';
}

// The text after the colon of ${field:format}.
std::string Formatted(const Value& value, std::string_view format) {
  if (format.empty()) return ValueText(value);
  if (format == "s") return Characters(value.bytes);
  if (format == "n") return std::to_string(value.bytes.size());
  if (format == "crc") return CrcText(value.bytes);
  return haltext::NumberText(value.number, format);
}

std::string ByTemplate(const Value& value, std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const size_t begin = std::min(text.find("${"), text.size());
    out += text.substr(0, begin);
    text.remove_prefix(begin);
    const size_t end = text.find('}');
    if (text.empty() || end == std::string_view::npos) return out.append(text);
    const std::string_view inner = text.substr(2, end - 2);
    const size_t colon = std::min(inner.find(':'), inner.size());
    const Value* const field = value.Find(inner.substr(0, colon));
    const std::string_view format = colon == inner.size() ? "" : inner.substr(colon + 1);
    out += field == nullptr ? "?" : Formatted(*field, format);
    text.remove_prefix(end + 1);
  }
  return out;
}

std::string RecordText(const Value& value) {
  if (!value.record->unless.empty()) {
    const Value* const field = value.Find(value.record->unless);
    if (field != nullptr && field->number == 0) return value.record->unlessText;
  }
  return value.record->text.empty() ? AllFields(value) : ByTemplate(value, value.record->text);
}

std::string PointedText(const Value& value) {
  return value.type->IsNumber() ? std::string("{").append(ValueText(value)).append("}")
                                : ValueText(value);
}

// If the two directions have different fields, the result does not show all that was passed in.
std::string InOutText(const Value& entered, const Value& back) {
  const bool isAll = back.record == entered.record || !back.record->text.empty();
  return isAll ? PointedText(back) : ValueText(entered).append(" -> ").append(ValueText(back));
}

std::string InBufferText(const ArgumentValue& entered, bool succeeded) {
  if (!entered.isGiven) return "NULL";
  if (entered.value->type->isText) return Quoted(entered.value->bytes);
  if (!entered.value->type->IsNumber()) return ValueText(*entered.value);
  if (succeeded) return BufferText(*entered.value);
  return std::to_string(entered.value->bytes.size()) + " bytes";
}

std::string OutBufferText(const Type& type, const ArgumentValue& entered, const ArgumentValue* back,
                          bool succeeded) {
  if (!entered.isGiven) return "NULL";
  const bool isWritten = succeeded && back != nullptr && back->value;
  if (type.isText) return isWritten ? Quoted(back->value->bytes) : "\"\"";
  if (!type.IsNumber()) return isWritten ? ValueText(*back->value) : "{}";
  if (isWritten) return BufferText(*back->value);
  return std::to_string(entered.room * type.bytes) + " bytes";
}

}  // namespace

std::string ValueText(const Value& value) {
  if (value.record != nullptr) return RecordText(value);
  if (value.type->IsNumber() && value.isSeveral) {
    if (value.type->isText) return Quoted(value.bytes);
    return value.type->count == 0 ? BufferText(value) : NumbersText(value);
  }
  if (value.type->IsNumber()) return NumberText(value.number, *value.type);
  if (value.items.size() > kMostShownElements)
    return std::to_string(value.items.size()) + " records";
  std::string text = "[";
  for (const Value& item : value.items) {
    text += (&item == value.items.data() ? "" : " ") + ValueText(item);
  }
  return text + "]";
}

std::string ComparedText(const Value& value) {
  if (value.record == nullptr) {
    if (value.items.empty()) return ValueText(value);
    std::string text = "[";
    for (const Value& item : value.items) text.append(ComparedText(item)).append(" ");
    return text.append("]");
  }
  std::string text = "{";
  for (size_t i = 0; i < value.items.size(); ++i) {
    const Field& field = value.record->fields[i];
    if (field.isOfProcess || (value.record->name == "secret" && field.name != "length")) continue;
    text.append(field.name).append("=").append(ComparedText(value.items[i])).append(" ");
  }
  return text.append("}");
}

std::string ArgumentText(const Argument& argument, const ArgumentValue& entered,
                         const ArgumentValue* back, bool succeeded) {
  switch (argument.way) {
    case Way::kHandler:
      return entered.value->number == 0 ? "NULL"
                                        : std::string("{").append(argument.name).append("}");
    case Way::kIn:
      return entered.isGiven ? PointedText(*entered.value) : "NULL";
    case Way::kInOut:
      if (!entered.isGiven) return "NULL";
      if (back == nullptr || !back->isGiven) return PointedText(*entered.value);
      return InOutText(*entered.value, *back->value);
    case Way::kOut:
      if (!entered.isGiven) return "NULL";
      return back != nullptr && back->isGiven ? PointedText(*back->value) : "{}";
    case Way::kInBuffer:
      return InBufferText(entered, succeeded);
    case Way::kOutBuffer:
      return OutBufferText(argument.type, entered, back, succeeded);
    case Way::kSecretIn:
    case Way::kSecretOut:
      if (!entered.isGiven) return "NULL";
      return (entered.value ? ValueText(*entered.value->Find("length"))
                            : std::to_string(entered.room)) +
             " bytes";
    case Way::kValue:
    case Way::kObject:
    case Way::kThis:
      return ValueText(*entered.value);
  }
  return "?";
}

std::string ResultText(const Function& function, const ArgumentValue& result) {
  switch (function.resultKind) {
    case ResultKind::kNone:
      return {};
    case ResultKind::kNumber:
      return ValueText(*result.value);
    case ResultKind::kObject:
      return result.value->number == 0 ? "NULL" : "{link}";
    case ResultKind::kNewObject:
    case ResultKind::kRecord:
      return result.isGiven ? ValueText(*result.value) : "NULL";
  }
  return {};
}

bool HasSucceeded(const Function& function, const ArgumentValue& result) {
  switch (function.resultKind) {
    case ResultKind::kNumber:
      return result.value->number == 0;
    case ResultKind::kObject:
      return result.value->number != 0;
    case ResultKind::kNewObject:
    case ResultKind::kRecord:
      return result.isGiven;
    case ResultKind::kNone:
      return true;
  }
  return true;
}

std::string CallText(const Function& function, const CallValues& entered, const CallValues* back) {
  const bool succeeded = back != nullptr && HasSucceeded(function, back->result);
  std::string text = function.name + '(';
  const char* separator = "";
  for (size_t i = 0; i < function.arguments.size(); ++i) {
    const Argument& argument = function.arguments[i];
    if (argument.way == Way::kThis) continue;
    text += separator + ArgumentText(argument, entered.arguments[i],
                                     back == nullptr ? nullptr : &back->arguments[i], succeeded);
    separator = ", ";
  }
  text += ')';
  if (back != nullptr && function.resultKind != ResultKind::kNone) {
    text += " = " + ResultText(function, back->result);
  }
  return text;
}

}  // namespace record
