// The frame that vornDmaTxRaw writes to the driver's "txraw" netdevice, built
// apart from any I/O so that it can be checked and fuzzed byte for byte.
//
//   offset  size     field
//   0       64       target netdevice name, NUL-padded, byte 63 always 0
//   64      2        header word 0x0200, little-endian (00 02)
//   66      4        destination id, big-endian
//   70      2        reserved, 0
//   72      len      payload
//   72+len  60-len   zero padding, only when len < 60
//
// Not exported: the library and its tests compile it from this header.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

#include "Mox/Types.h"

namespace Hardware::Vorn::dma {

// The driver's transmit header: the target name and the header word.
struct txrawhdr {
  char name[64];
  U16 word;
};
static_assert(sizeof(txrawhdr) == 66, "the driver's transmit header is 66 bytes");

inline constexpr std::size_t kTxRawNameSize = sizeof(txrawhdr::name);
// The header, the destination id and the two reserved bytes.
inline constexpr std::size_t kTxRawPayloadOffset = sizeof(txrawhdr) + 4 + 2;
// A frame and its command fit in the driver's 256-byte command size.
inline constexpr std::size_t kTxRawCommandSize = 256;
inline constexpr std::size_t kTxRawMaxPayload = kTxRawCommandSize - kTxRawPayloadOffset - 1;
// Payloads shorter than this are padded with zeros.
inline constexpr std::size_t kTxRawMinPayload = 60;

struct TxRawFrame {
  std::array<unsigned char, kTxRawPayloadOffset + kTxRawMaxPayload> bytes{};
  // Bytes of `bytes` to write; 0 when the payload is too long to send.
  std::size_t size = 0;
};

// The frame carrying `payload` to `destId` for the netdevice `name`. The name
// is copied as strncpy copies it (up to its first NUL) and cut to 63
// characters; a payload above kTxRawMaxPayload bytes gives an empty frame.
inline TxRawFrame txRawFrame(std::string_view name, U32 destId,
                             std::span<const unsigned char> payload) noexcept {
  TxRawFrame f;
  if (payload.size() > kTxRawMaxPayload) return f;
  unsigned char* p = f.bytes.data();
  for (std::size_t i = 0; i < name.size() && i < kTxRawNameSize - 1 && name[i] != '\0'; ++i)
    p[i] = static_cast<unsigned char>(name[i]);
  // The header word 0x0200 as the x86 driver reads it, in its own byte order.
  p[64] = 0x00;
  p[65] = 0x02;
  p[66] = static_cast<unsigned char>(destId >> 24);
  p[67] = static_cast<unsigned char>(destId >> 16);
  p[68] = static_cast<unsigned char>(destId >> 8);
  p[69] = static_cast<unsigned char>(destId);
  if (!payload.empty()) std::memcpy(p + kTxRawPayloadOffset, payload.data(), payload.size());
  f.size =
      kTxRawPayloadOffset + (payload.size() < kTxRawMinPayload ? kTxRawMinPayload : payload.size());
  return f;
}

}  // namespace Hardware::Vorn::dma
