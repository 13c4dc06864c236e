// The session against a real server on the loopback interface.

#include "platform/net/url_session.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <thread>

#include "support/temporary_folder.h"

namespace corvane {
namespace {

using Code = URLError::Code;
constexpr std::chrono::seconds deadline(20);

/// A server that answers on purpose in all the ways that servers have.
class Server {
 public:
  Server() {
    server_.Get("/plain", [this](const auto&, auto& answer) {
      ++plain;
      answer.set_content("plain", "text/plain");
    });
    server_.Get("/headers", [](const httplib::Request& request, auto& answer) {
      answer.set_content(
          request.get_header_value("User-Agent") + "|" + request.get_header_value("X-Own"),
          "text/plain");
    });
    server_.Get("/set", [](const auto&, auto& answer) {
      answer.set_header("Set-Cookie", "A1=crumb; Path=/; HttpOnly");
      answer.set_redirect("/cookie");
    });
    server_.Get("/cookie", [](const httplib::Request& request, auto& answer) {
      answer.set_content(request.get_header_value("Cookie"), "text/plain");
    });
    server_.Get("/loop", [](const auto&, auto& answer) { answer.set_redirect("/loop"); });
    server_.Get("/elsewhere",
                [](const auto&, auto& answer) { answer.set_redirect("file:///etc/passwd"); });
    server_.Get(R"(/status/(\d+))", [](const httplib::Request& request, auto& answer) {
      answer.status = std::stoi(request.matches[1]);
      answer.set_header("Retry-After", "7");
      answer.set_content("refused", "text/plain");
    });
    server_.Get("/slow", [this](const auto&, auto& answer) {
      ++slow;
      std::unique_lock lock(mutex_);
      released_.wait_for(lock, deadline, [this] { return isReleased_; });
      answer.set_content("late", "text/plain");
    });
    server_.Get("/trickle", [this](const auto&, auto& answer) {
      // Ten bytes, one at a time.
      mostTrickles = std::max(mostTrickles.load(), ++trickles_);
      answer.set_content_provider(
          10, "text/plain",
          [](std::size_t, std::size_t, httplib::DataSink& sink) {
            std::this_thread::sleep_for(std::chrono::milliseconds(120));
            return sink.write("x", 1);
          },
          [this](bool) { --trickles_; });
    });
    server_.Post("/echo", [](const httplib::Request& request, auto& answer) {
      answer.set_content(request.body, "text/plain");
    });
    server_.Get("/large", [](const auto&, auto& answer) {
      answer.set_content(std::string(1 << 20, 'x'), "text/plain");
    });
    server_.new_task_queue = [] { return new httplib::ThreadPool(32); };
    port = server_.bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    while (!server_.is_running()) {
      std::this_thread::yield();
    }
  }
  ~Server() {
    release();
    server_.stop();
    thread_.join();
  }

  /// Lets the slow answers go.
  void release() {
    const std::lock_guard lock(mutex_);
    isReleased_ = true;
    released_.notify_all();
  }

  [[nodiscard]] std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port) + path;
  }

  int port = 0;
  std::atomic<int> plain = 0;
  std::atomic<int> slow = 0;
  std::atomic<int> mostTrickles = 0;

 private:
  std::atomic<int> trickles_ = 0;
  httplib::Server server_;
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable released_;
  bool isReleased_ = false;
};

/// A server that takes one connection, says `answer` whatever it is asked, and hangs up.
class RudeServer {
 public:
  explicit RudeServer(std::string answer) : answer_(std::move(answer)) {
    socket_ = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr*>(&address), length), 0);
    EXPECT_EQ(::getsockname(socket_, reinterpret_cast<sockaddr*>(&address), &length), 0);
    EXPECT_EQ(::listen(socket_, 1), 0);
    url = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    thread_ = std::thread([this] {
      const int client = ::accept(socket_, nullptr, nullptr);
      char request[4096];
      EXPECT_GT(::read(client, request, sizeof request), 0);
      EXPECT_EQ(::write(client, answer_.data(), answer_.size()),
                static_cast<ssize_t>(answer_.size()));
      ::close(client);
    });
  }
  ~RudeServer() {
    thread_.join();
    ::close(socket_);
  }

  std::string url;

 private:
  const std::string answer_;
  int socket_;
  std::thread thread_;
};

/// A server that can be trusted, on a certificate of its own making, and that sends some of its
/// visitors elsewhere.
class SecureServer {
 public:
  /// Writes the certificate to `file`, for those who are to trust it.
  SecureServer(const std::filesystem::path& file, std::map<std::string, std::string> redirects) {
    makeCertificate();
    FILE* const out = std::fopen(file.c_str(), "w");
    EXPECT_EQ(PEM_write_X509(out, certificate_.get()), 1);
    std::fclose(out);
    server_ = std::make_unique<httplib::SSLServer>(certificate_.get(), key_.get());
    server_->Get("/plain",
                 [](const auto&, auto& answer) { answer.set_content("secret", "text/plain"); });
    for (const auto& [path, target] : redirects) {
      server_->Get(path,
                   [target = target](const auto&, auto& answer) { answer.set_redirect(target); });
    }
    port_ = server_->bind_to_any_port("127.0.0.1");
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    while (!server_->is_running()) {
      std::this_thread::yield();
    }
  }
  ~SecureServer() {
    server_->stop();
    thread_.join();
  }

