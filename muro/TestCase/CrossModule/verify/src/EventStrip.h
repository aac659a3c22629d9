// The events of a run as a picture: a track for each stage over one axis of time.
#pragma once

#include <string>
#include <vector>

#include "AvSync.h"
#include "Causes.h"

/// The picture as SVG. A mark has the shape and the colour of its kind; what follows from a cause
/// is joined to it; `marks` are the flashes and beeps of synchronisation content.
std::string EventStrip(const CaseEvents& found, const std::vector<SyncMark>& marks);
