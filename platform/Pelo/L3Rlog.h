// The forwarding layer's ring-buffer trace files of its L3 facilities.
//
// A facility's trace is one handle, opened once by name with a size
// description (messages and their size). The stand-in records what the
// handle was opened with (file name, size, flag) and how often, which is what
// its callers decide.
//
//   Pelo::initializePeloL3RlogHandle(Pelo::peloL3MiscRlogHandle, "PeloL3Misc-x.rlog",
//                                    Pelo::miscL3SizeSpec, false);
#pragma once

#include "Mox/String.h"
#include "Mox/Types.h"

namespace Pelo {

// The size of a ring-buffer trace file: its message slots and their size.
struct RlogSizeSpec {
  U32 messages;
  U32 messageBytes;
};

// An L3 facility's trace file.
struct RlogHandle {
  Mox::String fileName;  // empty until opened
  RlogSizeSpec sizeSpec{};
  bool keepExisting = false;  // the last opening's flag: append to an existing file
  unsigned opens = 0;
};

// The L3 miscellany facility's trace and its size.
extern RlogHandle peloL3MiscRlogHandle;
extern RlogSizeSpec miscL3SizeSpec;

// Opens `handle` on the trace file `fileName` of `sizeSpec`; with
// `keepExisting` false the file starts afresh. Opening an open handle again
// replaces the file.
void initializePeloL3RlogHandle(RlogHandle& handle, const char* fileName,
                                const RlogSizeSpec& sizeSpec, bool keepExisting);

}  // namespace Pelo
