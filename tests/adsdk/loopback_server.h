#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

// An HTTP server on 127.0.0.1 in the test process: add routes to `server`,
// then start(). A stalling handler calls stall(), which returns on teardown.
class LoopbackServer {
 public:
  ~LoopbackServer() {
    stopping_ = true;
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

  std::string host() const { return "127.0.0.1:" + std::to_string(port_); }

  void stall() {
    for (int i = 0; i < 2000 && !stopping_; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }

  httplib::Server server;

 private:
  std::thread thread_;
  int port_ = 0;
  std::atomic<bool> stopping_ = false;
};
