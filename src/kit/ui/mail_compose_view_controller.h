#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/view_controller.h"

namespace kit {

class MailComposeViewController;

// The platform's values.
enum class MailComposeResult { Cancelled = 0, Saved = 1, Sent = 2, Failed = 3 };

// Told when the composer is done with its mail; the presenter dismisses the
// composer here. Optional (empty by default).
class MailComposeViewControllerDelegate {
 public:
  virtual ~MailComposeViewControllerDelegate() = default;
  virtual void mailComposeControllerDidFinishWithResult(
      MailComposeViewController& /*controller*/, MailComposeResult /*result*/,
      const std::optional<std::string>& /*error*/) {}
};

// The mail composer: filled in by the caller, then presented. The desktop
// writes mail in its own mail app, so once on screen the composer hands the
// message to its sink and reports Sent (Failed when the sink refused it) to
// its delegate, which dismisses it; without a delegate it dismisses itself.
// The sink is borrowed and outlives the composer; the delegate is weak.
class MailComposeViewController final : public ViewController {
 public:
  explicit MailComposeViewController(MailSink& sink);

  // Whether mail can be composed at all; ask before making a composer.
  static bool canSendMail(MailSink& sink) { return sink.canSendMail(); }

  std::shared_ptr<MailComposeViewControllerDelegate> mailComposeDelegate() const {
    return delegate_.lock();
  }
  void setMailComposeDelegate(std::weak_ptr<MailComposeViewControllerDelegate> delegate) {
    delegate_ = std::move(delegate);
  }

  void setSubject(std::string subject) { message_.subject = std::move(subject); }
  void setToRecipients(std::vector<std::string> recipients) {
    message_.toRecipients = std::move(recipients);
  }
  void setMessageBody(std::string body, bool isHTML);
  void addAttachmentData(std::string data, std::string mimeType, std::string fileName);
  const MailMessage& message() const { return message_; }

  // A sheet showing the recipients and the subject while the mail app opens.
  void loadView() override;
  void viewWillAppear(bool animated) override;
  // Hands the mail on, once.
  void viewDidAppear(bool animated) override;

 private:
  MailSink& sink_;
  MailMessage message_;
  std::weak_ptr<MailComposeViewControllerDelegate> delegate_;
  bool handedOn_ = false;
};

}  // namespace kit
