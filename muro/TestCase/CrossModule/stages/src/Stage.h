// The stages of the media pipeline whose drivers write dumps. All data of a stage is in its row of
// `kStages`; the function that compares its dump is passed in from above (verify/src/Verifiers.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

/// One bit each; 64 is not used.
enum MODULE_TYPE : int32_t {
  MODULE_OMXIN = 1,
  MODULE_OMXOUT = 2,
  MODULE_VDEC = 4,
  MODULE_DVO = 8,
  MODULE_VO = 16,
  MODULE_SCALER = 32,
  MODULE_AUDIO = 128,
};

/// How the values of a column are written in the dump.
enum class Notation : uint8_t { kText, kDecimal, kHexadecimal };

/// The unit of a column's values.
enum class Unit : uint8_t {
  kNone,
  kFrame,
  kTicks90k,              // 90000 per second
  kMilliFramesPerSecond,  // 60000 is 60 frames per second
  kPixels,
  kBytes,
  kHertz,
  kChecksum,
};

/// What a verifier does with a column.
enum class Use : uint8_t {
  kCompared,
  kIgnored,   // has a name in results, but differences are ignored
  kUnlisted,  // part of the row, without a name in results
};

/// One column of a dump.
struct StageColumn {
  const char* name;
  Notation notation = Notation::kDecimal;
  Unit unit = Unit::kNone;
  Use use = Use::kCompared;
  const char* nameInMessages = nullptr;  // if the stage's messages use another name
};

/// The column's name in the stage's messages.
constexpr const char* NameInMessages(const StageColumn& column) {
  return column.nameInMessages == nullptr ? column.name : column.nameInMessages;
}

/// Index of the first column that `matches`. Does not compile if there is none.
template <class Predicate>
consteval std::size_t FirstColumn(std::span<const StageColumn> columns, Predicate matches) {
  std::size_t i = 0;
  while (!matches(columns[i])) ++i;
  return i;
}

/// Index of the column of this name.
consteval std::size_t ColumnNamed(std::span<const StageColumn> columns, std::string_view name) {
  return FirstColumn(columns, [&](const StageColumn& column) { return column.name == name; });
}

/// Index of the first column of this unit.
consteval std::size_t ColumnOf(std::span<const StageColumn> columns, Unit unit) {
  return FirstColumn(columns, [&](const StageColumn& column) { return column.unit == unit; });
}

inline constexpr StageColumn kOmxInputColumns[] = {
    {"frame_no", Notation::kText, Unit::kFrame},
    {"90k_counter", Notation::kText, Unit::kTicks90k, Use::kIgnored},
    {"input_size", Notation::kText, Unit::kBytes},
    {"input_flags", Notation::kText},
    {"pts.L", Notation::kText, Unit::kTicks90k},
};

inline constexpr StageColumn kOmxOutputColumns[] = {
    {"frame_no", Notation::kText, Unit::kFrame},
    {"90k_counter", Notation::kText, Unit::kTicks90k, Use::kIgnored},
    {"width", Notation::kText, Unit::kPixels, Use::kIgnored},  // a difference causes a warning
    {"height", Notation::kText, Unit::kPixels, Use::kIgnored},
    {"hdrInfo", Notation::kText},
    {"frame_rate", Notation::kText, Unit::kMilliFramesPerSecond},
    {"pts.L", Notation::kText, Unit::kTicks90k},
};

inline constexpr StageColumn kVdecColumns[] = {
    {"frame_no", Notation::kDecimal, Unit::kFrame},
    {"width", Notation::kDecimal, Unit::kPixels},
    {"height", Notation::kDecimal, Unit::kPixels},
    {"crc", Notation::kHexadecimal, Unit::kChecksum},
    {"frame_rate", Notation::kDecimal, Unit::kMilliFramesPerSecond},
    {"pts", Notation::kDecimal, Unit::kTicks90k},
    {"90k_counter", Notation::kDecimal, Unit::kTicks90k, Use::kIgnored},
    {"hdrInfo"},
    {"pri_x1"},
    {"pri_x2"},
    {"pri_x3"},
    {"pri_y1"},
    {"pri_y2"},
    {"pri_y3"},
    {"white_x"},
    {"white_y"},
    {"max_disp_lu"},
    {"min_disp_lu"},
    {"trans_char"},
    {"matrix_coef"},
    {"color_pri"},
    {"full_range"},
    {"max_c_cll"},
    {"max_fall"},
};

