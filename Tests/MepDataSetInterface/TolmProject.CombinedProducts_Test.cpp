#include "MepDataSetInterface/DatasetTestSupport.h"

#include "Platform/Support/ComponentSamples.h"
#include "StoreSupport/CloudTestSupport.h"
#include "Support/ClosedPort.h"
#include "Support/FileSizeLimit.h"

namespace {

using namespace tolm;
using namespace tolmtest;
using Products = std::vector<TolmCombinedProduct>;

const std::string kCreate = "/api/CreateCombinations/P1/16353515";
const std::string kEdit = "/api/EditCombinations/P1/16353515";
const std::string kRemove = "/api/RemoveCombinations/P1/16353515";
const wstring kCode = L"16353515";

class CombinedProducts : public DatasetOnStore {
protected:
    bool Add(const Products& products) { return dataset->AddCombinedComponents(kCode, products); }
    bool Remove(const std::vector<wstring>& ids) { return dataset->RemoveCombinedComponents(kCode, kCode, ids); }
    /// Puts the product into the database alone.
    void Store(const TolmCombinedProduct& product) {
        std::vector<wstring> newIds;
        ASSERT_TRUE(TolmComponentSqlUtil::InsertCombinedProduct(combinedPath, {product}, newIds));
    }
    Ids Stored() { return ProductIds(combinedPath); }
    void ServiceTakesAll() { server.On("/", ScriptedAnswer::Data("null")); }

    ScriptedServer server;
};

TEST_F(CombinedProducts, ThatAreNewGoAsCreatedAndTheOthersAsEditedEachInOrder) {
    Store(MakeListProduct(L"b"));
    Store(MakeListProduct(L"d"));
    ServiceTakesAll();
    const TestSession session(server.Address());
    auto changed = MakeListProduct(L"b");
    changed.spacing = 450;
    EXPECT_TRUE(Add({MakeListProduct(L"c"), changed, MakeListProduct(L"a"), MakeListProduct(L"d")}));
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreate, kEdit}));
    const auto requests = server.Requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_LT(requests[0].body.find(R"("ID":"c")"), requests[0].body.find(R"("ID":"a")"));
    EXPECT_EQ(requests[0].body.find(R"("ID":"b")"), std::string::npos);
    EXPECT_LT(requests[1].body.find(R"("id":"b")"), requests[1].body.find(R"("id":"d")"));
    EXPECT_EQ(requests[1].body.find(R"("id":"a")"), std::string::npos);
    EXPECT_EQ(Stored(), (Ids{L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(ReadProducts(combinedPath).at(1).spacing, 450);
}

TEST_F(CombinedProducts, OfOneKindMakeOneCall) {
    ServiceTakesAll();
    const TestSession session(server.Address());
    EXPECT_TRUE(Add({MakeListProduct(L"a")}));
    EXPECT_TRUE(Add({MakeListProduct(L"a")}));
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreate, kEdit}));
}

TEST_F(CombinedProducts, AreBothSentAlthoughTheFirstCallFails) {
    Store(MakeListProduct(L"b"));
    server.Next(ScriptedAnswer::Code("10003")).Next(ScriptedAnswer::Data("null"));
    const TestSession session(server.Address());
    EXPECT_TRUE(Add({MakeListProduct(L"a"), MakeListProduct(L"b")})) << "the cloud took one of the lists";
    EXPECT_EQ(server.Paths(), (std::vector<std::string>{kCreate, kEdit}));
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>{L"发送失败!"});
}

TEST_F(CombinedProducts, ThatTheCloudRefusesStayHere) {
    Store(MakeListProduct(L"b"));
    server.On("/", ScriptedAnswer::Code("10003"));
    const TestSession session(server.Address());
    EXPECT_FALSE(Add({MakeListProduct(L"a"), MakeListProduct(L"b")}));
    EXPECT_EQ(Stored(), (Ids{L"a", L"b"}));
    EXPECT_EQ(TakeLogLines().size(), 2U);
    EXPECT_TRUE(TakeNotifications().empty());
}

