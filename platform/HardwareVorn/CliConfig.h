// Hardware::Vorn::CliConfig: the system configuration that the command line
// writes. The library reads its egress-buffer parameters.
//
//   CliConfig::Ptr c(new CliConfig());
//   EgressBufferParameters p;
//   p.reservedMcPerPort = 100;
//   c->egressBufferParametersIs(p);
#pragma once

#include "HardwareVorn/EgressBufferParameters.h"
#include "Mox/Ptr.h"

namespace Hardware::Vorn {

class CliConfig : public Mox::PtrInterface {
 public:
  static constexpr const char kTypeName[] = "Hardware::Vorn::CliConfig";
  using Ptr = Mox::Ptr<CliConfig>;
  using PtrConst = Mox::Ptr<CliConfig const>;

  ~CliConfig() override;

  const EgressBufferParameters& egressBufferParameters() const noexcept { return params_; }
  void egressBufferParametersIs(const EgressBufferParameters& p) noexcept { params_ = p; }

 private:
  EgressBufferParameters params_;
};

}  // namespace Hardware::Vorn
