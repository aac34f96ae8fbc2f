#include "rating/rt_service.h"

#include <limits>

#include "kit/ui/image_context.h"
#include "rating_fixture.h"

namespace {

using ::testing::ElementsAre;

constexpr const char* kRateUrl = "itms-apps://apps.twinlanes.example/app/id1234567890";
constexpr const char* kOldRateUrl = "https://www.twinlanes.example/us/app/1234567890";

// [When the prompt comes]

TEST_F(RatingTest, PromptComesOnTheSecondToFourthCountedLaunchesOnly) {
  std::vector<bool> shown;
  for (int i = 0; i < 7; ++i) {
    shown.push_back(launchAt(i * 3600));
    if (alert())
      tapButton(0);
  }
  EXPECT_THAT(shown, ElementsAre(false, true, true, true, false, false, false));
  EXPECT_EQ(counted(), 7);
  EXPECT_EQ(platform().defaults.integerForKey("cz_firstin"), kInstallTime);
  EXPECT_FALSE(rated());
}

TEST_F(RatingTest, CallsWithinTenSecondsOfTheFirstAreNotCounted) {
  EXPECT_FALSE(launchAt(0));
  EXPECT_EQ(counted(), 1);
  EXPECT_FALSE(launchAt(5));
  EXPECT_FALSE(launchAt(9));
  EXPECT_EQ(counted(), 1);
  EXPECT_FALSE(alert());

  EXPECT_TRUE(launchAt(10));
  EXPECT_EQ(counted(), 2);
  EXPECT_TRUE(alert());
}

TEST_F(RatingTest, RatedFlagIsReadFromThePreferencesAndTheCountStillGrows) {
  launchAt(0);
  relaunch();
  // Set behind the service's back: its cached flag stays false.
  platform().defaults.setBool(true, "cz_rated");
  EXPECT_FALSE(service().isRT());
  platform().clock.setNow(kInstallTime + 60);
  EXPECT_FALSE(service().decideShowRT(launch().root));
  EXPECT_FALSE(alert());
  EXPECT_EQ(counted(), 2);
}

TEST_F(RatingTest, DamagedCountersNeitherOverflowNorPrompt) {
  platform().defaults.setInteger(std::numeric_limits<int64_t>::min(), "cz_firstin");
  platform().defaults.setInteger(std::numeric_limits<int64_t>::max(), "cz_appopened");
  EXPECT_FALSE(service().decideShowRT(launch().root));
  EXPECT_EQ(counted(), std::numeric_limits<int64_t>::max());
  EXPECT_FALSE(alert());
}

// [The prompt and its buttons]

TEST_F(RatingTest, PromptAsksWithThreeButtonsInTheirOrder) {
  launchAt(0);
  ASSERT_TRUE(launchAt(60));
  auto shown = alert();
  ASSERT_TRUE(shown);
  EXPECT_EQ(shown->tag(), 20001);
  EXPECT_EQ(shown->title(), "");
  EXPECT_EQ(shown->message(), platform().bundle.localizedString("RATE_MSG", "", "RTService"));
  EXPECT_EQ(shown->cancelButtonIndex(), 0);
  std::vector<std::string> buttons;
  for (int i = 0; i < shown->numberOfButtons(); ++i)
    buttons.push_back(shown->buttonTitleAtIndex(i));
  EXPECT_THAT(buttons, ElementsAre("Not now", "Rate it now", "No, send feedback"));
  EXPECT_EQ(service().rootVC(), launch().root);
}

TEST_F(RatingTest, PromptSpeaksSimplifiedChinese) {
  launchAt(0);
  relaunch();
  platform().defaults.registerDefaults({{"AppleLanguages", kit::Value::Array{"zh-Hans-CN"}}});
  platform().clock.setNow(kInstallTime + 60);
  ASSERT_TRUE(service().decideShowRT(launch().root));
  EXPECT_EQ(alert()->buttonTitleAtIndex(1), "马上评分");
  EXPECT_EQ(service().getSettingFeedbackTitle(), "双车道意见反馈");
}

TEST_F(RatingTest, CancelStoresNothingSoALaterLaunchAsksAgain) {
  launchAt(0);
  launchAt(60);
  tapButton(0);
  EXPECT_FALSE(alert());
  EXPECT_FALSE(rated());
  EXPECT_TRUE(platform().urlOpener.opened.empty());
  EXPECT_TRUE(mail.mails.empty());
  EXPECT_THAT(recorder->results, ElementsAre(0));
  EXPECT_TRUE(launchAt(120));
}

TEST_F(RatingTest, RateOpensTheRatingPageAndThePromptNeverReturns) {
  launchAt(0);
  launchAt(60);
  tapButton(1);
  EXPECT_THAT(platform().urlOpener.opened, ElementsAre(kRateUrl));
  EXPECT_TRUE(platform().log.contains(std::string("rate url=") + kRateUrl));
  EXPECT_TRUE(rated());
  EXPECT_TRUE(service().isRT());
  EXPECT_THAT(recorder->results, ElementsAre(1));
  EXPECT_FALSE(launchAt(120));
  EXPECT_FALSE(launchAt(180));
}

TEST_F(RatingTest, DecliningComposesTheFeedbackMailAndThePromptNeverReturns) {
  launchAt(0);
  launchAt(60);
  tapButton(2);
  // The composer slides up, hands the mail on and goes again.
  EXPECT_TRUE(launch().root->presentedViewController());
  advance(1);
  EXPECT_FALSE(launch().root->presentedViewController());
  ASSERT_EQ(mail.mails.size(), 1u);
  const kit::MailMessage& sent = mail.mails[0];
  EXPECT_THAT(sent.toRecipients, ElementsAre("support@twinlanes.example"));
  EXPECT_EQ(sent.subject, "Twin Lanes Feedback");
  EXPECT_EQ(sent.body, service().getSettingFeedbackMessage());
  EXPECT_TRUE(sent.isHTML);
  EXPECT_TRUE(sent.attachments.empty());
  EXPECT_TRUE(platform().urlOpener.opened.empty());
  EXPECT_THAT(recorder->results, ElementsAre(2));
  EXPECT_TRUE(rated());
  EXPECT_FALSE(launchAt(120));
}

TEST_F(RatingTest, AlertOfAnotherTagReportsCancelAndDoesNothing) {
  auto foreign =
      std::make_shared<kit::AlertView>("", "other", std::weak_ptr<kit::AlertViewDelegate>(), "OK",
                                       std::vector<std::string>{"A", "B"});
  foreign->setTag(7);
  service().alertViewDidDismissWithButtonIndex(*foreign, 1);
  service().alertViewDidDismissWithButtonIndex(*foreign, 2);
  EXPECT_THAT(recorder->results, ElementsAre(0, 0));
  EXPECT_FALSE(rated());
  EXPECT_TRUE(platform().urlOpener.opened.empty());
  EXPECT_TRUE(mail.mails.empty());
}

// [The rating page]

TEST_F(RatingTest, RatingPageLinkFollowsTheSystemVersion) {
  platform().device.systemVersion = "6.1";
  service().doRT();
  platform().device.systemVersion = "7.0";
  service().doRT();
  platform().device.systemVersion = "6.9.9";
  service().doRT();
  EXPECT_THAT(platform().urlOpener.opened, ElementsAre(kOldRateUrl, kRateUrl, kOldRateUrl));
  EXPECT_TRUE(rated());
}

// [Feedback mail]

TEST_F(RatingTest, MailUnavailableShowsTheNoticeForOneAndAHalfSecondsAtTheCentre) {
  mail.available = false;
  service().setRootVC(launch().root);
  service().doFeedback();
  EXPECT_TRUE(rated());
  EXPECT_TRUE(mail.mails.empty());
  EXPECT_FALSE(launch().root->presentedViewController());

  const std::string notice = "Sorry, no mail app is set up on this device.";
  ASSERT_THAT(toasts(), ElementsAre(notice));
  auto toast = launch().root->view()->subviews().back();
  EXPECT_EQ(toast->center(), (kit::Point{160, 284}));
  advance(1.85);  // 0.2 s in, 1.5 s shown, fading out
  EXPECT_THAT(toasts(), ElementsAre(notice));
  advance(0.1);
  EXPECT_TRUE(toasts().empty());
}

TEST_F(RatingTest, SubjectAndBodyCarryTheAppAndTheDevice) {
  platform().device.systemVersion = "8.4";
  EXPECT_EQ(service().getSettingFeedbackTitle(), "Twin Lanes Feedback");
  EXPECT_EQ(service().getSettingFeedbackMessage(),
            "Hello! Here is my feedback on the game:<br />App:Twin Lanes<br />Version:v1.0"
            "<br />Device:TestModel1,2<br />System version:8.40");
  platform().device.systemVersion = "9.3.2";
  EXPECT_NE(service().getSettingFeedbackMessage().find("System version:9.30"), std::string::npos);
  platform().device.systemVersion = "10.0";
  EXPECT_NE(service().getSettingFeedbackMessage().find("System version:10.00"), std::string::npos);
  platform().device.systemVersion = "unknown";
  EXPECT_NE(service().getSettingFeedbackMessage().find("System version:0.00"), std::string::npos);
}

TEST_F(RatingTest, ComposerIsAFormSheetOnAPadAndCarriesAJpegAttachment) {
  platform().device.userInterfaceIdiom = kit::Device::Idiom::Pad;
  service().setRootVC(launch().root);
  kit::ImageContext context({8, 8}, 1);
  context.fillRect({{0, 0}, {8, 8}}, {1, 0, 0, 1});
  auto image = std::make_shared<kit::Image>(context.takeImage());

  EXPECT_TRUE(service().sendMailWithTitle("S", "B", image, {"a@b.example"}));
  auto composer = launch().root->presentedViewController();
  ASSERT_TRUE(composer);
  EXPECT_EQ(composer->modalPresentationStyle(), kit::ModalPresentationStyle::FormSheet);
  advance(1);
  ASSERT_EQ(mail.mails.size(), 1u);
  ASSERT_EQ(mail.mails[0].attachments.size(), 1u);
  const kit::MailAttachment& jpeg = mail.mails[0].attachments[0];
  EXPECT_EQ(jpeg.fileName, "final.jpg");
  EXPECT_EQ(jpeg.mimeType, "");
  ASSERT_GT(jpeg.data.size(), 4u);
  EXPECT_EQ(jpeg.data.substr(0, 2), "\xFF\xD8");
  EXPECT_FALSE(launch().root->presentedViewController());
}

TEST_F(RatingTest, LanguageTypeIsOneOnlyForSimplifiedChinese) {
  auto typeFor = [&](kit::Value languages) {
    platform().defaults.setObject(languages, "AppleLanguages");
    return service().getCurrentLanguageType();
  };
  EXPECT_EQ(typeFor(kit::Value::Array{"zh-Hans-CN", "en"}), 1);
  EXPECT_EQ(typeFor(kit::Value::Array{"ZH-HANS"}), 1);
  EXPECT_EQ(typeFor(kit::Value::Array{"zh-Hant-TW"}), 0);
  EXPECT_EQ(typeFor(kit::Value::Array{"en", "zh-Hans"}), 0);
  EXPECT_EQ(typeFor(kit::Value::Array{}), 0);
  EXPECT_EQ(typeFor(kit::Value("zh-Hans")), 0);  // not a list
  EXPECT_EQ(service().getDeviceModel(), "TestModel1,2");
}

}  // namespace
