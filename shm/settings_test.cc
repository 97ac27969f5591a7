// Settings, flags and small records: every setter is checked against the raw segment
// bytes at the offsets other processes use, and every rule that differs from a plain copy.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "support/test_support.h"
#include "syscommon/shm.h"

using syscommon::testing::RawSegment;

namespace {

class SettingsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

// A u32 word written by a setter, read back by its getter, and found at (key, offset).
struct WordCase {
  const char *name;
  int key;
  std::size_t offset;
  std::function<void(uint32_t)> set;
  std::function<uint32_t()> get;
};

TEST_F(SettingsTest, WordSettersLandAtTheirOffsetsAndGettersReadThemBack) {
  const std::vector<WordCase> cases = {
      {"agent filter", 7890, 0, shm_control_to_send_config_to_agent_filter,
       shm_check_ok_to_send_config_to_agent_filter},
      {"reboot", 7890, 20, [](uint32_t v) { shm_set_reboot_flag(v); }, shm_get_reboot_flag},
      {"timezone", 7890, 444, [](uint32_t v) { shm_set_timezone(int(v)); },
       [] { return uint32_t(shm_get_timezone()); }},
      {"vconfig process", 7890, 6980, [](uint32_t v) { set_shm_vconfig_process(v); }, get_shm_vconfig_process},
      {"bridge process", 7890, 6984, [](uint32_t v) { set_shm_brg_process(v); }, get_shm_brg_process},
      {"ipclient process", 7890, 6988, [](uint32_t v) { set_shm_ipclient_process(v); }, get_shm_ipclient_process},
      {"auth cert process", 7890, 6992, [](uint32_t v) { set_shm_auth_cert_process(v); },
       get_shm_auth_cert_process},
      {"mroute mode", 7900, 0, [](uint32_t v) { shm_ipMrouteSetMode(v); }, shm_ipMrouteGetMode},
      {"igmp snooping", 7900, 4, [](uint32_t v) { shm_igmpsnoopingSetEnable(v); }, shm_igmpsnoopingGetEnable},
      {"port member ready", 7904, 4, [](uint32_t v) { shm_set_vconf_port_member_ready(v); },
       [] {
         uint32_t one = 1;
         shm_set_fast_bootup_state(&one);  // otherwise the getter reports 1
         return shm_get_vconf_port_member_ready();
       }},
      {"web max users", 7906, 0, [](uint32_t v) { shm_sysSet_web_multiSession_maxUser(v); },
       shm_sysGet_web_multiSession_maxUser},
      {"con max users", 7906, 4, [](uint32_t v) { shm_sysSet_Con_multiSession_maxUser(v); },
       shm_sysGet_Con_multiSession_maxUser},
      {"web user count", 7906, 8, [](uint32_t v) { shm_sysSet_usercount(v); }, shm_sysGet_usercount},
      {"con user count", 7906, 12, [](uint32_t v) { shm_sysSet_con_usercount(v); }, shm_sysGet_con_usercount},
      {"sys timeout", 7906, 16, [](uint32_t v) { shm_sysSet_cf_sys_timeout(v); }, shm_sysGet_cf_sys_timeout},
      {"last session log", 7911, 0, [](uint32_t v) { shm_set_last_session_log_time(v); },
       shm_get_last_session_log_time},
  };
  uint32_t value = 0x01020304;
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.get(), 0u);
    c.set(value);
    EXPECT_EQ(RawSegment(c.key).u32(c.offset), value);
    EXPECT_EQ(c.get(), value);
    value += 0x01010101;
  }
}

// A record copied in by a setter and out by its getter, found whole at (key, offset).
struct RecordCase {
  const char *name;
  int key;
  std::size_t offset;
  std::size_t size;
  std::function<void(const void *)> set;
  std::function<void(void *)> get;
};

