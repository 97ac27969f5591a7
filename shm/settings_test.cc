// Settings, flags and small records: every setter is checked against the raw segment
// bytes at the offsets other processes use, and every rule that differs from a plain copy.
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "support/test_support.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

using SettingsTest = syscommon::testing::StoreTest;

uint32_t member_ready_after_fast_boot() {
  uint32_t one = 1;
  shm_set_fast_bootup_state(&one);  // otherwise the getter reports 1
  return shm_get_vconf_port_member_ready();
}

TEST_F(SettingsTest, WordSettersLandAtTheirOffsetsAndGettersReadThemBack) {
  struct Case {
    int key;
    std::size_t offset;
    std::function<void(uint32_t)> set;
    std::function<uint32_t()> get;
  };
  const Case cases[] = {
      {7890, 0, shm_control_to_send_config_to_agent_filter, shm_check_ok_to_send_config_to_agent_filter},
      {7890, 20, shm_set_reboot_flag, shm_get_reboot_flag},
      {7890, 444, shm_set_timezone, shm_get_timezone},
      {7890, 6980, set_shm_vconfig_process, get_shm_vconfig_process},
      {7890, 6984, set_shm_brg_process, get_shm_brg_process},
      {7890, 6988, set_shm_ipclient_process, get_shm_ipclient_process},
      {7890, 6992, set_shm_auth_cert_process, get_shm_auth_cert_process},
      {7900, 0, shm_ipMrouteSetMode, shm_ipMrouteGetMode},
      {7900, 4, shm_igmpsnoopingSetEnable, shm_igmpsnoopingGetEnable},
      {7904, 4, shm_set_vconf_port_member_ready, member_ready_after_fast_boot},
      {7906, 0, shm_sysSet_web_multiSession_maxUser, shm_sysGet_web_multiSession_maxUser},
      {7906, 4, shm_sysSet_Con_multiSession_maxUser, shm_sysGet_Con_multiSession_maxUser},
      {7906, 8, shm_sysSet_usercount, shm_sysGet_usercount},
      {7906, 12, shm_sysSet_con_usercount, shm_sysGet_con_usercount},
      {7906, 16, shm_sysSet_cf_sys_timeout, shm_sysGet_cf_sys_timeout},
      {7911, 0, shm_set_last_session_log_time, shm_get_last_session_log_time},
  };
  uint32_t value = 0x01020304;
  for (const auto &c : cases) {
    SCOPED_TRACE(::testing::Message() << c.key << "@" << c.offset);
    c.set(value);
    EXPECT_EQ(RawSegment(c.key).u32(c.offset), value);
    EXPECT_EQ(c.get(), value);
    value += 0x01010101;
  }
  // Words of the system data record with no setter in this library.
  RawSegment sys(7890);
  sys.put_u32(424, 5);
  sys.put_u32(432, 1);
  sys.put_u32(6400, 0x3ff);
  sys.put_u32(1536, 77);
  sys.put_u32(7108, 6);
  uint32_t agent = 0;
  shm_sysGetAgentState(&agent);
  EXPECT_EQ(std::vector<uint32_t>({shm_device_mode(), shm_droute_idx(), shm_port_link_status(),
                                   shm_get_mgmt_vlan_vid(), agent}),
            std::vector<uint32_t>({5, 1, 0x3ff, 77, 6}));
}

// The one-byte fields moved through a uint8_t pointer, as record copies.
template <auto Set>
void byte_in(const void *p) { Set(static_cast<const uint8_t *>(p)); }
template <auto Get>
void byte_out(void *p) { Get(static_cast<uint8_t *>(p)); }

