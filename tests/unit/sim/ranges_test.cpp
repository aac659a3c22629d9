// Every function of the HAL with every argument across its range: which values the board accepts,
// and what they change.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Expected.h"
#include "HalInterface.h"
#include "SimHal.h"

namespace {

constexpr std::size_t kRoom = 1 << 18;  // at every pointer

[[gnu::format(printf, 1, 2)]] std::string Printed(const char* format, ...) {
  char text[100];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

/// A number in an argument, or in a record that it points to.
struct Number {
  std::string name;                  // of the argument, from 1, and of the field, from 0
  std::function<bool(int64_t)> set;  // false if the type has no such value
};

/// Collects the numbers of a record.
class Collector {
 public:
  static constexpr bool kIsReturn = false;

  Collector(std::string prefix, std::vector<Number>& numbers)
      : prefix_(std::move(prefix)), numbers_(numbers) {}

  template <typename T>
  void operator()(T& field) {
    Add(prefix_ + '.' + std::to_string(fields_++), field);
  }

  template <typename T>
  void Given(T& /*pointer*/) {}
  template <typename T>
  void FieldRoom(T& /*pointer*/, uint64_t /*bytes*/) {}

  template <typename T>
  void Add(const std::string& name, T& value) {
    if constexpr (std::is_array_v<T>) {
      Add(name, value[0]);
    } else if constexpr (std::is_class_v<T>) {
      Collector inner(name, numbers_);
      if constexpr (requires { record::Visit(inner, value); }) record::Visit(inner, value);
    } else if constexpr (!std::is_pointer_v<T>) {
      numbers_.push_back({name, [&value](int64_t number) {
                            value = static_cast<T>(number);
                            return sizeof(T) >= sizeof(int) ||
                                   static_cast<int64_t>(value) == number;
                          }});
    }
  }

 private:
  std::string prefix_;
  std::vector<Number>& numbers_;
  int fields_ = 0;
};

/// An argument of a call, which may point to memory of its own.
template <typename T>
struct Held {
  T value{};

  void Clear() { value = T{}; }
  bool ClearPointer() { return false; }
  void Remember() {}
  std::string Written() const { return ""; }
  void Collect(const std::string& name, std::vector<Number>& numbers) {
    Collector(name, numbers).Add(name, value);
  }
};

template <typename T>
struct Held<T*> {
  using Pointed = std::remove_cv_t<T>;
  T* value = nullptr;
  std::vector<uint64_t> memory, before;

  void Clear() {
    if constexpr (!std::is_function_v<T>) {
      memory.assign(kRoom / sizeof(uint64_t), 0);
      value = reinterpret_cast<T*>(memory.data());
    }
  }
  bool ClearPointer() {
    value = nullptr;
    return true;
  }
  void Remember() { before = memory; }
  /// The changes since then: offsets and values of words, of the later ones only their sum.
  std::string Written() const {
    constexpr int kShown = 40;
    const std::span now(reinterpret_cast<const uint32_t*>(memory.data()), memory.size() * 2);
    const std::span then(reinterpret_cast<const uint32_t*>(before.data()), before.size() * 2);
    std::string text;
    int count = 0;
    uint64_t sum = 0;
    for (std::size_t i = 0; i < now.size(); ++i) {
      if (now[i] == then[i]) continue;
      if (++count <= kShown)
        text += Printed(" %zu:%x", i * sizeof now[0], now[i]);
      else
        sum += (i + 1) * now[i];
    }
    if (count > kShown) text += Printed(" and %d more, sum %" PRIu64, count - kShown, sum);
    return text;
  }
  void Collect(const std::string& name, std::vector<Number>& numbers) {
    if constexpr (!std::is_function_v<T> && !std::is_void_v<T>) {
      Collector(name, numbers).Add(name, *reinterpret_cast<Pointed*>(memory.data()));
    }
  }
};

/// The values tried for each number: all small ones, and the limits of what it may be stored in.
const std::vector<int64_t>& Values() {
  static const std::vector<int64_t> values = [] {
    std::vector<int64_t> all;
    for (int64_t value = -2; value <= 130; ++value) all.push_back(value);
    for (const int64_t limit :
         {1 << 8, 1 << 9, 1 << 10, 1080, 1920, 2160, 3840, 1 << 12, 1 << 16, 1 << 24}) {
      for (const int64_t near : {-1, 0, 1}) all.push_back(limit + near);
    }
    all.push_back(INT32_MAX);
    return all;
  }();
  return values;
}

/// Opens the drivers, with a picture of the first port.
void OpenBoard(const std::string& source = "plug 0 3840x2160p60 hdr") {
  simhal::Reset();
  simhal::Apply("lock 0 0");
  simhal::Apply(source);
  uint8_t edid[K2V_HDMI_EDID_BYTES] = {};
  K2V_RHAL_VFE_HDMI_Initialize();
  K2V_RHAL_VFE_HDMI_WriteEDID(0, edid);
  K2V_RHAL_VFE_HDMI_Open();
  K2V_RHAL_VFE_HDMI_EnableHPD();
  K2V_RHAL_VFE_HDMI_Connect(0);
  K2V_RHAL_VFE_VBY1RX_Initialize();
  K2V_RHAL_VFE_VBY1RX_Open();
  K2V_RHAL_VSC_Initialize();
  K2V_RHAL_VSC_Open(0);
  K2V_RHAL_VSC_Connect(0, {2, 0, 0});
  K2V_RHAL_VBE_TRIDFMT_Initialize();
  K2V_RHAL_VBE_TRIDFMT_Open();
  K2V_RHAL_VPQ_Initialize();
  K2V_RHAL_VPQ_Open();
  K2V_RHAL_VPQ_LED_Initialize(0, 0);
  K2V_RHAL_VPQEX_Init();
  K2V_RHAL_VPQEX_Open();
}

/// Lines of `after` that `before` lacks.
std::string NewLines(const std::string& before, const std::string& after) {
  std::istringstream known(before), lines(after);
  std::multiset<std::string> old;
  for (std::string line; std::getline(known, line);) old.insert(line);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    if (const auto at = old.find(line); at != old.end()) {
      old.erase(at);
    } else {
      text += "      " + line + '\n';
    }
  }
  return text;
}

/// The text of the last call.
std::string LastCall() {
  const auto calls = simhal::Calls();
  return calls.empty() ? "" : calls.back();
}

bool Contains(const std::string& name, const char* part) {
  return name.find(part) != name.npos;
}

/// A function of the HAL.
class Function {
 public:
  explicit Function(std::string name) : name_(std::move(name)) {}
  virtual ~Function() = default;
  Function(const Function&) = delete;
  Function& operator=(const Function&) = delete;

