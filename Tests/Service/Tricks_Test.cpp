#include "UploadTesting.h"

#include <cstdio>

namespace tolmtest {
namespace {

const std::string kTricks[] = {"p' OR '1'='1", "p\"",         "p;DROP TABLE projects",
                               "../p",         "p%00",        "p\\",
                               "%70",          "p*",          "'",
                               "p--",          "{\"$ne\":1}", "p?x=1",
                               "p#",           "null",        "\xE2\x80\xAEp"};

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        char code[4] = {};
        std::snprintf(code, sizeof(code), "%%%02X", static_cast<unsigned char>(c));
        escaped += code;
    }
    return escaped;
}

/// Two projects side by side, and calls that try to reach one through another's name.
class Tricks : public UploadWire {
protected:
    Tricks() {
        Fill({{"PipeType", {Series("s", "S")}}});
        Service().FillTables("q", R"({"PipeType":[{"ID":"s","name":"Q"}]})");
    }
    ~Tricks() override {
        EXPECT_EQ(Service().Tables("p"), m_p) << "the first project is as it was";
        EXPECT_EQ(Service().Tables("q"), m_q) << "the other project is as it was";
        EXPECT_GE(GetVersion(), 1) << "the service goes on";
    }
    std::string CodeAt(const std::string& path, const json& body) {
        const auto answer = SendRequest(Service().Port(), {"POST", path, UserHeaders("anna", Token()), body.dump()});
        const auto envelope = json::parse(answer.body, nullptr, false);
        return envelope.is_object() ? envelope.value("code", "none") : "no JSON";
    }
    /// Remembers what stands; to be called at the beginning.
    void Remember() {
        m_p = Service().Tables("p");
        m_q = Service().Tables("q");
    }

private:
    std::string m_p;
    std::string m_q;
};

TEST_F(Tricks, InTheProjectOfAPathAreRefused) {
    Remember();
    for (const auto& trick : kTricks) {
        for (const auto* call : {"/api/GetVersion/", "/api/UpLoad/"})
            EXPECT_NE(CodeAt(call + Escaped(trick), Creation(1, Series("t", "T"))), "10000") << trick;
        EXPECT_NE(CodeAt("/api/DownloadVersion/" + Escaped(trick) + "/0", json::object()), "10000") << trick;
    }
    EXPECT_EQ(CodeAt("/api/GetVersion/" + Escaped("p"), json::object()), "10000") << "escaping itself is no trick";
}

TEST_F(Tricks, InTheTableOfAPathAreRefused) {
    Remember();
    for (const auto& trick : kTricks) {
        for (const auto* call : {"/api/CreateList/p/", "/api/EditList/p/", "/api/RemoveList/p/"})
            EXPECT_NE(CodeAt(call + Escaped(trick), Rows({Series("t", "T")})), "10000") << trick;
        EXPECT_NE(CodeAt("/api/CreateCombinations/p/" + Escaped("c'" + trick), Rows({Combination("c", "C")})), "10000");
    }
}

TEST_F(Tricks, InTheVersionOfAPathAreRefused) {
    Remember();
    for (const std::string version : {"0 OR 1=1", "0;", "1e9", "0x1", "", " 0", "99999999999999999999", "1.0", "--1"})
        EXPECT_NE(CodeAt("/api/DownloadVersion/p/" + Escaped(version), json::object()), "10000") << version;
}

TEST_F(Tricks, InHeadersLetNobodyIn) {
    Remember();
    for (const std::string user : {"anna' --", "' OR '1'='1", "", "ANNA", "anna "}) {
        const auto answer =
            SendRequest(Service().Port(), {"POST", "/api/GetVersion/p", UserHeaders(user, Token()), ""});
        EXPECT_EQ(answer.status, user == "anna " ? 200 : 401) << user << ": blanks around a header are none of it";
    }
    for (const auto& token :
         {std::string("' OR '1'='1"), std::string(), std::string("null"), Token() + "x", Token().substr(1)}) {
        const auto answer =
            SendRequest(Service().Port(), {"POST", "/api/GetVersion/p", UserHeaders("anna", token), ""});
        EXPECT_EQ(answer.status, 401) << token;
    }
    EXPECT_EQ(SendRequest(Service().Port(), {"POST", "/api/GetVersion/p", {}, ""}).status, 401);
}

TEST_F(Tricks, ATokenIsItsUsersAlone) {
    Remember();
    Service().AddUser("ben", "ben's secret");
    const auto answer = SendRequest(Service().Port(), {"POST", "/api/GetVersion/p", UserHeaders("ben", Token()), ""});
    EXPECT_EQ(answer.status, 401);
}

TEST_F(Tricks, AnUploadReachesItsOwnProjectAlone) {
    EXPECT_EQ(Upload(Patch(1, "removeList", {{"PipeType", {"s"}}})), 2);
    EXPECT_EQ(json::parse(Service().Tables("q"))["PipeType"], json::array({Series("s", "Q")}));
    EXPECT_EQ(Upload(Creation(2, Series("s", "S"))), 3);
    EXPECT_EQ(Upload(Patch(3, "removeList", {{"PipeType", {"s"}}})), 4);
    EXPECT_EQ(Upload(Creation(4, Series("s", "S"))), 5);
    Remember();
}

TEST_F(Tricks, APatchFromAheadOfTheProjectIsRefusedAsSuch) {
    Remember();
    GetVersion();
    EXPECT_EQ(UploadCode(Creation(2, Series("t", "T"))), "40903");
}

} // namespace
} // namespace tolmtest
