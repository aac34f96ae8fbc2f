#include "kit/backends/desktop/desktop_mail_sink.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <thread>

extern char** environ;

namespace kit {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMaxProbeOutput = 4096;

bool isUnreserved(unsigned char c) {
  return std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

// Percent-encodes every byte outside RFC 3986's unreserved set (and `keep`).
// A line feed becomes CRLF, as mail bodies require.
std::string percentEncoded(std::string_view text, std::string_view keep = {}) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size() * 3);
  for (char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (isUnreserved(c) || keep.find(ch) != std::string_view::npos) {
      out += ch;
    } else if (c == '\n') {
      out += "%0D%0A";
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    }
  }
  return out;
}

// Header values travel on one line: no control characters at all.
std::string headerSafe(std::string_view text) {
  std::string out;
  for (char ch : text) {
    const auto c = static_cast<unsigned char>(ch);
    if (c >= 0x20 && c != 0x7f)
      out += ch;
  }
  const size_t first = out.find_first_not_of(' ');
  if (first == std::string::npos)
    return {};
  return out.substr(first, out.find_last_not_of(' ') - first + 1);
}

// CRLF and CR become LF; NUL bytes go.
std::string unixLines(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') {
      out += '\n';
      if (i + 1 < text.size() && text[i + 1] == '\n')
        ++i;
    } else if (text[i] != '\0') {
      out += text[i];
    }
  }
  return out;
}

// Cuts at `limit` bytes without splitting a UTF-8 sequence.
std::string_view utf8Prefix(std::string_view text, size_t limit) {
  if (text.size() <= limit)
    return text;
  size_t cut = limit;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80)
    --cut;
  return text.substr(0, cut);
}

void appendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// The text of an entity's name ("amp", "#39", "#x4E2D"), or nullopt.
std::optional<std::string> decodeEntity(std::string_view name) {
  if (name == "amp")
    return "&";
  if (name == "lt")
    return "<";
  if (name == "gt")
    return ">";
  if (name == "quot")
    return "\"";
  if (name == "apos")
    return "'";
  if (name == "nbsp")
    return " ";
  if (name.size() < 2 || name[0] != '#')
    return std::nullopt;
  const bool hex = name[1] == 'x' || name[1] == 'X';
  std::string_view digits = name.substr(hex ? 2 : 1);
  if (digits.empty() || digits.size() > 8)
    return std::nullopt;
  uint32_t cp = 0;
  for (char d : digits) {
    const auto c = static_cast<unsigned char>(d);
    if (hex ? !std::isxdigit(c) : !std::isdigit(c))
      return std::nullopt;
    cp = cp * (hex ? 16 : 10) +
         static_cast<uint32_t>(std::isdigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
  }
  if (cp == 0 || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
    return std::nullopt;
  std::string out;
  appendUtf8(out, cp);
  return out;
}

// Runs `argv` (from PATH, no shell) with its output captured; the output
// when it exits with status 0 within `timeout`, else nullopt (a child that
// overstays is killed).
std::optional<std::string> runProbe(const std::vector<std::string>& argv,
                                    std::chrono::milliseconds timeout) {
  if (argv.empty())
    return std::nullopt;
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0)
    return std::nullopt;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  std::vector<char*> args;
  for (const std::string& a : argv)
    args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  pid_t pid = 0;
  const int spawned = posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(fds[1]);
  if (spawned != 0) {
    close(fds[0]);
    return std::nullopt;
  }

  const auto deadline = Clock::now() + timeout;
  auto msLeft = [&] {
    return static_cast<int>(std::max<int64_t>(
        0, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count()));
  };
  std::string output;
  bool timedOut = false;
  for (;;) {
    pollfd p{fds[0], POLLIN, 0};
    const int ready = poll(&p, 1, msLeft());
    if (ready == 0) {
      timedOut = true;
      break;
    }
    if (ready < 0 && errno == EINTR)
      continue;
    char buffer[512];
    const ssize_t n = ready > 0 ? read(fds[0], buffer, sizeof buffer) : -1;
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      break;
    if (output.size() < kMaxProbeOutput)
      output.append(buffer, static_cast<size_t>(n));
  }
  close(fds[0]);

  int status = 0;
  for (;;) {
    const pid_t done = timedOut ? 0 : waitpid(pid, &status, WNOHANG);
    if (done == pid)
      break;
    if (done < 0 && errno != EINTR)
      return std::nullopt;
    if (timedOut || msLeft() == 0) {
      kill(pid, SIGKILL);
      while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
      }
      return std::nullopt;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return std::nullopt;
  return output;
}

}  // namespace

DesktopMailSink::DesktopMailSink(UrlOpener& opener, Log& log)
    : DesktopMailSink(opener, log, {"xdg-mime", "query", "default", "x-scheme-handler/mailto"},
                      std::chrono::seconds(2)) {}

DesktopMailSink::DesktopMailSink(UrlOpener& opener, Log& log, std::vector<std::string> probe,
                                 std::chrono::milliseconds probeTimeout)
    : opener_(opener),
      log_(log),
      probe_(std::async(std::launch::async, [probe = std::move(probe), probeTimeout] {
        return runProbe(probe, probeTimeout);
      })) {}

// The query ends within its time limit, so waiting for it here is bounded.
DesktopMailSink::~DesktopMailSink() = default;

bool DesktopMailSink::canSendMail() {
  if (!available_) {
    const std::optional<std::string> handler = probe_.get();
    available_ = handler && !headerSafe(*handler).empty();
    if (!*available_)
      log_.write("Mail is not available: the desktop has no app for mailto links");
  }
  return *available_;
}

bool DesktopMailSink::send(const MailMessage& mail) {
  if (!mail.attachments.empty()) {
    log_.write("Mail attachments cannot be handed to the desktop mail app; " +
               std::to_string(mail.attachments.size()) + " left out");
  }
  return opener_.openURL(mailtoURL(mail));
}

std::string DesktopMailSink::mailtoURL(const MailMessage& mail) {
  std::string url = "mailto:";
  bool first = true;
  for (const std::string& recipient : mail.toRecipients) {
    const std::string address = headerSafe(recipient);
    if (address.empty())
      continue;
    url += (first ? "" : ",") + percentEncoded(address, "@");
    first = false;
  }
  std::string text = unixLines(mail.isHTML ? plainTextOfHTML(mail.body) : mail.body);
  text = std::string(utf8Prefix(text, kMaxBodyBytes));
  const std::string subject = headerSafe(mail.subject);
  char separator = '?';
  if (!subject.empty()) {
    url += separator + std::string("subject=") + percentEncoded(subject);
    separator = '&';
  }
  if (!text.empty())
    url += separator + std::string("body=") + percentEncoded(text);
  return url;
}

std::string DesktopMailSink::plainTextOfHTML(std::string_view html) {
  std::string out;
  for (size_t i = 0; i < html.size(); ++i) {
    const char c = html[i];
    if (c == '<') {
      const size_t close = html.find('>', i);
      if (close == std::string_view::npos) {
        out.append(html.substr(i));
        break;
      }
      std::string_view tag = html.substr(i + 1, close - i - 1);
      size_t start = tag.find_first_not_of(" /");
      std::string name;
      for (size_t k = start; k < tag.size() && std::isalpha(static_cast<unsigned char>(tag[k]));
           ++k) {
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(tag[k])));
      }
      if (name == "br")
        out += '\n';
      i = close;
    } else if (c == '&') {
      const size_t semicolon = html.find(';', i);
      std::optional<std::string> decoded;
      if (semicolon != std::string_view::npos && semicolon - i <= 10)
        decoded = decodeEntity(html.substr(i + 1, semicolon - i - 1));
      if (decoded) {
        out += *decoded;
        i = semicolon;
      } else {
        out += c;
      }
    } else if (c == '\r' || c == '\n') {
      if (!(c == '\r' && i + 1 < html.size() && html[i + 1] == '\n'))
        out += ' ';
    } else {
      out += c;
    }
  }
  return out;
}

}  // namespace kit
