#pragma once

#include "ServiceTesting.h"

#include "Service/Service.h"
#include "Support/ServiceCalls.h"
#include "Support/ServiceFixture.h"

#include <string>
#include <vector>

namespace tolmtest {

inline json Rows(const std::vector<json>& rows) {
    return {{"tolm_version", "1.0"}, {"rows", rows}};
}
inline json Wrapped(const json& row) {
    return {{"id", row["ID"]}, {"data", row}};
}

/// A patch that asks for nothing.
inline json EmptyPatch(int version) {
    return {{"tolm_version", "1.0"},      {"version", version},           {"force", 1},
            {"userID", "anna"},           {"createList", json::object()}, {"recoveryList", json::object()},
            {"editList", json::object()}, {"removeList", json::object()}};
}
/// A patch with one list.
inline json Patch(int version, const std::string& list, const json& tables) {
    return With(EmptyPatch(version), list, tables);
}
inline json Creation(int version, const json& row, const std::string& table = "PipeType") {
    return Patch(version, "createList", {{table, {row}}});
}

/// The service with one project "p", as clients meet it over the wire.
class UploadWire : public testing::Test {
protected:
    UploadWire() : m_token(m_service.SignIn()) {}

    ServiceFixture& Service() { return m_service; }
    const std::string& Token() const { return m_token; }

    int Fill(const json& tables = json::object()) { return m_service.FillTables("p", tables.dump()); }
    /// A version that somebody else makes.
    int SomebodyElseMakesAVersion() {
        const auto name = "other" + std::to_string(m_others++);
        const auto row = Series(name, name);
        return m_service.Apply(
            "p", json{{"format", "tolm-change"}, {"formatVersion", 1}, {"add", {{"DuctType", {row}}}}}.dump());
    }

    /// The envelope of an answer, which has to come with HTTP 200 and as JSON whatever it says.
    json Call(const std::string& path, const std::string& body, const std::string& token) {
        const auto answer = SendRequest(m_service.Port(), {"POST", path, UserHeaders("anna", token), body});
        EXPECT_EQ(answer.status, 200) << answer.body;
        EXPECT_NE(answer.head.find("Content-Type: application/json"), std::string::npos) << answer.head;
        const auto envelope = json::parse(answer.body, nullptr, false);
        EXPECT_TRUE(envelope.is_object() && envelope.contains("code") && envelope["code"].is_string()) << answer.body;
        return envelope;
    }
    json Call(const std::string& path, const json& body) { return Call(path, body.dump(), m_token); }
    std::string Code(const std::string& path, const json& body) { return Call(path, body)["code"]; }

    std::string UploadCode(const json& patch) { return Code("/api/UpLoad/p", patch); }
    std::string UploadCode(const json& patch, const std::string& token) {
        return Call("/api/UpLoad/p", patch.dump(), token)["code"];
    }
    /// The version in the answer to a call that has to be done.
    int Done(const std::string& path, const json& body) {
        const auto envelope = Call(path, body);
        EXPECT_EQ(envelope["code"], "10000") << envelope;
        return envelope["code"] == "10000" ? envelope["data"]["version"].get<int>() : -100;
    }
    int Upload(const json& patch) { return Done("/api/UpLoad/p", patch); }
    int GetVersion() { return GetVersion(m_token); }
    int GetVersion(const std::string& token) { return Call("/api/GetVersion/p", "", token)["data"]; }

    json Tables() { return json::parse(m_service.Tables("p")); }
    json Increment(int since) { return json::parse(m_service.Service().Projects().Increment("p", since)); }
    int Version() { return m_service.Version("p"); }

private:
    ServiceFixture m_service;
    std::string m_token;
    int m_others = 0;
};

} // namespace tolmtest
