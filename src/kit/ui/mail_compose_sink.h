#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/log.h"
#include "kit/foundation/url_opener.h"

namespace kit {

class Image;

struct MailAttachment {
  std::string data;
  std::string mimeType;
  std::string fileName;
};

// The JPEG bytes of `image` at `quality` (0 smallest, 1 best; clamped), as
// mail attachments carry it; nullopt when it cannot be encoded.
std::optional<std::string> jpegRepresentation(const Image& image, double quality);

// A mail as the composer hands it on.
struct MailMessage {
  std::vector<std::string> toRecipients;
  std::string subject;
  std::string body;
  bool isHTML = false;
  std::vector<MailAttachment> attachments;
};

// Where composed mail goes: the desktop's mail app, or a recorder in tests
// and scripted runs. Held by whoever made the services; composers borrow it.
class MailSink {
 public:
  virtual ~MailSink() = default;
  // Whether mail can be sent at all (the composer's canSendMail).
  virtual bool canSendMail() = 0;
  // Hands the mail on; false when it could not be.
  virtual bool send(const MailMessage& mail) = 0;
};

// Hands mail to the desktop's mail app as a mailto: link through the URL
// opener. Mail counts as available when the desktop names a handler for
// mailto links (xdg-mime, run once without a shell and given two seconds).
// Only the recipients, the subject and a plain-text body travel: attachments
// cannot, and are dropped with a log line. The opener and the log are
// borrowed and must outlive the sink.
class DesktopMailSink final : public MailSink {
 public:
  // Bodies longer than this (in bytes, before encoding) are cut at a
  // character boundary: mail apps refuse very long links.
  static constexpr size_t kMaxBodyBytes = 2000;

  DesktopMailSink(UrlOpener& opener, Log& log);
  // With another handler query (an argv, run from PATH) and time limit.
  DesktopMailSink(UrlOpener& opener, Log& log, std::vector<std::string> probe,
                  std::chrono::milliseconds probeTimeout);

  bool canSendMail() override;
  bool send(const MailMessage& mail) override;

  // The mailto: link of `mail` (RFC 6068): recipients, subject and body
  // percent-encoded; CR, LF and other control characters removed from the
  // recipients and the subject; an HTML body turned into plain text; body
  // line breaks sent as CRLF.
  static std::string mailtoURL(const MailMessage& mail);
  // Plain text of an HTML body: <br> in any spelling becomes a line break,
  // other tags go, the common entities are decoded, source line breaks are
  // spaces (as a browser would show them).
  static std::string plainTextOfHTML(std::string_view html);

 private:
  UrlOpener& opener_;
  Log& log_;
  std::vector<std::string> probe_;
  std::chrono::milliseconds probeTimeout_;
  std::optional<bool> available_;
};

// Records every mail and opens nothing; `available` answers canSendMail.
class RecordingMailSink final : public MailSink {
 public:
  bool canSendMail() override { return available; }
  bool send(const MailMessage& mail) override {
    mails.push_back(mail);
    return true;
  }

  bool available = true;
  std::vector<MailMessage> mails;
};

}  // namespace kit
