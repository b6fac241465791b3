// The raw-transmit frame builder on arbitrary input: every frame has the
// driver's layout.
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "Vorn/VornDmaTxRawFrame.h"

using namespace Hardware::Vorn::dma;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Input: 4 bytes of destination id, 1 byte of name length, the name, the payload.
  if (size < 5) return 0;
  const U32 destId = (U32{data[0]} << 24) | (U32{data[1]} << 16) | (U32{data[2]} << 8) | data[3];
  std::size_t nameLen = data[4];
  if (nameLen > size - 5) nameLen = size - 5;
  std::string_view name(reinterpret_cast<const char*>(data + 5), nameLen);
  std::span<const unsigned char> payload(data + 5 + nameLen, size - 5 - nameLen);

  const TxRawFrame f = txRawFrame(name, destId, payload);
  if (payload.size() > kTxRawMaxPayload) {
    if (f.size != 0) __builtin_trap();
    return 0;
  }
  const std::size_t body = payload.size() < kTxRawMinPayload ? kTxRawMinPayload : payload.size();
  if (f.size != kTxRawPayloadOffset + body) __builtin_trap();
  const unsigned char* p = f.bytes.data();
  // The name: a prefix of the input up to its first NUL, then zeros to byte 63.
  std::size_t n = 0;
  while (n < name.size() && n < kTxRawNameSize - 1 && name[n] != '\0') ++n;
  if (std::memcmp(p, name.data(), n) != 0) __builtin_trap();
  for (std::size_t i = n; i < kTxRawNameSize; ++i)
    if (p[i] != 0) __builtin_trap();
  // From byte 64: 0, 2, the destination id (big-endian), 0, 0.
  const unsigned char header[8] = {0, 2, data[0], data[1], data[2], data[3], 0, 0};
  if (std::memcmp(p + 64, header, sizeof header) != 0) __builtin_trap();
  if (!payload.empty() && std::memcmp(p + kTxRawPayloadOffset, payload.data(), payload.size()) != 0)
    __builtin_trap();
  for (std::size_t i = kTxRawPayloadOffset + payload.size(); i < f.size; ++i)
    if (p[i] != 0) __builtin_trap();
  return 0;
}
