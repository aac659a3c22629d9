// The events of a run as a picture: one track per stage over a common time axis.
#pragma once

#include <string>
#include <vector>

#include "AvSync.h"
#include "Causes.h"

/// The picture as SVG. A mark has the shape and the colour of its kind; lines join causes and the
/// events that follow from them; `marks` are the flashes and beeps of synchronisation content.
std::string EventStrip(const CaseEvents& found, const std::vector<SyncMark>& marks);
