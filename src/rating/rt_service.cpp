#include "rating/rt_service.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "names/preference_keys.h"
#include "names/store_link.h"
#include "ui/view_toast.h"

namespace {

constexpr const char* kStringsTable = "RTService";
constexpr int64_t kSettleSeconds = 10;

// The leading number of a version text ("9.3.2" is 9.3), 0 when there is none.
float floatValueOf(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())))
    text.remove_prefix(1);
  if (!text.empty() && text.front() == '+')
    text.remove_prefix(1);
  // A decimal number's text ([-]digits[.digits][e[+-]digits]) read by strtof
  // in the C locale; from_chars for floats is missing from older libc++.
  size_t n = 0;
  const auto digits = [&] {
    const size_t from = n;
    while (n < text.size() && std::isdigit(static_cast<unsigned char>(text[n])))
      ++n;
    return n > from;
  };
  if (n < text.size() && text[n] == '-')
    ++n;
  bool any = digits();
  if (n < text.size() && text[n] == '.') {
    ++n;
    any = digits() || any;
  }
  if (!any)
    return 0;
  if (n < text.size() && (text[n] == 'e' || text[n] == 'E')) {
    const size_t mantissaEnd = n++;
    if (n < text.size() && (text[n] == '+' || text[n] == '-'))
      ++n;
    if (!digits())
      n = mantissaEnd;
  }
  const std::string number(text.substr(0, n));
  errno = 0;
  const float value = std::strtof(number.c_str(), nullptr);
  return errno == ERANGE ? 0 : value;
}

// A host name from the publisher config, or empty when it is not one.
std::string hostName(const kit::Value& value) {
  const std::string* host = value.ifString();
  if (!host || host->empty() || host->size() > 253)
    return {};
  const bool plain = std::all_of(host->begin(), host->end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-';
  });
  return plain ? *host : std::string();
}

// a - b and a + 1 without overflow: a damaged preferences file may hold any
// integer.
int64_t saturatingSub(int64_t a, int64_t b) {
  int64_t out = 0;
  if (__builtin_sub_overflow(a, b, &out))
    return b < 0 ? std::numeric_limits<int64_t>::max() : std::numeric_limits<int64_t>::min();
  return out;
}

int64_t saturatingIncrement(int64_t a) {
  return a == std::numeric_limits<int64_t>::max() ? a : a + 1;
}

}  // namespace

std::shared_ptr<RTService> RTService::initWithAppid(long appid, std::string FeedbackEmail,
                                                    const kit::Services& services,
                                                    kit::MailSink& mailSink) {
  return std::make_shared<RTService>(Token{}, appid, std::move(FeedbackEmail), services, mailSink);
}

RTService::RTService(Token, long appid, std::string FeedbackEmail, const kit::Services& services,
                     kit::MailSink& mailSink)
    : appid(appid), services_(services), mailSink_(mailSink) {
  loadRTed();
  feedback_email = std::move(FeedbackEmail);
}

std::string RTService::text(const std::string& key) const {
  return services_.bundle.localizedString(key, "", kStringsTable);
}

// --- The rating prompt ---------------------------------------------------------------

void RTService::loadRTed() {
  bRt = services_.defaults.boolForKey(prefkey::kRated);
}

void RTService::setRTed() {
  services_.defaults.setBool(true, prefkey::kRated);
  services_.defaults.synchronize();
  bRt = true;
}

bool RTService::decideShowRT(const std::shared_ptr<kit::ViewController>& vc) {
  kit::UserDefaults& defaults = services_.defaults;
  const int64_t now = services_.clock.now();
  const int64_t first = defaults.integerForKey(prefkey::kFirstIn);
  if (first == 0) {
    defaults.setInteger(now, prefkey::kFirstIn);
  } else if (saturatingSub(now, first) < kSettleSeconds) {
    return false;
  }
  const int64_t n = defaults.integerForKey(prefkey::kAppOpened);
  const int64_t counted = saturatingIncrement(n);
  defaults.setInteger(counted, prefkey::kAppOpened);
  defaults.synchronize();
  // The rated flag is read from the preferences, not from bRt.
  if (n >= 1 && counted < 5 && !defaults.boolForKey(prefkey::kRated)) {
    showRT(vc);
    return true;
  }
  return false;
}

void RTService::showRT(const std::shared_ptr<kit::ViewController>& vc) {
  setRootVC(vc);
  auto alert =
      std::make_shared<kit::AlertView>("", text("RATE_MSG"), weak_from_this(), text("RATE_CANCEL"),
                                       std::vector<std::string>{text("RATE_YES"), text("RATE_NO")});
  alert->setTag(kAlertTag);
  if (!vc) {
    services_.log.write("Rating prompt not shown: no view controller to show it over");
    return;
  }
  alert->show(vc->view());
}

