#include "ServiceTesting.h"

#include "Service/Service.h"
#include "Support/Canary.h"
#include "Support/ServiceCalls.h"
#include "Support/ServiceFixture.h"

#include <sqlite3.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace tolmtest {
namespace {

/// A service with a small limit and a log to look into.
class Guarded : public testing::Test {
protected:
    static constexpr std::size_t kLimit = 10'000;

    Guarded()
        : m_service(Narrow(m_folder.File(L"service.db")), {3600, 10, {}},
                    {"127.0.0.1", 0, 4, kLimit, [this](const std::string& line) { Note(line); }}),
          m_thread([this] { m_service.Http().Run(); }) {
        m_service.Users().Put("anna", "a secret to look for");
        m_token = m_service.Users().SignIn("anna", "a secret to look for").value();
        WatchForSecret("a secret to look for");
        WatchForSecret(m_token);
        m_service.Projects().Create("p", "P");
    }
    ~Guarded() override {
        m_service.Http().Stop();
        m_thread.join();
    }

    int Port() { return m_service.Http().Port(); }
    std::string Head(const std::string& line) const {
        return line + " HTTP/1.1\r\nHost: x\r\nx-kfe-userid: anna\r\nAuthorization: " + m_token + "\r\n";
    }
    WireAnswer Post(const std::string& path, const std::string& body) {
        return SendRequest(Port(), {"POST", path, UserHeaders("anna", m_token), body});
    }
    static std::string CodeOf(const WireAnswer& answer) {
        const auto body = json::parse(answer.body, nullptr, false);
        return body.is_object() ? body.value("code", "none") : "no JSON: " + answer.body;
    }
    void ExpectStillServing() { EXPECT_EQ(CodeOf(Post("/api/GetVersion/p", "")), "10000"); }
    std::string Log() {
        const std::lock_guard lock(m_mutex);
        return m_log;
    }
    const std::string& Token() const { return m_token; }
    /// Takes a table away under the running service.
    void BreakDatabase() {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(Narrow(m_folder.File(L"service.db")).c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, "DROP TABLE projects", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }

private:
    void Note(const std::string& line) {
        SearchForSecrets("the service's log", std::string_view(line));
        const std::lock_guard lock(m_mutex);
        m_log += line + "\n";
    }

    TempFolder m_folder;
    std::mutex m_mutex;
    std::string m_log;
    service::Service m_service;
    std::thread m_thread;
    std::string m_token;
};

TEST_F(Guarded, ABodyAtTheLimitIsTakenAndOneAboveIsRefused) {
    const std::string head = R"({"userId":"anna","secret":")";
    const std::string end = R"("})";
    const auto fits = head + std::string(kLimit - head.size() - end.size(), 'x') + end;
    EXPECT_EQ(CodeOf(Post("/api/SignIn", fits)), "40101");
    const auto answer = Post("/api/SignIn", fits + " ");
    EXPECT_EQ(CodeOf(answer), "41300");
    EXPECT_EQ(answer.status, 413);
    ExpectStillServing();
}

TEST_F(Guarded, AnUploadAboveTheLimitIsRefusedWithHttp200) {
    const auto answer = Post("/api/workunit/uploadData", std::string(kLimit + 1, ' '));
    EXPECT_EQ(CodeOf(answer), "41300");
    EXPECT_EQ(answer.status, 200);
}

TEST_F(Guarded, AChunkedBodyIsHeldToTheLimitToo) {
    std::string bytes = Head("POST /api/DownloadVersion/p/0") + "Transfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < 20; ++i)
        bytes += "3e8\r\n" + std::string(1000, ' ') + "\r\n";
    EXPECT_EQ(CodeOf(SendBytes(Port(), bytes + "0\r\n\r\n")), "41300");
    ExpectStillServing();
}

TEST_F(Guarded, AChunkedBodyIsRead) {
    const auto bytes = Head("POST /api/DownloadVersion/p/0") + "Transfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n";
    EXPECT_EQ(CodeOf(SendBytes(Port(), bytes)), "40902");
}