TEST_F(SettingsTest, RecordCopiesMoveExactlyTheirBytes) {
  const std::vector<RecordCase> cases = {
      {"filter global", 7890, 744, 24, [](const void *p) { shm_sysSetFilterGlobal(p); }, shm_sysGetFilterGlobal},
      {"vrrp global", 7890, 780, 4, [](const void *p) { shm_sysSetVrrpGlobal(p); }, shm_sysGetVrrpGlobal},
      {"sfp ddm page 1", 7890, 6724 + 128, 128, [](const void *p) { shm_set_sfp_Eeprom_ddm(1, p); },
       [](void *p) { shm_get_sfp_Eeprom_ddm(1, p); }},
      {"eeprom info", 7893, 0, 700, [](const void *p) { shm_sysSetEepromInfo(p); }, shm_sysGetEepromInfo},
      {"accounts", 7894, 0, 720, [](const void *p) { shm_sysSetUseraccount(p); }, shm_sysGetUseraccount},
      {"log config", 7902, 0, 296, [](const void *p) { shm_logSetConfig(p); }, shm_logGetLogConfig},
      {"pw policy", 7906, 20, 8, [](const void *p) { shm_sysSet_pwPolicy_config(p); }, shm_sysGet_pwPolicy_config},
      {"lockout config", 7906, 28, 12, [](const void *p) { shm_sysSet_loginLockout_config(p); },
       shm_sysGet_loginLockout_config},
      {"eventlog mgmt", 7906, 40, 4, [](const void *p) { shm_sysSet_eventlogMgmt_config(p); },
       shm_sysGet_eventlogMgmt_config},
      {"web sessions", 7906, 44, 240, [](const void *p) { shm_sysSet_multiSession_List(p); },
       shm_sysGet_multiSession_List},
      {"console sessions", 7906, 284, 384, [](const void *p) { shm_sysSet_con_multiSession_List(p); },
       shm_sysGet_con_multiSession_List},
      {"lockout list", 7906, 668, 80, [](const void *p) { shm_sysSet_login_lockout_List(p); },
       shm_sysGet_login_lockout_List},
      {"csrf tokens", 7906, 748, 160, [](const void *p) { shm_sysSet_csrf_Token_List(p); },
       shm_sysGet_csrf_Token_List},
      {"sfp ddm 1", 7907, 232, 232, [](const void *p) { shm_set_sfp_ddm(1, p); },
       [](void *p) { shm_get_sfp_ddm(1, p); }},
      {"resource usage", 7910, 0, 24, [](const void *p) { shm_set_resource_usage(p); }, shm_get_resource_usage},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    shm_init();
    RawSegment raw(c.key);
    std::vector<uint8_t> rec(c.size + 16, 0xEE), out(c.size + 16, 0xCC);
    for (std::size_t i = 0; i < c.size; ++i) rec[i] = uint8_t(i * 7 + 1);
    c.set(rec.data());
    EXPECT_EQ(std::memcmp(raw.bytes() + c.offset, rec.data(), c.size), 0);
    // Neighbouring bytes are untouched: the copy is exactly the record's size.
    EXPECT_EQ(raw.bytes()[c.offset + c.size], 0) << "wrote past the record";
    if (c.offset > 0) EXPECT_EQ(raw.bytes()[c.offset - 1], 0) << "wrote before the record";
    c.get(out.data());
    EXPECT_EQ(std::memcmp(out.data(), rec.data(), c.size), 0);
    EXPECT_EQ(out[c.size], 0xCC) << "read past the record";
  }
}

TEST_F(SettingsTest, FreshStoreReadsAllZeroWithItsDocumentedExceptions) {
  uint8_t f = 9, m = 9, c = 9;
  shm_ledGetAllLedBits(&f, &m, &c);
  EXPECT_EQ(f | m | c, 0);
  EXPECT_EQ(shm_rdndntGetProtocol(), 0);
  EXPECT_EQ(shm_rdndntIsRl2RingPort(0), 0);
  EXPECT_EQ(shm_sysGet_FwEM(), 0);
  EXPECT_EQ(shm_get_fast_bootup_state(), 0u);
  EXPECT_EQ(shm_get_vconf_port_member_ready(), 1u);  // fast-bootup word 0 means ready
  EXPECT_EQ(shm_logGetLogConfigVpnFlash(), 0);
  EXPECT_EQ(shm_get_whatchdog_webs(), 0);
  EXPECT_EQ(shm_get_fiber_speed(0), 0);
  std::vector<uint8_t> data(SHM_SYS_DATA_SIZE, 0xAB);
  shm_sysGetData(data.data());
  EXPECT_EQ(std::count(data.begin(), data.end(), 0), SHM_SYS_DATA_SIZE);
  ShmMcastEntry e{};
  e.mac[0] = 1;
  EXPECT_EQ(shm_mcast_get(&e), -1);
  EXPECT_EQ(shm_mcast_remove(&e), -1);
}

