#include "StoreSupport/UploadRecords.h"

#include "MepDatabase/Encoders.h"
#include "StoreSupport/IngestFixture.h"

#include <limits>

namespace tolmtest {
namespace {

using tolm::GetCreatedOrEditedSystemTypeListJasonValue;
using web::json::value;

value SystemRow(SharedSystemType system) {
    return OnlyRow(GetCreatedOrEditedSystemTypeListJasonValue(false, true, {std::move(system)}));
}

TEST(SystemTypeRow, OfAPipeOrDuctHasTheIdsOfItsSeries) {
    for (const auto type : {Type::Pipe, Type::Duct})
        EXPECT_EQ(SystemRow(Shared(FullSystemType(type, Discipline::HVAC))),
                  Row(R"({"ID":"sys-1","code":"CW","description":"to \"all\" floors","systemType":"冷水",)"
                      R"("systemCategory":22,"CreateTime":1700000000789,"fittingIds":["sms-2","sms-1"]})"));
}

TEST(SystemTypeRow, OfAnElectricalSystemHasTheIdsOfItsCablesInOrderOfTheirNames) {
    EXPECT_EQ(SystemRow(Shared(FullSystemType(Type::ElectricalSystem, Discipline::Electrical))),
              Row(R"({"ID":"sys-1","code":"CW","description":"to \"all\" floors","systemType":"冷水",)"
                  R"("systemCategory":22,"CreateTime":1700000000789,"bindIDs":["psi-BV","psi-YJV"]})"));
}

TEST(SystemTypeRow, OfAnotherObjectTypeHasNoParts) {
    for (const int type : {0, 3, 4, 5, 7})
        EXPECT_EQ(SystemRow(Shared(FullSystemType(Type{type}, Discipline::HVAC))),
                  Row(R"({"ID":"sys-1","code":"CW","description":"to \"all\" floors","systemType":"冷水",)"
                      R"("systemCategory":22,"CreateTime":1700000000789})"))
            << type;
}

TEST(SystemTypeRow, WithoutPartsHasAnEmptyArray) {
    EXPECT_EQ(SystemRow(Shared(SystemType(L"s", L"n"))).at("fittingIds"), value::array());
    EXPECT_EQ(SystemRow(Shared(SystemType(L"s", L"n", Type::ElectricalSystem))).at("bindIDs"), value::array());
}

TEST(SystemTypeRow, HasItsNameUnderSystemType) {
    const auto row = SystemRow(Shared(SystemType(L"s", L"冷水")));
    EXPECT_EQ(row.at("systemType"), value::string("冷水"));
    EXPECT_FALSE(row.has_field("name"));
    EXPECT_FALSE(row.has_field("text"));
}

TEST(SystemTypeRow, WritesWholeNumbers) {
    auto system = SystemType(L"s", L"n");
    system->SetCreateTime(std::numeric_limits<std::int64_t>::max());
    system->SetClassification(tolm::MEPSystemClassification{-3});
    const auto row = SystemRow(Shared(std::move(system)));
    EXPECT_EQ(row.at("CreateTime").serialize(), "9223372036854775807");
    EXPECT_EQ(row.at("systemCategory").serialize(), "-3");
    EXPECT_TRUE(row.at("CreateTime").is_integer());
    EXPECT_TRUE(row.at("systemCategory").is_integer());
}

