// VornPeloL3RltraceHelper: the ring-buffer trace of the forwarding layer's
// L3 miscellany facility.
#pragma once

#include "Mox/String.h"
#include "Vorn/Export.h"

namespace Vorn {

// Opens the L3 miscellany trace of the agent `name` on the file
// "PeloL3Misc-<name>.rlog", with the facility's size, starting it afresh.
VORN_EXPORT void setupPeloL3MiscRltrace(Mox::String name);

}  // namespace Vorn
