#include "MepDatabase/ConfigTreeIngest.h"
#include "StoreSupport/IngestFixture.h"

#include <functional>
#include <set>

namespace tolmtest {
namespace {

using web::json::value;

/// What a row may hold in place of what it should.
std::vector<value> HostileValues() {
    std::vector<value> values = {
        Json("null"),  Json("true"),  Json("-1"),      Json("1e308"),       Json("18446744073709551615"),
        Json("[]"),    Json("{}"),    Json("[null]"),  Json("[[[[]]]]"),    Json(R"({"ID":"x"})"),
        Json("\"\""),  Json("\"x\""), Json("-1e-308"), Json(R"("\u0000")"), Json(R"("\ud83d\ude00")"),
        Json("\"1e\"")};
    values.push_back(value::string(std::string(100000, 'x')));
    values.push_back(value::string("\xC3\x28\xFF"));
    values.push_back(value::array(std::vector<value>(301, value::object())));
    values.push_back(value::array(std::vector<value>(301, value::string("s"))));
    return values;
}

/// Calls `use` with the row once for each member at any depth and each hostile value in its place, and once without
/// the member.
void Spoil(value& root, value& at, const std::vector<value>& hostile, const std::function<void(const value&)>& use) {
    std::vector<std::string> keys;
    if (at.is_object())
        for (const auto& [key, member] : at.as_object())
            keys.push_back(key);
    for (const std::string& key : keys) {
        const value kept = at.at(key);
        for (const value& other : hostile) {
            at[key] = other;
            use(root);
        }
        at.erase(key);
        use(root);
        at[key] = kept;
        Spoil(root, at[key], hostile, use);
    }
    if (at.is_array())
        for (std::size_t i = 0; i < at.size(); ++i)
            Spoil(root, at[i], hostile, use);
}

/// Every row is taken with each of its members spoilt: the store stays in order, and nothing is told but what the
/// ingest tells of a lost unit.
class HostileRows : public IngestFixture {
protected:
    void SetUp() override {
        IngestFixture::SetUp();
        ProvideCategories({"cat", "16353515", "16352020"});
    }

    void SpoilEach(const std::string& row, const std::set<std::wstring>& expected,
                   const std::function<void(const value&)>& use) {
        value root = Row(row);
        Spoil(root, root, HostileValues(), use);
        for (const value& other : HostileValues())
            use(other);
        for (const std::wstring& warning : TakeDebugWarnings())
            EXPECT_TRUE(expected.contains(warning)) << testing::PrintToString(warning);
        MakeRecord("MTS", L"still works", L"n", 1, 2);
        EXPECT_TRUE(Exists("MTS", L"still works"));
    }

    /// Adds and deletes other content.
    void SpoilOther(const std::string& content, const std::wstring& whenAdding, const std::wstring& whenDeleting) {
        const wstring products = folder.File(L"products.db");
        const wstring files = folder.File(L"files");
        SpoilEach(content, {whenAdding}, [&](const value& add) {
            if (add.is_object())
                util.AddOtherContent(add.as_object(), &qb, products, files);
        });
        ASSERT_TRUE(qb.deleteRec("MTS", L"still works"));
        SpoilEach(content, {whenDeleting}, [&](const value& del) {
            if (del.is_object())
                util.DeleteOtherContent(del.as_object(), &qb, products, files);
        });
    }

