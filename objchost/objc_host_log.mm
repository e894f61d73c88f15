#include "objchost/objc_host_log.h"

namespace hushwall::objchost {

ObjcHostLog& objcHostLog() {
  static auto* log = new ObjcHostLog;
  return *log;
}

}  // namespace hushwall::objchost