TEST_F(SettingsTest, SystemDataRecordIsOffsets420To6995) {
  RawSegment raw(7890);
  raw.bytes()[419] = 0x11;
  raw.bytes()[420] = 0x22;
  raw.bytes()[6995] = 0x33;
  raw.bytes()[6996] = 0x44;
  std::vector<uint8_t> data(SHM_SYS_DATA_SIZE + 1, 0);
  shm_sysGetData(data.data());
  EXPECT_EQ(data[0], 0x22);
  EXPECT_EQ(data[SHM_SYS_DATA_SIZE - 1], 0x33);
  EXPECT_EQ(data[SHM_SYS_DATA_SIZE], 0);
  raw.put_u32(424, 5);
  raw.put_u32(432, 1);
  raw.put_u32(6400, 0x3ff);
  raw.put_u32(1536, 77);
  EXPECT_EQ(shm_device_mode(), 5u);
  EXPECT_EQ(shm_droute_idx(), 1u);
  EXPECT_EQ(shm_port_link_status(), 0x3ffu);
  EXPECT_EQ(shm_get_mgmt_vlan_vid(), 77u);
}

TEST_F(SettingsTest, BitFieldsAndNormalisedFlags) {
  RawSegment sys(7890);
  set_shm_route_reconf_flag(0x5);
  set_shm_route_reconf_flag(0x30);
  clear_shm_route_reconf_flag(0x4);
  EXPECT_EQ(sys.u32(24), 0x31u);

  shm_set_Flag_nat_bind_vrrp_ready();
  shm_set_Flag_allow_vrrp_ready();
  EXPECT_EQ(sys.u32(28), 1u);
  EXPECT_EQ(sys.u32(32), 1u);
  shm_clr_Flag_allow_vrrp_ready();
  EXPECT_EQ(sys.u32(32), 0u);
  EXPECT_EQ(shm_get_Flag_nat_bind_vrrp_ready(), 1u);

  // Watchdog: setting stores the whole word 1, clearing drops only bit 0.
  sys.put_u32(7104, 6);
  shm_set_whatchdog_webs(1);
  EXPECT_EQ(sys.u32(7104), 1u);
  sys.put_u32(7104, 7);
  shm_set_whatchdog_webs(0);
  EXPECT_EQ(sys.u32(7104), 6u);
  EXPECT_EQ(shm_get_whatchdog_webs(), 0);
  sys.put_u32(7104, 3);
  EXPECT_EQ(shm_get_whatchdog_webs(), 1);

  shm_sysSet_FwEM(2);
  EXPECT_EQ(RawSegment(7909).u32(0), 0u);
  shm_sysSet_FwEM(1);
  EXPECT_EQ(RawSegment(7909).u32(0), 1u);
  RawSegment(7909).put_u32(0, 3);
  EXPECT_EQ(shm_sysGet_FwEM(), 0);

  shm_sysSetCerGenCheckFlag(0x1234);
  shm_sysSetModeVPNFlag(0x1ff);
  EXPECT_EQ(RawSegment(7896).u32(0), 0x34u);
  EXPECT_EQ(RawSegment(7897).u32(0), 0xffu);

  shm_set_security_config(0xA5, 2);
  EXPECT_EQ(sys.bytes()[7046], 0xA5);
  EXPECT_EQ(shm_read_security_config(2), 0xA5);

  sys.put_u32(7108, 6);
  uint32_t agent = 0;
  shm_sysGetAgentState(&agent);
  EXPECT_EQ(agent, 6u);
}

TEST_F(SettingsTest, SecurityStatusAcceptsIndexZeroToFourOnly) {
  RawSegment raw(7903);
  for (int bad : {-1, 5, 100}) {
    EXPECT_EQ(shm_set_security_status(bad), -1);
    EXPECT_EQ(shm_clean_security_status(bad), -1);
    EXPECT_EQ(shm_read_security_status(bad), -1);
  }
  EXPECT_EQ(shm_set_security_status(3), 0);
  EXPECT_EQ(raw.bytes()[3], 1);
  EXPECT_EQ(shm_read_security_status(3), 1);
  EXPECT_EQ(shm_set_security_status(4), 0);  // the byte past the segment, within its page
  EXPECT_EQ(shm_read_security_status(4), 1);
  shm_set_security_status(0);
  shm_clean_security_status(3);
  EXPECT_EQ(raw.bytes()[3], 0);
  EXPECT_EQ(raw.bytes()[0], 1);
  shm_clean_all_security_status();
  EXPECT_TRUE(raw.zero(0, 4));
}

