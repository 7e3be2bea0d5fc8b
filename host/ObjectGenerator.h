#pragma once

#include "host/ProjectGenerator.h"
#include "host/Random.h"

namespace ochost {

/// Places objects in the drawings of the project as the data file "placements" says. A text that does not fit the
/// project is thrown as a Failure that names file and line.
void PlaceObjects(const TextSource& texts, Random& random, ProjectContent& project);

}  // namespace ochost
