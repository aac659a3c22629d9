// One playback test case from start to end: a start step, the player, and an end step.
#pragma once

#include <string>

class CM_TestCase;

/// Manual play: the operator plays the content by other means and presses a key to end the run. Off
/// by default; when on, the operator provides content, environment and GStreamer variables.
void Set_Manual_Play(bool manual);
bool Get_Manual_Play();

/// Removes old dumps and logs, prepares content and environment and switches the drivers into test
/// mode; `hdr` is 1 for content of high dynamic range. Returns 0, or -1 if the run must not
/// continue.
int Test_Start(int hdr);

/// Switches the test mode off and stores the dumps. Returns the result of `Backup_Dump_File`.
int Test_End();

/// Plays a test case of the catalogue and stores its dumps. `progress` is shown with the elapsed
/// time of the player; if empty, nothing is shown. Returns 0; 1 if the run could not start; -1 if
/// the test case or its content does not exist.
int Run_Playback_Test_Case(CM_TestCase* tc, const std::string& progress = "");