TEST_F(SettingsTest, RecordCopiesMoveExactlyTheirBytes) {
  struct Case {
    int key;
    std::size_t offset, size;
    std::function<void(const void *)> set;
    std::function<void(void *)> get;
  };
  const Case cases[] = {
      {7890, 420, SHM_SYS_DATA_SIZE, nullptr, shm_sysGetData},  // offsets 420 to 6995
      {7890, 744, 24, shm_sysSetFilterGlobal, shm_sysGetFilterGlobal},
      {7890, 780, 4, shm_sysSetVrrpGlobal, shm_sysGetVrrpGlobal},
      {7890, 6468 + 128, 128, nullptr, [](void *p) { shm_get_sfp_Eeprom(1, p); }},
      {7890, 6724 + 128, 128, [](const void *p) { shm_set_sfp_Eeprom_ddm(1, p); },
       [](void *p) { shm_get_sfp_Eeprom_ddm(1, p); }},
      {7893, 0, 700, shm_sysSetEepromInfo, shm_sysGetEepromInfo},
      {7893, 380 + 516 + 64, 32, nullptr, [](void *p) { shm_sysGetEepromInfoPortInfo(p, 1, 2); }},
      {7893, 768, 12, shm_sysSetModbusGlobal, nullptr},
      {7894, 0, 720, shm_sysSetUseraccount, shm_sysGetUseraccount},
      {7901, 0, 1, byte_in<shm_xbk02SetMode>, byte_out<shm_xbk02GetMode>},
      {7901, 1, 1, byte_in<shm_xbk02SetMount>, byte_out<shm_xbk02GetMount>},
      {7901, 2, 1, byte_in<shm_xbk02SetOp>, byte_out<shm_xbk02GetOp>},
      {7901, 3, 1, byte_in<shm_xbk02SetImportState>, byte_out<shm_xbk02GetImportState>},
      {7902, 0, 296, shm_logSetConfig, shm_logGetLogConfig},
      {7905, 0, 1, byte_in<shm_snmpSetResponseStatus>, byte_out<shm_snmpGetResponseStatus>},
      {7906, 20, 8, shm_sysSet_pwPolicy_config, shm_sysGet_pwPolicy_config},
      {7906, 28, 12, shm_sysSet_loginLockout_config, shm_sysGet_loginLockout_config},
      {7906, 40, 4, shm_sysSet_eventlogMgmt_config, shm_sysGet_eventlogMgmt_config},
      {7906, 44, 240, shm_sysSet_multiSession_List, shm_sysGet_multiSession_List},
      {7906, 284, 384, shm_sysSet_con_multiSession_List, shm_sysGet_con_multiSession_List},
      {7906, 668, 80, shm_sysSet_login_lockout_List, shm_sysGet_login_lockout_List},
      {7906, 748, 160, shm_sysSet_csrf_Token_List, shm_sysGet_csrf_Token_List},
      {7907, 232, 232, [](const void *p) { shm_set_sfp_ddm(1, p); }, [](void *p) { shm_get_sfp_ddm(1, p); }},
      {7910, 0, 24, shm_set_resource_usage, shm_get_resource_usage},
  };
  for (const auto &c : cases) {
    SCOPED_TRACE(::testing::Message() << c.key << "@" << c.offset);
    shm_init();
    RawSegment raw(c.key);
    std::vector<uint8_t> rec(c.size), out(c.size + 1, 0xCC);
    for (std::size_t i = 0; i < c.size; ++i) rec[i] = uint8_t(i * 7 + 1);
    if (c.set) {
      c.set(rec.data());
      // Exactly the record's bytes: the neighbours stay zero.
      EXPECT_EQ(raw.bytes()[c.offset + c.size], 0);
      if (c.offset > 0) EXPECT_EQ(raw.bytes()[c.offset - 1], 0);
    } else {
      raw.bytes()[c.offset - 1] = 0xEE;
      raw.bytes()[c.offset + c.size] = 0xEE;
      std::memcpy(raw.bytes() + c.offset, rec.data(), c.size);
    }
    EXPECT_EQ(std::memcmp(raw.bytes() + c.offset, rec.data(), c.size), 0);
    if (!c.get) continue;
    c.get(out.data());
    EXPECT_EQ(std::memcmp(out.data(), rec.data(), c.size), 0);
    EXPECT_EQ(out[c.size], 0xCC) << "read past the record";
  }
}

