#include "EventStrip.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <map>
#include <sstream>

#include "CauseReport.h"

namespace {

// Positions in the picture, in pixels.
constexpr double kWidth = 1200;
constexpr double kLeft = 90;
constexpr double kRight = 30;
constexpr double kTop = 60;
constexpr double kTrackHeight = 44;
constexpr double kLegendColumn = 160;
constexpr std::size_t kLegendColumns = 7;
constexpr double kLineHeight = 18;
constexpr std::size_t kMostLines = 40;

/// The marks of a kind. Colour-blind people can distinguish the colours too, and each kind has a
/// different shape, drawn around 0,0.
struct Look {
  EventKind kind;
  const char* colour;
  const char* shape;
};
constexpr Look kLooks[] = {
    {EventKind::kDropped, "#d55e00", "M-7,-6H7L0,7Z"},
    {EventKind::kRepeated, "#0072b2", "M-6,-6H6V6H-6Z"},
    {EventKind::kReordered, "#cc79a7", "M0,-8L8,0L0,8L-8,0Z"},
    {EventKind::kDamaged, "#e69f00", "M-7,-4L-4,-7L0,-3L4,-7L7,-4L3,0L7,4L4,7L0,3L-4,7L-7,4L-3,0Z"},
    {EventKind::kChanged, "#56b4e9", "M-6,0A6,6 0 1 0 6,0A6,6 0 1 0 -6,0Z"},
    {EventKind::kLate, "#009e73", "M-6,-7V7L7,0Z"},
    {EventKind::kEarly, "#009e73", "M6,-7V7L-7,0Z"},
    {EventKind::kUneven, "#000000", "M-8,2L-3,-7L1,1L4,-5L8,5L4,7L1,3L-3,1L-6,6Z"},
    {EventKind::kCut, "#d55e00", "M-2,-9H2V9H-2Z"},
    {EventKind::kExtra, "#f0e442", "M-2,-7H2V-2H7V2H2V7H-2V2H-7V-2H-2Z"},
    {EventKind::kBroken, "#777777", "M-4,-7H4L8,0L4,7H-4L-8,0Z"},
};
static_assert(std::size(kLooks) == kEventKindCount, "every kind has its look");

const Look& LookOf(EventKind kind) {
  return *std::ranges::find(kLooks, kind, &Look::kind);
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '&':
        escaped += "&amp;";
        break;
      default:
        escaped += static_cast<unsigned char>(c) >= 0x20 ? c : ' ';
    }
  }
  return escaped;
}

/// The stages in the order of their tracks, sound last.
std::vector<const Stage*> Tracks() {
  std::vector<const Stage*> tracks = PictureWay();
  for (const Stage& stage : kStages) {
    if (stage.pictureStep == 0) tracks.push_back(&stage);
  }
  return tracks;
}

class Strip {
 public:
  Strip(const CaseEvents& found, const std::vector<SyncMark>& marks)
      : found_(found), marks_(marks), tracks_(Tracks()), begin_(BeginOf(found)) {
    for (const StageEvents& stage : found.stages) {
      if (stage.shown) seconds_ = std::max(seconds_, Seconds(stage.shown->last));
    }
    const std::vector<CauseLine> causes = CauseLines(found);
    for (std::size_t i = 0; i < causes.size(); ++i) number_[causes[i].event->id] = i + 1;
    causes_ = causes;
    svg_ << std::fixed << std::setprecision(1);
  }

  std::string Draw() {
    Head();
    Axis();
    for (std::size_t track = 0; track < tracks_.size(); ++track) Track(track);
    Joints();
    for (const StageEvents& stage : found_.stages) {
      for (const FrameEvent& event : stage.events) Event(event);
    }
    for (const SyncMark& mark : marks_) Sync(mark);
    Legend();
    List();
    svg_ << "</svg>\n";
    return svg_.str();
  }

 private:
  double Seconds(uint32_t pts) const { return static_cast<int32_t>(pts - begin_) / 90000.0; }
  double X(double seconds) const {
    return kLeft + (kWidth - kLeft - kRight) * (seconds_ > 0 ? seconds / seconds_ : 0);
  }
  double Y(MODULE_TYPE stage) const {
    const auto at = std::ranges::find(tracks_, stage, &Stage::module);
    return kTop + kTrackHeight * (static_cast<double>(at - tracks_.begin()) + 0.5);
  }
  double TracksEnd() const { return kTop + kTrackHeight * static_cast<double>(tracks_.size()); }
  double LegendTop() const { return TracksEnd() + 60; }
  double ListTop() const { return LegendTop() + 60; }

