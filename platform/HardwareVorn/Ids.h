// Identifier value types of the chip type library (namespace Hardware::Vorn).
#pragma once

#include "HardwareVorn/BoundedId.h"
#include "Mox/Types.h"

namespace Hardware::Vorn {

// A FAP (forwarding processor) number within the system.
class FapId : public BoundedId<FapId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] = "FapId::value < FapId::min or > FapId::null not allowed";
};

class SystemCoreId : public BoundedId<SystemCoreId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "SystemCoreId::value < SystemCoreId::min or > SystemCoreId::null not allowed";
};

class SystemTcamId : public BoundedId<SystemTcamId, U16, 2048> {
 public:
  using BoundedId::BoundedId;
  static constexpr U16 allTcams() noexcept { return 2046; }
  static constexpr const char kRangeText[] =
      "SystemTcamId::value < SystemTcamId::min or > SystemTcamId::null not allowed";
};

class LocalCoreId : public BoundedId<LocalCoreId, U16, 4> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LocalCoreId::value < LocalCoreId::min or > LocalCoreId::null not allowed";
};

class LocalTcamId : public BoundedId<LocalTcamId, U16, 4> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LocalTcamId::value < LocalTcamId::min or > LocalTcamId::null not allowed";
};

class LagId : public BoundedId<LagId, U32, 1024> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LagId::value < LagId::min or > LagId::null not allowed";
};

class LagMemberId : public BoundedId<LagMemberId, U16, 256> {
 public:
  using BoundedId::BoundedId;
  static constexpr const char kRangeText[] =
      "LagMemberId::value < LagMemberId::min or > LagMemberId::null not allowed";
};

}  // namespace Hardware::Vorn