TEST_F(Guarded, ABodyThatEndsEarlyDoesNothing) {
    const std::string body = R"({"projectId":"p","workunitId":"w","dataIds":["d"],"dataStatus":1})";
    const auto bytes = Head("POST /api/workunit/uploadData") + "Content-Length: 100\r\n\r\n" + body;
    EXPECT_NE(CodeOf(SendBytesAndNoMore(Port(), bytes)), "10000");
    ExpectStillServing();
    EXPECT_EQ(json::parse(SendRequest(Port(), {"GET", "/api/workunit/downloadData/w", UserHeaders("anna", Token()), ""})
                              .body)["data"],
              json::array());
}

TEST_F(Guarded, ABodyOfFormPartsIsRefused) {
    const auto bytes = Head("POST /api/DownloadVersion/p/0") +
                       "Content-Type: multipart/form-data; boundary=b\r\nContent-Length: 5\r\n\r\n--b\r\n";
    EXPECT_EQ(CodeOf(SendBytes(Port(), bytes)), "41500");
    ExpectStillServing();
}

TEST_F(Guarded, WhatIsNoHttpGetsNoAnswerOfUse) {
    for (const std::string bytes :
         {"", "\r\n\r\n", "nonsense\r\n\r\n", "GET\r\n\r\n", "POST /api/SignIn HTTP/9.9\r\n\r\n"}) {
        const auto answer = SendBytesAndNoMore(Port(), bytes);
        EXPECT_TRUE(answer.status == 0 || CodeOf(answer) == "40000") << answer.body;
    }
    ExpectStillServing();
}