  const std::string& Name() const { return name_; }

  /// Chooses arguments that an open board accepts, if possible different numbers.
  void ChooseArguments() {
    for (const auto& [first, step] : {std::pair{1, 1}, {0, 1}, {1, 0}, {0, 16}, {0, 0}}) {
      first_ = first, step_ = step;
      OpenBoard();
      if (CallAsChosen() >= 0) return;
    }
  }

  int64_t CallAsChosen() {
    Clear();
    SetNumbers();
    return Call();
  }

  /// The trace of a call with zeros in all numbers, or the chosen ones, and what it wrote.
  std::string Described(bool zeros) {
    Clear();
    if (!zeros) SetNumbers();
    Remember();
    Call();
    return LastCall() + '\n' + Written();
  }

  /// The results of each number's values, and what they change on an open board on which
  /// `prepare` was called.
  std::string Text(const std::function<void()>& prepare) {
    const auto open = [&] {
      OpenBoard();
      prepare();
    };
    open();
    const int64_t usual = CallAsChosen();
    open();
    std::string text = Described(false);
    simhal::Reset();
    if (const int64_t closed = CallAsChosen(); closed != usual)
      text += "  closed: " + std::to_string(closed) + '\n';
    for (std::size_t i = 0; i < ArgumentCount(); ++i) {
      open();
      Clear();
      SetNumbers();
      if (ClearPointer(i))
        text += "  [" + std::to_string(i + 1) + "] null: " + std::to_string(Call()) + '\n';
    }
    for (const Number& number : numbers_) {
      if (MeasuresPicture()) break;
      open();
      Clear();
      text += RangesOf(number, usual);
    }
    return text;
  }

