#pragma once

#include "host/ProjectStore.h"

namespace ochost {

/// Makes the drawing records of the project's file (ObjectSelection::kDrawingRecord) those of its drawings, with the
/// paths that they have where the project lies now. Writes nothing when they are.
Status KeepDrawingRecords(const ProjectStore& project);

}  // namespace ochost
