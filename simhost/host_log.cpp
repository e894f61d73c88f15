#include "simhost/host_log.h"

namespace hushwall::simhost {

HostLog& hostLog() {
  static HostLog log;
  return log;
}

}  // namespace hushwall::simhost
