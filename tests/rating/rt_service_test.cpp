#include "rating/rt_service.h"

#include <limits>

#include "names/preference_keys.h"
#include "rating_fixture.h"

namespace {

using ::testing::ElementsAre;

constexpr const char* kRateUrl = "itms-apps://apps.twinlanes.example/app/id1234567890";
constexpr const char* kOldRateUrl = "https://www.twinlanes.example/us/app/1234567890";

TEST_F(RatingTest, PromptComesOnTheSecondToFourthCountedLaunchesTenSecondsApart) {
  EXPECT_FALSE(launchAt(0));
  EXPECT_FALSE(launchAt(5));
  EXPECT_EQ(counted(), 1) << "within ten seconds of the first: not counted";
  for (int64_t at : {10, 3600, 7200}) {
    EXPECT_TRUE(launchAt(at)) << at;
    tapButton(0);
  }
  EXPECT_FALSE(launchAt(10800));
  EXPECT_EQ(counted(), 5);
}

TEST_F(RatingTest, RatedFlagFromThePreferencesOrADamagedCountMeanNoPrompt) {
  launchAt(0);
  relaunch();
  platform().defaults.setBool(true, prefkey::kRated);  // behind the service's back
  platform().clock.setNow(kInstallTime + 60);
  EXPECT_FALSE(service().decideShowRT(launch().root));
  EXPECT_EQ(counted(), 2);

  platform().defaults.setBool(false, prefkey::kRated);
  platform().defaults.setInteger(std::numeric_limits<int64_t>::max(), prefkey::kAppOpened);
  EXPECT_FALSE(launchAt(120));
  EXPECT_EQ(counted(), std::numeric_limits<int64_t>::max());
}

TEST_F(RatingTest, EachButtonHasItsEffectAndResultCode) {
  launchAt(0);
  ASSERT_TRUE(launchAt(60));
  std::vector<std::string> buttons;
  for (int i = 0; i < alert()->numberOfButtons(); ++i)
    buttons.push_back(alert()->buttonTitleAtIndex(i));
  EXPECT_THAT(buttons, ElementsAre("Not now", "Rate it now", "No, send feedback"));
  tapButton(0);
  EXPECT_FALSE(rated());

  ASSERT_TRUE(launchAt(120)) << "cancel stores nothing";
  tapButton(1);
  EXPECT_THAT(platform().urlOpener.opened, ElementsAre(kRateUrl));
  EXPECT_TRUE(rated());
  EXPECT_FALSE(launchAt(180)) << "rated: the prompt never returns";

  platform().defaults.setBool(false, prefkey::kRated);
  service().showRT(launch().root);
  tapButton(2);
  advance(1);  // the composer slides up and hands the mail on
  ASSERT_EQ(mail.mails.size(), 1u);
  EXPECT_THAT(mail.mails[0].toRecipients, ElementsAre("support@twinlanes.example"));
  EXPECT_EQ(mail.mails[0].subject, "Twin Lanes Feedback");
  EXPECT_EQ(mail.mails[0].body, service().getSettingFeedbackMessage());
  EXPECT_TRUE(rated());
  EXPECT_THAT(recorder->results, ElementsAre(0, 1, 2));
}

TEST_F(RatingTest, AlertOfAnotherTagReportsCancelAndDoesNothing) {
  kit::AlertView foreign("", "other", {}, "OK", {"A", "B"});
  foreign.setTag(7);
  service().alertViewDidDismissWithButtonIndex(foreign, 1);
  service().alertViewDidDismissWithButtonIndex(foreign, 2);
  EXPECT_THAT(recorder->results, ElementsAre(0, 0));
  EXPECT_FALSE(rated()) << "neither rated nor sent feedback";
}

TEST_F(RatingTest, MailUnavailableShowsTheNoticeForOneAndAHalfSecondsAtTheCentre) {
  mail.available = false;
  service().setRootVC(launch().root);
  service().doFeedback();
  EXPECT_TRUE(rated());
  const auto& toasts = launch().root->view()->subviews();
  ASSERT_EQ(toasts.size(), 1u);
  EXPECT_EQ(std::dynamic_pointer_cast<kit::Label>(toasts[0]->subviews().at(0))->text(),
            "Sorry, no mail app is set up on this device.");
  EXPECT_EQ(toasts[0]->center(), (kit::Point{160, 284}));
  advance(1.85);  // 0.2 s in, 1.5 s shown, fading out
  EXPECT_EQ(toasts.size(), 1u);
  advance(0.1);
  EXPECT_TRUE(toasts.empty());
}

TEST_F(RatingTest, SystemVersionPicksTheRatingLinkAndShowsInTheFeedbackMail) {
  for (const char* version : {"6.1", "7.0", "6.9.9"}) {
    platform().device.systemVersion = version;
    service().doRT();
  }
  EXPECT_THAT(platform().urlOpener.opened, ElementsAre(kOldRateUrl, kRateUrl, kOldRateUrl));
  platform().device.systemVersion = "8.4";
  EXPECT_EQ(service().getSettingFeedbackMessage(),
            "Hello! Here is my feedback on the game:<br />App:Twin Lanes<br />Version:v1.0"
            "<br />Device:TestModel1,2<br />System version:8.40");
  platform().device.systemVersion = "unknown";
  EXPECT_NE(service().getSettingFeedbackMessage().find("System version:0.00"), std::string::npos);
}

TEST_F(RatingTest, LanguageTypeIsOneOnlyForSimplifiedChinese) {
  auto typeFor = [&](kit::Value languages) {
    platform().defaults.setObject(languages, prefkey::kLanguages);
    return service().getCurrentLanguageType();
  };
  const kit::Value others[] = {kit::Value::Array{"zh-Hant-TW"}, kit::Value::Array{"en", "zh-Hans"},
                               kit::Value::Array{}, kit::Value("zh-Hans")};
  for (const kit::Value& other : others)
    EXPECT_EQ(typeFor(other), 0);
  EXPECT_EQ(typeFor(kit::Value::Array{"ZH-HANS"}), 1);
  EXPECT_EQ(typeFor(kit::Value::Array{"zh-Hans-CN", "en"}), 1);
  EXPECT_EQ(service().getSettingFeedbackTitle(), "双车道意见反馈");
}

}  // namespace