/// A system type of another maker, whose getters lend null parts among others.
class SystemWithNullParts final : public tolm::IProjectSettingSystemType {
public:
    explicit SystemWithNullParts(Type type) : m_type(type) {}
    wstring GetId() const override { return L"s"; }
    void SetId(wstring&) override {}
    wstring GetName() const override { return L"n"; }
    void SetName(wstring&) override {}
    wstring GetDescription() const override { return {}; }
    void SetDescription(wstring&) override {}
    wstring GetCode() const override { return {}; }
    void SetCode(wstring&) override {}
    std::int64_t GetCreateTime() const override { return 0; }
    void SetCreateTime(std::int64_t) override {}
    tolm::MEPDisciplineId GetDisciplineId() const override { return Discipline::HVAC; }
    void SetDisciplineId(tolm::MEPDisciplineId) override {}
    Type GetMEPType() const override { return m_type; }
    void SetMEPType(Type) override {}
    tolm::MEPSystemClassification GetClassification() const override { return {}; }
    void SetClassification(tolm::MEPSystemClassification) override {}
    void AddSystemMaterialSerie(SeriePtr&) override {}
    void DeleteSystemMaterialSerie(int) override {}
    void ClearMaterialSerie() override {}
    std::vector<const tolm::IProjectSettingMEPMaterialSerie*> GetSystemMaterialSerieList() const override {
        return {m_serie.get(), nullptr, m_serie.get()};
    }
    void AddCableSpecType(SizeModulePtr) override {}
    void DeleteCableSpecType(wstring) override {}
    void ClearCableSpecTypeList() override {}
    std::map<wstring, const tolm::IProjectSettingSizeModule*> GetCableSpecTypeList() const override {
        return {{L"a", nullptr}, {L"b", m_cable.get()}};
    }

private:
    Type m_type;
    SeriePtr m_serie = Serie(L"s1");
    SizeModulePtr m_cable = SizeModule(L"w1", L"n", Type::Wire, Discipline::Electrical);
};

TEST(SystemTypeRow, KeepsANullPartAsNullAndGoesOn) {
    EXPECT_EQ(SystemRow(std::make_shared<SystemWithNullParts>(Type::Pipe)).at("fittingIds"), Row("['s1',null,'s1']"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"GetCreatedOrEditedSystemTypeListJasonValue: pSerie为空"}));
    EXPECT_EQ(SystemRow(std::make_shared<SystemWithNullParts>(Type::ElectricalSystem)).at("bindIDs"),
              Row("[null,'w1']"));
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"GetCreatedOrEditedSystemTypeListJasonValue: cableSize为空"}));
}

TEST(SystemTypeRows, StandInTheOrderOfTheList) {
    const auto encoded =
        GetCreatedOrEditedSystemTypeListJasonValue(false, false, {Shared(SystemType(L"b")), Shared(SystemType(L"a"))});
    EXPECT_EQ(RowIds(encoded.at("rows")), (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(GetCreatedOrEditedSystemTypeListJasonValue(false, true, {}), Row("{'rows':[]}"));
}

TEST(SystemTypeRows, AreWrappedOnlyWhenWrappingIsAskedForAndNothingWasCreated) {
    const auto system = Shared(FullSystemType(Type::Pipe, Discipline::Plumbing));
    const auto row = [&](bool wrap, bool created) {
        return OnlyRow(GetCreatedOrEditedSystemTypeListJasonValue(wrap, created, {system}));
    };
    auto wrapped = value::object();
    wrapped["id"] = value::string("sys-1");
    wrapped["data"] = row(false, false);
    EXPECT_EQ(row(true, false), wrapped);
    EXPECT_EQ(row(true, true), row(false, false));
    EXPECT_EQ(row(false, true), row(false, false));
}

TEST(SystemTypeRows, AreLostWithANullRecordAfterTheReportsOfThoseBefore) {
    const auto broken = std::make_shared<SystemWithNullParts>(Type::Duct);
    EXPECT_TRUE(GetCreatedOrEditedSystemTypeListJasonValue(false, true, {broken, nullptr, broken}).is_null());
    EXPECT_EQ(TakeDebugWarningsWithFunction(),
              (Warnings{L"GetCreatedOrEditedSystemTypeListJasonValue: pSerie为空",
                        L"GetCreatedOrEditedSystemTypeListJasonValue: pSystemType为空"}));
}

} // namespace
} // namespace tolmtest
