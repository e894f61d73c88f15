#include "model/paths.h"

namespace hushwall {

host::Text databasePath() {
  return host::appendingPathComponent(host::T(kDataDirectory), host::T(kDatabaseComponent));
}

}  // namespace hushwall
