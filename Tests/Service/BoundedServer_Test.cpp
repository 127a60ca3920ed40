#include "ServiceTesting.h"

#include "Service/Service.h"
#include "Support/Canary.h"
#include "Support/ServiceCalls.h"

#include <chrono>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace tolmtest {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience{300};
constexpr int kThreads = 2;

/// A peer that sends as it likes.
class Peer {
public:
    explicit Peer(int port) : m_socket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    }
    ~Peer() { close(m_socket); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    bool Send(const std::string& bytes) const {
        return send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }
    /// True when the other side has let go, or does so within the time; what it says before that is dropped.
    bool IsLetGoWithin(std::chrono::milliseconds time) const {
        const auto end = Clock::now() + time;
        pollfd watched{m_socket, POLLIN, 0};
        for (auto left = time; left.count() > 0 && poll(&watched, 1, static_cast<int>(left.count())) > 0;
             left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now())) {
            char bytes[4096];
            const auto count = recv(m_socket, bytes, sizeof(bytes), MSG_DONTWAIT);
            if (count == 0 || (count < 0 && errno == ECONNRESET))
                return true;
        }
        return false;
    }
    /// Sends a byte now and then until the other side lets go.
    bool DripsUntilItIsLetGo(const std::string& byte) const {
        const auto end = Clock::now() + std::chrono::seconds(60);
        while (Clock::now() < end) {
            if (!Send(byte) || IsLetGoWithin(kPatience / 10))
                return true;
        }
        return false;
    }

private:
    int m_socket;
};

/// A service of few threads and little patience.
class Slow : public testing::Test {
protected:
    Slow()
        : m_service(Narrow(m_folder.File(L"service.db")), {3600, 10, {}},
                    {"127.0.0.1", 0, kThreads, 64U << 20, SearchLine, kPatience}),
          m_thread([this] { m_service.Http().Run(); }) {
        m_service.Users().Put("anna", "anna's secret");
        m_token = m_service.Users().SignIn("anna", "anna's secret").value();
        WatchForSecret("anna's secret");
        WatchForSecret(m_token);
        m_service.Projects().Create("p", "P");
    }
    ~Slow() override {
        m_service.Http().Stop();
        m_thread.join();
    }

    int Port() { return m_service.Http().Port(); }
    std::string Head(const std::string& path = "/api/UpLoad/p") const {
        return "POST " + path + " HTTP/1.1\r\nHost: x\r\nx-kfe-userid: anna\r\nAuthorization: " + m_token + "\r\n";
    }
    void Fill(const json& tables) {
        const json file{{"format", "tolm-project"}, {"formatVersion", 1}, {"tables", tables}};
        m_service.Projects().Fill("p", service::ReadProjectFile(file.dump(), Narrow(m_folder.Path())).rows, false);
    }
    /// One dripping peer for each thread, and a request of somebody else that has to wait for them.
    void ExpectServedBeside(const std::string& start, const std::string& drip) {
        std::vector<std::thread> dripping;
        for (int i = 0; i < kThreads; ++i) {
            dripping.emplace_back([&] {
                const Peer peer(Port());
                peer.Send(start);
                EXPECT_TRUE(peer.DripsUntilItIsLetGo(drip));
            });
        }
        for (auto& thread : dripping)
            thread.join();
        ExpectServed();
    }
    void ExpectServed() {
        const auto answer = SendRequest(Port(), {"POST", "/api/GetVersion/p", UserHeaders("anna", m_token), ""});
        EXPECT_EQ(json::parse(answer.body, nullptr, false)["code"], "10000");
    }

private:
    static void SearchLine(const std::string& line) { SearchForSecrets("the service's log", std::string_view(line)); }

    TempFolder m_folder;
    service::Service m_service;
    std::thread m_thread;
    std::string m_token;
};

TEST_F(Slow, PeersThatDripAHeaderAreLetGo) {
    ExpectServedBeside("POST /api/UpLoad/p HTTP/1.1\r\nX: ", "a");
}

