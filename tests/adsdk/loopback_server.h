#pragma once

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

// An HTTP server on 127.0.0.1 in the test process. Add routes to `server`,
// then start(). A handler that must stall calls stall(), which returns once
// the server is stopping, so teardown never waits on it.
class LoopbackServer {
 public:
  ~LoopbackServer() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      released_ = true;
    }
    wake_.notify_all();
    server.stop();
    if (thread_.joinable())
      thread_.join();
  }

  void start() {
    port_ = server.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running())
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }

  // "127.0.0.1:port"
  std::string host() const { return "127.0.0.1:" + std::to_string(port_); }
  std::string url(const std::string& path) const { return "http://" + host() + path; }

  void stall() {
    std::unique_lock<std::mutex> lock(mutex_);
    wake_.wait_for(lock, std::chrono::seconds(20), [this] { return released_; });
  }

  httplib::Server server;

 private:
  std::thread thread_;
  int port_ = 0;
  std::mutex mutex_;
  std::condition_variable wake_;
  bool released_ = false;
};
