// The HAL's headers and calls as a C program sees them.
#include <stdalign.h>

#include "CCaller.h"
#include "k2v/device.h"
#include "k2v/gal.h"
#include "k2v/hdcp2.h"
#include "k2v/thermal.h"
#include "k2v/types.h"
#include "k2v/vbe.h"
#include "k2v/vfe_hdmi.h"
#include "k2v/vfe_vby1rx.h"
#include "k2v/vpq.h"
#include "k2v/vsc.h"

#define HAL_RECORD(type, size, alignment) {#type, sizeof(type), alignof(type)},
#define HAL_FIELD(type, field, offset, size)
const RecordLayout kRecordsInC[] = {
#include "HalRecords.def"
};
#undef HAL_RECORD
#undef HAL_FIELD

#define HAL_RECORD(type, size, alignment)
#define HAL_FIELD(type, field, offset, size) \
  {#type, #field, offsetof(type, field), sizeof(((type*)0)->field)},
const FieldLayout kFieldsInC[] = {
#include "HalRecords.def"
};

static void Fill(void* record, size_t bytes) {
  for (size_t i = 0; i < bytes; ++i) ((uint8_t*)record)[i] = (uint8_t)(i + 1);
}

static K2V_VIDEO_RECT_T Region(void) {
  K2V_VIDEO_RECT_T region;
  Fill(&region, sizeof region);
  return region;
}

static K2V_VSC_INPUT_SRC_T Source(void) {
  K2V_VSC_INPUT_SRC_T source;
  Fill(&source, sizeof source);
  return source;
}

static K2V_VBE_PANEL_INFO_T Panel(void) {
  K2V_VBE_PANEL_INFO_T panel;
  Fill(&panel, sizeof panel);
  return panel;
}

static int Connect(void) {
  return K2V_RHAL_VSC_Connect(kWindowFromC, Source());
}

static int Disconnect(void) {
  return K2V_RHAL_VSC_Disconnect(kWindowFromC, Source());
}

static int SetInputRegion(void) {
  return K2V_RHAL_VSC_SetInputRegion(kWindowFromC, Region());
}

static int SetOutputRegion(void) {
  return K2V_RHAL_VSC_SetOutputRegion(kWindowFromC, Region());
}

static int InitializePanel(void) {
  return K2V_RHAL_VBE_DISP_Initialize(Panel());
}

const CCall kCallsFromC[kCCallCount] = {
    {"K2V_RHAL_VSC_Connect", "K2V_VSC_INPUT_SRC_T", Connect},
    {"K2V_RHAL_VSC_Disconnect", "K2V_VSC_INPUT_SRC_T", Disconnect},
    {"K2V_RHAL_VSC_SetInputRegion", "K2V_VIDEO_RECT_T", SetInputRegion},
    {"K2V_RHAL_VSC_SetOutputRegion", "K2V_VIDEO_RECT_T", SetOutputRegion},
    {"K2V_RHAL_VBE_DISP_Initialize", "K2V_VBE_PANEL_INFO_T", InitializePanel},
};
