#include "reader/Value.h"

#include <algorithm>

namespace record {

Bytes ByteReader::Take(uint64_t size) {
  if (size > bytes_.size() - at_) {
    isGood_ = false;
    at_ = bytes_.size();
    return {};
  }
  const Bytes taken = bytes_.subspan(at_, static_cast<size_t>(size));
  at_ += taken.size();
  return taken;
}

uint64_t ByteReader::Number(unsigned bytes) {
  uint64_t number = 0;
  const Bytes taken = Take(bytes);
  if (!taken.empty()) std::memcpy(&number, taken.data(), taken.size());
  return number;
}

std::string_view ByteReader::Text() {
  const Bytes rest = bytes_.subspan(at_);
  const auto end = std::ranges::find(rest, 0);
  if (end == rest.end()) {
    Take(rest.size() + 1);
    return {};
  }
  const Bytes text = Take(static_cast<size_t>(end - rest.begin()));
  Take(1);
  return {reinterpret_cast<const char*>(text.data()), text.size()};
}

const Value* Value::Find(std::string_view name) const {
  if (record == nullptr) return nullptr;
  const size_t dot = std::min(name.find('.'), name.size());
  for (size_t i = 0; i < record->fields.size() && i < items.size(); ++i) {
    if (record->fields[i].name != name.substr(0, dot)) continue;
    return dot == name.size() ? &items[i] : items[i].Find(name.substr(dot + 1));
  }
  return nullptr;
}

namespace {

uint64_t SignExtended(uint64_t number, const Type& type) {
  const unsigned shift = 64 - 8U * type.bytes;
  if (!type.isSigned || shift == 0) return number;
  return static_cast<uint64_t>(static_cast<int64_t>(number << shift) >> shift);
}

// Whether values are built, or only the size is determined.
struct Keep {
  static constexpr bool kKeeps = true;
};
struct Skip {
  static constexpr bool kKeeps = false;
};

template <typename Mode>
class Walker {
 public:
  Walker(Bytes bytes, bool isReturn) : reader_(bytes), isReturn_(isReturn) {}

  ByteReader& Reader() { return reader_; }

  Value One(const Type& type) {
    Value value;
    value.type = &type;
    if (type.IsNumber()) {
      const uint64_t number = reader_.Number(type.bytes);
      if constexpr (Mode::kKeeps) value.number = SignExtended(number, type);
    } else {
      value.record = isReturn_ ? type.returned : type.record;
      Fields(value);
    }
    return value;
  }

  Value Several(const Type& type, uint32_t count) {
    Value value;
    value.type = &type;
    value.isSeveral = true;
    value.count = count;
    if (type.IsNumber()) {
      value.bytes = reader_.Take(uint64_t{count} * type.bytes);
      return value;
    }
    for (uint32_t i = 0; i < count && reader_.IsGood(); ++i) Add(value, One(type));
    return value;
  }

  Value Any(const Type& type) {
    if (type.isBuffer) return Several(type, static_cast<uint32_t>(reader_.Number(4)));
    return type.count != 0 ? Several(type, type.count) : One(type);
  }

  ArgumentValue Pointer(const Type& type) {
    ArgumentValue argument;
    argument.isGiven = reader_.Number(1) != 0;
    if (argument.isGiven || type.isAlwaysThere) argument.value = One(type);
    return argument;
  }

 private:
  void Fields(Value& value) {
    if (value.record == nullptr) return;
    for (const Field& field : value.record->fields) {
      if (!reader_.IsGood()) return;
      Add(value, Any(field.type));
    }
  }

  static void Add(Value& value, Value&& item) {
    if constexpr (Mode::kKeeps) value.items.push_back(std::move(item));
  }

  ByteReader reader_;
  bool isReturn_;
};

template <typename Mode>
ArgumentValue Entered(Walker<Mode>& walker, const Argument& argument) {
  ArgumentValue result;
  switch (argument.way) {
    case Way::kValue:
    case Way::kHandler:
    case Way::kObject:
    case Way::kThis:
      result.value = walker.Any(argument.type);
      return result;
    case Way::kIn:
    case Way::kInOut:
    case Way::kSecretIn:
      return walker.Pointer(argument.type);
    case Way::kOut:
      result.isGiven = walker.Reader().Number(1) != 0;
      return result;
    case Way::kInBuffer:
      result.isGiven = walker.Reader().Number(1) != 0;
      result.value =
          walker.Several(argument.type, static_cast<uint32_t>(walker.Reader().Number(4)));
      return result;
    case Way::kOutBuffer:
    case Way::kSecretOut:
      result.isGiven = walker.Reader().Number(1) != 0;
      result.room = walker.Reader().Number(4);
      return result;
  }
  return result;
}

template <typename Mode>
ArgumentValue Returned(Walker<Mode>& walker, const Argument& argument) {
  ArgumentValue result;
  result.isGiven = false;
  switch (argument.way) {
    case Way::kInOut:
    case Way::kOut:
    case Way::kSecretOut:
      return walker.Pointer(argument.type);
    case Way::kOutBuffer:
      result.value =
          walker.Several(argument.type, static_cast<uint32_t>(walker.Reader().Number(4)));
      result.isGiven = true;
      return result;
    default:
      return result;
  }
}

template <typename Mode>
ArgumentValue Result(Walker<Mode>& walker, const Function& function) {
  ArgumentValue result;
  switch (function.resultKind) {
    case ResultKind::kNone:
      result.isGiven = false;
      return result;
    case ResultKind::kNumber:
    case ResultKind::kObject:
      result.value = walker.One(function.result);
      return result;
    case ResultKind::kNewObject:
      walker.Reader().Number(4);
      return walker.Pointer(function.result);
    case ResultKind::kRecord:
      return walker.Pointer(function.result);
  }
  return result;
}

template <typename Mode, typename Each>
void Walk(Walker<Mode>& walker, const Function& function, bool isReturn, Each each) {
  for (const Argument& argument : function.arguments) {
    if (!walker.Reader().IsGood()) return;
    each(isReturn ? Returned(walker, argument) : Entered(walker, argument));
  }
}

}  // namespace

CallValues ReadCall(const Function& function, bool isReturn, Bytes payload, bool& good) {
  Walker<Keep> walker(payload, isReturn);
  CallValues values;
  if (isReturn) values.result = Result(walker, function);
  Walk(walker, function, isReturn,
       [&](ArgumentValue&& argument) { values.arguments.push_back(std::move(argument)); });
  values.arguments.resize(function.arguments.size());
  good = walker.Reader().IsGood() && walker.Reader().Position() == payload.size();
  return values;
}

std::optional<size_t> SizeOfCall(const Function& function, bool isReturn, Bytes bytes) {
  Walker<Skip> walker(bytes, isReturn);
  if (isReturn) Result(walker, function);
  Walk(walker, function, isReturn, [](const ArgumentValue&) {});
  if (!walker.Reader().IsGood()) return std::nullopt;
  return walker.Reader().Position();
}

}  // namespace record
