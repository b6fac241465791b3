// Raw transmit: one frame through the driver's "txraw" netdevice, which hands
// it to a destination on the chip.
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "Mox/Assert.h"
#include "Ringlog/Ringlog.h"
#include "Vorn/VornDma.h"
#include "Vorn/VornDmaPrivate.h"
#include "Vorn/VornDmaTxRawFrame.h"

namespace Hardware::Vorn {

namespace {
constexpr const char kFn[] =
    "void Hardware::Vorn::vornDmaTxRaw(Mox::String, U32, unsigned int, unsigned char*)";
}  // namespace

void vornDmaTxRaw(Mox::String name, U32 destId, unsigned len, unsigned char* data) {
  RINGLOG("vornDmaTxRaw name=%s, destId=%u, len=%u", name, destId, len);
  if (dma::simulation()) return;
  MOX_ASSERT_TEXT(len < (kCommandSize - (sizeof(dma::txrawhdr) + 4 + 2)),
                  "len < ( CMDSZ - ( sizeof ( struct txrawhdr ) + 4 + 2 ) )", kFn);
  MOX_ASSERT_TEXT(name.bytes() < 64, "name.bytes() < 64", kFn);

  const dma::TxRawFrame frame =
      dma::txRawFrame(name.view(), destId, std::span<const unsigned char>(data, len));

  // Send only: protocol 0 receives nothing.
  int sock = Kernel::socket(AF_PACKET, SOCK_RAW, 0);
  if (sock < 0) {
    VORN_DMA_TRACE(0, "vornDmaTxRaw", " socket ", std::strerror(errno));
    return;
  }
  ifreq ifr;
  std::memset(&ifr, 0, sizeof ifr);
  std::strncpy(ifr.ifr_name, "txraw", sizeof ifr.ifr_name - 1);
  // The failed calls below are traced with the text of their return value
  // (-1), not of errno: that is what the traces have always shown.
  int rc = Kernel::ioctl(sock, SIOCGIFINDEX, &ifr);
  if (rc < 0) VORN_DMA_TRACE(0, "vornDmaTxRaw", " SIOCGIFINDEX error ", std::strerror(rc));

  sockaddr_ll addr;
  std::memset(&addr, 0, sizeof addr);
  addr.sll_family = AF_PACKET;
  addr.sll_protocol = 0;
  addr.sll_ifindex = ifr.ifr_ifindex;
  static_assert(sizeof addr == 20, "the link-layer address is 20 bytes");
  rc = Kernel::bind(sock, reinterpret_cast<const sockaddr*>(&addr), sizeof addr);
  if (rc < 0) {
    VORN_DMA_TRACE(0, "vornDmaTxRaw", " bind returned ", std::strerror(rc));
  } else {
    ssize_t written = Kernel::write(sock, frame.bytes.data(), frame.size);
    if (written < 0)
      VORN_DMA_TRACE(0, "vornDmaTxRaw", " write returned ",
                     std::strerror(static_cast<int>(written)));
  }
  Kernel::close(sock);
}

}  // namespace Hardware::Vorn
