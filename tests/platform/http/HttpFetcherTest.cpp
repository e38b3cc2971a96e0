#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QThread>
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>
#include <vector>

#include "WebServer.h"
#include "base/MediaClock.h"
#include "platform/qt/http/QtHttpFetcher.h"
#include "platform/qt/http/RequestPacing.h"

namespace veloria {
namespace {

using testing::HasSubstr;
using tests::Certificate;
using tests::makeCertificate;
using tests::TemporaryFolder;
using tests::WebServer;

constexpr std::size_t mebibyte = std::size_t{1} << 20;
constexpr double plenty = 60;  // seconds that nothing here needs

template <typename Condition>
bool runUntil(Condition condition, double seconds = plenty) {
  const double end = mediaTime() + seconds;
  while (!condition() && mediaTime() < end) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
  return condition();
}

/// Where an answer is kept.
struct Inbox {
  std::optional<Result<std::string>> answer;
  int calls = 0;

  HttpFetcher::Done slot() {
    return [this](Result<std::string> result) {
      EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
      answer = std::move(result);
      ++calls;
    };
  }
};

Result<std::string> fetch(const std::string& url, std::size_t cap = mebibyte, double seconds = plenty) {
  QtHttpFetcher fetcher;
  Inbox inbox;
  fetcher.get(url, cap, seconds, inbox.slot());
  EXPECT_EQ(inbox.calls, 0) << "only later";
  if (!runUntil([&] { return inbox.calls > 0; })) return Failure{"never answered"};
  return *inbox.answer;
}

nlohmann::json json(const Result<std::string>& answer) {
  if (!answer) return "failure: " + answer.error();
  return nlohmann::json::parse(*answer, nullptr, false);
}

std::string errorOf(const Result<std::string>& answer) {
  return answer ? "answered with " + answer->substr(0, 100) : answer.error();
}

class HttpFetcherTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    static int argc = 1;
    static char name[] = "test";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    folder = std::make_unique<TemporaryFolder>();
    server = std::make_unique<WebServer>();
  }

  static void TearDownTestSuite() {
    server.reset();
    folder.reset();
  }

  static bool serverSaw(const std::string& line) { return saw(*server, line); }

  static bool saw(const WebServer& some, const std::string& line) {
    const auto seen = json(fetch(some.url("/seen")));
    return std::find(seen.begin(), seen.end(), line) != seen.end();
  }

  static inline std::unique_ptr<TemporaryFolder> folder;
  static inline std::unique_ptr<WebServer> server;
};

TEST_F(HttpFetcherTest, BodiesArriveWholeWhateverTheStatus) {
  const std::vector<std::pair<std::string, nlohmann::json>> cases{
      {"/json", {{"answer", "well"}}},
      {"/status/404", {{"status", 404}}},
      {"/status/429", {{"status", 429}}},
      {"/status/500", {{"status", 500}}},
      {"/status/503", {{"status", 503}}},
      {"/login/Basic%20realm=x", {{"login", "Basic realm=x"}}},
      {"/login/Negotiate", {{"login", "Negotiate"}}},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(json(fetch(server->url(path))), expected) << path;
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, mebibyte}) {
    const auto answer = fetch(server->url("/bytes/" + std::to_string(size)));
    ASSERT_TRUE(answer) << answer.error();
    EXPECT_TRUE(*answer == std::string(size, 'x'));
  }
  EXPECT_EQ(errorOf(fetch(server->url("/to/"))), "answered with It has moved.")
      << "a redirect that leads nowhere is a page";
}

TEST_F(HttpFetcherTest, SaysNoMoreThanItMust) {
  QtHttpFetcher fetcher;
  for (int i = 0; i < 2; ++i) {
    Inbox inbox;
    fetcher.get(server->url("/echo"), mebibyte, plenty, inbox.slot());
    ASSERT_TRUE(runUntil([&] { return inbox.calls > 0; }));
    const auto headers = json(*inbox.answer);
    EXPECT_THAT(headers.value("user-agent", ""), testing::MatchesRegex("Veloria/[0-9.]+"));
    EXPECT_EQ(headers.value("accept-encoding", ""), "identity");
    for (const char* name : {"cookie", "authorization", "referer"}) EXPECT_FALSE(headers.contains(name)) << name;
  }
}

