// Hears every Hushwall notification posted on the device, by anyone, in the
// order the bus routed them: the simulator's own connection to the device's
// bus, listening to the whole "com.Corvanta.HushwallSettings" interface.
#ifndef HUSHWALL_SIM_NOTIFICATION_RECORDER_H_
#define HUSHWALL_SIM_NOTIFICATION_RECORDER_H_

#include <memory>
#include <string>
#include <vector>

namespace sdbus {
class IConnection;
class IProxy;
}

namespace hushwall::sim {

class NotificationRecorder {
 public:
  struct Heard {
    std::string name;    // "com.Corvanta.HushwallSettings.contactsChanged"
    std::string sender;  // the poster's unique bus name
  };

  explicit NotificationRecorder(const std::string& busAddress);
  ~NotificationRecorder();

  // Takes in everything the bus routed to the recorder so far: a round trip
  // to the bus daemon first, then the signals that came before its answer.
  void sync();
  const std::vector<Heard>& heard() const { return heard_; }

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IProxy> busDaemon_;
  std::vector<Heard> heard_;
};

}  // namespace hushwall::sim

#endif  // HUSHWALL_SIM_NOTIFICATION_RECORDER_H_
