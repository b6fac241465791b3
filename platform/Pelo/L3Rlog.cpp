#include "Pelo/L3Rlog.h"

namespace Pelo {

RlogHandle peloL3MiscRlogHandle;
RlogSizeSpec miscL3SizeSpec = {4096, 256};

void initializePeloL3RlogHandle(RlogHandle& handle, const char* fileName,
                                const RlogSizeSpec& sizeSpec, bool keepExisting) {
  handle.fileName = Mox::String(fileName);
  handle.sizeSpec = sizeSpec;
  handle.keepExisting = keepExisting;
  ++handle.opens;
}

}  // namespace Pelo
