#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/services.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/image.h"
#include "kit/ui/mail_compose_view_controller.h"
#include "kit/ui/view_controller.h"

// Told how the rating prompt ended: 0 cancelled (or an alert of another
// tag), 1 chose to rate, 2 chose feedback. Optional (empty by default).
class RTServiceResultDelegate {
 public:
  virtual ~RTServiceResultDelegate() = default;
  virtual void onRTServiceResult(int /*result*/) {}
};

// Decides when to ask the player for a rating (the 2nd to 4th counted
// launches, until rated), asks with a three-button alert, and then opens the
// store's rating page or a pre-filled feedback mail (a toast when mail is
// unavailable). One per process, owned by the ad controller; made with
// initWithAppid. The services and the mail sink are borrowed and outlive it;
// the root view controller and the delegate are weak. Main thread only.
class RTService final : public kit::AlertViewDelegate,
                        public kit::MailComposeViewControllerDelegate,
                        public std::enable_shared_from_this<RTService> {
  struct Token {};

 public:
  static constexpr int kAlertTag = 20001;

  static std::shared_ptr<RTService> initWithAppid(long appid, std::string FeedbackEmail,
                                                  const kit::Services& services,
                                                  kit::MailSink& mailSink);
  // Use initWithAppid.
  RTService(Token, long appid, std::string FeedbackEmail, const kit::Services& services,
            kit::MailSink& mailSink);

  std::shared_ptr<kit::ViewController> rootVC() const { return _rootVC.lock(); }
  void setRootVC(std::weak_ptr<kit::ViewController> rootVC) { _rootVC = std::move(rootVC); }
  std::shared_ptr<RTServiceResultDelegate> delegate() const { return _delegate.lock(); }
  void setDelegate(std::weak_ptr<RTServiceResultDelegate> delegate) {
    _delegate = std::move(delegate);
  }

  // --- The rating prompt -----------------------------------------------------------
  // bRt = the rated flag in the preferences.
  void loadRTed();
  // Stores the rated flag, writes the preferences, bRt = true.
  void setRTed();
  bool isRT() const { return bRt; }
  // Counts this call (calls within 10 s of the very first are not counted)
  // and shows the prompt on the 2nd to 4th counted call unless rated.
  // True when the prompt was shown.
  bool decideShowRT(const std::shared_ptr<kit::ViewController>& vc);
  // Shows the prompt (tag 20001) over `vc`, which becomes rootVC.
  void showRT(const std::shared_ptr<kit::ViewController>& vc);
  void callRT();
  // Opens the store's rating page, then marks rated.
  void doRT();
  void alertViewDidDismissWithButtonIndex(kit::AlertView& alert, int index) override;

  // --- Feedback mail ---------------------------------------------------------------
  // Marks rated, then composes the feedback mail, or toasts that mail is
  // unavailable.
  void doFeedback();
  std::string getSettingFeedbackTitle() const;
  // The HTML body: an opening line, then app name, version, device and
  // system version, one per line.
  std::string getSettingFeedbackMessage() const;
  // Presents a composer from rootVC; false when mail is unavailable.
  bool sendMailWithTitle(const std::string& title, const std::string& content,
                         const std::shared_ptr<kit::Image>& image,
                         const std::vector<std::string>& recipients);
  void mailComposeControllerDidFinishWithResult(kit::MailComposeViewController& controller,
                                                kit::MailComposeResult result,
                                                const std::optional<std::string>& error) override;
  // The first preferred language (prefkey::kLanguages), empty when none.
  std::string currentLanguage() const;
  // 1 for simplified Chinese, else 0.
  int getCurrentLanguageType() const;
  std::string getDeviceModel() const;
  float systemVersion() const;

 private:
  // The text of `key` in the "RTService" strings table.
  std::string text(const std::string& key) const;

  long appid;
  std::string feedback_email;
  bool bRt = false;
  std::weak_ptr<kit::ViewController> _rootVC;
  std::weak_ptr<RTServiceResultDelegate> _delegate;

  kit::Services services_;
  kit::MailSink& mailSink_;
};