TEST_F(SettingsTest, LedBitsAndTheUntouchedFaultByte) {
  RawSegment raw(7899);
  raw.bytes()[0] = 0x80;
  Ssc_setMasterLed(0x103);  // only the low 8 bits count
  Ssc_setCouplingLed(0x0C);
  Ssc_clearMasterLed(0x01);
  Ssc_clearCouplingLed(0x04);
  Ssc_setFaultLed(0xFF);
  Ssc_clearFaultLed(0x80);
  EXPECT_EQ(raw.bytes()[0], 0x80);
  EXPECT_EQ(raw.bytes()[1], 0x02);
  EXPECT_EQ(raw.bytes()[2], 0x08);
  uint8_t f = 0, m = 0, c = 0;
  shm_ledGetAllLedBits(&f, &m, &c);
  EXPECT_EQ(f, 0x80);
  EXPECT_EQ(m, 0x02);
  EXPECT_EQ(c, 0x08);
}

TEST_F(SettingsTest, ByteFieldsThroughPointers) {
  struct Case {
    int (*set)(const uint8_t *);
    int (*get)(uint8_t *);
    int key;
    int offset;
  };
  const Case cases[] = {{shm_xbk02SetMode, shm_xbk02GetMode, 7901, 0},
                        {shm_xbk02SetMount, shm_xbk02GetMount, 7901, 1},
                        {shm_xbk02SetOp, shm_xbk02GetOp, 7901, 2},
                        {shm_xbk02SetImportState, shm_xbk02GetImportState, 7901, 3},
                        {shm_snmpSetResponseStatus, shm_snmpGetResponseStatus, 7905, 0}};
  uint8_t v = 0x41;
  for (const auto &c : cases) {
    ASSERT_EQ(c.set(&v), 0);
    EXPECT_EQ(RawSegment(c.key).bytes()[c.offset], v);
    uint8_t out = 0;
    c.get(&out);
    EXPECT_EQ(out, v);
    ++v;
  }
  shm_rdndntSetProtocol(0x1FE);
  EXPECT_EQ(RawSegment(7891).bytes()[0], 0xFE);
  EXPECT_EQ(shm_rdndntGetProtocol(), 0xFE);
}

TEST_F(SettingsTest, LogVpnWordsAndFlashTest) {
  uint32_t rec[74] = {};
  rec[2] = 1;
  rec[3] = 22;
  rec[4] = 33;
  rec[5] = 1;
  shm_logSetVpn(rec);
  RawSegment raw(7902);
  EXPECT_EQ(raw.u32(0), 1u);
  EXPECT_EQ(raw.u32(32), 22u);
  EXPECT_EQ(raw.u32(48), 33u);
  EXPECT_EQ(raw.u32(64), 1u);
  EXPECT_TRUE(raw.zero(4, 28));
  EXPECT_EQ(shm_logGetLogConfigVpnFlash(), 1);
  raw.put_u32(64, 2);
  EXPECT_EQ(shm_logGetLogConfigVpnFlash(), 0);
  uint32_t out[74] = {};
  shm_logGetVpn(out);
  EXPECT_EQ(out[2], 1u);
  EXPECT_EQ(out[3], 22u);
  EXPECT_EQ(out[4], 33u);
  EXPECT_EQ(out[5], 2u);
  EXPECT_EQ(out[0] | out[1] | out[6], 0u);
}

TEST_F(SettingsTest, BootStateDecidesPortMemberReadiness) {
  shm_set_vconf_port_member_ready(0);
  EXPECT_EQ(shm_get_vconf_port_member_ready(), 1u);
  uint32_t fast = 2;
  shm_set_fast_bootup_state(&fast);
  EXPECT_EQ(RawSegment(7904).u32(0), 2u);
  EXPECT_EQ(shm_get_vconf_port_member_ready(), 0u);
  shm_set_vconf_port_member_ready(5);
  EXPECT_EQ(shm_get_vconf_port_member_ready(), 5u);
}

