#include "LiveBoard.h"

#include <sys/stat.h>

#include <cstdio>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "core/Areas.h"
#include "core/SharedBoard.h"
#include "vfe/Hdmi.h"
#include "vfe/HdmiSource.h"
#include "vfe/TestPicture.h"
#include "vfe/Timing.h"

namespace panel {
namespace {

constexpr size_t kShownCalls = 30;

std::string TextOf(const sim::Area& area, const sim::Board& board) {
  std::ostringstream text;
  area.describe(board, text);
  return text.str();
}

/// Fields of a JSON object or elements of an array.
class List {
 public:
  void Add(const std::string& json) { text_.append(text_.empty() ? "" : ",").append(json); }
  void Field(const char* name, const std::string& json) {
    Add(std::string("\"").append(name).append("\":").append(json));
  }
  void Text(const char* name, const std::string& value) { Field(name, JsonString(value)); }
  void Flag(const char* name, bool value) { Field(name, value ? "true" : "false"); }
  std::string Object() const { return std::string("{").append(text_).append("}"); }
  std::string Array() const { return std::string("[").append(text_).append("]"); }

 private:
  std::string text_;
};

std::string HdmiText(const sim::HdmiPort& port) {
  if (!port.cable) return "No cable";
  std::string text = sim::TimingName(port.timing) + " " + sim::SourceName(port);
  if (!port.sending) text += ", silent";
  if (port.muted) text += ", AV mute";
  if (!sim::FitsLink(port)) text += ", more than the link carries";
  if (port.connected) text += port.lock.lost ? ", connected, not locked" : ", connected";
  return text;
}

std::string HdmiJson(const sim::HdmiPort& port, size_t number) {
  List json;
  json.Text("id", std::to_string(number));
  json.Field("number", std::to_string(number));
  json.Text("name", "HDMI " + std::to_string(number));
  json.Flag("vby1", false);
  json.Flag("cable", port.cable);
  json.Flag("sending", port.sending);
  json.Flag("live", port.connected && sim::HasSignal(port));
  json.Text("text", HdmiText(port));
  json.Text("picture", sim::PictureName(port.sent));
  return json.Object();
}

std::string Vby1Json(const sim::Vby1Receiver& receiver, size_t number) {
  const K2V_HDMI_TIMING_T& source = receiver.sources[number];
  const bool cable = source.active.w != 0;
  const bool connected = receiver.connected && receiver.selected == number;
  List json;
  json.Text("id", "vby1-" + std::to_string(number));
  json.Field("number", std::to_string(number));
  json.Text("name", "V-by-One " + std::to_string(number));
  json.Flag("vby1", true);
  json.Flag("cable", cable);
  json.Flag("sending", cable);
  json.Flag("live", connected && cable && !receiver.lock.lost);
  json.Text("text",
            (cable ? sim::TimingName(source) : "No cable") + (connected ? ", connected" : ""));
  json.Text("picture", sim::PictureName(receiver.sent[number]));
  return json.Object();
}

std::string PortsJson(const sim::Board& board) {
  List ports;
  for (size_t i = 0; i < sim::kPortCount; ++i) ports.Add(HdmiJson(board.hdmi.ports[i], i));
  for (size_t i = 0; i < K2V_VBY1RX_PORT_COUNT; ++i) ports.Add(Vby1Json(board.vby1, i));
  return ports.Array();
}

std::string PictureNamesJson() {
  List names;
  for (const std::string_view name : sim::TestPictureNames())
    names.Add(JsonString(std::string(name)));
  return names.Array();
}

std::string CallsJson(const cvnsim::BoardFiles& files) {
  List calls;
  try {
    for (const std::string& line : cvnsim::LastCalls(files, kShownCalls))
      calls.Add(JsonString(line));
  } catch (const std::runtime_error&) {
    // A board may be without a trace.
  }
  return calls.Array();
}

}  // namespace

std::string JsonString(const std::string& text) {
  std::string json = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      json.append(1, '\\').append(1, c);
    } else if (static_cast<unsigned char>(c) < ' ') {
      char escape[8];
      std::snprintf(escape, sizeof(escape), "\\u%04x", static_cast<unsigned>(c));
      json += escape;
    } else {
      json += c;
    }
  }
  return json + '"';
}

std::string LiveBoard::Find() {
  struct stat status = {};
  if (!cvnsim::IsOn(files_)) return "The board is off.";
  if (stat(files_.state.c_str(), &status) != 0) return "No board was started here yet.";
  if (status.st_dev == device_ && status.st_ino == inode_) return "";
  try {
    cvnsim::Attach(files_);
  } catch (const std::runtime_error&) {
    return "The board starts.";
  }
  device_ = status.st_dev;
  inode_ = status.st_ino;
  return "";
}

std::string BoardJson(const cvnsim::BoardFiles& files) {
  List json;
  json.Flag("on", true);
  {
    const sim::BoardLock board;
    json.Field("ports", PortsJson(*board));
    json.Text("windows", TextOf(sim::kScalerArea, *board));
    json.Text("text", sim::Describe(*board));
    json.Flag("stick", !board->media.stickOut);
    json.Text(
        "degrees",
        std::to_string(sim::kNominalDegrees + board->device.thermal.degreesOverNominal) + " °C");
  }
  json.Field("pictures", PictureNamesJson());
  json.Field("calls", CallsJson(files));
  return json.Object();
}

}  // namespace panel