inline constexpr StageColumn kDvoColumns[] = {
    {"frame_no", Notation::kText, Unit::kFrame},
    {"frame_kind", Notation::kText, Unit::kNone, Use::kUnlisted},
    {"frame_rate", Notation::kText, Unit::kMilliFramesPerSecond},
    {"pts.L", Notation::kText, Unit::kTicks90k},
    {"marker", Notation::kText, Unit::kNone, Use::kUnlisted},  // 1: repeated, negative: dropped
};

inline constexpr StageColumn kVoColumns[] = {
    {"frame_no", Notation::kDecimal, Unit::kFrame},
    {"repeat_cnt", Notation::kDecimal, Unit::kNone, Use::kCompared, "repeatCnt"},
    {"90k_counter", Notation::kHexadecimal, Unit::kTicks90k, Use::kIgnored, "misc_90k_counter"},
    {"width", Notation::kDecimal, Unit::kPixels},
    {"height", Notation::kDecimal, Unit::kPixels},
    {"HDR_type"},
    {"frame_rate", Notation::kDecimal, Unit::kMilliFramesPerSecond},
    {"pts.H", Notation::kDecimal, Unit::kTicks90k},
    {"pts.L", Notation::kHexadecimal, Unit::kTicks90k},
    {"color_fmt", Notation::kDecimal, Unit::kNone, Use::kCompared, "color_format"},
    {"crc_vo", Notation::kHexadecimal, Unit::kChecksum, Use::kCompared, "VO_CRC"},
    {"pri_x1", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_X1"},
    {"pri_x2", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_X2"},
    {"pri_x3", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_X3"},
    {"pri_y1", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_Y1"},
    {"pri_y2", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_Y2"},
    {"pri_y3", Notation::kDecimal, Unit::kNone, Use::kCompared, "Pri_Y3"},
    {"white_x", Notation::kDecimal, Unit::kNone, Use::kCompared, "White_X"},
    {"white_y", Notation::kDecimal, Unit::kNone, Use::kCompared, "White_Y"},
    {"max_disp_lu", Notation::kDecimal, Unit::kNone, Use::kCompared, "MaxDispLu"},
    {"min_disp_lu", Notation::kDecimal, Unit::kNone, Use::kCompared, "MinDispLu"},
    {"trans_char", Notation::kDecimal, Unit::kNone, Use::kCompared, "TransChar"},
    {"matrix_coef", Notation::kDecimal, Unit::kNone, Use::kCompared, "MatrixCoef"},
    {"full_range", Notation::kDecimal, Unit::kNone, Use::kCompared, "FullRange"},
    {"max_c_cll", Notation::kDecimal, Unit::kNone, Use::kCompared, "MaxCll"},
    {"max_fall", Notation::kDecimal, Unit::kNone, Use::kCompared, "MaxFALL"},
    {"crc_vgip", Notation::kHexadecimal, Unit::kChecksum, Use::kCompared, "VGIP_CRC"},
};

inline constexpr StageColumn kScalerColumns[] = {
    {"frame_no", Notation::kDecimal, Unit::kFrame},
    {"90k_counter", Notation::kHexadecimal, Unit::kTicks90k, Use::kIgnored},
    {"width", Notation::kDecimal, Unit::kPixels},
    {"height", Notation::kDecimal, Unit::kPixels},
    {"crc_vgip", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_rgb2yuv", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_di_hzd", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_di", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_uzd_h", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_uzd_v", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_M_cap", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_mem", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_uzu", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_sharp", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_icm", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_memc_in", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_memc_out", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_od", Notation::kHexadecimal, Unit::kChecksum},
    {"crc_panel_if", Notation::kHexadecimal, Unit::kChecksum},
    {"memc_cadence"},
    {"frame_rate", Notation::kDecimal, Unit::kMilliFramesPerSecond},
    {"color_fmt"},
};

inline constexpr StageColumn kAudioColumns[] = {
    {"frame_no", Notation::kDecimal, Unit::kFrame, Use::kIgnored},
    {"90k_counter", Notation::kDecimal, Unit::kTicks90k, Use::kIgnored},
    {"sample_rate", Notation::kDecimal, Unit::kHertz},
    {"channel_no"},
    {"pcm_data_crc", Notation::kDecimal, Unit::kChecksum},
    {"pts", Notation::kDecimal, Unit::kTicks90k, Use::kIgnored},
    {"delay", Notation::kDecimal, Unit::kTicks90k, Use::kUnlisted},
};

/// File from which the OMX layer, which has no device node, reads the paths of its two dumps.
inline constexpr char kOmxConfiguration[] = "/tmp/OMX_MURO_CONFIG";

/// One stage. Menus and reports list the stages in the table's order.
struct Stage {
  MODULE_TYPE module;
  const char* alignedName;  // in tables
  const char* simpleName;   // in file names
  const char* dumpFile;     // below the dump directory
  int pictureStep;          // position in the path of the picture, starting at 1; 0: sound
  int testModeStep;         // position in the order in which test modes are switched on
  const char* testModeOn;   // command that switches it on; {dump} represents the dump's path
  const char* testModeOff;  // null: the OMX layer, which is switched off with its configuration
  std::span<const StageColumn> columns;
};

// "[OMXIN]" is one character shorter than the others.
inline constexpr Stage kStages[] = {
    {MODULE_OMXIN, "[OMXIN]", "OMXIN", "dump_omx_input.txt", 1, 2,
     "echo testresult={dump} >> /tmp/OMX_MURO_CONFIG", nullptr, kOmxInputColumns},
    {MODULE_OMXOUT, "[OMXOUT]", "OMXOUT", "dump_omx_output.txt", 3, 1,
     "echo testresult={dump} > /tmp/OMX_MURO_CONFIG", nullptr, kOmxOutputColumns},
    {MODULE_VDEC, "[VDEC]  ", "VDEC", "dump_vdec.txt", 2, 3,
     "echo testmode=1 testresult={dump} > /dev/cvnvdec", "echo testmode=0 > /dev/cvnvdec",
     kVdecColumns},
    {MODULE_DVO, "[DVO]   ", "DVO", "dump_dvo.txt", 4, 4,
     "echo testmode=1 testresult={dump} > /dev/cvndvo", "echo testmode=0 > /dev/cvndvo",
     kDvoColumns},
    {MODULE_VO, "[VO]    ", "VO", "dump_vo.txt", 5, 5,
     "echo testmode=1 testresult={dump} > /dev/vodev", "echo testmode=0 > /dev/vodev", kVoColumns},
    {MODULE_SCALER, "[Scaler]", "Scaler", "dump_scaler.txt", 6, 6,
     "echo testmode=1 testresult={dump} > /dev/vscdev", "echo testmode=0 > /dev/vscdev",
     kScalerColumns},
    {MODULE_AUDIO, "[Audio] ", "Audio", "dump_audio.txt", 0, 7,
     "echo fw@ testmode=1 {dump} > /dev/cvnaudio", "echo fw@ testmode=0 > /dev/cvnaudio",
     kAudioColumns},
};

/// The stage's row; null for an unknown stage number.
const Stage* FindStage(MODULE_TYPE module);

/// The stages that a picture passes, in that order. The sound is not included.
std::vector<const Stage*> PictureWay();

/// The stage's name in brackets for aligned tables, such as "[VDEC]  "; "[other] " for anything
/// else.
const char* Module_Type_To_String(MODULE_TYPE module);

/// The stage's plain name for file names, such as "VDEC"; "[other]" for anything else.
const char* Module_Type_To_String_Simple(MODULE_TYPE module);
