/* Every public header compiles as plain C11, and a C program links and calls the library. */
#include <stdio.h>
#include <string.h>
#include <stdlib.h>

#include "syscommon/hw.h"
#include "syscommon/log.h"
#include "syscommon/maint.h"
#include "syscommon/net.h"
#include "syscommon/netstat.h"
#include "syscommon/platform.h"
#include "syscommon/session.h"
#include "syscommon/shm.h"
#include "syscommon/util.h"
#include "syscommon/vpn.h"

static int failures = 0;

#define CHECK(cond)                                               \
  do {                                                            \
    if (!(cond)) {                                                \
      fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
      ++failures;                                                 \
    }                                                             \
  } while (0)

int main(void) {
  const char *iso = getenv("SYSCOMMON_ISOLATED");
  int module = -1, port = -1;
  CHECK(Ssys_UI_port2MdlPort(3, &module, &port) == 1 && module == 0 && port == 3);
  CHECK(Ssys_current_secs() != 0);
  CHECK(sizeof(InterfaceMessage) == 4108);
  CHECK(sizeof(LoginRecordSet) == 2200);
  CHECK(sizeof(ShmEepromInfo) == 700);
  CHECK(sizeof(FwHeader) == 32 && GPIO_PWR_FLAG[0] == 32 && Ssys_getSfpVendorDataSize() == 7);
  CHECK(Slog_getEventDescTableSize() == 35);
  CHECK(sizeof(SlogTextEntry) == 288 && sizeof(SlogSecurityNotification) == 72);
  {
    char dquad[16];
    CHECK(ip_hex_to_dquad("0100A8C0", dquad, sizeof dquad, 1) == 0 && strcmp(dquad, "192.168.0.1") == 0);
  }
  {
    CfgFieldDesc vid = {0};
    unsigned char record[8] = {0};
    vid.type = 1, vid.size = 2, vid.offset = 2;
    CHECK(sizeof(CfgFieldDesc) == 132 && setconfig(record, "300", &vid, 1, 0) == 300 && record[3] == 1);
    CHECK(strcmp(readconfig(record, &vid, 1, 0), "300") == 0 && readconfig_msg[0] == '3');
  }
  CHECK(timezone_str[21] != NULL);
  CHECK(month_str_to_int("Feb") == 2);
  CHECK(isValidIpAddress("192.168.1.1") != isValidIpAddress("192.168.1"));
  CHECK(Mask2Number(Number2Mask(24)) == 24 && strcmp(IP2Dot(0x0100007fu), "127.0.0.1") == 0);
  CHECK(strcmp(proto2string('O'), "ospf") == 0 && sizeof(ConfChangeList) == 3332);
  if (iso == NULL || strcmp(iso, "1") != 0) {
    printf("1 passed, 0 failed, 1 skipped\n");
    return failures != 0;
  }
  shm_init();
  CHECK(shm_get_timezone() == 0);
  shm_set_timezone(21);
  CHECK(shm_get_timezone() == 21);
  {
    ShmMcastEntry e;
    memset(&e, 0, sizeof e);
    e.mac[0] = 0x01;
    e.mac[5] = 0x07;
    CHECK(shm_mcast_set(&e) == 0);
    CHECK(shm_mcast_get(&e) == 0);
  }
  CHECK(Ssgl2_webmultisession_session_set(7, 1, 0, 0) == SESSION_FULL); /* maximum 0 */
  {
    time_t t = 1000;
    tarn_localtime(&t);
    CHECK(t == 1000);
  }
  printf("%d passed, %d failed\n", failures == 0 ? 2 : 1, failures == 0 ? 0 : 1);
  return failures != 0;
}
