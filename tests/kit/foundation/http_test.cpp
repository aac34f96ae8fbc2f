#include "kit/foundation/http.h"
#include "kit/backends/desktop/curl_http_client.h"
#include "kit/backends/desktop/curl_http_fetcher.h"
#include "kit/foundation/run_loop.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace kit {
namespace {

using namespace std::chrono_literals;

// A loopback server with one route per misbehaviour. Handlers that stall
// wait for the fixture's release, so teardown never waits on them.
class HttpTest : public ::testing::Test {
 protected:
  void SetUp() override {
    server.Get("/hello", [](const httplib::Request&, httplib::Response& res) {
      res.set_content("hello there", "text/plain");
    });
    server.Get("/hang", [this](const httplib::Request&, httplib::Response& res) {
      waitForRelease(10s);
      res.set_content("too late", "text/plain");
    });
    server.Get("/endless", [this](const httplib::Request&, httplib::Response& res) {
      res.set_chunked_content_provider("text/plain",
                                       [this](size_t offset, httplib::DataSink& sink) {
                                         static const std::string block(16 * 1024, 'x');
                                         if (offset > (256u << 20) || waitForRelease())
                                           return false;
                                         return sink.write(block.data(), block.size());
                                       });
    });
    server.Get("/loop", [this](const httplib::Request&, httplib::Response& res) {
      ++loops;
      res.set_redirect("/loop");
    });
    server.Get("/to-file", [](const httplib::Request&, httplib::Response& res) {
      res.status = 302;
      res.set_header("Location", "file:///etc/passwd");
    });
    server.set_keep_alive_max_count(1);
    port = server.bind_to_any_port("127.0.0.1");
    ASSERT_GT(port, 0);
    thread = std::thread([this] { server.listen_after_bind(); });
    while (!server.is_running())
      std::this_thread::sleep_for(1ms);
  }

  void TearDown() override {
    {
      std::lock_guard<std::mutex> lock(mutex);
      release = true;
    }
    wake.notify_all();
    server.stop();
    if (thread.joinable())
      thread.join();
  }

  // True once released; otherwise waits up to `most`.
  bool waitForRelease(std::chrono::milliseconds most = 0ms) {
    std::unique_lock<std::mutex> lock(mutex);
    return wake.wait_for(lock, most, [this] { return release; });
  }

  HttpResponse get(const std::string& path, HttpRequest request = {}) {
    request.url = "http://127.0.0.1:" + std::to_string(port) + path;
    return client.get(request);
  }

  httplib::Server server;
  std::thread thread;
  int port = 0;
  std::mutex mutex;
  std::condition_variable wake;
  bool release = false;
  std::atomic<int> loops{0};
  CurlHttpClient client;

  // The asynchronous side: answers arrive through the run loop's passes.
  struct Answers {
    std::vector<HttpResponse> responses;
    std::vector<std::thread::id> threads;
  };

  std::unique_ptr<HttpFetch> fetch(HttpFetcher& by, const std::string& path, Answers& answers,
                                   HttpRequest request = {}) {
    request.url = "http://127.0.0.1:" + std::to_string(port) + path;
    return by.start(request, [&answers](HttpResponse r) {
      answers.responses.push_back(std::move(r));
      answers.threads.push_back(std::this_thread::get_id());
    });
  }

  // Runs passes of the run loop until `answers` holds one or `most` passed.
  void pumpUntilAnswered(const Answers& answers, std::chrono::milliseconds most = 5s) {
    const auto end = std::chrono::steady_clock::now() + most;
    while (answers.responses.empty() && std::chrono::steady_clock::now() < end) {
      runLoop.runOnce();
      std::this_thread::sleep_for(2ms);
    }
  }

  ManualClock clock;
  RunLoop runLoop{clock};
  CurlHttpFetcher fetcher{runLoop};
};

TEST_F(HttpTest, OnlyASuccessfulReplyIsOkAndErrorsSayWhy) {
  HttpResponse r = get("/hello");
  EXPECT_TRUE(r.ok) << r.error;
  EXPECT_EQ(r.body, "hello there");
  EXPECT_TRUE(r.error.empty());

  r = get("/missing");  // no such route
  EXPECT_FALSE(r.ok);
  EXPECT_EQ(r.status, 404);
  EXPECT_NE(r.error.find("404"), std::string::npos) << r.error;
}

TEST_F(HttpTest, ASilentServerRunsIntoTheTimeout) {
  HttpRequest request;
  request.totalTimeoutMs = 300;
  auto start = std::chrono::steady_clock::now();
  HttpResponse r = get("/hang", request);
  EXPECT_FALSE(r.ok);
  EXPECT_NE(r.error.find("timed out"), std::string::npos) << r.error;
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);  // a hang bound, not a speed target
}

