#include "platform/linux/dbus_signal_name.h"

#include <algorithm>
#include <stdexcept>

namespace hushwall::linux_platform {
namespace {

// One element of a D-Bus name: ASCII letters, digits and "_", not starting
// with a digit.
bool validElement(const std::string& element) {
  auto wordChar = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !element.empty() && !(element[0] >= '0' && element[0] <= '9') &&
         std::all_of(element.begin(), element.end(), wordChar);
}

bool validInterface(const std::string& interface) {
  if (interface.size() > 255) return false;
  std::size_t start = 0, elements = 0;
  for (;;) {
    std::size_t dot = interface.find('.', start);
    if (!validElement(interface.substr(start, dot - start))) return false;
    ++elements;
    if (dot == std::string::npos) return elements >= 2;
    start = dot + 1;
  }
}

}  // namespace

SignalName signalNameOf(const std::string& name) {
  std::size_t dot = name.rfind('.');
  if (dot == std::string::npos) {
    throw std::invalid_argument("notification name \"" + name +
                                "\" has no dot; it needs the form <interface>.<member>");
  }
  SignalName signal{name.substr(0, dot), name.substr(dot + 1)};
  if (!validInterface(signal.interface) || !validElement(signal.member) ||
      signal.member.size() > 255) {
    throw std::invalid_argument("notification name \"" + name +
                                "\" is not a D-Bus <interface>.<member>");
  }
  return signal;
}

}  // namespace hushwall::linux_platform
