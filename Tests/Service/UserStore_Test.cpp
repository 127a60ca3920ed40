#include "ServiceTesting.h"

#include "Service/Secrets.h"
#include "Service/UserStore.h"
#include "Support/Canary.h"

#include <fstream>
#include <iterator>

namespace tolmtest {
namespace {

constexpr long long kIdle = 1000;

class Users : public testing::Test {
protected:
    service::UserStore& Store() { return m_users; }
    void PassSeconds(long long seconds) { m_now += seconds; }
    std::string Token(const std::string& user, const std::string& secret) {
        const auto token = m_users.SignIn(user, secret);
        WatchForSecret(token.value_or(""));
        return token.value_or("none");
    }
    std::string DatabaseBytes() const {
        std::string bytes;
        for (const auto* name : {L"users.db", L"users.db-wal"}) {
            std::ifstream file(Narrow(m_folder.File(name)), std::ios::binary);
            bytes.append(std::istreambuf_iterator<char>(file), {});
        }
        return bytes;
    }

private:
    TempFolder m_folder;
    long long m_now = 5000;
    service::Database m_database{Narrow(m_folder.File(L"users.db")), 2};
    service::UserStore m_users{m_database, {kIdle, 10, [this] { return m_now; }}};
};

TEST_F(Users, SignInWithTheRightSecretOnly) {
    Store().Put("anna", "right");
    EXPECT_TRUE(Store().SignIn("anna", "right").has_value());
    EXPECT_FALSE(Store().SignIn("anna", "wrong").has_value());
    EXPECT_FALSE(Store().SignIn("anna", "").has_value());
    EXPECT_FALSE(Store().SignIn("bert", "right").has_value());
    EXPECT_FALSE(Store().SignIn("Anna", "right").has_value());
}

TEST_F(Users, EachSignInGivesAFreshToken) {
    Store().Put("anna", "right");
    const auto first = Token("anna", "right");
    const auto second = Token("anna", "right");
    EXPECT_NE(first, second);
    EXPECT_EQ(first.size(), 64U);
    EXPECT_TRUE(Store().Check("anna", first).has_value()) << "an earlier sign-in stays";
    EXPECT_NE(Store().Check("anna", first), Store().Check("anna", second));
}

TEST_F(Users, ATokenIsWorthNothingToAnotherUser) {
    Store().Put("anna", "secret a");
    Store().Put("bert", "secret b");
    const auto token = Token("anna", "secret a");
    EXPECT_FALSE(Store().Check("bert", token).has_value());
    EXPECT_FALSE(Store().Check("", token).has_value());
    EXPECT_TRUE(Store().Check("anna", token).has_value());
}

TEST_F(Users, ATextThatIsNoTokenIsWorthNothing) {
    Store().Put("anna", "right");
    const auto token = Token("anna", "right");
    for (const auto& other : {std::string(), std::string("x"), token + "0", service::HashToken(token)})
        EXPECT_FALSE(Store().Check("anna", other).has_value()) << other;
}

TEST_F(Users, ATokenThatIsNotUsedExpires) {
    Store().Put("anna", "right");
    const auto token = Token("anna", "right");
    PassSeconds(kIdle);
    EXPECT_TRUE(Store().Check("anna", token).has_value());
    PassSeconds(kIdle + 1);
    EXPECT_FALSE(Store().Check("anna", token).has_value());
}

TEST_F(Users, ATokenThatIsUsedStaysGood) {
    Store().Put("anna", "right");
    const auto token = Token("anna", "right");
    for (int i = 0; i < 10; ++i) {
        PassSeconds(kIdle * 9 / 10);
        EXPECT_TRUE(Store().Check("anna", token).has_value());
    }
}

TEST_F(Users, ANewSecretEndsAllSignIns) {
    Store().Put("anna", "old");
    const auto token = Token("anna", "old");
    Store().Put("anna", "new");
    EXPECT_FALSE(Store().Check("anna", token).has_value());
    EXPECT_FALSE(Store().SignIn("anna", "old").has_value());
    EXPECT_TRUE(Store().SignIn("anna", "new").has_value());
}

TEST_F(Users, ARemovedUserIsSignedOutAndStaysOut) {
    Store().Put("anna", "right");
    Store().Put("bert", "right");
    const auto annas = Token("anna", "right");
    const auto berts = Token("bert", "right");
    EXPECT_TRUE(Store().Remove("anna"));
    EXPECT_FALSE(Store().Check("anna", annas).has_value());
    EXPECT_FALSE(Store().SignIn("anna", "right").has_value());
    EXPECT_TRUE(Store().Check("bert", berts).has_value());
    EXPECT_FALSE(Store().Remove("anna"));
    EXPECT_EQ(Store().List(), std::vector<std::string>{"bert"});
}

TEST_F(Users, NeitherSecretNorTokenStandsInTheDatabase) {
    Store().Put("anna", "a secret to look for");
    const auto token = Token("anna", "a secret to look for");
    const auto bytes = DatabaseBytes();
    EXPECT_NE(bytes.find("anna"), std::string::npos);
    EXPECT_EQ(bytes.find("a secret to look for"), std::string::npos);
    EXPECT_EQ(bytes.find(token), std::string::npos);
}

TEST(Secrets, AreSaltedAfresh) {
    const auto first = service::HashSecret("secret", 10);
    const auto second = service::HashSecret("secret", 10);
    EXPECT_NE(first.salt, second.salt);
    EXPECT_NE(first.hash, second.hash);
    EXPECT_TRUE(service::IsSecret("secret", first));
    EXPECT_FALSE(service::IsSecret("secres", first));
    EXPECT_FALSE(service::IsSecret("secret", {first.salt, second.hash, 10}));
    EXPECT_FALSE(service::IsSecret("secret", {first.salt, first.hash, 11}));
}

TEST(Secrets, AreDerivedAsPublished) {
    // PBKDF2 with HMAC-SHA-256, secret "password", salt "salt", two rounds: RFC 7914 gives the function, the value is
    // the widely published test vector for it.
    EXPECT_TRUE(
        service::IsSecret("password", {"salt", "ae4d0c95af6b46d32d0adff928f06dd02a303f8ef3c251dfd6e2d85a95474c43", 2}));
}

TEST(Secrets, TokensAreHashedWithSha256) {
    EXPECT_EQ(service::HashToken("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

} // namespace
} // namespace tolmtest
