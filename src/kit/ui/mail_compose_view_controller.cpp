#include "kit/ui/mail_compose_view_controller.h"

#include "kit/ui/label.h"
#include "kit/ui/screen.h"

namespace kit {
namespace {

constexpr double kInset = 16;
constexpr double kLineHeight = 28;
constexpr Color kSheet{0.97, 0.97, 0.97, 1};
constexpr Color kSecondaryText{0.45, 0.45, 0.47, 1};
constexpr Color kSeparatorColor{0.78, 0.78, 0.8, 1};

std::shared_ptr<Label> addLine(View& parent, double y, const std::string& text, Font font,
                               TextAlignment alignment) {
  const double width = parent.bounds().size.width - 2 * kInset;
  auto label = std::make_shared<Label>(Rect{{kInset, y}, {width, kLineHeight}});
  label->setText(text);
  label->setFont(std::move(font));
  label->setTextAlignment(alignment);
  label->setAutoresizingMask(Autoresizing::FlexibleWidth);
  parent.addSubview(label);
  return label;
}

}  // namespace

MailComposeViewController::MailComposeViewController(MailSink& sink) : sink_(sink) {}

void MailComposeViewController::setMessageBody(std::string body, bool isHTML) {
  message_.body = std::move(body);
  message_.isHTML = isHTML;
}

void MailComposeViewController::addAttachmentData(std::string data, std::string mimeType,
                                                  std::string fileName) {
  message_.attachments.push_back({std::move(data), std::move(mimeType), std::move(fileName)});
}

void MailComposeViewController::loadView() {
  auto sheet = std::make_shared<View>(Rect{{0, 0}, Screen::main().bounds()});
  sheet->setBackgroundColor(kSheet);
  setView(std::move(sheet));
}

void MailComposeViewController::viewWillAppear(bool /*animated*/) {
  auto sheet = view();
  if (!sheet->subviews().empty())
    return;
  std::string to;
  for (const std::string& r : message_.toRecipients)
    to += (to.empty() ? "" : ", ") + r;
  const double width = sheet->bounds().size.width;
  addLine(*sheet, 20, "New Message", Font::boldSystemFontOfSize(17), TextAlignment::Center);
  addLine(*sheet, 60, "To: " + to, Font::systemFontOfSize(15), TextAlignment::Left);
  auto line = std::make_shared<View>(Rect{{kInset, 60 + kLineHeight}, {width - 2 * kInset, 0.5}});
  line->setBackgroundColor(kSeparatorColor);
  line->setAutoresizingMask(Autoresizing::FlexibleWidth);
  sheet->addSubview(line);
  addLine(*sheet, 60 + kLineHeight + 4, "Subject: " + message_.subject, Font::systemFontOfSize(15),
          TextAlignment::Left);
  addLine(*sheet, 60 + 3 * kLineHeight, "Opening your mail app\u2026", Font::systemFontOfSize(15),
          TextAlignment::Center)
      ->setTextColor(kSecondaryText);
}

void MailComposeViewController::viewDidAppear(bool /*animated*/) {
  if (handedOn_)
    return;
  handedOn_ = true;
  const bool sent = sink_.send(message_);
  const MailComposeResult result = sent ? MailComposeResult::Sent : MailComposeResult::Failed;
  const std::optional<std::string> error =
      sent ? std::nullopt : std::optional<std::string>("The mail app could not be opened");
  // Held: the delegate dismisses, which may drop the last other reference.
  auto self = shared_from_this();
  if (auto delegate = mailComposeDelegate()) {
    delegate->mailComposeControllerDidFinishWithResult(*this, result, error);
  } else {
    dismissViewControllerAnimated(true);
  }
}

}  // namespace kit
