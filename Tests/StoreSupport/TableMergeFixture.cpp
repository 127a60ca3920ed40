#include "StoreSupport/TableMergeFixture.h"

#include "Host/Definitions.h"
#include "MepDatabase/MergeLists.h"
#include "Vorn/Text.h"

#include <ostream>

namespace tolmtest {
namespace {

namespace schema = tolm::schema;

std::string Filled(std::string row, const wstring& id, const wstring& name) {
    const auto fill = [&](const std::string& place, const wstring& text) {
        for (auto at = row.find(place); at != std::string::npos; at = row.find(place))
            row.replace(at, place.size(), vorn::StringUtil::ToString(text));
    };
    fill("%ID", id);
    fill("%NAME", name);
    return row;
}

void Append(web::json::value& tables, const char* table, const std::string& row) {
    web::json::value& rows = tables[table];
    if (!rows.is_array())
        rows = web::json::value::array();
    rows[rows.size()] = Row(row);
}

} // namespace

const std::vector<MergedKind> kMergedKinds = {
    {"SystemType", "SYS", L"PipeSystemType", "PipeSystemType", 1, 2,
     "{'ID':'%ID','systemType':'%NAME','code':'','description':'','systemCategory':1}", "{'ID':'%ID'}"},
    {"Serie", "SMS", L"PipeType", "PipeType", 1, 2, "{'ID':'%ID','name':'%NAME'}", "{'ID':'%ID'}"},
    {"PipeSizes", "PSI", L"MaterialSeries", "ConfigTree", 1, 2,
     "{'ID':'%ID','groupName':'MaterialSeries','parentID':'m','text':'%NAME','content':{'sizeList':[]}}",
     "{'ID':'%ID','groupName':'MaterialSeries','parentID':'m'}"},
    {"PipeMaterial", "MTS", L"HVACMaterialSeries", "ConfigTree", 1, 1,
     "{'ID':'%ID','groupName':'HVACMaterialSeries','parentID':'','text':'%NAME'}",
     "{'ID':'%ID','groupName':'HVACMaterialSeries','parentID':''}"},
    {"DuctSizes", "PSI", L"ductSeriesType", "ConfigTree", 2, 1,
     "{'ID':'%ID','groupName':'ductSeriesType','text':'%NAME',"
     "'content':{'shape':1,'systemPress':1,'series':'steel','sizeList':[]}}",
     "{'ID':'%ID','groupName':'ductSeriesType'}"},
    {"Conduit", "PSI", L"electricLinePipe", "ConfigTree", 4, 3,
     "{'ID':'%ID','groupName':'electricLinePipe','text':'%NAME','content':{'sizeList':[]}}",
     "{'ID':'%ID','groupName':'electricLinePipe'}"},
    {"CableTray", "PSI", L"cableTray", "ConfigTree", 3, 3,
     "{'ID':'%ID','groupName':'cableTray','text':'%NAME','content':{'type':1,'sizeList':[]}}",
     "{'ID':'%ID','groupName':'cableTray'}"},
    {"Group", "MSG", L"pipeFittingGroup", "ConfigTree", 1, 2,
     "{'ID':'%ID','groupName':'pipeFittingGroup','text':'%NAME'}", "{'ID':'%ID','groupName':'pipeFittingGroup'}"},
};

void PrintTo(const MergedKind& kind, std::ostream* out) {
    *out << kind.name;
}

void TableMergeFixture::SetUp() {
    IngestFixture::SetUp();
    ASSERT_TRUE(statusQb.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, statusPath, true));
    ASSERT_TRUE(statusQb.lockForUpdate());
}

void TableMergeFixture::TearDown() {
    EXPECT_TRUE(statusQb.closeDatabase());
    IngestFixture::TearDown();
}

void TableMergeFixture::CloudAdds(const MergedKind& kind, const wstring& id, const wstring& name) {
    CloudAddsRow(kind.table, Filled(kind.addRow, id, name));
}

void TableMergeFixture::CloudDeletes(const MergedKind& kind, const wstring& id) {
    CloudDeletesRow(kind.table, Filled(kind.delRow, id, L""));
}

void TableMergeFixture::CloudModifies(const MergedKind& kind, const wstring& id, const wstring& name) {
    CloudDeletes(kind, id);
    CloudAdds(kind, id, name);
}

void TableMergeFixture::CloudAddsRow(const char* table, const std::string& row) {
    Append(add, table, row);
}

void TableMergeFixture::CloudDeletesRow(const char* table, const std::string& row) {
    Append(del, table, row);
}

void TableMergeFixture::Stands(const MergedKind& kind, const wstring& id, const wstring& name) {
    MakeRecord(kind.classCode, id, name, kind.mepType, kind.disciplineId);
}

void TableMergeFixture::Notes(const MergedKind& kind, const wstring& id, short status) {
    NotesAt(kind.classCode, id, status, kind.mepType, kind.disciplineId);
}

void TableMergeFixture::NotesAt(const char* classCode, const wstring& id, short status, short mepType,
                                short disciplineId) {
    ASSERT_TRUE(statusQb.createRec(classCode, id));
    statusQb.setShort(schema::kStatus, status);
    statusQb.setShort(schema::kMEPType, mepType);
    statusQb.setShort(schema::kDisciplineId, disciplineId);
    ASSERT_TRUE(statusQb.saveRec());
}

bool TableMergeFixture::Merge(const MergedKind& kind) {
    const wstring key = kind.key;
    if (std::string(kind.table) != "ConfigTree")
        return util.MergeOneTableData(add, del, &qb, &statusQb, kind.classCode, key, kind.mepType, kind.disciplineId);
    std::map<wstring, Texts> added;
    std::map<wstring, Texts> deleted;
    std::map<wstring, Texts> modified;
    tolm::GetCloudChangedConfigTreeIdLists(add, del, added, deleted, modified);
    if (key == L"MaterialSeries" || key == L"HVACMaterialSeries")
        return util.MergePipeSizeTable(add, del, &qb, &statusQb, key, kind.disciplineId, added, deleted, modified);
    return util.MergeSizeTable(add, del, &qb, &statusQb, key, kind.mepType, kind.disciplineId, kind.classCode, added,
                               deleted, modified);
}

wstring TableMergeFixture::NameOf(const MergedKind& kind, const wstring& id) {
    return Exists(kind.classCode, id) ? Text(kind.classCode, id, schema::kName).value_or(L"nameless") : L"gone";
}

short TableMergeFixture::StatusOf(const MergedKind& kind, const wstring& id) {
    short status = 0;
    if (statusQb.fetchEqualRec(kind.classCode, id))
        statusQb.getShort(schema::kStatus, status);
    return status;
}

std::vector<std::string> TableMergeFixture::Notes() {
    std::vector<std::string> notes;
    statusQb.resetFilters();
    for (const char* classCode : {"SYS", "MTS", "PSI", "SMS", "MSG"}) {
        for (bool more = statusQb.fetchFirstMember(classCode); more; more = statusQb.fetchNextMember()) {
            CWsz id;
            short status = 0;
            statusQb.getObjId(id);
            statusQb.getShort(schema::kStatus, status);
            notes.push_back(std::string(classCode) + " " + vorn::StringUtil::ToString(id.str()) + " " +
                            std::to_string(status));
        }
    }
    return notes;
}

} // namespace tolmtest
