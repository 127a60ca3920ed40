#include "Host/Session.h"
#include "Platform/Support/ComponentSamples.h"
#include "StoreSupport/CircuitTemplates.h"
#include "StoreSupport/SyncFixture.h"

#include <algorithm>

namespace tolmtest {
namespace {

using nlohmann::json;
using tolm::EditTable;
using Ids = std::vector<std::wstring>;
using Products = std::vector<tolm::TolmCombinedProduct>;

const std::wstring kListCode = L"16353515";
const std::wstring kTerminalCode = L"16352020";

/// Two hosts on one project, each with a token of its own, and what one of them changes without an upload.
class TwoHosts : public SyncFixture {
protected:
    TwoHosts() {
        service.FillTables("P", json{{"ConfigTree",
                                      {{{"ID", "m"},
                                        {"groupName", "MaterialSeries"},
                                        {"text", "steel"},
                                        {"parentID", ""},
                                        {"content", json::object()}}}}}
                                    .dump());
        one.session = service.SignIn();
        two.session = service.SignIn();
        Pull(one);
        Pull(two);
    }

    struct Host {
        HostedDataset dataset;
        std::string session;
    };

    void Use(const Host& host) {
        tolm::CollaborationProjectSettingForPS::Open({.httpServer = service.Address(), .workingProjectId = L"P"});
        tolm::TolmUserSessionUtils::SetUser(L"anna", std::wstring(host.session.begin(), host.session.end()));
    }
    void Pull(Host& host) {
        Use(host);
        EXPECT_TRUE(host.dataset.Pull());
        TakeNotifications();
    }
    tolm::ICircuitTemplateData& Table(Host& host) {
        host.dataset.Api().ResetDataTables();
        host.dataset.Api().CollectData(false, {tolm::TolmProjectSettingTableId::CircuitTemplates});
        return *EditTable(host.dataset.Api().GetCircuitTemplateData());
    }
    Ids TemplateIds(Host& host) {
        Ids ids;
        for (const auto* circuit : Table(host).GetCircuitTemplateList())
            ids.push_back(circuit->GetId());
        return ids;
    }
    Products ProductsOf(const std::wstring& folderName) {
        return ReadProducts(folder.File(folderName) + L"/combined.db");
    }
    /// Pulls on both hosts: both then hold what the project holds.
    void PullAndCompare() {
        for (Host* host : {&two, &one}) {
            Pull(*host);
            EXPECT_TRUE(Same(Expected(), host->dataset.Content()));
        }
    }

    Host one{Dataset(L"one"), {}};
    Host two{Dataset(L"two"), {}};
};

const Notifications kWritten{{0, L"修改回路模板成功！"}};
const Notifications kDeleted{{0, L"删除回路模板成功！"}};

TEST_F(TwoHosts, ACircuitTemplateOfOneIsReadByTheOtherAfterItsPull) {
    Use(one);
    Table(one).AddCircuitTemplate(FullCircuitTemplate(L"t1"));
    EXPECT_EQ(TakeNotifications(), kWritten);
    EXPECT_EQ(service.Version("P"), 2);
    PullAndCompare();
    const auto list = Table(two).GetCircuitTemplateList();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]->GetId(), L"t1");
    EXPECT_EQ(list[0]->GetWireSpec(), L"4x16+1x10");
    EXPECT_EQ(list[0]->GetSwitchComponentTypeName(2), L"断路器 3");
    EXPECT_EQ(list[0]->GetPhase(), tolm::Phase::Three);
    EXPECT_EQ(list[0]->GetConduitSizeDn(), 25);
}

TEST_F(TwoHosts, AnEditAndADeletionOfACircuitTemplateReachTheOther) {
    Use(one);
    auto& table = Table(one);
    table.AddCircuitTemplate(CircuitTemplate(L"t1"));
    table.AddCircuitTemplate(CircuitTemplate(L"t2"));
    PullAndCompare();
    Use(two);
    Table(two).AddCircuitTemplate(CircuitTemplate(L"t1", L"16"));
    EXPECT_EQ(TakeNotifications(), kWritten);
    PullAndCompare();
    Use(one);
    auto& again = Table(one);
    const auto list = again.GetCircuitTemplateList();
    const auto first = std::find_if(list.begin(), list.end(), [](const auto* each) { return each->GetId() == L"t1"; });
    ASSERT_NE(first, list.end());
    EXPECT_EQ((*first)->GetWireSpec(), L"16");
    again.DeleteCircuitTemplateList({*first});
    EXPECT_EQ(TakeNotifications(), kDeleted);
    PullAndCompare();
    EXPECT_EQ(TemplateIds(two), Ids{L"t2"});
}

TEST_F(TwoHosts, CreatedAndEditedTemplatesOfOneListReachTheOther) {
    Use(one);
    auto& table = Table(one);
    table.AddCircuitTemplate(CircuitTemplate(L"t1"));
    const auto edited = CircuitTemplate(L"t1", L"10");
    const auto created = CircuitTemplate(L"t2", L"6");
    TakeNotifications();
    table.AddCircuitTemplateListToDB({created.get(), edited.get()});
    EXPECT_EQ(TakeNotifications(), kWritten);
    PullAndCompare();
    EXPECT_EQ(TemplateIds(two).size(), 2U);
}