TEST_F(HttpFetcherTest, FollowsFiveRedirectsAndOnlyToWhereItMayAsk) {
  const nlohmann::json good{{"answer", "well"}};
  EXPECT_EQ(json(fetch(server->url("/redirect/5"))), good);
  EXPECT_EQ(json(fetch(server->url("/to/http://localhost:" + std::to_string(server->port()) + "/json"))), good);
  const std::vector<std::pair<std::string, std::string>> refused{
      {"/redirect/6", "sent on more than 5 times"},
      {"/loop", "sent on more than 5 times"},
      {"/to/file:///etc/passwd", "sent on, but the address is not valid"},
      {"/to/ftp://127.0.0.1/x", "sent on, but the address is neither https nor http on this computer"},
      {"/to/data:,hello", "sent on, but the address is not valid"},
      {"/to/http://192.0.2.1/", "sent on, but the address is neither https nor http on this computer"},
      {"/to///192.0.2.1/", "sent on, but the address is neither https nor http on this computer"},
      {"/to/http://a:b@127.0.0.1/", "sent on, but the address names a user"},
  };
  for (const auto& [path, reason] : refused) EXPECT_EQ(errorOf(fetch(server->url(path))), reason) << path;
}

TEST_F(HttpFetcherTest, RefusesMoreThanTheCapWithoutReadingItAll) {
  EXPECT_EQ(errorOf(fetch(server->url("/bytes/1001"), 1000)), "the answer has more than 1000 bytes");
  EXPECT_EQ(errorOf(fetch(server->url("/bytes/1"), 0)), "the answer has more than 0 bytes");
  for (const char* path : {"/big", "/endless"}) {
    EXPECT_EQ(errorOf(fetch(server->url(path))), "the answer has more than 1048576 bytes") << path;
    EXPECT_TRUE(runUntil([&] { return serverSaw("closed " + std::string(path)); })) << path;
  }
}

TEST_F(HttpFetcherTest, UnpacksNothing) {
  EXPECT_THAT(errorOf(fetch(server->url("/bomb"))), HasSubstr("compressed"));
}

TEST_F(HttpFetcherTest, GivesUpAtTheDeadlineWhateverTrickles) {
  for (const char* path : {"/silent", "/drip"}) {
    EXPECT_EQ(errorOf(fetch(server->url(path), mebibyte, 0.25)), "no answer within 0.25 s") << path;
    EXPECT_TRUE(runUntil([&] { return serverSaw("closed " + std::string(path)); })) << path;
  }
  EXPECT_EQ(errorOf(fetch(server->url("/silent"), mebibyte, -1)), "no answer within 0.001 s");
}

TEST_F(HttpFetcherTest, ABrokenAnswerIsAFailure) {
  for (const char* path : {"/half", "/nothing", "/garbage"}) {
    const auto answer = fetch(server->url(path));
    ASSERT_FALSE(answer) << path << " " << errorOf(answer);
    EXPECT_THAT(answer.error(), testing::Not(testing::AnyOf("", HasSubstr("no answer")))) << path;
  }
}

TEST_F(HttpFetcherTest, ACutOffBodyInChunksIsNeverMoreThanWasSent) {
  const auto answer = fetch(server->url("/chunk"));
  EXPECT_EQ(answer ? *answer : "[1,", "[1,");
}

TEST_F(HttpFetcherTest, SaysWhenNobodyListens) {
  QTcpServer closed;
  ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
  const auto port = std::to_string(closed.serverPort());
  closed.close();
  EXPECT_EQ(errorOf(fetch("http://127.0.0.1:" + port + "/")), "Connection refused");
}

TEST_F(HttpFetcherTest, AsksForNothingThatIsNotAllowed) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"http://192.0.2.1/", "the address is neither https nor http on this computer"},
      {"file:///etc/hostname", "the address is not valid"},
      {"https://a:b@192.0.2.1/", "the address names a user"},
      {"", "the address is not valid"},
      {"\xff", "the address is not valid"},
  };
  for (const auto& [url, error] : cases) EXPECT_EQ(errorOf(fetch(url)), error) << url;
}

TEST_F(HttpFetcherTest, CancelsWithoutAWordWhenItIsDestroyed) {
  Inbox inbox;
  {
    QtHttpFetcher fetcher;
    fetcher.get(server->url("/silent?destroyed"), mebibyte, plenty, inbox.slot());
    fetcher.get(server->url("/json"), mebibyte, plenty, inbox.slot());  // still held back
    ASSERT_TRUE(runUntil([&] { return serverSaw("GET /silent?destroyed HTTP/1.1"); }));
  }
  EXPECT_TRUE(runUntil([&] { return serverSaw("closed /silent?destroyed"); }));
  EXPECT_EQ(inbox.calls, 0);
  QtHttpFetcher unused;
}