 protected:
  virtual void Clear() = 0;
  virtual int64_t Call() = 0;
  virtual void Remember() = 0;
  virtual std::string Written() const = 0;
  virtual std::size_t ArgumentCount() const = 0;
  virtual bool ClearPointer(std::size_t argument) = 0;  // false if it is none

  std::vector<Number>& Numbers() { return numbers_; }

 private:
  void SetNumbers() {
    int64_t value = first_;
    for (const Number& number : numbers_) {
      number.set(value);
      value += step_;
    }
  }

  /// Whether each call looks at a whole picture, which takes long, and only writes its record.
  bool MeasuresPicture() const {
    return Contains(name_, "Histo") || Contains(name_, "AplInfo") || Contains(name_, "PicInfo") ||
           Contains(name_, "APL");
  }

  std::string RangesOf(const Number& number, int64_t usual) {
    const std::string before = simhal::State();
    std::string text, accepted;
    int64_t result = INT64_MIN;
    bool differs = false;
    for (const int64_t value : Values()) {
      SetNumbers();
      if (!number.set(value)) continue;
      simhal::ClearCalls();  // the last one is found faster
      const int64_t now = Call();
      differs = differs || now != usual;
      if (now != result) text += ' ' + std::to_string(value) + ": " + std::to_string(now);
      result = now;
      if (now >= 0) accepted = LastCall();
    }
    const std::string changes = NewLines(before, simhal::State());
    if (!differs && changes.empty()) return "";
    return "  [" + number.name + "]" + text + '\n' +
           (accepted.empty() ? "" : "    " + accepted + '\n') + changes;
  }

  std::string name_;
  std::vector<Number> numbers_;
  int64_t first_ = 0, step_ = 0;
};

template <typename Result, typename... Arguments>
class FunctionWith : public Function {
 public:
  FunctionWith(const char* name, Result (*function)(Arguments...))
      : Function(name), function_(function) {
    FunctionWith::Clear();
    Collect(std::index_sequence_for<Arguments...>());
  }

 private:
  template <std::size_t... Index>
  void Collect(std::index_sequence<Index...>) {
    (std::get<Index>(held_).Collect(std::to_string(Index + 1), Numbers()), ...);
  }

  void Clear() override {
    std::apply([](auto&... held) { (held.Clear(), ...); }, held_);
  }

  std::size_t ArgumentCount() const override { return sizeof...(Arguments); }

  bool ClearPointer(std::size_t argument) override {
    bool isPointer = false;
    std::size_t i = 0;
    std::apply([&](auto&... held) { ((isPointer |= i++ == argument && held.ClearPointer()), ...); },
               held_);
    return isPointer;
  }

  void Remember() override {
    std::apply([](auto&... held) { (held.Remember(), ...); }, held_);
  }

  std::string Written() const override {
    std::string text;
    std::size_t i = 0;
    const auto add = [&](const std::string& written) {
      ++i;
      if (!written.empty()) text += "  [" + std::to_string(i) + "] wrote" + written + '\n';
    };
    std::apply([&](const auto&... held) { (add(held.Written()), ...); }, held_);
    return text;
  }

  int64_t Call() override {
    return std::apply(
        [this](auto&... held) -> int64_t {
          if constexpr (std::is_void_v<Result>) {
            function_(held.value...);
            return 0;
          } else if constexpr (std::is_pointer_v<Result>) {
            return function_(held.value...) == nullptr ? -1 : 0;
          } else {
            return static_cast<int64_t>(function_(held.value...));
          }
        },
        held_);
  }

