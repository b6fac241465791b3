#include "Pelo/DestIpIntf.h"

namespace Routing::NexthopGroup {

DestIpIntf::DestIpIntf() noexcept = default;

}  // namespace Routing::NexthopGroup
