#include "HardwareVorn/CliConfig.h"

namespace Hardware::Vorn {

// The key function: the type's record lives in the platform library.
CliConfig::~CliConfig() = default;

}  // namespace Hardware::Vorn
