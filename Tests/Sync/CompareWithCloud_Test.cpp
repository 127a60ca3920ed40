#include "Host/Session.h"
#include "StoreSupport/SyncFixture.h"

namespace tolmtest {
namespace {

using nlohmann::json;
using Result = tolm::CompareVersionResult;

json Material(const std::string& name) {
    return {
        {"ID", "m"}, {"groupName", "MaterialSeries"}, {"text", name}, {"parentID", ""}, {"content", json::object()}};
}

/// What a comparison tells.
struct Comparison {
    Result result{};
    std::wstring projectId;
    int cloudVersion = 0;
    int localVersion = 0;
    std::wstring timePoint;
};

class CompareWithCloud : public SyncFixture {
protected:
    Comparison Compare() {
        Comparison told;
        told.result =
            dataset.Api().CompareCloudVersion(told.projectId, told.cloudVersion, told.localVersion, told.timePoint);
        return told;
    }

    /// A change of a material through the table.
    void EditLocally() {
        auto* const materials =
            tolm::EditTable(dataset.Api().GetMaterialData(tolm::TolmProjectSettingTableId::PlumbingPipeMaterials));
        auto material = tolm::IProjectSettingMaterial::Create();
        std::wstring id = L"m";
        material->SetId(id);
        materials->AddMaterial(std::move(material));
    }

    HostedDataset dataset = Dataset(L"a");
};

TEST_F(CompareWithCloud, AProjectThatWasNeverFilledIsNotInitialised) {
    service.CreateProject("P");
    service.OpenSession("P");
    const Notifications expected{{2, L"获取云端配置版本失败,云端配置未做初始化！"}};
    EXPECT_EQ(Compare().result, Result::CloudNotInitialised);
    EXPECT_EQ(TakeNotifications(), expected);
    EXPECT_FALSE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), expected);
}

TEST_F(CompareWithCloud, TheResultFollowsWhatHappensHereAndThere) {
    Open({{"ConfigTree", {Material("steel")}}});
    EXPECT_EQ(Compare().result, Result::CloudAhead);
    EXPECT_TRUE(dataset.Api().SyncDataFromCloud(true, nullptr, nullptr));
    EXPECT_EQ(Compare().result, Result::Same);
    Apply({{"ConfigTree", {Material("copper")}}}, json::object());
    EXPECT_EQ(Compare().result, Result::CloudAhead);
    EditLocally();
    EXPECT_EQ(Compare().result, Result::BothChanged);
    EXPECT_TRUE(dataset.Pull());
    EXPECT_EQ(Compare().result, Result::LocalChanges);
}

TEST_F(CompareWithCloud, BothVersionsAndTheTimeOfTheRefreshAreTold) {
    Open({{"ConfigTree", {Material("steel")}}});
    EXPECT_TRUE(dataset.Api().SyncDataFromCloud(true, nullptr, nullptr));
    Apply({{"ConfigTree", {Material("copper")}}}, json::object());
    const auto told = Compare();
    EXPECT_EQ(told.projectId, L"P");
    EXPECT_EQ(told.cloudVersion, 2);
    EXPECT_EQ(told.localVersion, 1);
    EXPECT_EQ(told.timePoint.size(), std::wstring(L"2024/03/22 08:03:00").size());
}

} // namespace
} // namespace tolmtest