void RTService::callRT() {
  setRTed();
  doRT();
}

void RTService::doRT() {
  const float v = systemVersion();
  const std::string id = std::to_string(appid);
  const kit::Bundle& bundle = services_.bundle;
  const std::string host = v < 7.0f ? hostName(bundle.infoValue("storeWebHost"))
                                    : hostName(bundle.infoValue("storeHost"));
  const std::string url = v < 7.0f ? storelink::webPage(host, id) : storelink::appPage(host, id);
  services_.log.write("rate url=" + url);
  if (host.empty()) {
    services_.log.write("The publisher config names no usable store host; no page opened");
  } else {
    services_.urlOpener.openURL(url);
  }
  setRTed();
}

void RTService::alertViewDidDismissWithButtonIndex(kit::AlertView& alert, int index) {
  int result = 0;
  if (alert.tag() != kAlertTag) {
    result = 0;
  } else if (index == 2) {
    doFeedback();
    result = 2;
  } else if (index == 1) {
    callRT();
    result = 1;
  }
  if (auto d = delegate())
    d->onRTServiceResult(result);
}

// --- Feedback mail -------------------------------------------------------------------

void RTService::doFeedback() {
  setRTed();
  const std::string subject = getSettingFeedbackTitle();
  const std::string body = getSettingFeedbackMessage();
  if (!sendMailWithTitle(subject, body, nullptr, {feedback_email})) {
    if (auto vc = rootVC())
      makeToast(*vc->view(), text("EMAIL_NOT_AVAILABLE"), 1.5, "center");
  }
}

std::string RTService::getSettingFeedbackTitle() const {
  return text("SETTING_APP_NAME") + text("SETTING_FEEDBACK_TITLE");
}

std::string RTService::getSettingFeedbackMessage() const {
  const std::string version =
      services_.bundle.infoValue("CFBundleVersion").stringValue().value_or("");
  char systemVersionText[64];
  std::snprintf(systemVersionText, sizeof systemVersionText, "%.2f",
                static_cast<double>(systemVersion()));
  return text("SETTING_FEEDBACK_CONTENT") + "<br />" + text("SETTING_APP_NAME_WORD") + ":" +
         text("SETTING_APP_NAME") + "<br />" + text("SETTING_APPVERSION_WORD") + ":" + "v" +
         version + "<br />" + text("SETTING_DEVICE_WORD") + ":" + getDeviceModel() + "<br />" +
         text("SETTING_IOS_VERSION_WORD") + ":" + systemVersionText;
}

bool RTService::sendMailWithTitle(const std::string& title, const std::string& content,
                                  const std::shared_ptr<kit::Image>& image,
                                  const std::vector<std::string>& recipients) {
  if (!kit::MailComposeViewController::canSendMail(mailSink_))
    return false;
  auto composer = std::make_shared<kit::MailComposeViewController>(mailSink_);
  composer->setMailComposeDelegate(weak_from_this());
  if (image) {
    // The empty MIME type is what the mail has always carried.
    if (std::optional<std::string> jpeg = kit::jpegRepresentation(*image, 1.0))
      composer->addAttachmentData(std::move(*jpeg), "", "final.jpg");
  }
  composer->setSubject(title);
  composer->setToRecipients(recipients);
  composer->setMessageBody(content, true);
  if (services_.device.userInterfaceIdiom == kit::Device::Idiom::Pad)
    composer->setModalPresentationStyle(kit::ModalPresentationStyle::FormSheet);
  if (auto vc = rootVC())
    vc->presentViewController(composer, true);
  return true;
}

void RTService::mailComposeControllerDidFinishWithResult(
    kit::MailComposeViewController& /*controller*/, kit::MailComposeResult /*result*/,
    const std::optional<std::string>& /*error*/) {
  if (auto vc = rootVC())
    vc->dismissViewControllerAnimated(true);
}

std::string RTService::currentLanguage() const {
  std::optional<kit::Value::Array> languages = services_.defaults.arrayForKey(prefkey::kLanguages);
  if (!languages || languages->empty())
    return {};
  return languages->front().stringValue().value_or("");
}

int RTService::getCurrentLanguageType() const {
  std::string language = currentLanguage();
  std::transform(language.begin(), language.end(), language.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (language.rfind("zh-hans", 0) == 0)
    return 1;
  // Traditional Chinese is told apart here but reads as every other language.
  if (language.rfind("zh-hant", 0) == 0)
    return 0;
  return 0;
}

std::string RTService::getDeviceModel() const {
  return services_.device.model;
}

float RTService::systemVersion() const {
  return floatValueOf(services_.device.systemVersion);
}
