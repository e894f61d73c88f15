// A fresh device root in a temporary directory, removed when the test ends.
#ifndef HUSHWALL_TESTING_TEMP_DEVICE_ROOT_H_
#define HUSHWALL_TESTING_TEMP_DEVICE_ROOT_H_

#include <string>

namespace hushwall::testing {

class TempDeviceRoot {
 public:
  TempDeviceRoot();
  ~TempDeviceRoot();
  TempDeviceRoot(const TempDeviceRoot&) = delete;
  TempDeviceRoot& operator=(const TempDeviceRoot&) = delete;

  const std::string& path() const { return path_; }
  // The native path of a device path ("/var/..." -> "<root>/var/...").
  std::string native(const std::string& devicePath) const { return path_ + devicePath; }

  // Copies the template database built from model/schema.sql to the data
  // directory, as SpringBoard's first start would.
  void installDatabase() const;
  // Puts the template database into the settings bundle, where SpringBoard
  // seeds it from.
  void installSettingsBundle() const;
  // The native path of the data directory's database.
  std::string databaseFile() const;

 private:
  std::string path_;
};

}  // namespace hushwall::testing

#endif  // HUSHWALL_TESTING_TEMP_DEVICE_ROOT_H_