  /// Events of a stage without time stamps are placed by their rows.
  double X(const FrameEvent& event) const {
    if (event.pts) return X(Seconds(event.pts->first));
    const auto stage = std::ranges::find(found_.stages, event.stage, &StageEvents::stage);
    const auto rows = static_cast<double>(std::max<int64_t>(stage->goldenRows, 1));
    return X(seconds_ * static_cast<double>(event.place) / rows);
  }

  void Head() {
    const double lines = static_cast<double>(std::min(causes_.size(), kMostLines) + 2);
    const double height = ListTop() + kLineHeight * lines;
    svg_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " << kWidth << ' ' << height
         << "\" width=\"" << kWidth << "\" height=\"" << height
         << "\" font-family=\"sans-serif\" font-size=\"13\">\n"
         << "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n"
         << "<text x=\"" << kLeft << "\" y=\"30\" font-size=\"18\">" << Escaped(found_.testCase)
         << "</text>\n";
  }

  /// A round distance between the ticks of the axis: about ten of them.
  double TickDistance() const {
    const double rough = std::max(seconds_, 0.1) / 10;
    const double decade = std::pow(10, std::floor(std::log10(rough)));
    for (const double step : {1.0, 2.0, 5.0}) {
      if (step * decade >= rough) return step * decade;
    }
    return 10 * decade;
  }

  void Axis() {
    const double distance = TickDistance();
    const int digits = distance < 1 ? 1 : 0;
    for (int i = 0; i * distance <= seconds_ + 1e-9; ++i) {
      const double x = X(i * distance);
      svg_ << "<path d=\"M" << x << ',' << kTop << 'V' << TracksEnd()
           << "\" stroke=\"#dddddd\"/>\n<text x=\"" << x << "\" y=\"" << TracksEnd() + 18
           << "\" text-anchor=\"middle\">" << std::setprecision(digits) << i * distance
           << std::setprecision(1) << " s</text>\n";
    }
  }

  void Track(std::size_t track) {
    const Stage& stage = *tracks_[track];
    const double y = Y(stage.module);
    const auto events = std::ranges::find(found_.stages, stage.module, &StageEvents::stage);
    const bool isThere = events != found_.stages.end();
    svg_ << "<text x=\"10\" y=\"" << y + 5 << "\">" << stage.simpleName << "</text>\n<path d=\"M";
    if (isThere && events->shown)
      svg_ << X(Seconds(events->shown->first)) << ',' << y << 'H'
           << X(Seconds(events->shown->last));
    else
      svg_ << X(0) << ',' << y << 'H' << X(seconds_);
    svg_ << "\" stroke=\"#999999\" stroke-width=\"2\""
         << (isThere ? "" : " stroke-dasharray=\"2 6\"") << "/>\n";
  }

  /// Lines from causes to the events that follow from them.
  void Joints() {
    std::map<int, const FrameEvent*> byId;
    for (const StageEvents& stage : found_.stages) {
      for (const FrameEvent& event : stage.events) byId[event.id] = &event;
    }
    for (const auto& [id, event] : byId) {
      if (event->cause == 0) continue;
      const FrameEvent& cause = *byId.find(event->cause)->second;
      svg_ << "<path d=\"M" << X(cause) << ',' << Y(cause.stage) << 'L' << X(*event) << ','
           << Y(event->stage) << "\" stroke=\"#555555\" stroke-dasharray=\"4 2\"/>\n";
    }
  }

  void Event(const FrameEvent& event) {
    const Look& look = LookOf(event.kind);
    const double x = X(event);
    const double y = Y(event.stage);
    if (event.pts && X(Seconds(event.pts->last)) > x + 1) {
      svg_ << "<path d=\"M" << x << ',' << y << 'H' << X(Seconds(event.pts->last)) << "\" stroke=\""
           << look.colour << "\" stroke-width=\"5\" stroke-opacity=\"0.5\"/>\n";
    }
    svg_ << "<path transform=\"translate(" << x << ' ' << y << ")\" d=\"" << look.shape
         << "\" fill=\"" << look.colour << "\" stroke=\"#222222\" stroke-width=\"0.8\""
         << (event.cause == 0 ? "" : " fill-opacity=\"0.55\"") << "><title>"
         << Escaped(EventJson(found_, event)) << "</title></path>\n";
    if (const auto at = number_.find(event.id); at != number_.end() && at->second <= kMostLines)
      svg_ << "<text x=\"" << x << "\" y=\"" << y - 12 << "\" text-anchor=\"middle\" "
           << "font-size=\"11\" font-weight=\"bold\">" << at->second << "</text>\n";
  }

