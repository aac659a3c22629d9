// Verifying a stage's dump of the current test case against its golden data.
#pragma once

#include "../../stages/src/Stage.h"

class CM_TestCase;

/// Verifies one stage's dump and keeps the outcome in the stage's record. A missing dump or golden
/// file is reported and leaves the previous outcome. Prints the outcome in detail at debug level 1,
/// and when it is not one of all stages that are being verified.
void Verify_Module(MODULE_TYPE module);

/// Forgets every stage's outcome and verifies all stages in list order.
void Verify_All_Modules();

/// True for the demo clip, whose sound is early and whose outcome is checked in a line of its own.
bool IsDemoContent(const CM_TestCase& testCase);