TEST_F(SettingsTest, BitFieldsNormalisedFlagsAndIndexedBytes) {
  RawSegment sys(7890);
  set_shm_route_reconf_flag(0x5);
  set_shm_route_reconf_flag(0x30);
  clear_shm_route_reconf_flag(0x4);
  shm_set_Flag_nat_bind_vrrp_ready();
  shm_set_Flag_allow_vrrp_ready();
  shm_clr_Flag_allow_vrrp_ready();
  shm_set_security_config(0xA5, 2);
  shm_sysSet_FwEM(2);
  shm_sysSetCerGenCheckFlag(0x1234);  // the low 8 bits, stored as a word
  shm_sysSetModeVPNFlag(0x1ff);
  EXPECT_EQ(std::vector<uint32_t>({sys.u32(24), sys.u32(28), sys.u32(32), sys.bytes()[7046], RawSegment(7909).u32(0),
                                   RawSegment(7896).u32(0), RawSegment(7897).u32(0)}),
            std::vector<uint32_t>({0x31, 1, 0, 0xA5, 0, 0x34, 0xff}));
  EXPECT_EQ(shm_read_security_config(2), 0xA5);
  shm_sysSet_FwEM(1);
  EXPECT_EQ(RawSegment(7909).u32(0), 1u);
  RawSegment(7909).put_u32(0, 3);
  EXPECT_EQ(shm_sysGet_FwEM(), 0);

  // Watchdog: setting stores the whole word 1, clearing drops only bit 0.
  const std::tuple<uint32_t, int, uint32_t, int> watchdog[] = {{6, 1, 1, 1}, {7, 0, 6, 0}, {3, 1, 1, 1}};
  for (const auto &[before, on, after, get] : watchdog) {
    sys.put_u32(7104, before);
    shm_set_whatchdog_webs(on);
    EXPECT_EQ(sys.u32(7104), after) << before;
    EXPECT_EQ(shm_get_whatchdog_webs(), get) << before;
  }

  // Security status: index 0 to 4 (4 is the byte past the segment, within its page).
  for (int bad : {-1, 5})
    EXPECT_EQ(std::vector<int>({shm_set_security_status(bad), shm_clean_security_status(bad),
                                shm_read_security_status(bad)}),
              std::vector<int>({-1, -1, -1}));
  for (int i : {3, 0, 4}) EXPECT_EQ(shm_set_security_status(i), 0);
  EXPECT_EQ(shm_clean_security_status(3), 0);
  EXPECT_EQ(RawSegment(7903).u32(0), 0x00000001u);
  EXPECT_EQ(shm_read_security_status(4), 1);
  shm_clean_all_security_status();
  EXPECT_EQ(shm_read_security_status(0), 0);
}

TEST_F(SettingsTest, LedBitsAndProtocolByte) {
  RawSegment led(7899);
  led.bytes()[0] = 0x80;
  Ssc_setMasterLed(0x103);  // only the low 8 bits count
  Ssc_setCouplingLed(0x0C);
  Ssc_clearMasterLed(0x01);
  Ssc_clearCouplingLed(0x04);
  Ssc_setFaultLed(0xFF);  // never written by this library
  Ssc_clearFaultLed(0x80);
  uint8_t f = 0, m = 0, c = 0;
  shm_ledGetAllLedBits(&f, &m, &c);
  EXPECT_EQ(std::vector<int>({led.bytes()[0], led.bytes()[1], led.bytes()[2], f, m, c}),
            std::vector<int>({0x80, 0x02, 0x08, 0x80, 0x02, 0x08}));

  shm_rdndntSetProtocol(0x1FE);
  EXPECT_EQ(RawSegment(7891).bytes()[0], 0xFE);
  EXPECT_EQ(shm_rdndntGetProtocol(), 0xFE);
}

