#pragma once

#include "host/DialogCatalog.h"

namespace ochost {

/// Has reports zoom to objects, as the CAD program does, by logging where each is; no longer with null. `reporter` must
/// live until then.
void LogZooms(Reporter* reporter);

}  // namespace ochost