TEST_F(HttpFetcherTest, AnAnswerMayDestroyItsFetcher) {
  for (const char* path : {"/json", "/silent", "http://192.0.2.1/"}) {
    auto fetcher = std::make_unique<QtHttpFetcher>();
    int calls = 0;
    const std::string url = path[0] == '/' ? server->url(path) : path;
    const double seconds = url.ends_with("silent") ? 0.1 : plenty;
    fetcher->get(url, mebibyte, seconds, [&, text = std::string(100, 'x')](const auto&) {
      fetcher.reset();
      calls += static_cast<int>(text.size());
    });
    EXPECT_TRUE(runUntil([&] { return calls > 0; })) << path;
    QCoreApplication::processEvents();
    EXPECT_EQ(calls, 100) << path;
  }
}

TEST_F(HttpFetcherTest, HoldsBackWhoAsksAgainAtOnce) {
  QtHttpFetcher fetcher;
  std::vector<double> answered;
  std::function<void()> ask = [&] {
    fetcher.get(server->url("/status/429"), mebibyte, plenty, [&](const Result<std::string>& answer) {
      EXPECT_TRUE(answer);
      answered.push_back(mediaTime());
      if (answered.size() < 2) ask();
    });
  };
  const double start = mediaTime();
  ask();
  ASSERT_TRUE(runUntil([&] { return answered.size() == 2; }));
  EXPECT_GE(answered[1] - start, RequestPacing::shortestGap * 0.95);
}

TEST_F(HttpFetcherTest, TheSystemsProxyIsAskedForTheOutsideOnly) {
  const std::string proxy = server->url("");
  for (const char* name : {"http_proxy", "https_proxy"}) ASSERT_EQ(setenv(name, proxy.c_str(), 1), 0);
  EXPECT_FALSE(fetch("https://weather.invalid/"));
  EXPECT_TRUE(serverSaw("CONNECT weather.invalid:443 HTTP/1.1"));
  for (const char* name : {"http_proxy", "https_proxy"}) ASSERT_EQ(setenv(name, "http://127.0.0.1:1", 1), 0);
  EXPECT_EQ(json(fetch(server->url("/redirect/1"))), (nlohmann::json{{"answer", "well"}}));
  for (const char* name : {"http_proxy", "https_proxy"}) unsetenv(name);
}

class HttpsTest : public HttpFetcherTest {
 protected:
  static void trust(const std::vector<Certificate>& certificates) {
    auto configuration = QSslConfiguration::defaultConfiguration();
    QList<QSslCertificate> authorities;
    for (const auto& certificate : certificates) {
      authorities += QSslCertificate::fromPath(QString::fromStdString(certificate.file));
    }
    ASSERT_EQ(authorities.size(), static_cast<qsizetype>(certificates.size()));
    configuration.setCaCertificates(authorities);
    QSslConfiguration::setDefaultConfiguration(configuration);
  }

  void TearDown() override { QSslConfiguration::setDefaultConfiguration(original); }

  const QSslConfiguration original = QSslConfiguration::defaultConfiguration();
  const Certificate own = makeCertificate(*folder, "own", "DNS:localhost,IP:127.0.0.1");
};

TEST_F(HttpsTest, OnlyAGoodCertificateWillDo) {
  const WebServer secure(&own);
  const Certificate other = makeCertificate(*folder, "other", "DNS:weather.example");
  const WebServer stranger(&other);

  EXPECT_THAT(errorOf(fetch(secure.url("/json"))), HasSubstr("self-signed")) << "nobody vouches for it";
  trust({own, other});
  EXPECT_EQ(json(fetch(secure.url("/json"))), (nlohmann::json{{"answer", "well"}}));
  EXPECT_THAT(errorOf(fetch(stranger.url("/json"))), HasSubstr("host name")) << "it is somebody else's";
  trust({other});
  EXPECT_THAT(errorOf(fetch(secure.url("/json"))), HasSubstr("SSL")) << "again nobody does";
  EXPECT_FALSE(fetch("https://127.0.0.1:" + std::to_string(server->port()) + "/json")) << "no TLS at all";
}

TEST_F(HttpsTest, NothingLeadsFromHttpsToHttp) {
  const WebServer secure(&own);
  trust({own});
  const std::string fine = secure.url("/redirect/2");
  EXPECT_EQ(json(fetch(server->url("/to/" + fine))), (nlohmann::json{{"answer", "well"}}));
  EXPECT_EQ(errorOf(fetch(secure.url("/to/" + server->url("/json?downgraded")))), "sent on from https to http");
  EXPECT_FALSE(serverSaw("GET /json?downgraded HTTP/1.1"));
}

TEST_F(HttpsTest, AHeaderWithoutEndIsGivenUp) {
  const WebServer secure(&own);
  trust({own});
  EXPECT_EQ(errorOf(fetch(secure.url("/header"), mebibyte, 0.25)), "no answer within 0.25 s");
  EXPECT_TRUE(runUntil([&] { return saw(secure, "closed /header"); }));
}

}  // namespace
}  // namespace veloria
