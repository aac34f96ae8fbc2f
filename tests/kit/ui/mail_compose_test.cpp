#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "kit/backends/desktop/desktop_mail_sink.h"
#include "kit/foundation/log.h"
#include "kit/ui/mail_compose_view_controller.h"
#include "kit/ui/window.h"
#include "ui_fixture.h"

namespace kit {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// [The mailto link]

std::string mailto(std::vector<std::string> to, std::string subject, std::string body,
                   bool html = false) {
  return DesktopMailSink::mailtoURL({std::move(to), std::move(subject), std::move(body), html, {}});
}

TEST(MailtoTest, FeedbackMailBecomesOneEncodedLinkWithCrlfLineBreaks) {
  EXPECT_EQ(mailto({"support@twinlanes.example"}, "Twin Lanes Feedback",
                   "Hello!<br />App:Twin Lanes<br/>Version:v1.0<BR>System version:12.10", true),
            "mailto:support@twinlanes.example?subject=Twin%20Lanes%20Feedback"
            "&body=Hello%21%0D%0AApp%3ATwin%20Lanes%0D%0AVersion%3Av1.0%0D%0A"
            "System%20version%3A12.10");
  // Delimiters and non-ASCII text are encoded.
  EXPECT_EQ(mailto({"a@b.example", "c&d?@e.example"}, "Q&A #1 = 100%", "双车道"),
            "mailto:a@b.example,c%26d%3F@e.example?subject=Q%26A%20%231%20%3D%20100%25"
            "&body=%E5%8F%8C%E8%BD%A6%E9%81%93");
  // Plain bodies keep their own line breaks, sent as CRLF.
  EXPECT_THAT(mailto({}, "", "a\nb\r\nc<br />"),
              testing::EndsWith("body=a%0D%0Ab%0D%0Ac%3Cbr%20%2F%3E"));
}

TEST(MailtoTest, LineBreaksCannotSmuggleHeadersIntoSubjectOrRecipients) {
  const std::string url =
      mailto({"a@b.example\r\nBcc: spy@evil.example", " \r\n "}, "Hi\r\nBcc: spy@evil.example", "");
  EXPECT_EQ(url,
            "mailto:a@b.exampleBcc%3A%20spy@evil.example"
            "?subject=HiBcc%3A%20spy%40evil.example");
  EXPECT_THAT(url, Not(HasSubstr("%0D")));
  EXPECT_THAT(url, Not(HasSubstr("%0A")));
}

TEST(MailtoTest, HtmlBodyLosesItsTagsAndKeepsItsText) {
  EXPECT_EQ(DesktopMailSink::plainTextOfHTML(
                "<p>Fish &amp; chips &lt;3</p>\nnext<br class=\"x\">&#20013;&#x6587; &bogus; a<b"),
            "Fish & chips <3 next\n中文 &bogus; a<b");
}

// [Is mail available]

class ProbeTest : public ::testing::Test {
 protected:
  bool availableWith(std::vector<std::string> probe,
                     std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    DesktopMailSink sink(opener, log, std::move(probe), timeout);
    return sink.canSendMail();
  }
  RecordingUrlOpener opener;
  CapturingLog log;
};

TEST_F(ProbeTest, MailIsAvailableOnlyWhenTheDesktopNamesAHandlerInTime) {
  EXPECT_TRUE(availableWith({"sh", "-c", "echo mail-client.desktop"}));
  EXPECT_FALSE(availableWith({"sh", "-c", "echo"}));
  EXPECT_FALSE(availableWith({"sh", "-c", "echo mail-client.desktop; exit 3"}));
  EXPECT_FALSE(availableWith({"twinlanes-no-such-command"}));
  EXPECT_FALSE(availableWith({}));
  EXPECT_TRUE(log.contains("Mail is not available"));
  // A probe that hangs is given up after its time limit.
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(availableWith({"sleep", "30"}, std::chrono::milliseconds(200)));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST_F(ProbeTest, TheProbeStartsWithTheSinkSoMakingItNeverWaitsForTheChild) {
  const auto start = std::chrono::steady_clock::now();
  DesktopMailSink sink(opener, log, {"sh", "-c", "sleep 0.5; echo mail-client.desktop"},
                       std::chrono::seconds(5));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  std::this_thread::sleep_for(std::chrono::milliseconds(800));  // frames go on meanwhile
  const auto asked = std::chrono::steady_clock::now();
  EXPECT_TRUE(sink.canSendMail());
  EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(300));
}

TEST_F(ProbeTest, TheAnswerIsKeptAndMailGoesToTheOpener) {
  DesktopMailSink sink(opener, log, {"sh", "-c", "echo mail-client.desktop"},
                       std::chrono::seconds(5));
  ASSERT_TRUE(sink.canSendMail());
  EXPECT_TRUE(sink.send({{"a@b.example"}, "S", "B", false, {{"jpeg", "", "final.jpg"}}}));
  EXPECT_THAT(opener.opened, ElementsAre("mailto:a@b.example?subject=S&body=B"));
  EXPECT_TRUE(log.contains("1 left out"));
}

// [The composer]

class RefusingOpener final : public UrlOpener {
 public:
  bool openURL(const std::string&) override { return false; }
};

class FinishLog final : public MailComposeViewControllerDelegate {
 public:
  void mailComposeControllerDidFinishWithResult(MailComposeViewController& controller,
                                                MailComposeResult result,
                                                const std::optional<std::string>& error) override {
    results.push_back(result);
    errors.push_back(error.value_or(""));
    controller.dismissViewControllerAnimated(true);
  }
  std::vector<MailComposeResult> results;
  std::vector<std::string> errors;
};

class ComposerTest : public UiTest {
 protected:
  ComposerTest() { window->setRootViewController(root); }

  std::shared_ptr<MailComposeViewController> compose(MailSink& sink) {
    auto composer = std::make_shared<MailComposeViewController>(sink);
    composer->setSubject("Feedback");
    composer->setToRecipients({"support@twinlanes.example"});
    composer->setMessageBody("Hi<br />there", true);
    return composer;
  }

  std::shared_ptr<Window> window = std::make_shared<Window>(Size{320, 568});
  std::shared_ptr<ViewController> root = std::make_shared<ViewController>();
  std::shared_ptr<FinishLog> finished = std::make_shared<FinishLog>();
};

TEST_F(ComposerTest, PresentedComposerHandsTheMailOnOnceItIsUpThenReportsSent) {
  RecordingMailSink sink;
  auto composer = compose(sink);
  composer->setMailComposeDelegate(finished);
  root->presentViewController(composer, true);
  EXPECT_TRUE(sink.mails.empty());
  advance(0.4);
  ASSERT_EQ(sink.mails.size(), 1u);
  EXPECT_EQ(sink.mails[0].body, "Hi<br />there");
  EXPECT_THAT(finished->results, ElementsAre(MailComposeResult::Sent));
  advance(0.4);
  EXPECT_FALSE(root->presentedViewController());
}

TEST_F(ComposerTest, RefusedHandOverReportsFailed) {
  RefusingOpener opener;
  CapturingLog log;
  DesktopMailSink sink(opener, log, {"sh", "-c", "echo m.desktop"}, std::chrono::seconds(5));
  auto composer = compose(sink);
  composer->setMailComposeDelegate(finished);
  root->presentViewController(composer, false);
  advance(0.1);
  EXPECT_THAT(finished->results, ElementsAre(MailComposeResult::Failed));
  EXPECT_FALSE(finished->errors[0].empty());
}

}  // namespace
}  // namespace kit
