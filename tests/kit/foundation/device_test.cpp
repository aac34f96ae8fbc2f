#include "kit/foundation/device.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <fstream>

#include "kit/foundation/temp_dir.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

class DeviceTest : public ::testing::Test {
 protected:
  void put(const fs::path& relative, const std::string& bytes) {
    fs::create_directories((root.path() / relative).parent_path());
    std::ofstream(root.path() / relative) << bytes;
  }
  TempDir root;
};

TEST_F(DeviceTest, ReadsVersionAndModelOrFallsBackToTheMachineNameAndDefaultVersion) {
  put("etc/os-release", "PRETTY_NAME=\"Some Linux 13\"\nNAME=\"Some\"\nVERSION_ID=\"13\"\n");
  put("sys/class/dmi/id/product_name", "Standard PC (Q35)\n");
  Device device = Device::detect(root.path());
  EXPECT_EQ(device.systemVersion, "13");
  EXPECT_EQ(device.model, "Standard PC (Q35)");
  EXPECT_FALSE(device.isPad());

  fs::remove(root.path() / "etc/os-release");
  put("usr/lib/os-release", "NAME=rolling\n");
  put("sys/class/dmi/id/product_name", " \n");
  device = Device::detect(root.path());
  EXPECT_EQ(device.systemVersion, Device{}.systemVersion);
  utsname uts{};
  uname(&uts);
  EXPECT_EQ(device.model, uts.machine);
  put("usr/lib/os-release", "VERSION_ID=12\n");
  EXPECT_EQ(Device::detect(root.path()).systemVersion, "12");
}

}  // namespace
}  // namespace kit
