#include "StoreSupport/StoreFixture.h"
#include "StoreSupport/SyncFixture.h"

namespace tolmtest {
namespace {

using nlohmann::json;
using TableId = tolm::TolmProjectSettingTableId;
using Names = std::vector<std::wstring>;

json Material(const std::string& id, const std::string& name) {
    return {{"ID", id}, {"groupName", "MaterialSeries"}, {"text", name}, {"parentID", ""}, {"content", json::object()}};
}

json TextFile(const std::string& name, const std::string& base64, int length) {
    return {{"fileName", name}, {"data", base64}, {"length", length}};
}

Names MaterialNames(HostedDataset& dataset) {
    Names names;
    for (const auto* material : dataset.Api().GetMaterialData(TableId::PlumbingPipeMaterials)->GetMaterialList())
        names.push_back(material->GetName());
    return names;
}

class TwoDatasets : public SyncFixture {
protected:
    void OpenOn(const std::string& project) { service.OpenSession(project); }
    void ExpectContent(const HostedDataset& dataset, const std::string& project) {
        EXPECT_EQ(Difference(Expected(project), dataset.Content()), "") << project;
    }
};

TEST_F(TwoDatasets, OfTwoProjectsKeepApartWhenTheyArePulledInTurn) {
    Open({{"ConfigTree", {Material("m", "steel")}}, {"BinaryTable", {TextFile("f", "YQ==", 1)}}}, "P1");
    Open({{"ConfigTree", {Material("m", "copper"), Material("n", "brass")}}}, "P2");
    auto one = Dataset(L"one");
    auto two = Dataset(L"two");
    for (int round = 0; round < 3; ++round) {
        OpenOn("P1");
        EXPECT_TRUE(one.Pull());
        OpenOn("P2");
        EXPECT_TRUE(two.Pull());
        ExpectContent(one, "P1");
        ExpectContent(two, "P2");
        Apply({{"ConfigTree", {Material("m", "steel " + std::to_string(round))}}}, json::object(), "P1");
        Apply({{"BinaryTable", {TextFile("f", "Yg==", 1), TextFile("r" + std::to_string(round), "", 0)}}},
              {{"ConfigTree", {"n"}}}, "P2");
    }
    EXPECT_EQ(one.Version(), 3);
    EXPECT_EQ(two.Version(), 3);
    EXPECT_EQ(MaterialNames(one), Names{L"steel 1"});
    EXPECT_EQ(MaterialNames(two), Names{L"copper"});
    EXPECT_EQ(MaterialNames(one), Names{L"steel 1"});
}

TEST_F(TwoDatasets, OfOneProjectComeToTheSameByDifferentWays) {
    Open({{"ConfigTree", {Material("m", "steel")}}});
    auto often = Dataset(L"often");
    auto seldom = Dataset(L"seldom");
    EXPECT_TRUE(often.Pull());
    EXPECT_TRUE(seldom.Pull());
    for (const char* name : {"copper", "brass"}) {
        Apply({{"ConfigTree", {Material("m", name), Material(name, "also " + std::string(name))}}}, json::object());
        EXPECT_TRUE(often.Pull());
    }
    EXPECT_TRUE(seldom.Pull());
    EXPECT_EQ(Difference(often.Content(), seldom.Content()), "");
    ExpectContent(seldom, "P");
}

TEST_F(TwoDatasets, StandUnderPathsWithBlanksAndChineseCharacters) {
    Open({{"ConfigTree", {Material("m", "无缝钢管")}},
          {"Combination_16302510",
           {{{"ID", "k"},
             {"Name", "水表组"},
             {"Spacing", 150},
             {"List", {{{"CategoryStandardCode", "x"}, {"ComponentId", "i"}, {"ComponentTypeId", "t"}}}}}}},
          {"BinaryTable", {TextFile("会议 纪要.txt", "YQ==", 1)}}});
    HostedDataset plain(folder.File(L"plain"), componentPath);
    HostedDataset chinese(folder.File(L"项目 数据/第 2 栋"), componentPath, L"设置 数据集 v1.2.db");
    EXPECT_TRUE(plain.Pull());
    EXPECT_TRUE(chinese.Pull());
    ExpectContent(chinese, "P");
    EXPECT_EQ(FileBytes(chinese.BinaryFolder() + L"/会议 纪要.txt"), "a");
    EXPECT_EQ(MaterialNames(chinese), Names{L"无缝钢管"});
    Apply({{"ConfigTree", {Material("m", "焊接钢管")}}}, {{"BinaryTable", {"会议 纪要.txt"}}});
    EXPECT_TRUE(chinese.Pull());
    EXPECT_TRUE(plain.Pull());
    ExpectContent(chinese, "P");
    EXPECT_EQ(Difference(plain.Content(), chinese.Content()), "");
}

} // namespace
} // namespace tolmtest
