#include "Filter.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <stdexcept>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace picture {
namespace {

constexpr int kTicksScale = 1000;  // rates have up to three decimal places

using Ends = std::unique_ptr<AVFilterInOut, Deleter<AVFilterInOut, avfilter_inout_free>>;

/// Prepends one end of the graph to the existing ones.
Ends WithEnd(Ends others, const std::string& name, AVFilterContext* filter) {
  Ends end(avfilter_inout_alloc());
  end->name = av_strdup(name.c_str());
  end->filter_ctx = filter;
  end->next = others.release();
  return end;
}

}  // namespace

void Fail(const std::string& what, int error) {
  char text[AV_ERROR_MAX_STRING_SIZE] = "";
  av_strerror(error, text, sizeof(text));
  throw std::runtime_error(what + ": " + text);
}

std::string Printed(const char* format, ...) {
  va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(static_cast<size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

Graph::Graph(const std::string& text, std::span<const AVFrame* const> like, double ticksPerSecond)
    : graph_(avfilter_graph_alloc()) {
  graph_->nb_threads = 1;
  for (const AVFrame* picture : like) AddInput(*picture, ticksPerSecond);
  AddSink();
  Connect(text);
}

Graph::Shape Graph::ShapeOf(const AVFrame& picture) {
  return {picture.width, picture.height, picture.format};
}

void Graph::AddInput(const AVFrame& like, double ticksPerSecond) {
  const std::string name = "in" + std::to_string(inputs_.size());
  const std::string arguments =
      Printed("video_size=%dx%d:pix_fmt=%d:time_base=%d/%d", like.width, like.height, like.format,
              kTicksScale, static_cast<int>(ticksPerSecond * kTicksScale));
  AVFilterContext* input = nullptr;
  Check(name, avfilter_graph_create_filter(&input, avfilter_get_by_name("buffer"), name.c_str(),
                                           arguments.c_str(), nullptr, graph_.get()));
  inputs_.push_back(input);
  shapes_.push_back(ShapeOf(like));
}

void Graph::AddSink() {
  const AVPixelFormat format = AV_PIX_FMT_GBRP;
  Check("sink", avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out",
                                             nullptr, nullptr, graph_.get()));
  Check("sink", av_opt_set_bin(sink_, "pix_fmts", reinterpret_cast<const uint8_t*>(&format),
                               sizeof(format), AV_OPT_SEARCH_CHILDREN));
}

void Graph::Connect(const std::string& text) {
  Ends outputs;
  for (size_t i = 0; i < inputs_.size(); ++i)
    outputs = WithEnd(std::move(outputs), "in" + std::to_string(i), inputs_[i]);
  Ends inputs = WithEnd(nullptr, "out", sink_);
  AVFilterInOut* openInputs = inputs.release();
  AVFilterInOut* openOutputs = outputs.release();
  const int parsed =
      avfilter_graph_parse_ptr(graph_.get(), text.c_str(), &openInputs, &openOutputs, nullptr);
  inputs.reset(openInputs);
  outputs.reset(openOutputs);
  Check("filters " + text, parsed);
  Check("filters " + text, avfilter_graph_config(graph_.get(), nullptr));
}

bool Graph::Fits(std::span<const AVFrame* const> inputs) const {
  if (inputs.size() != shapes_.size()) return false;
  for (size_t i = 0; i < inputs.size(); ++i) {
    if (ShapeOf(*inputs[i]) != shapes_[i]) return false;
  }
  return true;
}

Picture Graph::Run(std::span<const AVFrame* const> inputs, int64_t pts) {
  for (size_t i = 0; i < inputs.size(); ++i) {
    Picture picture(av_frame_clone(inputs[i]));
    picture->pts = pts;
    Check("picture", av_buffersrc_add_frame(inputs_[i], picture.get()));
  }
  Picture result(av_frame_alloc());
  Check("filters", av_buffersink_get_frame(sink_, result.get()));
  return result;
}

Picture Generate(const std::string& text) {
  return Graph(text + "[out]", {}).Run({}, 0);
}

Picture Filtered(const AVFrame& picture, const std::string& text) {
  const AVFrame* const inputs[] = {&picture};
  return Graph("[in0]" + text + "[out]", inputs).Run(inputs, 0);
}

}  // namespace picture