TEST_F(TwoHosts, ATemplateThatWasWrittenWithoutAProjectIsUnknownToTheOtherUntilItIsWrittenAgain) {
    tolm::CollaborationProjectSettingForPS::Open({.httpServer = service.Address(), .workingProjectId = L""});
    Table(one).AddCircuitTemplate(CircuitTemplate(L"t1"));
    EXPECT_TRUE(TakeNotifications().empty());
    EXPECT_EQ(service.Version("P"), 1);
    EXPECT_EQ(TemplateIds(one), Ids{L"t1"});
    Use(one);
    Table(one).AddCircuitTemplate(CircuitTemplate(L"t1"));
    EXPECT_EQ(TakeNotifications(), kWritten) << "an edit of what the service lacks creates it";
    PullAndCompare();
    EXPECT_EQ(TemplateIds(two), Ids{L"t1"});
}

TEST_F(TwoHosts, TheServiceRefusesAStrangerAndTheTemplateStaysLocal) {
    Use(one);
    tolm::TolmUserSessionUtils::SetUser(L"anna", L"no token");
    Table(one).AddCircuitTemplate(CircuitTemplate(L"t1"));
    EXPECT_TRUE(TakeNotifications().empty());
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>{L"发送失败!"});
    EXPECT_EQ(TemplateIds(one), Ids{L"t1"});
    EXPECT_EQ(service.Version("P"), 1);
}

TEST_F(TwoHosts, ACombinedProductOfTheListFormIsReadByTheOtherAfterItsPull) {
    Use(one);
    EXPECT_TRUE(one.dataset.Api().AddCombinedComponents(kListCode, {MakeListProduct(L"p1"), MakeListProduct(L"p2")}));
    PullAndCompare();
    auto products = ProductsOf(L"two");
    ASSERT_EQ(products.size(), 2U);
    EXPECT_EQ(products[0].Name, L"组合 p1");
    EXPECT_EQ(products[0].spacing, 300);
    ASSERT_EQ(products[0].components.size(), 2U);
    EXPECT_EQ(products[0].components[0].componentId, L"b-id");
    EXPECT_EQ(products[0].components[0].componentTypeId, L"b-type");
    Use(two);
    products[1].spacing = 450;
    EXPECT_TRUE(two.dataset.Api().AddCombinedComponents(kListCode, {products[1], MakeListProduct(L"p3")}));
    PullAndCompare();
    EXPECT_EQ(ProductsOf(L"one").at(1).spacing, 450);
    EXPECT_EQ(ProductsOf(L"one").size(), 3U);
    Use(one);
    EXPECT_TRUE(one.dataset.Api().RemoveCombinedComponents(kListCode, kListCode, {L"p2", L"p1"}));
    PullAndCompare();
    EXPECT_EQ(ProductsOf(L"two").size(), 1U);
}

TEST_F(TwoHosts, ACombinedProductOfTheTerminalFormIsWholeWithTheOtherOnceItIsEdited) {
    Use(one);
    const auto product = MakeEquipmentProduct(L"e1");
    EXPECT_TRUE(one.dataset.Api().AddCombinedComponents(kTerminalCode, {product}));
    Pull(two);
    ASSERT_EQ(ProductsOf(L"two").size(), 1U);
    EXPECT_EQ(ProductsOf(L"two")[0].Name, L"风机盘管");
    EXPECT_EQ(ProductsOf(L"two")[0].equipment.componentId, L"") << "a created product tells its name alone";
    Pull(one);
    EXPECT_EQ(ProductsOf(L"one")[0].equipment.componentId, L"") << "what the cloud has replaces what stands here";
    Use(one);
    EXPECT_TRUE(one.dataset.Api().AddCombinedComponents(kTerminalCode, {product}));
    PullAndCompare();
    const auto read = ProductsOf(L"two").at(0);
    EXPECT_EQ(read.equipment.componentId, L"equipment-id");
    EXPECT_EQ(read.equipment.componentTypeId, L"equipment-type");
    EXPECT_EQ(read.supplyAirTerminal.componentId, L"supply-id");
    EXPECT_EQ(read.supplyAirTerminal.componentTypeId, L"supply-id") << "the row repeats the component's id";
    EXPECT_EQ(read.returnAirTerminal.componentTypeId, L"return-type");
    EXPECT_EQ(read.returnAirTerminal.categoryStandardCode, L"supply-code");
    EXPECT_EQ(read.supplyAirTerminalNumber, 3);
    EXPECT_EQ(read.supplyHoseLength, 1200.5);
    EXPECT_EQ(read.returnHoseLength, -7.75);
}

TEST_F(TwoHosts, ProductsOfAnUnknownCategoryAreRefusedByTheServiceAndStayLocal) {
    Use(one);
    EXPECT_FALSE(one.dataset.Api().AddCombinedComponents(L"99999999", {MakeListProduct(L"p1", L"99999999")}));
    EXPECT_EQ(TakeLogLines(), std::vector<std::wstring>{L"发送失败!"});
    EXPECT_EQ(ProductsOf(L"one").size(), 1U);
    EXPECT_EQ(service.Version("P"), 1);
}

} // namespace
} // namespace tolmtest
