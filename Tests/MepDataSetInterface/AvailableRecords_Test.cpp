#include "MepDataSetInterface/AvailableRecords.h"

#include "MepDataSetInterface/TableTestSupport.h"

namespace {

using namespace tolm;
using namespace tolmtest;

constexpr CallSite kSite{"file", 1, "Caller"};

RecordList<IProjectSettingSizeModule> Modules(const std::vector<SectionType>& shapes) {
    RecordList<IProjectSettingSizeModule> list;
    for (const SectionType shape : shapes) {
        list.push_back(MakeSizeModule(std::to_wstring(list.size())));
        list.back()->SetDuctShape(shape);
    }
    return list;
}

TEST(AvailableRecords, StandUnderTheirIdentifiersInTheirOrder) {
    RecordList<IProjectSettingMaterial> list;
    for (const wchar_t* id : {L"b", L"c", L"a"})
        list.push_back(MakeMaterial(id));
    EXPECT_EQ(KeysOf(ById(std::move(list), kSite, L"empty")), (Ids{L"a", L"b", L"c"}));
}

TEST(AvailableRecords, OfOneIdentifierTheFirstIsKept) {
    RecordList<IProjectSettingMaterial> list;
    for (const wchar_t* name : {L"first", L"second"})
        list.push_back(MakeMaterial(L"a", name));
    const auto records = ById(std::move(list), kSite, L"empty");
    ASSERT_EQ(KeysOf(records), (Ids{L"a"}));
    EXPECT_EQ(records.at(L"a")->GetName(), L"first");
}

TEST(AvailableRecords, AnEmptyEntryIsReportedAndSkipped) {
    RecordList<IProjectSettingMaterial> list;
    list.emplace_back();
    list.push_back(MakeMaterial(L"a"));
    list.emplace_back();
    EXPECT_EQ(KeysOf(ById(std::move(list), kSite, L"empty")), (Ids{L"a"}));
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"Caller: empty", L"Caller: empty"}));
}

TEST(AvailableRecords, TheModuleOfAShapeIsTheFirstOfItBehindReportedEmptyEntries) {
    auto list = Modules({SectionType::Oval, SectionType::Round, SectionType::Round});
    list.insert(list.begin(), nullptr);
    list.emplace_back();
    EXPECT_EQ(TakeFirst(list, SectionType::Round, kSite)->GetId(), L"1");
    EXPECT_EQ(TakeDebugWarningsWithFunction(), (Warnings{L"Caller: retSizeList[i]为空"}));
}

TEST(AvailableRecords, TheModuleOfAShapeThatNoneHasIsNone) {
    auto list = Modules({SectionType::Oval});
    list.emplace_back();
    EXPECT_FALSE(TakeFirst(list, SectionType::Round, kSite));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"retSizeList[i]为空"}));
}

TEST(AvailableRecords, TheModuleOfNoShapeIsTheFirstOfAll) {
    auto list = Modules({SectionType::Oval, SectionType::Round});
    EXPECT_EQ(TakeFirst(list, SectionType::None, kSite)->GetId(), L"0");
    list.clear();
    EXPECT_FALSE(TakeFirst(list, SectionType::None, kSite));
}

} // namespace