  Result (*function_)(Arguments...);
  std::tuple<Held<Arguments>...> held_;
};

template <typename Result, typename... Arguments>
std::unique_ptr<Function> Made(const char* name, Result (*function)(Arguments...)) {
  return std::make_unique<FunctionWith<Result, Arguments...>>(name, function);
}

bool IsSetter(const Function& function) {
  return Contains(function.Name(), "Set") || Contains(function.Name(), "set");
}

/// Whether a getter returns what was set, and not what the source sends.
bool IsSetting(const Function& function) {
  return Contains(function.Name(), "VPQ_") && !Contains(function.Name(), "Src") &&
         !Contains(function.Name(), "Histo") && !Contains(function.Name(), "PicInfo");
}

bool IsGetter(const Function& function) {
  return Contains(function.Name(), "Get");
}

/// The board's state without the remaining time of pending events.
std::string StateWithoutTimes() {
  return test::Masked(simhal::State(), R"(( in )\d+\.\d+ s)", "$1… s");
}

TEST(BoardCommands, ChangeTheStateAsBefore) {
  simhal::Reset();
  std::ifstream commands(CVN_BOARD_COMMANDS);
  std::string text;
  for (std::string line; std::getline(commands, line);) {
    const std::string before = StateWithoutTimes();
    const std::string error = simhal::Apply(line);
    text += line + '\n' + (error.empty() ? "" : "    " + error + '\n');
    const std::string after = StateWithoutTimes();
    text += NewLines(before, after);
    for (std::istringstream gone(NewLines(after, before)); std::getline(gone, line);)
      text += "    no longer" + line.substr(5) + '\n';
  }
  EXPECT_NE(text, "");
  EXPECT_TRUE(test::IsAsExpected("board_commands.txt", text));
}

/// The functions of an area, such as "VPQ", with chosen arguments.
std::vector<std::unique_ptr<Function>> FunctionsOf(const std::string& area) {
  std::vector<std::unique_ptr<Function>> functions;
#define CVN_FUNCTION(result, name, parameters, call, arguments)      \
  if (std::string_view(#name).starts_with("K2V_RHAL_" + area + '_')) \
    functions.push_back(Made(#name, name));
#define CVN_METHOD(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#include "HalCalls.inc"
  for (const auto& function : functions) function->ChooseArguments();
  return functions;
}

class HalRanges : public testing::TestWithParam<const char*> {};

TEST_P(HalRanges, AreAsBefore) {
  const std::string area = GetParam();
  const auto functions = FunctionsOf(area);
  const auto setAll = [&functions] {
    for (const auto& function : functions) {
      if (IsSetter(*function)) function->CallAsChosen();
    }
  };
  std::string text;
  for (const auto& function : functions)
    text += function->Text(IsGetter(*function) ? std::function<void()>(setAll) : [] {});
  EXPECT_TRUE(test::IsAsExpected("ranges/" + area + ".txt", text));
}

TEST(HalSources, AreDescribedAsBefore) {
  constexpr const char* kSources[] = {
      "unplug 0",
      "plug 0 3840x2160p60 hdr",
      "plug 0 1920x1080p60 sdr",
      "plug 0 3840x2160p23.976 hlg frame-packing",
      "plug 0 1920x1080i50 pc side-by-side",
      "plug 0 1280x720p50 deep top-and-bottom",
      "plug 0 1920x1080p24 line-alternative",
      "plug 0 1920x1080p30 side-by-side-full",
      "plug 0 720x480i59.94",
      "plug 0 640x480p60 dvi",
      "plug 0 2560x1440p75 pc",
      "plug 0 3840x2160p30 sdr",
  };
  std::string text;
  for (const std::string area : {"VFE", "VSC", "VPQ"}) {
    const auto functions = FunctionsOf(area);
    for (const std::string source : kSources) {
      OpenBoard(source);
      text += "==== " + source + '\n';
      for (const auto& function : functions) {
        if (IsGetter(*function) && !IsSetting(*function)) text += function->Described(true);
      }
    }
  }
  EXPECT_TRUE(test::IsAsExpected("ranges/sources.txt", text));
}

INSTANTIATE_TEST_SUITE_P(All, HalRanges,
                         testing::Values("GAL", "VBE", "VFE", "VPQ", "VPQEX", "VSC"),
                         [](const auto& area) { return std::string(area.param); });

}  // namespace
