#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "StoreSupport/Records.h"
#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"
#include "Support/ServiceCalls.h"

namespace tolmtest {
namespace {

using nlohmann::json;
using tolm::CompareVersionResult;

json Row(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"groupName", "MaterialSeries"}, {"text", name}, {"parentID", ""}, {"content", json::object()}};
}

class NoProgress : public vorn::IProgressReporter {
public:
    void ReportProgress(double) override {}
};

/// A dataset at version 3 with a local change, and a service whose database was set back to version 2.
class SetBackService : public SyncFixture {
protected:
    SetBackService() : dataset(folder.File(L"mine"), componentPath) {
        Open({{"ConfigTree", {Row("m", "steel")}}});
        Apply({{"ConfigTree", {Row("n", "brass")}}}, json::object());
        service.BackUp(folder.File(L"backup.db"));
        Apply({{"ConfigTree", {Row("o", "zinc")}}}, json::object());
        EXPECT_TRUE(dataset.Pull());
        Store(*Material(L"mine", L"copper"));
        service.SetBackTo(folder.File(L"backup.db"));
        service.OpenSession("P");
        TakeNotifications();
        data = StoreFacts(dataset.Path());
        status = StoreFacts(dataset.StatusPath());
    }

    void Store(const tolm::IProjectSettingMaterial& material) const {
        EXPECT_TRUE(tolm::MepQbaseUtil::GetInstance()->WriteMaterial(
            dataset.Path(), tolm::DataSetFilePath::TOLMDDQFilePath, &material));
    }
    CompareVersionResult Compare() {
        std::wstring project;
        std::wstring timePoint;
        return dataset.Api().CompareCloudVersion(project, cloud, local, timePoint);
    }
    void ExpectNothingLost() {
        EXPECT_TRUE(Same(data, StoreFacts(dataset.Path())));
        EXPECT_TRUE(Same(status, StoreFacts(dataset.StatusPath())));
        EXPECT_EQ(service.Version("P"), 2);
    }

    HostedDataset dataset;
    Facts data;
    Facts status;
    int cloud = 0;
    int local = 0;
};

TEST_F(SetBackService, CannotBeComparedWith) {
    EXPECT_EQ(Compare(), CompareVersionResult::NotComparable);
    EXPECT_EQ(cloud, 2);
    EXPECT_EQ(local, 3);
    ExpectNothingLost();
}

TEST_F(SetBackService, SaysSoWhenTheChangesSinceALaterVersionAreAskedFor) {
    const auto token = service.SignIn();
    const auto answer =
        SendRequest(service.Port(), {"POST", "/api/DownloadVersion/P/3", UserHeaders("anna", token), ""});
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(json::parse(answer.body)["code"], "40903");
    EXPECT_NE(answer.body.find("load everything anew"), std::string::npos) << answer.body;
}

TEST_F(SetBackService, IsNotPulledFromAndTheDatasetStays) {
    EXPECT_FALSE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), (Notifications{{2, L"获取数据失败！"}}));
    ExpectNothingLost();
}

TEST_F(SetBackService, IsNotMergedWithAndTheDatasetStays) {
    NoProgress progress;
    Compare();
    EXPECT_FALSE(dataset.Api().MergeDataAndSendModifiedData(L"P", &progress, cloud, local));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"getCloudDataSucc 为false", L"mergeSucc 失败"}));
    ExpectNothingLost();
}

TEST_F(SetBackService, TakesNoUploadOfADatasetThatIsAheadOfIt) {
    Compare();
    EXPECT_FALSE(dataset.Api().SendModifiedDataToCloud(false, nullptr));
    ExpectNothingLost();
}

/// What a host does who lets the cloud's state stand: the dataset that is ahead stays beside it.
TEST_F(SetBackService, IsLoadedWholeIntoADatasetWithoutAVersion) {
    HostedDataset fresh(folder.File(L"fresh"), componentPath);
    EXPECT_TRUE(fresh.Pull());
    EXPECT_TRUE(Same(Expected(), fresh.Content()));
    ExpectNothingLost();
}

/// The service was told that it lost versions, and others filled it beyond them since.
class SetBackServiceThatWasFilledAgain : public SetBackService {
protected:
    SetBackServiceThatWasFilledAgain() {
        EXPECT_EQ(service.LoseVersions("P", 10), 13);
        Apply({{"ConfigTree", {Row("p", "lead")}}}, json::object());
    }
    void ExpectNothingLost() const {
        EXPECT_TRUE(Same(data, StoreFacts(dataset.Path())));
        EXPECT_TRUE(Same(status, StoreFacts(dataset.StatusPath())));
    }
};

TEST_F(SetBackServiceThatWasFilledAgain, GivesNoIncrementSinceAVersionThatItLost) {
    EXPECT_FALSE(dataset.Pull());
    EXPECT_EQ(TakeNotifications(), (Notifications{{2, L"获取数据失败！"}}));
    ExpectNothingLost();
}

TEST_F(SetBackServiceThatWasFilledAgain, IsNotMergedWithFromAVersionThatItLost) {
    NoProgress progress;
    EXPECT_EQ(Compare(), CompareVersionResult::BothChanged);
    EXPECT_FALSE(dataset.Api().MergeDataAndSendModifiedData(L"P", &progress, cloud, local));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"getCloudDataSucc 为false", L"mergeSucc 失败"}));
    ExpectNothingLost();
}

TEST_F(SetBackServiceThatWasFilledAgain, TakesNoUploadFromAVersionThatItLost) {
    Compare();
    EXPECT_FALSE(dataset.Api().SendModifiedDataToCloud(false, nullptr));
    ExpectNothingLost();
    EXPECT_EQ(service.Version("P"), 14);
}

TEST_F(SetBackServiceThatWasFilledAgain, IsLoadedWholeIntoADatasetWithoutAVersion) {
    HostedDataset fresh(folder.File(L"fresh"), componentPath);
    EXPECT_TRUE(fresh.Pull());
    EXPECT_TRUE(Same(Expected(), fresh.Content()));
}

TEST_F(SetBackService, GoesOnWithDatasetsOfTheVersionThatItKept) {
    HostedDataset kept(folder.File(L"kept"), componentPath);
    EXPECT_TRUE(kept.Pull());
    service.LoseVersions("P", 10);
    Apply({{"ConfigTree", {Row("p", "lead")}}}, json::object());
    EXPECT_TRUE(kept.Pull());
    EXPECT_TRUE(Same(Expected(), kept.Content()));
}

} // namespace
} // namespace tolmtest
