#pragma once

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

// Where composed mail goes: the platform's mail hand-off (the backend's sink),
// or a recorder in tests and scripted runs. Held by whoever made the
// services; composers borrow it. Main thread only.
class MailSink {
 public:
  virtual ~MailSink() = default;
  // Whether mail can be sent at all (the composer's canSendMail).
  virtual bool canSendMail() = 0;
  // Hands the mail on; false when it could not be.
  virtual bool send(const MailMessage& mail) = 0;
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
