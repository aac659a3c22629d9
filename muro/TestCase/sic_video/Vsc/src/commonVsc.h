// Common video-scaler helpers: bring an input source up, detect its timing, connect it to a scaler
// window, place and blank the picture. The state of the two windows is kept from test to test, so
// that a scaler that is initialised and open is reused. HDMI is the only source that can be brought
// up: for every other type the result is -1 without a HAL call.
//
// Every helper returns 0, or -1, or the code of the HAL call that failed (after a line that names
// it). Windows and types that the operator types are passed to the HAL unchecked.
#pragma once

#include <cstdint>
#include <string>

#include "k2v/vsc.h"

/// Step that a test wants to take: 1 initialise, 2 open, 3 to 8 later ones.
using API_VSC_STATE_T = int32_t;

/// Command prefixes of the board's playback tool, for a file and for a URL.
extern const std::string kPlayFileCommand;
extern const std::string kPlayUrlCommand;

/// 0 if the window's state allows the step, -1, with a line that shows the states, if not.
int32_t Api_vsc_Check_State(API_VSC_STATE_T state, __K2V_VIDEO_WID_T wid);

/// The window that was connected last.
__K2V_VIDEO_WID_T Api_vsc_get_input_winid();

/// Initialises and opens the HDMI receiver with our EDIDs, prompts for a port and connects it.
/// Fails if the receiver is already initialised or open.
int32_t Api_vsc_Misc_SetInput_HDMI_Init();

/// Brings HDMI port 0 up, whether or not it is running, and connects it to the main window, without
/// any prompt; `bRunDM` other than 0 starts the dynamic metadata too. Takes four seconds.
int32_t Api_vsc_Misc_SetInput_HDMI_Directly(unsigned bRunDM);

/// Disconnects the current port, closes and uninitialises the receiver. Stops at the first failure.
int32_t Api_vsc_Misc_SetInput_HDMI_DeInit();

/// Reads the timing of the current port. `check` 1 watches: -1 if the active width or height
/// differs from the stored one by 10 pixels or more. Any other `check` stores and prints the
/// timing. A failure clears the stored timing, but never the region derived from it.
int32_t Api_vsc_Misc_HDMI_GetTimingInfo(unsigned char check);

// The same by source type.
int32_t Api_vsc_Misc_SetInput_Source(K2V_VSC_INPUT_TYPE type);
int32_t Api_vsc_Misc_SetInput_Source_simple(K2V_VSC_INPUT_TYPE type);
int32_t Api_vsc_Misc_ExitInput_Source(K2V_VSC_INPUT_TYPE type);
int32_t Api_vsc_Misc_GetTimingInfo(K2V_VSC_INPUT_TYPE type, unsigned char check);

/// Polls the timing once a second until it is available, 21 times at most. Returns the last result.
int32_t Api_vsc_Misc_CheckTimingInfo(K2V_VSC_INPUT_TYPE type);

/// Prompts for window and output mode; initialises and opens what is not yet, and connects. A type
/// of 5 or more is a failure even if the HAL connected it.
int32_t Api_vsc_Misc_SetVSC_Connect(K2V_VSC_INPUT_TYPE type);

/// The same for the main window and the display output, without prompts and for any type.
int32_t Api_vsc_Misc_SetVSC_Connect_simple(K2V_VSC_INPUT_TYPE type);

/// The same for a given window and the display output, without prompts.
int32_t Api_vsc_Misc_Set2VSC_Connect(K2V_VSC_INPUT_TYPE type, __K2V_VIDEO_WID_T wid);

/// Disconnects the window's source. The window stays initialised and open.
int32_t Api_vsc_Misc_SetVSC_Disconnect(__K2V_VIDEO_WID_T wid);

/// Prompts for the colour of a blanked window.
K2V_VIDEO_DDI_WIN_COLOR_T AskBlankColor();

/// Prompts for a window and blanks it (`on` 1) or shows it. Blanking prompts for the colour if
/// `askColour` is 1, else it is blue. Returns 0.
int32_t Api_vsc_Misc_SetWinBlank(unsigned on, unsigned askColour);

/// The same for a given window.
int32_t Api_vsc_Misc2_SetWinBlank(unsigned on, unsigned askColour, __K2V_VIDEO_WID_T wid);

/// Prompts for a window and a display size, and shows the whole detected picture in it. Returns 0.
int32_t Api_vsc_Misc_SetInOutregion();

/// The same for the main window on the whole 3840x2160 panel, without prompts.
int32_t Api_vsc_Misc_SetInOutregion_simple();
