#include "DumpFormat.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace player {

namespace {

using V = FrameValues;

constexpr Column kOmxInColumns[] = {
    {"frame_no", &V::frameNumber},   {"90k_counter", &V::clock90k}, {"input_size", &V::inputSize},
    {"input_flags", &V::inputFlags}, {"pts.L", &V::pts90k},
};

constexpr Column kOmxOutColumns[] = {
    {"frame_no", &V::frameNumber}, {"90k_counter", &V::clock90k},
    {"width", &V::width},          {"height", &V::height},
    {"hdrInfo", &V::hdrType},      {"frame_rate", &V::frameRateMilliHz},
    {"pts.L", &V::pts90k},
};

constexpr Column kDvoColumns[] = {
    {"frame_no", &V::frameNumber},        {"frame_kind", &V::frameKind},
    {"frame_rate", &V::frameRateMilliHz}, {"pts.L", &V::pts90k},
    {"repeat_drop", &V::repeatDrop},
};

constexpr Column kVdecColumns[] = {
    {"frame_no", &V::frameNumber},
    {"width", &V::width},
    {"height", &V::height},
    {"crc", &V::crcDecoded, true},
    {"frame_rate", &V::frameRateMilliHz},
    {"pts", &V::pts90k},
    {"90k_counter", &V::clock90k},
    {"hdrInfo", &V::hdrType},
    {"pri_x1", &V::primaryX1},
    {"pri_x2", &V::primaryX2},
    {"pri_x3", &V::primaryX3},
    {"pri_y1", &V::primaryY1},
    {"pri_y2", &V::primaryY2},
    {"pri_y3", &V::primaryY3},
    {"white_x", &V::whiteX},
    {"white_y", &V::whiteY},
    {"max_disp_lu", &V::maxLuminance},
    {"min_disp_lu", &V::minLuminance},
    {"trans_char", &V::transfer},
    {"matrix_coef", &V::matrix},
    {"color_pri", &V::primaries},
    {"full_range", &V::fullRange},
    {"max_c_cll", &V::maxCll},
    {"max_fall", &V::maxFall},
};

constexpr Column kVoColumns[] = {
    {"frame_no", &V::frameNumber},
    {"repeat_cnt", &V::repeatCount},
    {"90k_counter", &V::clock90k, true},
    {"width", &V::width},
    {"height", &V::height},
    {"HDR_type", &V::hdrType},
    {"frame_rate", &V::frameRateMilliHz},
    {"pts.H", &V::ptsHigh},
    {"pts.L", &V::pts90k, true},
    {"color_fmt", &V::colourFormat},
    {"crc_vo", &V::crcOutput, true},
    {"pri_x1", &V::primaryX1},
    {"pri_x2", &V::primaryX2},
    {"pri_x3", &V::primaryX3},
    {"pri_y1", &V::primaryY1},
    {"pri_y2", &V::primaryY2},
    {"pri_y3", &V::primaryY3},
    {"white_x", &V::whiteX},
    {"white_y", &V::whiteY},
    {"max_disp_lu", &V::maxLuminance},
    {"min_disp_lu", &V::minLuminance},
    {"trans_char", &V::transfer},
    {"matrix_coef", &V::matrix},
    {"full_range", &V::fullRange},
    {"max_c_cll", &V::maxCll},
    {"max_fall", &V::maxFall},
    {"crc_vgip", &V::crcScalerInput, true},
};

constexpr Column kScalerColumns[] = {
    {"frame_no", &V::frameNumber},
    {"90k_counter", &V::clock90k, true},
    {"width", &V::width},
    {"height", &V::height},
    {"crc_vgip", &V::crcScalerInput, true},
    {"crc_rgb2yuv", &V::crcRgbToYuv, true},
    {"crc_di_hzd", &V::crcDeinterlaceHzd, true},
    {"crc_di", &V::crcDeinterlace, true},
    {"crc_uzd_h", &V::crcDownscaleH, true},
    {"crc_uzd_v", &V::crcDownscaleV, true},
    {"crc_M_cap", &V::crcCapture, true},
    {"crc_mem", &V::crcMemory, true},
    {"crc_uzu", &V::crcUpscale, true},
    {"crc_sharp", &V::crcSharpness, true},
    {"crc_icm", &V::crcColour, true},
    {"crc_memc_in", &V::crcMemcIn, true},
    {"crc_memc_out", &V::crcMemcOut, true},
    {"crc_od", &V::crcOverdrive, true},
    {"crc_panel_if", &V::crcPanel, true},
    {"memc_cadence", &V::memcCadence},
    {"frame_rate", &V::frameRateMilliHz},
    {"color_fmt", &V::colourFormat},
};

constexpr Column kAudioColumns[] = {
    {"frame_no", &V::frameNumber},    {"90k_counter", &V::clock90k},
    {"sample_rate", &V::sampleRate},  {"channel_no", &V::channelCount},
    {"pcm_data_crc", &V::audioCheck}, {"pts", &V::pts90k},
    {"delay", &V::audioDelay90k},
};

// In the order of Stage. Readers take the titles of VO and Scaler as one word; VDEC's ends with
// another word than the column's name; those of OMX and DVO fit into 65 characters with their
// newline.
constexpr DumpFormat kFormats[] = {
    {"OMXIN", "dump_omx_input.txt", ", ", ", ", kOmxInColumns},
    {"OMXOUT", "dump_omx_output.txt", ", ", ", ", kOmxOutColumns},
    {"VDEC", "dump_vdec.txt", ", ", ",", kVdecColumns, "MaxFALL"},
    {"DVO", "dump_dvo.txt", ", ", ", ", kDvoColumns, {}, "EOS"},
    {"VO", "dump_vo.txt", ",", ",", kVoColumns},
    {"Scaler", "dump_scaler.txt", ",", ",", kScalerColumns},
    {"Audio", "dump_audio.txt", ",", ",", kAudioColumns},
};

void AppendValue(std::string& row, const Column& column, const FrameValues& values) {
  const int64_t value = values.*column.value;
  std::array<char, 24> digits;
  const auto end =
      column.hexadecimal
          ? std::to_chars(digits.begin(), digits.end(), static_cast<uint32_t>(value), 16).ptr
          : std::to_chars(digits.begin(), digits.end(), value).ptr;
  row.append(digits.begin(), end);
}

}  // namespace

const DumpFormat& FormatOf(Stage stage) {
  return kFormats[static_cast<std::size_t>(stage)];
}

const Column* FindColumn(const DumpFormat& format, std::string_view name) {
  const auto found = std::find_if(format.columns.begin(), format.columns.end(),
                                  [name](const Column& column) { return column.name == name; });
  return found == format.columns.end() ? nullptr : &*found;
}

std::string TitleOf(const DumpFormat& format) {
  std::string title;
  for (const Column& column : format.columns) {
    const bool last = &column == &format.columns.back();
    title += last && !format.lastTitle.empty() ? format.lastTitle : column.name;
    title += last ? "\n" : format.titleSeparator;
  }
  return title;
}

std::string RowOf(const DumpFormat& format, const FrameValues& values) {
  std::string row;
  for (const Column& column : format.columns) {
    AppendValue(row, column, values);
    row += &column == &format.columns.back() ? "\n" : format.separator;
  }
  return row;
}

std::string EndOf(const DumpFormat& format) {
  return format.lastRow.empty() ? "" : std::string(format.lastRow) + '\n';
}

}  // namespace player
