#include <gtest/gtest.h>
#include <sys/resource.h>

#include <thread>

#include "capture/framing/length_framer.h"
#include "capture/transport/http_body.h"
#include "sockets.h"
#include "transport_run.h"

namespace {

using namespace capture;

TEST(TcpListen, TakesLinesOfEveryPeerThatIsAllowed) {
  const std::uint16_t port = freePort();
  TransportRun run(ListenSettings{"127.0.0.1", port, {"10.0.0.0/8", "127.0.0.1"}});
  EXPECT_FALSE(run.sink->isConnected);
  run.rest(std::chrono::milliseconds(20));
  Socket one = Socket::connect(port);
  one.send("a\r\nb");
  ASSERT_TRUE(run.untilLines(1));
  EXPECT_EQ("connected from 127.0.0.1", run.sink->state);
  one.send("c\n");
  ASSERT_TRUE(run.untilLines(2));
  const Socket two = Socket::connect(port);
  two.send("d\re\r");
  ASSERT_TRUE(run.untilLines(4));
  EXPECT_EQ("a|bc|d|e|", run.sink->all());
  EXPECT_EQ(1, run.sink->breaks) << "the second connection came beside the first";
  one.send("the end without a line end");
  one = Socket();
  EXPECT_TRUE(run.untilLines(5));
}

TEST(TcpListen, RefusesOthers) {
  const std::uint16_t port = freePort();
  TransportRun run(ListenSettings{"127.0.0.1", port, {"192.0.2.10"}});
  run.rest(std::chrono::milliseconds(20));
  const Socket peer = Socket::connect(port);
  peer.send("a\n");
  EXPECT_TRUE(run.until([&] { return run.sink->state.starts_with("refused 127.0.0.1"); }));
  EXPECT_EQ("", peer.receive());
  EXPECT_EQ("", run.sink->all());
}

TEST(TcpListen, AThousandConnectionsAndASlowOneAreServedTogether) {
  constexpr int kConnections = 1000;
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;  // both ends of each connection are in this process
  setrlimit(RLIMIT_NOFILE, &limit);
  const std::uint16_t port = freePort();
  TransportRun run(ListenSettings{"127.0.0.1", port, {}});
  run.rest(std::chrono::milliseconds(20));
  const Socket slow = Socket::connect(port);
  std::vector<Socket> peers;
  const std::string line = "slow line\n";
  for (int i = 0; i < kConnections; ++i) {
    peers.push_back(Socket::connect(port));
    if (!peers.back().isOpen()) GTEST_SKIP() << "the system gives this test no more than " << i << " connections";
    peers.back().send("line " + std::to_string(i) + "\nhalf");
    if (i % 100 == 0) slow.send(line.substr(static_cast<std::size_t>(i / 100), 1));
    run.rest(std::chrono::milliseconds(0));
  }
  EXPECT_TRUE(run.untilLines(kConnections + 1));
  EXPECT_NE(std::string::npos, run.sink->all().find("slow line|"));
  EXPECT_TRUE(run.stop());
  EXPECT_EQ(4U * kConnections, run.sink->lostBytes) << "halves of lines are no lines";
}

// What the peer's system believes that we have is taken before the connection is closed.
TEST(TcpListen, TakesWhatHasArrivedWhenItIsStopped) {
  const std::uint16_t port = freePort();
  TransportRun run(ListenSettings{"127.0.0.1", port, {}});
  run.rest(std::chrono::milliseconds(20));
  const Socket peer = Socket::connect(port);
  peer.send("a\n");
  ASSERT_TRUE(run.untilLines(1));
  peer.send("b\nc\n");
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_TRUE(run.stop());
  EXPECT_EQ("a|b|c|", run.sink->all());
}

TEST(TcpConnect, LogsInAndComesBackAfterALoss) {
  const Socket server = Socket::listen();
  TransportRun run(ConnectSettings{"localhost", server.port(), {{"-", "SMDR\r\n"}, {"Password:", "PCCSMDR\r\n"}}});
  for (int round = 1; round <= 2; ++round) {
    ASSERT_TRUE(run.until([&] { return server.isReadable(); }));
    const Socket exchange = server.accept();
    exchange.send("\r\n-");
    ASSERT_TRUE(run.until([&] { return exchange.isReadable(); }));
    EXPECT_EQ("SMDR\r\n", exchange.receive());
    exchange.send("Password: ");
    ASSERT_TRUE(run.until([&] { return exchange.isReadable(); }));
    EXPECT_EQ("PCCSMDR\r\n", exchange.receive());
    exchange.send("line " + std::to_string(round) + "\r\n");
    ASSERT_TRUE(run.untilLines(static_cast<std::size_t>(round)));
    EXPECT_EQ(round, run.sink->breaks);
  }
  EXPECT_EQ(" line 1| line 2|", run.sink->all()) << "the blank after the question for the password is the line's";
  EXPECT_TRUE(run.until([&] { return !run.sink->isConnected; }));
  EXPECT_NE(std::string::npos, run.sink->state.find("the connection has ended"));
}

TEST(Mitel5000, LogsInByBytesAndTakesRecordsByTheirLength) {
  using namespace std::string_literals;
  const Socket server = Socket::listen();
  TransportRun run(Mitel5000Settings{"127.0.0.1", server.port(), "12345678"});
  ASSERT_TRUE(run.until([&] { return server.isReadable(); }));
  Socket exchange = server.accept();
  ASSERT_TRUE(run.until([&] { return exchange.isReadable(); }));
  EXPECT_EQ("\x0A\0\0\0\x84\x31\x32\x33\x34\x35\x36\x37\x38\0"s, exchange.receive());
  const std::string records = withLength("TLC 11202\r\n") + withLength("") + withLength("IN  11220\r\n");
  for (const char byte : records + "\x08\0\0\0ha"s) {
    exchange.send(std::string(1, byte));
    run.rest(std::chrono::milliseconds(0));
  }
  ASSERT_TRUE(run.untilLines(2));
  exchange = Socket();
  ASSERT_TRUE(run.until([&] { return !run.sink->isConnected; }));
  EXPECT_EQ("TLC 11202|IN  11220|", run.sink->all());
  EXPECT_EQ(6U, run.sink->lostBytes) << "a record that is not complete is none";

  ASSERT_TRUE(run.until([&] { return server.isReadable(); })) << "it comes back";
  exchange = server.accept();
  exchange.send(withLength("OP  11202\r\n") + "no length");
  EXPECT_TRUE(run.until([&] { return run.sink->state.find("no records with their length") != std::string::npos; }));
  EXPECT_EQ("TLC 11202|IN  11220|OP  11202|", run.sink->all());
  EXPECT_EQ(2, run.sink->breaks);

  ASSERT_TRUE(run.until([&] { return server.isReadable(); }));
  exchange = server.accept();
  ASSERT_TRUE(run.until([&] { return exchange.isReadable(); }));
  EXPECT_EQ(14U, exchange.receive().size());
  exchange = Socket();
  EXPECT_TRUE(run.until([&] { return run.sink->state.find("look at the password") != std::string::npos; }));
}

TEST(Udp, EveryDatagramHoldsWholeLines) {
  const std::uint16_t port = freePort();
  TransportRun run(UdpSettings{"127.0.0.1", port, {}});
  ASSERT_TRUE(run.untilConnected());
  const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
  const sockaddr_in to = Socket::address(port);
  for (const std::string text : {"a\r\nb", "c\n"}) {
    sendto(socket, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }
  ::close(socket);
  EXPECT_TRUE(run.untilLines(3));
  EXPECT_EQ("a|b|c|", run.sink->all());
}

TEST(Ami, TakesTheBlocksOfCallRecordsAlone) {
  const Socket server = Socket::listen();
  TransportRun run(AmiSettings{"127.0.0.1", server.port(), "tallymon", "secret"});
  ASSERT_TRUE(run.until([&] { return server.isReadable(); }));
  Socket exchange = server.accept();
  exchange.send("Asterisk Call Manager/7.0.3\r\n");
  ASSERT_TRUE(run.until([&] { return exchange.isReadable(); }));
  EXPECT_EQ("Action: Login\r\nUsername: tallymon\r\nSecret: secret\r\nEvents: cdr\r\n\r\n", exchange.receive());
  exchange.send("Response: Success\r\nMessage: Authentication accepted\r\n\r\n");
  ASSERT_TRUE(run.untilConnected());
  exchange.send("Event: FullyBooted\r\nStatus: Fully Booted\r\n\r\nEvent: Cdr\r\nSource: 214\r\nDesti");
  run.rest(std::chrono::milliseconds(30));
  exchange.send("nation: 0755550142\r\n\r\n");
  EXPECT_TRUE(run.untilLines(4));
  EXPECT_EQ("Event: Cdr|Source: 214|Destination: 0755550142||", run.sink->all());
  exchange = Socket();
  ASSERT_TRUE(run.until([&] { return server.isReadable(); })) << "it comes back";
  exchange = server.accept();
  exchange.send("Asterisk Call Manager/7.0.3\r\n");
  exchange.send("Response: Error\r\nMessage: Authentication failed\r\n\r\n");
  EXPECT_TRUE(run.until([&] { return run.sink->state.find("Authentication failed") != std::string::npos; }));
}

std::string post(std::uint16_t port, TransportRun& run, const std::string& head, const std::string& body) {
  const Socket peer = Socket::connect(port);
  std::thread sender([&] {
    peer.send("POST " + head + "Host: x\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) +
              "\r\n\r\n" + body);
  });
  run.until([&] { return peer.isReadable(); });
  sender.join();
  return peer.receive().substr(9, 3);
}

TEST(HttpPost, AnswersYesOnlyWhenTheRecordsAreTaken) {
  const std::uint16_t port = freePort();
  HttpSettings settings;
  settings.port = port;
  settings.path = "/cdr";
  settings.token = "s3cret";
  TransportRun run(settings);
  ASSERT_TRUE(run.untilConnected());
  const std::string good = "/cdr HTTP/1.1\r\nAuthorization: Bearer s3cret\r\n";
  EXPECT_EQ("200", post(port, run, good, R"({"callid": "1", "n": [1, 2]})"));
  EXPECT_EQ("200", post(port, run, "/cdr?token=s3cret HTTP/1.1\r\n", "[{\"a\":1},{\"a\":2}]"));
  EXPECT_EQ("200", post(port, run, good, "first\r\nsecond\r\n"));
  EXPECT_EQ(R"({"callid":"1","n":[1,2]}|{"a":1}|{"a":2}|first|second|)", run.sink->all());
  EXPECT_EQ("401", post(port, run, "/cdr HTTP/1.1\r\n", "{}"));
  EXPECT_EQ("401", post(port, run, "/cdr?token=wrong HTTP/1.1\r\n", "{}"));
  EXPECT_EQ("404", post(port, run, "/other?token=s3cret HTTP/1.1\r\n", "{}"));
  EXPECT_EQ("413", post(port, run, good, std::string(5 << 20, 'x')));
  run.sink->refuse = true;
  EXPECT_EQ("503", post(port, run, good, "{}"));
  EXPECT_EQ(5U, run.sink->texts.size());
}

TEST(HttpBody, BecomesLines) {
  const auto joined = [](const std::string& body) {
    std::string all;
    for (const std::string& line : linesOfBody(body)) all += line + "|";
    return all;
  };
  EXPECT_EQ(R"({"a":1}|{"a":2}|)", joined(R"({"cdr": [{"a": 1}, {"a": 2}]})"));
  EXPECT_EQ(R"({"variables":{"uuid":"x y"}}|)",
            joined("uuid=1&cdr=%7B%22variables%22%3A%7B%22uuid%22%3A%22x+y%22%7D%7D"));
  EXPECT_EQ(R"({"a":1}|)", joined("eyJhIjoxfQ=="));
  EXPECT_EQ("not json {|", joined("not json {"));
  EXPECT_EQ("", joined(""));
}

TEST(HttpGet, TakesEachRecordOnceThoughTheWindowsOverlap) {
  const Socket server = Socket::listen();
  GetSettings settings;
  settings.url = "http://127.0.0.1:" + std::to_string(server.port()) + "/cdrapi?from={from}&to={to}";
  settings.id = {"AcctId"};
  settings.every = 1;
  const auto answer = [&](TransportRun& run, const std::string& body) {
    EXPECT_TRUE(run.until([&] { return server.isReadable(); }));
    const Socket peer = server.accept();
    const std::string request = peer.receive();
    peer.send("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
              body);
    return request;
  };
  const auto sink = std::make_shared<CollectingSink>();
  {
    TransportRun run(settings, sink);
    const std::string request = answer(run, R"({"cdr":[{"AcctId":"1"},{"AcctId":"2"}]})");
    EXPECT_NE(std::string::npos, request.find("GET /cdrapi?from=20")) << request;
    EXPECT_NE(std::string::npos, request.find("%3A"));
    ASSERT_TRUE(run.untilLines(2));
    answer(run, R"({"cdr":[{"AcctId":"2"},{"AcctId":"3"}]})");
    ASSERT_TRUE(run.untilLines(3));
  }
  TransportRun again(settings, sink);
  answer(again, R"({"cdr":[{"AcctId":"3"},{"AcctId":"4"}]})");
  ASSERT_TRUE(again.untilLines(4));
  EXPECT_EQ(R"({"AcctId":"1"}|{"AcctId":"2"}|{"AcctId":"3"}|{"AcctId":"4"}|)", sink->all());
}

}  // namespace
