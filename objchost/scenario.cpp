#include "objchost/scenario.h"

#include <fstream>
#include <sstream>

#include "objchost/two_hosts.h"

namespace hushwall::objchost {

std::string describe(const host::Value& value) {
  using Kind = host::Value::Kind;
  std::ostringstream out;
  switch (value.kind()) {
    case Kind::kNil: return "nil";
    case Kind::kBoolean: return value.boolValue() ? "YES" : "NO";
    case Kind::kInteger: out << "int " << static_cast<long long>(value.doubleValue()); break;
    case Kind::kReal: out << "real " << value.doubleValue(); break;
    case Kind::kString:
      out << (value.isMemberOfBaseStringClass() ? "string '" : "string subclass '")
          << host::toUtf8(*value.text()) << "'";
      break;
    default: out << "object of kind " << static_cast<int>(value.kind());
  }
  return out.str();
}

std::string joined(const std::vector<std::string>& items) {
  std::string all;
  for (const std::string& item : items) all += (all.empty() ? "" : ",") + item;
  return "[" + all + "]";
}

void writeLog(const testing::TestDevice& device, const std::string& name, const Log& log) {
  std::ofstream out(device.native("/" + name + ".log"));
  for (const std::string& line : log) out << line << '\n';
}

Log readLog(const testing::TestDevice& device, const std::string& name) {
  Log log;
  std::ifstream in(device.native("/" + name + ".log"));
  for (std::string line; std::getline(in, line);) log.push_back(line);
  return log;
}

}  // namespace hushwall::objchost
