#include "Redundancy/RedundancyStatus.h"

namespace Redundancy {

// The key function: the type's record lives in the platform library, one
// copy for every user.
RedundancyStatus::~RedundancyStatus() = default;

}  // namespace Redundancy