  [[nodiscard]] std::string url(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(port_) + path;
  }

 private:
  void makeCertificate() {
    X509* const certificate = certificate_.get();
    X509_set_version(certificate, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -3600);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 3600);
    X509_set_pubkey(certificate, key_.get());
    X509_NAME* const name = X509_get_subject_name(certificate);
    const auto* text = reinterpret_cast<const unsigned char*>("test");
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    X509_EXTENSION* const host =
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1");
    X509_add_ext(certificate, host, -1);
    X509_EXTENSION_free(host);
    EXPECT_GT(X509_sign(certificate, key_.get(), EVP_sha256()), 0);
  }

  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{EVP_EC_gen("P-256"), &EVP_PKEY_free};
  std::unique_ptr<X509, decltype(&X509_free)> certificate_{X509_new(), &X509_free};
  std::unique_ptr<httplib::SSLServer> server_;
  int port_ = 0;
  std::thread thread_;
};

class URLSessionTest : public ::testing::Test {
 protected:
  Result<HTTPResponse> get(URLRequest request) {
    auto promise = std::make_shared<std::promise<Result<HTTPResponse>>>();
    auto future = promise->get_future();
    session->send(std::move(request), [promise](Result<HTTPResponse> result) {
      promise->set_value(std::move(result));
    });
    if (future.wait_for(deadline) != std::future_status::ready) {
      ADD_FAILURE() << "no answer came";
      std::abort();
    }
    return future.get();
  }
  Result<HTTPResponse> get(const std::string& path) { return get(URLRequest{server.url(path)}); }

  static Code codeOf(const Result<HTTPResponse>& result) {
    return result ? Code::other : dynamic_cast<const URLError&>(*result.error()).code;
  }

  Server server;
  std::shared_ptr<DispatchQueue> queue = DispatchQueue::serial("answers");
  std::unique_ptr<URLSession> session =
      std::make_unique<URLSession>(queue, HTTPHeaders{{"User-Agent", "Test/1"}});
};

TEST_F(URLSessionTest, DeliversAnswersWhateverTheirStatus) {
  const auto plain = get("/plain");
  ASSERT_TRUE(plain);
  EXPECT_EQ(plain->statusCode, 200);
  EXPECT_EQ(plain->body, "plain");
  EXPECT_EQ(headerValue(plain->headers, "CONTENT-type"), "text/plain");
  for (const int status : {401, 404, 429, 500}) {
    const auto refused = get("/status/" + std::to_string(status));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->statusCode, status);
    EXPECT_EQ(refused->body, "refused");
    EXPECT_EQ(headerValue(refused->headers, "Retry-After"), "7");
  }
  URLRequest post{server.url("/echo")};
  post.method = "POST";
  post.body = std::string("a\0b", 3);
  EXPECT_EQ(get(post)->body, post.body);
}

TEST_F(URLSessionTest, CarriesCookiesFromOneRequestToTheNext) {
  const auto first = get("/set");
  ASSERT_TRUE(first);
  EXPECT_EQ(first->url, server.url("/cookie"));
  EXPECT_EQ(first->body, "A1=crumb");
  EXPECT_EQ(get("/cookie")->body, "A1=crumb");
  EXPECT_EQ(session->cookies(), (std::vector<Cookie>{{"127.0.0.1", "/", "A1", "crumb"}}));
  session = std::make_unique<URLSession>(queue);
  EXPECT_EQ(get("/cookie")->body, "");
}

TEST_F(URLSessionTest, LetsARequestReplaceTheHeadersOfTheSession) {
  EXPECT_EQ(get("/headers")->body, "Test/1|");
  URLRequest request{server.url("/headers")};
  request.headers = {{"user-agent", "Other"}, {"X-Own", "1"}};
  EXPECT_EQ(get(request)->body, "Other|1");
}

