// The interface picture the network status tests share: VLAN interfaces eth0.1 "lan1",
// eth0.2 "uplink" and eth0.10 "office" published in a fresh store.
#ifndef SYSCOMMON_NETSTAT_TEST_STORE_H
#define SYSCOMMON_NETSTAT_TEST_STORE_H

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>

#include "support/test_support.h"
#include "syscommon/shm.h"

namespace syscommon::testing {

inline void publish_test_interfaces() {
  shm_init();
  ShmVlanIfConfig recs[SHM_VLAN_IF_COUNT] = {};
  const struct {
    uint32_t vid;
    const char *name, *ip, *mask;
  } rows[] = {{1, "lan1", "192.168.1.254", "255.255.255.0"},
              {2, "uplink", "10.0.0.2", "255.255.255.0"},
              {10, "office", "192.168.10.1", "255.255.255.0"}};
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    recs[i].vid = rows[i].vid;
    recs[i].ip = inet_addr(rows[i].ip);
    recs[i].mask = inet_addr(rows[i].mask);
    std::strcpy(recs[i].usr_name, rows[i].name);
  }
  set_shm_vconf_info_all("eth0", recs);
}

// A test run in the private namespaces on that picture; "bin/wc", which some cases install,
// goes afterwards.
class NetstatStoreTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    publish_test_interfaces();
  }
  void TearDown() override { std::remove(sim_path("/bin/wc").c_str()); }
};

}  // namespace syscommon::testing

#endif
