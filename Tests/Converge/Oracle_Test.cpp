#include "Converge/HostHistories.h"
#include "Converge/TravellingFacts.h"
#include "Converge/VersionLog.h"
#include "StoreSupport/SyncFixture.h"

namespace tolmtest {
namespace {

using nlohmann::json;

/// What the histories are judged by has to see a fault where there is one.
class Oracle : public SyncFixture {
protected:
    Oracle() {
        Open(FirstTables());
        auto edited = FirstTables().at("PipeType").at(0);
        edited["name"] = "D";
        edited["CreateTime"] = 7;
        Apply({{"PipeType", {edited}}}, {{"ConfigTree", {"first group"}}});
    }

    Fate FateOf(const json& step, long long from = 1, long long to = 2) {
        return FindFate(VersionLog(service.DatabasePath(), "P"), {step, from, to}).fate;
    }
    static json Put(const char* slice, const char* id, const char* name, int mark) {
        return {{"do", "put"}, {"slice", slice}, {"id", id}, {"name", name}, {"mark", mark}};
    }
    static json Delete(const char* slice, const char* id) { return {{"do", "delete"}, {"slice", slice}, {"id", id}}; }
};

TEST_F(Oracle, AnEditLandsWithItsMarkAndNameAlone) {
    EXPECT_EQ(FateOf(Put("pipe series", "first serie", "D", 7)), Fate::Landed);
    EXPECT_EQ(FateOf(Put("pipe series", "first serie", "E", 7)), Fate::Lost) << "it stands under a name nobody gave it";
    EXPECT_EQ(FateOf(Put("pipe series", "first serie", "D", 7), 2, 3), Fate::Lost) << "it stood there before";
}

TEST_F(Oracle, AnEditIsOverriddenByAChangeOrARemovalOfTheSameSettingInItsTimeAlone) {
    EXPECT_EQ(FateOf(Put("pipe series", "first serie", "E", 8)), Fate::Overridden);
    EXPECT_EQ(FateOf(Put("pipe groups", "first group", "E", 8)), Fate::Overridden);
    EXPECT_EQ(FateOf(Put("pipe groups", "first group", "E", 8), 2, 3), Fate::Lost);
    EXPECT_EQ(FateOf(Put("duct groups", "first duct group", "E", 8)), Fate::Lost);
    EXPECT_EQ(FateOf(Put("duct groups", "unheard of", "E", 8)), Fate::Lost);
}

TEST_F(Oracle, ARemovalLandsIsOverriddenComesToNothingOrIsLost) {
    EXPECT_EQ(FateOf(Delete("pipe groups", "first group")), Fate::Landed);
    EXPECT_EQ(FateOf(Delete("pipe series", "first serie")), Fate::Overridden);
    EXPECT_EQ(FateOf(Delete("pipe groups", "unheard of")), Fate::Nothing);
    EXPECT_EQ(FateOf(Delete("duct groups", "first duct group")), Fate::Lost);
}

TEST_F(Oracle, ARepairedNameBearsANumberForEachMerge) {
    for (const char* name : {"D(1)", "D(1)(2)", "D(12)"}) {
        auto edited = FirstTables().at("DuctType").at(0);
        edited["name"] = name;
        edited["CreateTime"] = 9;
        const int version = Apply({{"DuctType", {edited}}}, json::object());
        const auto step = Put("duct series", "first duct serie", "D", 9);
        EXPECT_EQ(FateOf(step, version - 1, version), Fate::Landed) << name;
    }
    for (const char* name : {"D()", "D(x)", "DD(1)", "D(1"}) {
        auto edited = FirstTables().at("DuctType").at(0);
        edited["name"] = name;
        edited["CreateTime"] = 9;
        const int version = Apply({{"DuctType", {edited}}}, json::object());
        const auto step = Put("duct series", "first duct serie", "D", 9);
        EXPECT_EQ(FateOf(step, version - 1, version), Fate::Lost) << name;
    }
}

TEST_F(Oracle, ALinkToWhatIsNotThereCountsAsNoneAndALivingOneAsItself) {
    const Facts none{{"SMS/s", ""}, {"SMS/s/MEPType", "1"}};
    Facts dangling = none;
    dangling["SMS/s/SizeModuleId"] = "'z'";
    Facts living = dangling;
    living["PSI/z"] = "";
    EXPECT_EQ(TravellingFacts(none), TravellingFacts(dangling));
    EXPECT_EQ(TravellingFacts(none).at("SMS/s/SizeModuleId"), "''");
    EXPECT_EQ(TravellingFacts(living).at("SMS/s/SizeModuleId"), "'z'");
}

TEST_F(Oracle, TemplatesAndProductsAreComparedWhole) {
    const Facts whole{{"CRT/t", ""}, {"CRT/t/WireSpec", "'4'"}, {"combined/16353515/k", "'Hanger'"}};
    const auto travelling = TravellingFacts(whole);
    EXPECT_EQ(travelling.at("CRT/t/WireSpec"), "'4'");
    EXPECT_EQ(travelling.at("combined/16353515/k"), "'Hanger'");
}

TEST_F(Oracle, EveryAttributeOfEveryFirstRowIsCompared) {
    auto dataset = Dataset(L"pulled");
    EXPECT_TRUE(dataset.Pull());
    const auto content = dataset.Content();
    const auto compared = TravellingFacts(content);
    std::string leftOut;
    for (const auto& [key, value] : content) {
        if (!compared.contains(key))
            leftOut += key.substr(0, 4) + key.substr(key.rfind('/') + 1) + " ";
    }
    EXPECT_EQ(leftOut, "PSI/Name SMS/ConnectionSerieId SMS/ConnectionSerieId SMS/ConnectionSerieId ");
}

} // namespace
} // namespace tolmtest
