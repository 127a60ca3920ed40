#include "MepDataSetInterface/TableLists.h"

#include "MepDataSetInterface/TableTestSupport.h"

namespace {

using namespace tolm;
using namespace tolmtest;

class MaterialLists : public testing::Test {
protected:
    /// A list of materials of these identifiers; an empty one makes an empty entry.
    static RecordList<IProjectSettingMaterial> ListOf(const Ids& ids) {
        RecordList<IProjectSettingMaterial> list;
        for (const auto& id : ids) {
            if (id.empty())
                list.emplace_back();
            else
                list.push_back(MakeMaterial(id));
        }
        return list;
    }

    /// The identifiers left after the removal of these inputs; an empty one stands for a null pointer.
    Ids Erase(const Ids& ids, const Ids& inputs) {
        auto list = ListOf(ids);
        const auto records = ListOf(inputs);
        std::vector<const IProjectSettingMaterial*> pointers;
        for (const auto& record : records)
            pointers.push_back(record.get());
        EraseById(list, pointers, TOLM_CALL_SITE, {L"input", L"entry"});
        Ids left;
        for (const auto& record : list)
            left.push_back(record ? record->GetId() : L"");
        return left;
    }
};

TEST_F(MaterialLists, EachInputErasesOneEntryTheFirstFirst) {
    EXPECT_EQ(Erase({L"a", L"b", L"a", L"a"}, {L"a", L"a"}), (Ids{L"b", L"a"}));
    EXPECT_EQ(Erase({L"a", L"b"}, {L"a", L"a", L"a"}), (Ids{L"b"}));
    EXPECT_EQ(Erase({}, {L"a"}), Ids{});
}

TEST_F(MaterialLists, EachWalkReportsTheEmptyEntriesThatItMeets) {
    EXPECT_EQ(Erase({L"", L"a", L"", L"b"}, {L"a", L"b", L"x"}), (Ids{L"", L""}));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"entry", L"entry", L"entry", L"entry", L"entry"}));
}

TEST_F(MaterialLists, NullInputsAreReportedInTheirPlace) {
    EXPECT_EQ(Erase({L"", L"a"}, {L"", L"a", L""}), (Ids{L""}));
    EXPECT_EQ(TakeDebugWarnings(), (Warnings{L"input", L"entry", L"input"}));
}

TEST_F(MaterialLists, ManyRecordsAreErasedInOneGo) {
    Ids ids;
    Ids odd;
    Ids even;
    for (int i = 0; i < 2000; ++i) {
        ids.push_back(std::to_wstring(i));
        (i % 2 == 0 ? even : odd).push_back(ids.back());
    }
    EXPECT_EQ(Erase(ids, odd), even);
}

} // namespace