TEST_F(Guarded, APathThatIsTooLongIsRefused) {
    const auto answer = SendBytes(Port(), Head("POST /api/GetVersion/" + std::string(20'000, 'a')) + "\r\n");
    EXPECT_EQ(CodeOf(answer), "41300");
    EXPECT_EQ(answer.status, 414);
    ExpectStillServing();
}

TEST_F(Guarded, AHeaderThatIsTooLongIsRefused) {
    const auto answer =
        SendBytes(Port(), Head("POST /api/GetVersion/p") + "X: " + std::string(100'000, 'a') + "\r\n\r\n");
    EXPECT_EQ(CodeOf(answer), "40000");
    ExpectStillServing();
}

TEST_F(Guarded, UnusualMethodsAreRefused) {
    for (const auto* method : {"OPTIONS", "PATCH", "DELETE", "PUT", "TRACE", "CONNECT", "BREW"}) {
        const auto answer = SendRequest(Port(), {method, "/api/GetVersion/p", UserHeaders("anna", Token()), ""});
        EXPECT_TRUE(CodeOf(answer) == "40500" || CodeOf(answer) == "40000") << method << ": " << answer.body;
    }
    ExpectStillServing();
}

TEST_F(Guarded, HostileJsonIsRefused) {
    EXPECT_EQ(CodeOf(Post("/api/SignIn", std::string(kLimit, '['))), "40001");
    EXPECT_EQ(CodeOf(Post("/api/SignIn", "{\"userId\":\"\xff\",\"secret\":\"s\"}")), "40001");
    EXPECT_EQ(CodeOf(Post("/api/SignIn", std::string("{}\0", 3))), "40001");
    EXPECT_EQ(CodeOf(Post("/api/SignIn", R"({"userId":"anna' OR '1'='1","secret":"x"})")), "40101");
    ExpectStillServing();
}

TEST_F(Guarded, AFaultOfTheDatabaseTellsNothingOfItself) {
    BreakDatabase();
    const auto answer = Post("/api/GetVersion/p", "");
    EXPECT_EQ(CodeOf(answer), "50000");
    EXPECT_EQ(answer.status, 500);
    EXPECT_EQ(json::parse(answer.body)["msg"], service::RowOf(service::Answer::Internal).message);
    EXPECT_NE(Log().find("fault: "), std::string::npos);
    EXPECT_EQ(Log().find("SELECT"), std::string::npos) << "statements stay out of the log: " << Log();
}

TEST_F(Guarded, TheLogHasEachRequestAndNoSecret) {
    Post("/api/SignIn", R"({"userId":"anna","secret":"a secret to look for"})");
    Post("/api/GetVersion/p", "");
    Post("/api/GetVersion/p%0aforged", "");
    const auto log = Log();
    EXPECT_NE(log.find("POST \"/api/GetVersion/p\" 200\n"), std::string::npos) << log;
    EXPECT_NE(log.find("POST \"/api/GetVersion/p\\nforged\" 404\n"), std::string::npos) << log;
    EXPECT_EQ(log.find(Token()), std::string::npos);
    EXPECT_EQ(log.find("a secret to look for"), std::string::npos);
}

TEST_F(Guarded, ManyAtOnceAreAllServed) {
    std::atomic<int> good = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < 16; ++i) {
        callers.emplace_back([&] {
            for (int call = 0; call < 10; ++call)
                good += CodeOf(Post("/api/GetVersion/p", "")) == "10000" ? 1 : 0;
        });
    }
    for (auto& caller : callers)
        caller.join();
    EXPECT_EQ(good, 160);
}

TEST(HttpServer, CanBeStoppedBeforeItRuns) {
    const TempFolder folder;
    service::Service stopped(Narrow(folder.File(L"service.db")), {}, {});
    std::thread stopping([&] { stopped.Http().Stop(); });
    stopped.Http().Run();
    stopping.join();
}

TEST(HttpServer, APortThatIsTakenIsAFailure) {
    ServiceFixture running;
    const TempFolder folder;
    service::HttpServer::Settings settings;
    settings.port = running.Port();
    EXPECT_THROW(service::Service(Narrow(folder.File(L"service.db")), {}, settings), std::runtime_error);
}

/// Readers ask again and again while versions are made: each increment has to lead to one whole version.
TEST(HttpServer, ReadersSeeWholeVersionsWhileChangesAreMade) {
    ServiceFixture running;
    running.FillTables("p", R"({"PipeType":[{"ID":"a","name":"0"}],"DuctType":[{"ID":"b","name":"0"}]})");
    const auto token = running.SignIn();
    std::atomic<bool> done = false;
    std::atomic<int> reads = 0;
    std::vector<std::thread> readers;
    for (int i = 0; i < 4; ++i) {
        readers.emplace_back([&] {
            while (!done || reads == 0) {
                const auto answer =
                    SendRequest(running.Port(), {"POST", "/api/DownloadVersion/p/0", UserHeaders("anna", token), ""});
                const auto body = json::parse(answer.body, nullptr, false);
                ASSERT_TRUE(body.is_object() && body["data"].is_object()) << answer.body;
                const auto add = body["data"]["add"];
                EXPECT_EQ(add["PipeType"][0]["name"], add["DuctType"][0]["name"]);
                ++reads;
            }
        });
    }
    for (int i = 1; i <= 30; ++i) {
        const auto name = std::to_string(i);
        const json edit{{"PipeType", {Series("a", name)}}, {"DuctType", {Series("b", name)}}};
        EXPECT_EQ(running.Apply("p", json{{"format", "tolm-change"}, {"formatVersion", 1}, {"edit", edit}}.dump()),
                  i + 1);
    }
    done = true;
    for (auto& reader : readers)
        reader.join();
    EXPECT_GT(reads, 0);
}

TEST(HttpServer, ChangesThatComeAtOnceAllGetAVersionOfTheirOwn) {
    ServiceFixture running;
    running.FillTables("p", "{}");
    std::vector<std::thread> writers;
    for (int i = 0; i < 4; ++i) {
        writers.emplace_back([&running, i] {
            for (int change = 0; change < 10; ++change) {
                const auto id = std::to_string(i) + "-" + std::to_string(change);
                const json add{{"PipeType", {Series(id, id)}}};
                running.Apply("p", json{{"format", "tolm-change"}, {"formatVersion", 1}, {"add", add}}.dump());
            }
        });
    }
    for (auto& writer : writers)
        writer.join();
    EXPECT_EQ(running.Version("p"), 41);
    EXPECT_EQ(json::parse(running.Tables("p"))["PipeType"].size(), 40U);
}

} // namespace
} // namespace tolmtest