TEST_F(SettingsTest, ModelNameBoundedCopies) {
  shm_sysSetModelName("KVR-9000-Long-Model-Name", 8);
  RawSegment raw(7893);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(raw.bytes() + 700), 8), "KVR-9000");
  EXPECT_EQ(raw.bytes()[708], 0);
  shm_sysSetModelName("RT-1", 32);
  char buf[8];
  std::memset(buf, 'x', sizeof buf);
  shm_sysGetModelName(buf, 8);
  EXPECT_STREQ(buf, "RT-1");
  EXPECT_EQ(buf[7], 0);
  shm_sysSetModelName("ABCDEFGH", 32);
  std::memset(buf, 'x', sizeof buf);
  shm_sysGetModelName(buf, 4);
  EXPECT_EQ(std::string(buf, 4), "ABCD");  // unterminated when the name fills len
  EXPECT_EQ(buf[4], 'x');                   // beyond len the caller's bytes stay as they were

  uint8_t modbus[12];
  for (int i = 0; i < 12; ++i) modbus[i] = uint8_t(0x90 + i);
  shm_sysSetModbusGlobal(modbus);
  EXPECT_EQ(std::memcmp(raw.bytes() + 768, modbus, 12), 0);
}

TEST_F(SettingsTest, EepromPortInfoIndexing) {
  RawSegment raw(7893);
  for (int i = 0; i < 32; ++i) raw.bytes()[380 + 516 + 64 + i] = uint8_t(i + 1);
  uint8_t out[32] = {};
  shm_sysGetEepromInfoPortInfo(out, 1, 2);
  for (int i = 0; i < 32; ++i) EXPECT_EQ(out[i], i + 1);
}

TEST_F(SettingsTest, PortUtilisationAndOverloadRelay) {
  std::vector<uint8_t> big(SHM_PORT_UTILIZATION_SET_SIZE);
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = uint8_t(i);
  shm_set_port_utilization(big.data());
  RawSegment raw(7908);
  EXPECT_EQ(std::memcmp(raw.bytes(), big.data(), 160), 0);
  // The whole 1600 bytes land in the segment's page, beyond its 160 bytes.
  EXPECT_EQ(std::memcmp(raw.bytes(), big.data(), big.size()), 0);

  uint32_t relay[10];
  for (int i = 0; i < 10; ++i) relay[i] = 100u + i;
  shm_set_port_overload_relay(relay, 10);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(raw.u32(16 * i + 12), 100u + i);
  EXPECT_EQ(raw.bytes()[11], 11);  // the rest of each record is untouched
  uint32_t back[10] = {};
  shm_get_port_overload_relay(back, 3);
  EXPECT_EQ(back[2], 102u);
  EXPECT_EQ(back[3], 0u);
  uint8_t first[20] = {};
  shm_get_port_utilization(first, 16);
  EXPECT_EQ(first[12], 100);
  EXPECT_EQ(first[16], 0);  // exactly `len` bytes
}

TEST_F(SettingsTest, FiberSpeedLooksFor1G) {
  RawSegment raw(7890);
  std::strcpy(reinterpret_cast<char *>(raw.bytes() + 6404 + 32), "auto 1G full");
  std::strcpy(reinterpret_cast<char *>(raw.bytes() + 6404), "100M");
  EXPECT_EQ(shm_get_fiber_speed(0), 0);
  EXPECT_EQ(shm_get_fiber_speed(1), 1);
  for (int i = 0; i < 128; ++i) raw.bytes()[6468 + 128 + i] = uint8_t(255 - i);
  uint8_t eeprom[128];
  shm_get_sfp_Eeprom(1, eeprom);
  EXPECT_EQ(eeprom[0], 255);
  EXPECT_EQ(eeprom[127], 128);
}

TEST_F(SettingsTest, ProcessStateSettersShowTheKernelInterfaceTable) {
  syscommon::testing::write_file(syscommon::testing::sim_path("/proc/tarn/ifsInfo"), "");
  syscommon::testing::clear_trace();
  set_shm_vconfig_process(1);
  set_shm_brg_process(2);
  set_shm_ipclient_process(3);
  auto lines = syscommon::testing::trace_lines();
  std::string cat = "cat " + syscommon::testing::sim_path("/proc/tarn/ifsInfo");
  EXPECT_EQ(lines, (std::vector<std::string>{cat, cat}));
}

TEST_F(SettingsTest, VconfigDoneAnswersAsSoonAsBitZeroIsSet) {
  RawSegment(7890).put_u32(7108, 0x3);
  EXPECT_EQ(Ssys_isVconfigDone(), 1);
  RawSegment(7890).put_u32(7108, 0x2);
  std::thread agent([] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    RawSegment(7890).put_u32(7108, 0x1);
  });
  EXPECT_EQ(Ssys_isVconfigDone(), 1);  // one clear read, a 2 s pause, then set
  agent.join();
}

}  // namespace