TEST_F(CombinedProducts, WithoutAServiceStayHereAndThePathsAreReported) {
    const ClosedPort port;
    const TestSession session(port.Address());
    EXPECT_FALSE(Add({MakeListProduct(L"a")}));
    EXPECT_FALSE(Add({MakeListProduct(L"a")}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"TolmProjectSettingHttpUtility::SendCreatedCombinationList: "
                                                         L"/api/CreateCombinations/P1/16353515 失败",
                                                         L"TolmProjectSettingHttpUtility::SendEditedCombinationList: "
                                                         L"/api/EditCombinations/P1/16353515 失败"}));
    EXPECT_EQ(Stored(), Ids{L"a"});
}

TEST_F(CombinedProducts, WithoutATargetOrProductsTouchNothing) {
    ServiceTakesAll();
    const TestSession session(server.Address());
    EXPECT_FALSE(dataset->AddCombinedComponents(L"", {MakeListProduct(L"a")}));
    EXPECT_FALSE(Add({}));
    EXPECT_FALSE(Exists(combinedPath));
    EXPECT_TRUE(server.Requests().empty());
}

TEST_F(CombinedProducts, OfOneIdTwiceAreBothCreated) {
    ServiceTakesAll();
    const TestSession session(server.Address());
    EXPECT_TRUE(Add({MakeListProduct(L"a"), MakeListProduct(L"a")}));
    EXPECT_EQ(OnlyRequest(server).path, kCreate);
}

TEST_F(CombinedProducts, ThatCannotBeStoredGoToTheCloudAsEdits) {
    ServiceTakesAll();
    const TestSession session(server.Address());
    {
        const FileSizeLimit full(0);
        EXPECT_TRUE(Add({MakeListProduct(L"a")})) << "the result is the cloud's, and a refresh brings them";
    }
    EXPECT_EQ(OnlyRequest(server).path, kEdit);
}

TEST_F(CombinedProducts, AreRemovedHereAndThere) {
    for (const wchar_t* id : {L"a", L"b", L"c"})
        Store(MakeListProduct(id));
    ServiceTakesAll();
    const TestSession session(server.Address());
    EXPECT_TRUE(Remove({L"a", L"c", L"unknown"}));
    EXPECT_EQ(Stored(), Ids{L"b"});
    const auto request = OnlyRequest(server);
    EXPECT_EQ(request.path, kRemove);
    EXPECT_EQ(request.body, R"({"ids":["a","c","unknown"]})");
}

TEST_F(CombinedProducts, WhoseRemovalTheCloudRefusesAreGoneHereAllTheSame) {
    Store(MakeListProduct(L"a"));
    server.On("/", ScriptedAnswer::Code("1"));
    const TestSession session(server.Address());
    EXPECT_FALSE(Remove({L"a"}));
    EXPECT_TRUE(Stored().empty());
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>{L"发送失败!"});
}

TEST_F(CombinedProducts, ThatAreNotHereAreRemovedThere) {
    ServiceTakesAll();
    const TestSession session(server.Address());
    EXPECT_TRUE(Remove({L"a"}));
    EXPECT_EQ(server.Paths(), std::vector<std::string>{kRemove});
    EXPECT_FALSE(Exists(combinedPath));
}

TEST_F(CombinedProducts, OfAnEmptyListAreNotRemoved) {
    Store(MakeListProduct(L"a"));
    const TestSession session(server.Address());
    EXPECT_FALSE(Remove({}));
    EXPECT_TRUE(server.Requests().empty());
    EXPECT_EQ(Stored(), Ids{L"a"});
}

TEST_F(CombinedProducts, WithoutASessionAreStoredAndReported) {
    EXPECT_FALSE(Add({MakeListProduct(L"a")}));
    EXPECT_EQ(Stored(), Ids{L"a"});
    EXPECT_FALSE(Add({MakeListProduct(L"a")}));
    EXPECT_FALSE(Remove({L"a"}));
    EXPECT_TRUE(Stored().empty());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"TolmProjectSettingHttpUtility::SendCreatedCombinationList: pSettings为空",
                        L"TolmProjectSettingHttpUtility::SendEditedCombinationList: pSettings为空",
                        L"TolmProjectSettingHttpUtility::SendRemovedCombinationList: pSettings为空"}));
}

} // namespace
