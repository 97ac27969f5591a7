// Login-record helpers shared with the main daemon's stand-in.
#ifndef SYSCOMMON_SESSION_LOGIN_RECORD_H
#define SYSCOMMON_SESSION_LOGIN_RECORD_H

#include "syscommon/session.h"

namespace syscommon::session {

// An empty failure ring linked 0 -> 1 -> 2 -> 0 with both indices at 0; the failure count
// and the last login are left as they are.
void reset_ring(LoginRecord &r);

}  // namespace syscommon::session

#endif
