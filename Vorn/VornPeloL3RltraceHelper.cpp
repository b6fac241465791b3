#include "Vorn/VornPeloL3RltraceHelper.h"

#include "Pelo/L3Rlog.h"

namespace Vorn {

void setupPeloL3MiscRltrace(Mox::String name) {
  const Mox::String fileName = Mox::format("PeloL3Misc-%s.rlog", name.charPtr());
  Pelo::initializePeloL3RlogHandle(Pelo::peloL3MiscRlogHandle, fileName.charPtr(),
                                   Pelo::miscL3SizeSpec, false);
}

}  // namespace Vorn