    /// Expects that every record of the class can be read.
    void ExpectReadable(const char* classCode) {
        for (const wstring& id : Ids(classCode))
            EXPECT_TRUE(qb.fetchEqualRec(classCode, id)) << testing::PrintToString(id);
    }
};

TEST_F(HostileRows, PipeSizes) {
    SpoilEach("{'ID':'s1','parentID':'m1','text':'t','CreateTime':1,'content':{'roughness':0.5,'sizeList':["
              "{'DN':15,'OD':'21','ID':16.1,'Thickness':2.6}]}}",
              {}, [&](const value& row) { util.SyncPipeSizeTableItem(&qb, 2, row); });
    ExpectReadable("PSI");
    ExpectReadable("MTS");
}

TEST_F(HostileRows, OtherSizesAndGroups) {
    const wchar_t* const groups[] = {L"ductSeriesType", L"electricWireType", L"electricLinePipe", L"cableTray",
                                     L"ductFittingGroup"};
    for (const wchar_t* group : groups) {
        const std::wstring failure = std::wstring(group) + L":下载";
        std::set<std::wstring> expected;
        for (const wchar_t* what : {L"风管类型", L"导线类型", L"线管类型", L"桥架类型", L"管配件组合的分组"})
            expected.insert(failure + what + L"失败");
        SpoilEach("{'ID':'s1','text':'t','CreateTime':1,'content':{'shape':1,'systemPress':1,'series':'x','type':1,"
                  "'currentUseTemperature':1,'sizeList':[{'DN':1,'OD':2,'ID':3,'Size':4,'Thickness':5,'area':'2.5',"
                  "'current':6,'temperature':7}]}}",
                  expected,
                  [&](const value& row) { util.SyncSizeTableExceptPipeAndGroupTableItem(&qb, group, L"s1", row); });
        ASSERT_TRUE(qb.deleteRec("MTS", L"still works"));
    }
    ExpectReadable("PSI");
    ExpectReadable("MSG");
}

TEST_F(HostileRows, Series) {
    for (const short type : {short{1}, short{3}, short{4}}) {
        SpoilEach("{'ID':'s1','name':'n','CreateTime':1,'minSize':1,'maxSize':2,'preferredConnect':1,'type':1,"
                  "'PipeSegmentId':'p','parentID':'g','connective':2,'Elbow':[{'categoryCode':'cat','id':'e',"
                  "'FittingPartType':1,'min':1,'max':2}],'HorizontalTee':[]}",
                  {}, [&](const value& row) { util.SyncMaterialSerie(row, &qb, type, 3); });
        ASSERT_TRUE(qb.deleteRec("MTS", L"still works"));
    }
    ExpectReadable("SMS");
    ExpectReadable("COS");
    SpoilEach("{'PipeType':[{'ID':'s1'}]}", {L"删除管配件组合失败"}, [&](const value& del) {
        if (del.is_object() && (!del.has_field("PipeType") || del.at("PipeType").is_array()))
            util.SyncDeletedMaterialSerie(del.as_object(), &qb, L"PipeType");
    });
}

TEST_F(HostileRows, SystemTypes) {
    for (const short discipline : {short{2}, short{3}}) {
        SpoilEach("{'ID':'y1','systemType':'n','code':'c','description':'d','systemCategory':1,'CreateTime':1,"
                  "'fittingIds':['a'],'bindIDs':['b']}",
                  {}, [&](const value& row) { util.SyncSystemTypes(&qb, 1, discipline, {row}); });
        ASSERT_TRUE(qb.deleteRec("MTS", L"still works"));
    }
    ExpectReadable("SYS");
    SpoilEach("{'PipeSystemType':[{'ID':'y1'}]}", {L"删除系统类型失败"}, [&](const value& del) {
        if (del.is_object())
            util.SyncDeletedSystemType(del.as_object(), &qb, L"PipeSystemType");
    });
}

TEST_F(HostileRows, CircuitTemplates) {
    SpoilOther("{'CircuitTemplate':[{'ID':'r1','SystemClassification':41,'SystemTypeId':'y','SwitchComponentId1':'i',"
               "'SwitchComponentId2':'i','SwitchComponentId3':'i','SwitchComponentType1':'t','SwitchComponentType2':"
               "'t','SwitchComponentType3':'t','Phase':4,'ProtectionMaterial':'p','WireType':'w','WireSpec':'s',"
               "'WireCountStr':'3','ConduitType':'c','ConduitSizeDN':20,'IsApply':1,'LayingMode':'l'}]}",
               L"CircuitTemplate:下载回路模板失败", L"删除回路模板失败");
    ExpectReadable("CRT");
}

TEST_F(HostileRows, BinaryFiles) {
    SpoilOther("{'BinaryTable':[{'fileName':'f','length':3,'data':'Zm9v'}]}", L"BinaryTable:下载文件失败",
               L"删除单文件失败");
}

TEST_F(HostileRows, CombinedProducts) {
    for (const wchar_t* code : {L"16353515", L"16352020"}) {
        SpoilEach("{'ID':'k','Name':'n','Spacing':1,'List':[{'CategoryStandardCode':'cat','ComponentId':'a',"
                  "'ComponentTypeId':'t'}],'EquipmentComponentId':'e','EquipmentComponentTypeId':'t',"
                  "'EquipmentCategoryStandardCode':'cat','SupplyAirTerminalComponentId':'s',"
                  "'SupplyAirTerminalComponentTypeId':'t','AirTerminalCategoryStandardCode':'cat',"
                  "'ReturnAirTerminalComponentId':'r','ReturnAirTerminalComponentTypeId':'t','SupplySystemTypeId':'s',"
                  "'SupplyAirTerminalDist1':1,'SupplyAirTerminalDist2':2,'SupplyAirTerminalNumber':3,"
                  "'SupplyDuctTypeId':'d','SupplyHoseLength':4,'ReturnSystemTypeId':'s','ReturnDuctTypeId':'d',"
                  "'ReturnHoseLength':5}",
                  {L"ID为空", L"Name为空", L"partList.size()为0"}, [&](const value& row) {
                      tolm::TolmCombinedProduct product;
                      try {
                          util.GetCombinedProductFromJson(code, row, product);
                      } catch (const web::json::json_exception&) {
                          // The section's handler is for these.
                      }
                  });
        ASSERT_TRUE(qb.deleteRec("MTS", L"still works"));
    }
}

TEST_F(HostileRows, DeletionsOfTheConfigurationTree) {
    SpoilEach("{'ConfigTree':[{'groupName':'MaterialSeries','ID':'a','parentID':''},{'groupName':'ductSeriesType',"
              "'ID':'b'},{'groupName':'electricWireType','ID':'c'}]}",
              {}, [&](const value& del) {
                  try {
                      tolm::DeleteConfigTreeItems(del.as_object(), &qb);
                  } catch (const web::json::json_exception&) {
                      // The refresh ends with these.
                  }
              });
}

} // namespace
} // namespace tolmtest