TEST_F(Slow, PeersThatDripHeaderLinesAreLetGo) {
    ExpectServedBeside("POST /api/UpLoad/p HTTP/1.1\r\n", "X: y\r\n");
}

TEST_F(Slow, PeersThatDripABodyAreLetGo) {
    ExpectServedBeside(Head() + "Content-Length: 1000000\r\n\r\n", " ");
}

TEST_F(Slow, PeersThatDripAChunkedBodyAreLetGo) {
    ExpectServedBeside(Head() + "Transfer-Encoding: chunked\r\n\r\n", "1\r\n \r\n");
}

TEST_F(Slow, PeersThatDripABodyNobodyAskedForAreLetGo) {
    ExpectServedBeside("POST /api/UpLoad/p HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n", " ");
}

TEST_F(Slow, PeersThatSayNothingAreLetGo) {
    const Peer first(Port());
    const Peer second(Port());
    ExpectServed();
    EXPECT_TRUE(first.IsLetGoWithin(std::chrono::seconds(60)));
}

TEST_F(Slow, ABodyThatComesSteadilyMayTakeLongerThanThePatience) {
    const Peer peer(Port());
    const std::string piece(16 * 1024, ' ');
    const auto pieces = 20U;
    ASSERT_TRUE(peer.Send(Head() + "Content-Length: " + std::to_string(pieces * piece.size()) + "\r\n\r\n"));
    const auto start = Clock::now();
    for (auto sent = 0U; sent < pieces; ++sent) {
        ASSERT_TRUE(peer.Send(piece));
        EXPECT_TRUE(sent + 1 == pieces || !peer.IsLetGoWithin(kPatience / 6)) << sent;
    }
    EXPECT_GT(Clock::now() - start, kPatience);
    EXPECT_TRUE(peer.IsLetGoWithin(std::chrono::seconds(60))) << "the answer has come";
    ExpectServed();
}

// --- bodies of any length ------------------------------------------------------------------------------------------

constexpr std::size_t kGigabyte = 1U << 30;

TEST_F(Slow, ABodySaidToHaveAGigabyteIsRefusedOnceItIsTooLong) {
    for (const std::string encoding : {"Content-Length: 1073741824\r\n\r\n", "Transfer-Encoding: chunked\r\n\r\n"}) {
        const bool isChunked = encoding.starts_with("Transfer");
        const Peer peer(Port());
        ASSERT_TRUE(peer.Send(Head() + encoding));
        const std::string piece(1U << 20, ' ');
        std::size_t sent = 0;
        while (sent < kGigabyte && (!isChunked || peer.Send("100000\r\n")) && peer.Send(piece) &&
               (!isChunked || peer.Send("\r\n")))
            sent += piece.size();
        EXPECT_LT(sent, kGigabyte) << encoding;
        ExpectServed();
    }
}

TEST_F(Slow, ALieAboutTheLengthDoesNothing) {
    const Peer peer(Port());
    ASSERT_TRUE(peer.Send(Head() + "Content-Length: 1073741824\r\n\r\n{}"));
    EXPECT_TRUE(peer.IsLetGoWithin(std::chrono::seconds(60)));
    for (const std::string length : {"-1", "99999999999999999999999", "1e9", "0x10", ""})
        SendBytesAndNoMore(Port(), Head() + "Content-Length: " + length + "\r\n\r\n{}");
    ExpectServed();
}

/// The answer is longer than what the system keeps for the connections.
TEST_F(Slow, ReadersThatTakeNothingAreLetGo) {
    json rows = json::array();
    for (int i = 0; i < 200; ++i)
        rows.push_back(Series(std::to_string(i), std::to_string(i) + std::string(100'000, 'x')));
    Fill({{"PipeType", rows}});
    const Peer peers[kThreads] = {Peer(Port()), Peer(Port())};
    for (const auto& peer : peers)
        ASSERT_TRUE(peer.Send(Head("/api/DownloadVersion/p/0") + "\r\n"));
    ExpectServed();
}

} // namespace
} // namespace tolmtest