TEST_F(HttpTest, BodiesOverTheCapAreCutOff) {
  HttpRequest request;
  request.maxBodyBytes = 64 * 1024;
  HttpResponse r = get("/endless", request);
  EXPECT_FALSE(r.ok);
  EXPECT_TRUE(r.body.empty());
  EXPECT_NE(r.error.find("larger than 65536"), std::string::npos) << r.error;
  request.maxBodyBytes = 11;
  EXPECT_TRUE(get("/hello", request).ok);  // exactly at the cap is fine
}

TEST_F(HttpTest, RedirectLoopsStopAndLocalFilesAreRefused) {
  HttpRequest request;
  request.maxRedirects = 3;
  EXPECT_FALSE(get("/loop", request).ok);
  EXPECT_LE(loops.load(), 4);

  HttpResponse r = get("/to-file");
  EXPECT_FALSE(r.ok);
  EXPECT_EQ(r.body.find("root:"), std::string::npos);
}

TEST_F(HttpTest, BadUrlsAndClosedPortsFailAtOnce) {
  httplib::Server idle;  // bound but never listening: connections are refused
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(idle.bind_to_any_port("127.0.0.1"));
  for (const std::string url : {"file:///etc/passwd", "ftp://127.0.0.1/", "",
                                "http://127.0.0.1/\r\nX: y", "127.0.0.1/", closed.c_str()}) {
    HttpRequest request;
    request.url = url;
    HttpResponse r = client.get(request);
    EXPECT_FALSE(r.ok) << url;
    EXPECT_EQ(r.status, 0) << url;
    EXPECT_FALSE(r.error.empty()) << url;
  }
}

TEST_F(HttpTest, AFetchAnswersOnceOnTheRunLoopWithTheLimitsOfAGet) {
  Answers hello, large, refused;
  auto a = fetch(fetcher, "/hello", hello);
  HttpRequest capped;
  capped.maxBodyBytes = 4096;
  auto b = fetch(fetcher, "/endless", large, capped);
  HttpRequest noRedirects;
  noRedirects.maxRedirects = 0;
  auto c = fetch(fetcher, "/loop", refused, noRedirects);
  EXPECT_TRUE(hello.responses.empty());  // never during start()
  pumpUntilAnswered(hello);
  pumpUntilAnswered(large);
  pumpUntilAnswered(refused);
  for (int i = 0; i < 20; ++i)
    runLoop.runOnce();

  ASSERT_EQ(hello.responses.size(), 1u);
  EXPECT_TRUE(hello.responses[0].ok) << hello.responses[0].error;
  EXPECT_EQ(hello.responses[0].body, "hello there");
  EXPECT_EQ(hello.threads[0], std::this_thread::get_id());
  ASSERT_EQ(large.responses.size(), 1u);
  EXPECT_NE(large.responses[0].error.find("larger than 4096"), std::string::npos);
  ASSERT_EQ(refused.responses.size(), 1u);
  EXPECT_FALSE(refused.responses[0].ok);
}

TEST_F(HttpTest, ADeadOrSilentServerNeverHoldsUpAPass) {
  Answers dead, silent;
  HttpRequest request;
  request.url = "http://127.0.0.1:1/nothing";
  auto a = fetcher.start(request, [&dead](HttpResponse r) { dead.responses.push_back(r); });
  HttpRequest brief;
  brief.totalTimeoutMs = 300;
  const auto start = std::chrono::steady_clock::now();
  auto b = fetch(fetcher, "/hang", silent, brief);
  for (int i = 0; i < 5; ++i)
    runLoop.runOnce();
  EXPECT_LT(std::chrono::steady_clock::now() - start,
            250ms);  // a hang bound: the server waits 10 s
  pumpUntilAnswered(dead);
  pumpUntilAnswered(silent);
  ASSERT_EQ(dead.responses.size(), 1u);
  EXPECT_FALSE(dead.responses[0].ok);
  ASSERT_EQ(silent.responses.size(), 1u);
  EXPECT_NE(silent.responses[0].error.find("timed out"), std::string::npos);
}

TEST_F(HttpTest, ADroppedFetchOrFetcherNeverAnswersNorWaits) {
  Answers dropped, orphaned;
  fetch(fetcher, "/hello", dropped).reset();
  const auto start = std::chrono::steady_clock::now();
  {
    CurlHttpFetcher brief(runLoop);
    auto handle = fetch(brief, "/hang", orphaned);
  }  // the transfer is still stalled on the server
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);  // a hang bound: the server waits 10 s
  const auto end = std::chrono::steady_clock::now() + 300ms;
  while (std::chrono::steady_clock::now() < end) {
    runLoop.runOnce();
    std::this_thread::sleep_for(5ms);
  }
  EXPECT_TRUE(dropped.responses.empty());
  EXPECT_TRUE(orphaned.responses.empty());
}

}  // namespace
}  // namespace kit
