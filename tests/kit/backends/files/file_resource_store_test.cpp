#include "kit/backends/files/file_resource_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "kit/foundation/temp_dir.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

class FileResourceStoreTest : public ::testing::Test {
 protected:
  void put(const std::string& name, const std::string& bytes) {
    fs::create_directories((dir.path() / name).parent_path());
    std::ofstream(dir.path() / name, std::ios::binary) << bytes;
  }

  TempDir dir;
  FileResourceStore store{dir.path() / "resources"};
};

TEST_F(FileResourceStoreTest, ReadsFilesByNameAndNothingOutsideTheFolder) {
  put("resources/layout/main.json", "{}");
  put("resources/images/car.svg", "<svg/>");
  put("secret.json", "outside");
  EXPECT_EQ(store.read("layout/main.json", 100).value(), "{}");
  EXPECT_TRUE(store.exists("images/car.svg"));
  EXPECT_EQ(store.location("images/car.svg"), (dir.path() / "resources/images/car.svg").string());
  for (const char* refused : {"layout/none.json", "", "/etc/passwd", "layout/../../secret.json",
                              "../secret.json", "..", "layout", "images/"}) {
    EXPECT_FALSE(store.exists(refused)) << refused;
    EXPECT_FALSE(store.read(refused, 100)) << refused;
  }
  EXPECT_FALSE(store.exists(std::string_view("layout/main.json\0x", 18)));
}

TEST_F(FileResourceStoreTest, AFileOverTheLimitIsRefusedUnread) {
  put("resources/ads/huge.png", "");
  const int fd = ::open((dir.path() / "resources/ads/huge.png").c_str(), O_WRONLY);
  ASSERT_GE(fd, 0);
  ASSERT_EQ(::ftruncate(fd, 1 << 30), 0);  // sparse: a gigabyte of zeros
  ::close(fd);
  const Result<std::string> bytes = store.read("ads/huge.png", 1 << 20);
  ASSERT_FALSE(bytes);
  EXPECT_EQ(bytes.error(), "larger than 1048576 bytes");
  EXPECT_TRUE(store.exists("ads/huge.png"));
}

}  // namespace
}  // namespace kit
