#include "Mox/RangeException.h"

namespace Mox {

void throwRangeException(const char* text) { throw RangeException(text); }

}  // namespace Mox
