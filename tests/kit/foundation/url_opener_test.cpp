#include "kit/foundation/url_opener.h"
#include "kit/backends/desktop/desktop_url_opener.h"

#include <gtest/gtest.h>

namespace kit {
namespace {

TEST(UrlOpenerTest, StoreLinksBecomeTheirWebPage) {
  EXPECT_EQ(DesktopUrlOpener::desktopFormOf(
                "itms-apps://apps.twinlanes.example/app/id1234567890?action=write-review"),
            "https://apps.twinlanes.example/app/id1234567890?action=write-review");
  for (const char* same : {"https://www.twinlanes.example/a", "mailto:support@twinlanes.example",
                           "itms-app://x", "file:///etc/passwd"}) {
    EXPECT_EQ(DesktopUrlOpener::desktopFormOf(same), same);
  }
}

TEST(UrlOpenerTest, OnlyWebPagesAndMailAreHandedOn) {
  for (const char* fine :
       {"https://www.twinlanes.example/a", "HTTP://x.example", "itms-apps://apps.example/app/id1",
        "mailto:support@twinlanes.example?subject=Hi&body=a%0D%0Ab"}) {
    EXPECT_TRUE(DesktopUrlOpener::canOpen(fine)) << fine;
  }
  DesktopUrlOpener opener;
  for (const char* refused : {"", "file:///etc/passwd", "javascript:alert(1)", "ftp://x.example/",
                              "-x", "--help", "https://", "mailto:", "https://x.example/a b",
                              "https://x.example/\nrm", "itms-apps:", "/usr/bin/xterm"}) {
    EXPECT_FALSE(DesktopUrlOpener::canOpen(refused)) << refused;
    EXPECT_FALSE(opener.openURL(refused)) << refused;
  }
}

}  // namespace
}  // namespace kit