TEST_F(SettingsTest, LogVpnWordsFlashTestAndBootState) {
  uint32_t rec[74] = {0, 0, 1, 22, 33, 1};
  shm_logSetVpn(rec);
  RawSegment raw(7902);
  EXPECT_EQ(std::vector<uint32_t>({raw.u32(0), raw.u32(32), raw.u32(48), raw.u32(64)}),
            std::vector<uint32_t>({1, 22, 33, 1}));
  EXPECT_TRUE(raw.zero(4, 28));
  EXPECT_EQ(shm_logGetLogConfigVpnFlash(), 1);
  raw.put_u32(64, 2);
  EXPECT_EQ(shm_logGetLogConfigVpnFlash(), 0);
  uint32_t out[74] = {};
  shm_logGetVpn(out);
  EXPECT_EQ(std::vector<uint32_t>(out, out + 7), std::vector<uint32_t>({0, 0, 1, 22, 33, 2, 0}));

  EXPECT_EQ(shm_get_vconf_port_member_ready(), 1u);  // fast-bootup word 0 means ready
  uint32_t fast = 2;
  shm_set_fast_bootup_state(&fast);
  EXPECT_EQ(RawSegment(7904).u32(0), 2u);
  EXPECT_EQ(shm_get_vconf_port_member_ready(), 0u);
}

TEST_F(SettingsTest, ModelNameBoundedCopies) {
  shm_sysSetModelName("KVR-9000-Long-Model-Name", 8);
  EXPECT_EQ(std::string(reinterpret_cast<char *>(RawSegment(7893).bytes() + 700), 9), std::string("KVR-9000\0", 9));
  char buf[8];
  const std::tuple<const char *, int, std::string> cases[] = {
      {"RT-1", 8, std::string("RT-1\0\0\0\0", 8)},  // zeroes len bytes first
      {"ABCDEFGH", 4, "ABCDxxxx"},                  // unterminated when the name fills len
  };
  for (const auto &[name, len, want] : cases) {
    shm_sysSetModelName(name, 32);
    std::memset(buf, 'x', sizeof buf);
    shm_sysGetModelName(buf, len);
    EXPECT_EQ(std::string(buf, 8), want);
  }
}

TEST_F(SettingsTest, PortUtilisationAndOverloadRelay) {
  std::vector<uint8_t> big(SHM_PORT_UTILIZATION_SET_SIZE);
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = uint8_t(i);
  shm_set_port_utilization(big.data());
  RawSegment raw(7908);
  // The whole 1600 bytes land in the segment's page, beyond its 160 bytes.
  EXPECT_EQ(std::memcmp(raw.bytes(), big.data(), big.size()), 0);
  uint32_t relay[10] = {100, 101, 102, 103, 104, 105, 106, 107, 108, 109}, back[4] = {};
  shm_set_port_overload_relay(relay, 10);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(raw.u32(16 * i + 12), relay[i]);
  EXPECT_EQ(raw.bytes()[11], 11);  // the rest of each record is untouched
  shm_get_port_overload_relay(back, 3);
  EXPECT_EQ(std::vector<uint32_t>(back, back + 4), std::vector<uint32_t>({100, 101, 102, 0}));
  uint8_t first[20] = {};
  shm_get_port_utilization(first, 16);
  EXPECT_EQ(first[12], 100);
  EXPECT_EQ(first[16], 0);  // exactly `len` bytes
}

TEST_F(SettingsTest, FiberSpeedLooksFor1GWithinTheTextsOwn32Bytes) {
  RawSegment raw(7890);
  const std::pair<std::string, int> cases[] = {
      {"100M", 0}, {"auto 1G full", 1}, {std::string(30, ' ') + "1G", 1}, {std::string(31, ' ') + "1", 0}};
  for (const auto &[text, want] : cases) {
    std::memset(raw.bytes() + 6404, 0, 64);
    std::memcpy(raw.bytes() + 6404 + 32, text.data(), text.size());
    raw.bytes()[6404 + 64] = 'G';  // the first SFP EEPROM byte follows the text
    EXPECT_EQ(shm_get_fiber_speed(1), want) << text;
    EXPECT_EQ(shm_get_fiber_speed(0), 0);
  }
}

TEST_F(SettingsTest, ProcessStateSettersShowTheKernelInterfaceTable) {
  write_file(sim_path("/proc/tarn/ifsInfo"), "");
  clear_trace();
  set_shm_vconfig_process(1);
  set_shm_brg_process(2);
  set_shm_ipclient_process(3);
  std::string cat = "cat " + sim_path("/proc/tarn/ifsInfo");
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{cat, cat}));
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