  /// A flash on the output's track, its beep on the track of the sound, and the difference below.
  void Sync(const SyncMark& mark) {
    const double x = X(Seconds(mark.flash90k));
    const double flashY = Y(MODULE_VO);
    const double beepY = Y(MODULE_AUDIO);
    const char* const colour = mark.passed ? "#0072b2" : "#d55e00";
    svg_ << "<path d=\"M" << x << ',' << flashY << 'L' << X(Seconds(mark.beep90k)) << ',' << beepY
         << "\" stroke=\"" << colour << "\" stroke-width=\"1.5\""
         << (mark.passed ? "" : " stroke-dasharray=\"6 3\"") << "/>\n<circle cx=\"" << x
         << "\" cy=\"" << flashY << "\" r=\"4\" fill=\"#ffffff\" stroke=\"" << colour
         << "\"><title>flash</title></circle>\n<circle cx=\"" << X(Seconds(mark.beep90k))
         << "\" cy=\"" << beepY << "\" r=\"4\" fill=\"" << colour
         << "\"><title>beep</title></circle>\n<text x=\"" << x << "\" y=\"" << TracksEnd() + 38
         << "\" text-anchor=\"middle\" fill=\"" << colour << "\">" << (mark.diffMs > 0 ? "+" : "")
         << mark.diffMs << " ms" << (mark.passed ? "" : " !") << "</text>\n";
  }

  void Legend() {
    for (std::size_t i = 0; i < std::size(kLooks); ++i) {
      const double x = kLeft + kLegendColumn * static_cast<double>(i % kLegendColumns);
      const std::size_t line = i / kLegendColumns;
      const double y = LegendTop() + 24 * static_cast<double>(line);
      svg_ << "<path transform=\"translate(" << x << ' ' << y << ")\" d=\"" << kLooks[i].shape
           << "\" fill=\"" << kLooks[i].colour
           << "\" stroke=\"#222222\" stroke-width=\"0.8\"/>\n<text x=\"" << x + 14 << "\" y=\""
           << y + 5 << "\">" << NameOf(kLooks[i].kind) << "</text>\n";
    }
    if (marks_.empty()) return;
    const double x = kLeft + kLegendColumn * 4;
    const double y = LegendTop() + 24;
    svg_ << "<circle cx=\"" << x << "\" cy=\"" << y
         << "\" r=\"4\" fill=\"#ffffff\" stroke=\"#222222\"/>\n<text x=\"" << x + 14 << "\" y=\""
         << y + 5 << "\">flash</text>\n<circle cx=\"" << x + kLegendColumn << "\" cy=\"" << y
         << "\" r=\"4\" fill=\"#222222\"/>\n<text x=\"" << x + kLegendColumn + 14 << "\" y=\""
         << y + 5 << "\">beep; TimeDiff, ! outside the tolerance</text>\n";
  }

  void List() {
    double y = ListTop();
    if (causes_.empty()) svg_ << "<text x=\"" << kLeft << "\" y=\"" << y << "\">no event</text>\n";
    for (std::size_t i = 0; i < std::min(causes_.size(), kMostLines); ++i, y += kLineHeight) {
      svg_ << "<text x=\"" << kLeft << "\" y=\"" << y << "\">" << i + 1 << ". "
           << FindStage(causes_[i].event->stage)->simpleName << "  " << Escaped(causes_[i].text)
           << "</text>\n";
    }
    if (causes_.size() > kMostLines)
      svg_ << "<text x=\"" << kLeft << "\" y=\"" << y << "\">and " << causes_.size() - kMostLines
           << " more</text>\n";
  }

  const CaseEvents& found_;
  const std::vector<SyncMark>& marks_;
  const std::vector<const Stage*> tracks_;
  const uint32_t begin_;
  double seconds_ = 0;
  std::vector<CauseLine> causes_;
  std::map<int, std::size_t> number_;  // of causes in the list, by id
  std::ostringstream svg_;
};

}  // namespace

std::string EventStrip(const CaseEvents& found, const std::vector<SyncMark>& marks) {
  return Strip(found, marks).Draw();
}
