// The emulated driver's host-device, QoS and L3 commands, sent as raw lines.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "emu/FabricDriver.h"

namespace {

class HostCommands : public testing::Test {
 protected:
  int send(const std::string& text, unsigned size = 256) {
    std::vector<char> buf(size, '\0');
    std::snprintf(buf.data(), size, "%s", text.c_str());
    return driver.command(buf.data(), size);
  }
  Emu::FabricDriver driver;
};

// A MAC given with the command (SAI mode) is the new netdevice's.
TEST_F(HostCommands, IfaddWithAMac) {
  EXPECT_EQ(send("ifadd et2 6 0 eth2 02:00:00:aa:bb:cc internallag"), 0);
  EXPECT_EQ(driver.host().netdevs.at("et2").mac, Wirl::EthAddr(2, 0, 0, 0xaa, 0xbb, 0xcc));
  EXPECT_EQ(driver.host().netdevs.at("et2").flags, IFF_BROADCAST | IFF_MULTICAST);  // down
}

TEST_F(HostCommands, IfaddRefusesWhatTheDriverCannotTake) {
  for (const char* bad :
       {"ifadd et1 5 0", "ifadd et1 x 0 internallag", "ifadd et1 5 0 plain",
        "ifadd abcdefghijklmnop 5 0 internallag", "ifadd et1 5 0 eth1 02:00:00:aa:bb internallag",
        "ifadd et1 5 0  internallag", "ifadd et1 5 0 a b c d"})
    EXPECT_EQ(send(bad), EINVAL) << bad;
  EXPECT_TRUE(driver.host().interfaces.empty());
  EXPECT_TRUE(driver.host().netdevs.empty());
}

TEST_F(HostCommands, DevicesMustExistForTheirCommands) {
  for (const char* cmd :
       {"ifdel et1", "ifstate et1 up", "vlan_vsi_add et1 1 2 0 5", "internalvlan 10 et1",
        "tc_vpri_map_update et1 1 1", "vcable_muxid et1 1"})
    EXPECT_EQ(send(cmd), ENODEV) << cmd;
}

TEST_F(HostCommands, VlanMappingsAndTheirBounds) {
  ASSERT_EQ(send("ifadd et1 5 0 internallag"), 0);
  EXPECT_EQ(send("vlan_vsi_add et1 10 20 0 4000"), 0);
  EXPECT_EQ(send("vlan_vsi_add et1 10 20 0 4001"), EEXIST);
  EXPECT_EQ(send("vlan_vsi_add et1 10 4096 0 1"), EINVAL);
  EXPECT_EQ(send("vlan_vsi_add et1 10 20 0 65536"), EINVAL);
  EXPECT_EQ(driver.host().interfaces.at("et1").vlanToVsi.at({10, 20, 0}), 4000u);
  EXPECT_EQ(send("vlan_vsi_del et1 10 20 0"), 0);
  EXPECT_EQ(send("vlan_vsi_del et1 10 20 0"), ENOENT);
  EXPECT_EQ(send("native_vlan et1 2 10"), EINVAL);
  EXPECT_EQ(send("ifstate et1 sideways"), EINVAL);
  // Deleting a device drops its routed-port VLAN with it.
  ASSERT_EQ(send("internalvlan 1006 et1"), 0);
  ASSERT_EQ(send("ifdel et1"), 0);
  EXPECT_TRUE(driver.host().routedPortVlans.empty());
}

TEST_F(HostCommands, TrafficClassTableIsEightOctalDigits) {
  ASSERT_EQ(send("ifadd et1 5 0 internallag"), 0);
  EXPECT_EQ(send("tc_vpri_map_add et1 76543210"), 0);
  EXPECT_EQ(*driver.host().interfaces.at("et1").tcToVpri,
            (std::array<unsigned, 8>{0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(send("tc_vpri_map_add et1 8"), EINVAL);  // not octal
  EXPECT_EQ(send("tc_vpri_map_del et1"), 0);
  EXPECT_EQ(send("tc_vpri_map_update et1 2 3"), 0);  // a new table of zeros
  EXPECT_EQ(*driver.host().interfaces.at("et1").tcToVpri,
            (std::array<unsigned, 8>{0, 0, 3, 0, 0, 0, 0, 0}));
}

// The bounds the library's own tests do not reach.
TEST_F(HostCommands, MapBounds) {
  EXPECT_EQ(send("vnitovlan 16777215 4095"), 0);
  EXPECT_EQ(send("vcable_proto 88b5"), 0);
  EXPECT_EQ(send("vcable_proto 0x88b5"), EINVAL);
  EXPECT_EQ(send("pvlanmap 10 10"), EINVAL);
  EXPECT_EQ(send("virtualmac 02:00:00:00:00:01"), EINVAL);
  EXPECT_EQ(send("vlanroutingstatus 10 2"), EINVAL);
  EXPECT_EQ(*driver.host().vcableProto, 0x88b5u);
}

}  // namespace