TEST_F(URLSessionTest, SaysWhyThereIsNoAnswer) {
  EXPECT_EQ(codeOf(get(URLRequest{"no url"})), Code::badURL);
  EXPECT_EQ(codeOf(get(URLRequest{"file:///etc/passwd"})), Code::badURL);
  EXPECT_EQ(codeOf(get("/elsewhere")), Code::badURL);
  EXPECT_EQ(codeOf(get(URLRequest{"http://127.0.0.1:1/"})), Code::cannotConnect);
  EXPECT_EQ(codeOf(get("/loop")), Code::tooManyRedirects);
  URLRequest large{server.url("/large")};
  large.maximumBodySize = 1000;
  EXPECT_EQ(codeOf(get(large)), Code::tooLarge);
  URLRequest slow{server.url("/slow")};
  slow.timeoutSeconds = 0.05;
  EXPECT_EQ(codeOf(get(slow)), Code::timedOut);
  URLRequest secure{"https://127.0.0.1:" + std::to_string(server.port) + "/plain"};
  EXPECT_EQ(codeOf(get(secure)), Code::secureConnectionFailed);
}

TEST_F(URLSessionTest, NeverLeavesASecureConnectionForAnOpenOne) {
  const testing::TemporaryFolder folder;
  const SecureServer secure(
      folder / "authorities.pem",
      {{"/to-open", server.url("/plain")}, {"/to-secure", "/plain"}, {"/by-detour", "/to-open"}});
  EXPECT_EQ(codeOf(get(URLRequest{secure.url("/plain")})), Code::secureConnectionFailed)
      << "nobody vouches for it";

  setenv("SSL_CERT_FILE", (folder / "authorities.pem").c_str(), 1);
  session = std::make_unique<URLSession>(queue);
  unsetenv("SSL_CERT_FILE");
  const auto trusted = get(URLRequest{secure.url("/to-secure")});
  ASSERT_TRUE(trusted) << *trusted.error();
  EXPECT_EQ(trusted->body, "secret");
  EXPECT_EQ(codeOf(get(URLRequest{secure.url("/to-open")})), Code::badURL);
  EXPECT_EQ(codeOf(get(URLRequest{secure.url("/by-detour")})), Code::badURL);
  EXPECT_EQ(server.plain, 0) << "nothing has been sent in the open";
}

/// Busy is not timed out: of twelve that are asked together some wait for their turn, and each
/// takes longer than it may stand still.
TEST_F(URLSessionTest, CountsOnlyTheTimeWithoutProgress) {
  URLRequest trickle{server.url("/trickle")};
  trickle.timeoutSeconds = 1;
  std::atomic<int> ended = 0;
  // Eight connections, one by one: the server's own queue of new ones is short.
  for (int i = 0; i < 8; ++i) {
    session->send(URLRequest{server.url("/slow")}, [&](const auto&) { ++ended; });
    while (server.slow <= i) {
      std::this_thread::yield();
    }
  }
  server.release();
  EXPECT_TRUE(MainLoop::runUntil([&] { return ended == 8; }, deadline));

  ended = 0;
  for (int i = 0; i < 12; ++i) {
    session->send(trickle, [&](const Result<HTTPResponse>& result) {
      EXPECT_TRUE(result) << static_cast<int>(codeOf(result));
      ++ended;
    });
  }
  EXPECT_TRUE(MainLoop::runUntil([&] { return ended == 12; }, deadline));
  EXPECT_LE(server.mostTrickles, 8);
}

TEST_F(URLSessionTest, NoticesAConnectionThatIsCutOff) {
  RudeServer silent("");
  EXPECT_EQ(codeOf(get(URLRequest{silent.url})), Code::connectionLost);
  RudeServer truncated("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"half\":");
  EXPECT_EQ(codeOf(get(URLRequest{truncated.url})), Code::connectionLost);
}

TEST_F(URLSessionTest, CancelsWhatIsUnderWayAndNothingElse) {
  std::promise<Result<HTTPResponse>> promise;
  const auto task =
      session->send(URLRequest{server.url("/slow")},
                    [&](Result<HTTPResponse> result) { promise.set_value(std::move(result)); });
  while (server.slow == 0) {
    std::this_thread::yield();
  }
  task.cancel();
  task.cancel();
  EXPECT_EQ(codeOf(promise.get_future().get()), Code::cancelled);
  EXPECT_TRUE(get("/plain"));
}

TEST_F(URLSessionTest, EndsEveryRequestOnceAlsoWhenItIsDestroyed) {
  std::atomic<int> answered = 0;
  std::atomic<int> cancelled = 0;
  const auto count = [&](Result<HTTPResponse> result) {
    ++(result ? answered : cancelled);
    EXPECT_TRUE(queue->isCurrent());
  };
  std::vector<std::jthread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int i = 0; i < 25; ++i) {
        session->send(URLRequest{server.url("/plain")}, count);
      }
    });
  }
  threads.clear();
  EXPECT_TRUE(MainLoop::runUntil([&] { return answered == 100; }, deadline));
  std::vector<URLSession::Task> tasks;
  for (int i = 0; i < 10; ++i) {
    tasks.push_back(session->send(URLRequest{server.url("/slow")}, count));
  }
  session.reset();
  queue->sync([] {});
  EXPECT_EQ(cancelled, 10);
  tasks.front().cancel();
}

}  // namespace
}  // namespace corvane
