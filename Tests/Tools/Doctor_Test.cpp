#include "Tools/PulledTree.h"

#include "TolmDataSet/MepEnums.h"

#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>

using namespace tolmtest;
using tolmcli::Done;
using tolmcli::Failed;

namespace {

/// What the command found, in one line each: group, kind of record, id, finding.
std::vector<std::string> FoundBy(const ToolRun& run) {
    std::vector<std::string> lines;
    const auto json = run.Json();
    for (const auto& finding : json.at("findings"))
        lines.push_back(finding.at("group").get<std::string>() + "|" + finding.at("what").get<std::string>() + "|" +
                        finding.at("id").get<std::string>() + "|" + finding.at("finding").get<std::string>());
    return lines;
}

using Fill = std::function<void(CQbase&)>;

/// Puts a record straight into a store, with an object type and a discipline.
bool Put(const std::wstring& path, const char* classCode, const wchar_t* id, const Fill& fill, short type = 1,
         short discipline = 2) {
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, true) || !store.lockForUpdate() ||
        !store.createRec(classCode, id))
        return false;
    store.setShort(1104, type);
    store.setShort(1181, discipline);
    fill(store);
    return store.saveRec() && store.closeDatabase();
}

Fill Text(short attribute, const wchar_t* text) {
    return [=](CQbase& store) { store.setWsz(attribute, text, -1); };
}

Fill Texts(short attribute, std::vector<std::wstring> texts) {
    return [=](CQbase& store) {
        CWszArray list;
        for (const auto& text : texts)
            list.append(CWsz(text));
        store.setWszArray(attribute, list, 0);
    };
}

Fill Nothing() {
    return [](CQbase&) {};
}

/// Changes a file past the store, as a faulty program would.
bool RunSql(const std::wstring& path, const char* sql) {
    sqlite3* database = nullptr;
    const bool opened = sqlite3_open(vorn::StringUtil::ToString(path).c_str(), &database) == SQLITE_OK;
    const bool done = opened && sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(database);
    return done;
}

std::string BytesOf(const std::wstring& path) {
    std::ifstream file(vorn::StringUtil::ToString(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Doctor : public LocalTool {
protected:
    bool Store(const char* classCode, const wchar_t* id, const Fill& fill, short type = 1, short discipline = 2) {
        return Put(m_path, classCode, id, fill, type, discipline);
    }
    std::vector<std::string> Found() {
        const auto run = On("doctor", {"--json"});
        EXPECT_EQ(run.code, run.Json().at("healthy").get<bool>() ? Done : Failed);
        return FoundBy(run);
    }
    /// The dataset has exactly these findings.
    void ExpectFound(const std::vector<std::string>& findings) { EXPECT_EQ(Found(), findings); }

    /// Page at which a table or an index begins.
    int RootPageOf(const std::string& tree) const {
        sqlite3* database = nullptr;
        sqlite3_stmt* statement = nullptr;
        int page = 0;
        const std::string sql = "select rootpage from sqlite_master where name = '" + tree + "'";
        if (sqlite3_open(m_dataset.c_str(), &database) == SQLITE_OK &&
            sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK &&
            sqlite3_step(statement) == SQLITE_ROW)
            page = sqlite3_column_int(statement, 0);
        sqlite3_finalize(statement);
        sqlite3_close(database);
        EXPECT_GT(page, 1) << tree;
        return page;
    }

    void Damage(int page) const {
        std::fstream file(m_dataset, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp((page - 1) * 4096);
        file << std::string(4096, '\x5a');
        EXPECT_TRUE(file.flush().good());
    }

    std::wstring m_path = m_folder.File(L"office.db");
    std::wstring m_statusPath = m_folder.File(L"office_Status.db");
};

class DoctorOfAPulledTree : public PulledTree {};

/// The sample project without its binary files, which do not stand in the dataset.
class DoctorOfTheSampleProject : public ConnectedTool {
protected:
    static std::string Sample(const char* name) { return std::string(TOLM_SOURCE_DIR "/Data/OfficeTower/") + name; }
    static nlohmann::json JsonOf(const char* name) {
        return nlohmann::json::parse(BytesOf(vorn::StringUtil::ToWString(Sample(name))));
    }
    static std::string ChangeOf(const char* name) {
        auto json = JsonOf(name);
        json.at("add").erase("BinaryTable");
        return json.dump();
    }
    const char* Tables() const override {
        static const std::string tables = [] {
            auto json = JsonOf("project.json").at("tables");
            json.erase("BinaryTable");
            return json.dump();
        }();
        return tables.c_str();
    }

    void SetUp() override {
        ConnectedTool::SetUp();
        ASSERT_EQ(On("import-components", {Sample("components.json")}).code, Done);
    }
};

} // namespace

TEST_F(Doctor, ANewDatasetIsHealthy) {
    const auto run = On("doctor");
    EXPECT_EQ(run.code, Done);
    EXPECT_EQ(run.out, "healthy\n");
}

TEST_F(Doctor, ADatasetWithNotedChangesIsHealthy) {
    AddCopper();
    EXPECT_EQ(On("doctor").out, "healthy\n");
    EXPECT_EQ(On("doctor", {"--json"}).out, "{\n  \"healthy\": true,\n  \"findings\": []\n}\n");
}

TEST_F(DoctorOfAPulledTree, IsHealthyUntilWhatIsInUseGoesByForce) {
    EXPECT_EQ(On("doctor").out, "healthy\n");
    for (const char* what : {"material", "size", "group", "series"}) {
        const char* name = what[0] == 'm' ? "m1" : what[1] == 'i' ? "s1" : what[0] == 'g' ? "g1" : "p1";
        ASSERT_EQ(On("delete", {what, name, "--force"}).code, Done) << what;
    }
    EXPECT_EQ(FoundBy(On("doctor", {"--json"})),
              (std::vector<std::string>{"references|size table|s2|material m1 is not there",
                                        "references|system type|y1|series p1 is not there"}));
}

TEST_F(DoctorOfTheSampleProject, IsHealthyAtEveryVersion) {
    ASSERT_EQ(On("pull").code, Done);
    EXPECT_EQ(On("doctor").out, "healthy\n");
    for (const char* change : {"change-1.json", "change-2.json"}) {
        m_service.Apply("tower", ChangeOf(change));
        const auto run = On("pull");
        ASSERT_EQ(run.code, Done) << run.err;
        EXPECT_EQ(On("doctor").out, "healthy\n") << change;
    }
}

TEST_F(Doctor, FindingsAreGroupedAndCounted) {
    ASSERT_TRUE(Store("PSI", L"s1", Text(1504, L"m1")));
    ASSERT_TRUE(Store("PSI", L"s2", Text(1504, L"m2")));
    ASSERT_TRUE(Store("MTS", L"a", Text(1601, L"Steel")));
    ASSERT_TRUE(Store("MTS", L"b", Text(1601, L"Steel")));
    const auto run = On("doctor");
    EXPECT_EQ(run.code, Failed);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "references\n"
                       "  size table (s1): material m1 is not there\n"
                       "  size table (s2): material m2 is not there\n"
                       "names\n"
                       "  material Steel (b): has the name of a\n"
                       "3 findings\n");
}

TEST_F(Doctor, OneFindingIsCountedAsOne) {
    ASSERT_TRUE(Store("PSI", L"s1", Text(1504, L"m1")));
    EXPECT_TRUE(Contains(On("doctor").out, "\n1 finding\n"));
}

TEST_F(Doctor, EveryReferenceToWhatIsGoneIsFound) {
    struct Case {
        const char* from;
        Fill fill;
        const char* finding;
        const char* to;
        short targetType = 1;
    };
    const std::vector<Case> cases{
        {"PSI", Text(1504, L"x"), "size table|from|material x is not there", "MTS"},
        {"SMS", Text(1506, L"x"), "series|from|size table x is not there", "PSI"},
        {"SMS", Text(1609, L"x"), "series|from|connection series x is not there", "COS"},
        {"SMS", Text(1520, L"x"), "series|from|group x is not there", "MSG"},
        {"SYS", Texts(1607, {L"x"}), "system type|from|series x is not there", "SMS"},
        {"SYS", Texts(1610, {L"x"}), "system type|from|cable table x is not there", "PSI", 5},
        {"CRT", Text(1509, L"x"), "circuit template|from|system type x is not there", "SYS"},
        {"CRT", Text(1512, L"x"), "circuit template|from|wire x is not there", "PSI", 5},
        {"CRT", Text(1511, L"x"), "circuit template|from|conduit series x is not there", "SMS"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.finding);
        ASSERT_TRUE(CQbase::removeStore(m_path));
        ASSERT_TRUE(Store(c.from, L"from", c.fill));
        ExpectFound({std::string("references|") + c.finding});
        ASSERT_TRUE(Store(c.to, L"x", Nothing(), c.targetType));
        ExpectFound({});
    }
}

TEST_F(Doctor, EachOfAListOfReferencesCounts) {
    ASSERT_TRUE(Store("SMS", L"p2", Nothing()));
    ASSERT_TRUE(Store("SYS", L"y1", Texts(1607, {L"p1", L"p2", L"p3"})));
    ExpectFound(
        {"references|system type|y1|series p1 is not there", "references|system type|y1|series p3 is not there"});
}

TEST_F(Doctor, AnEmptyReferenceIsNone) {
    ASSERT_TRUE(Store("SMS", L"p1", Text(1506, L"")));
    ASSERT_TRUE(Store("SYS", L"y1", Texts(1607, {})));
    ExpectFound({});
}

TEST_F(Doctor, ANameCountsWithinClassAndKind) {
    for (const char* classCode : {"MTS", "PSI", "SMS", "MSG", "SYS"}) {
        SCOPED_TRACE(classCode);
        ASSERT_TRUE(CQbase::removeStore(m_path));
        ASSERT_TRUE(Store(classCode, L"1", Text(1601, L"A")));
        ASSERT_TRUE(Store(classCode, L"2", Text(1601, L"A"), 1, 1));
        ASSERT_TRUE(Store(classCode, L"3", Text(1601, L"A"), 2, 2));
        ASSERT_TRUE(Store(classCode, L"4", Text(1601, L"a")));
        ASSERT_TRUE(Store(classCode, L"5", Nothing()));
        ASSERT_TRUE(Store(classCode, L"6", Nothing()));
        ExpectFound({});
        ASSERT_TRUE(Store(classCode, L"7", Text(1601, L"A")));
        const auto found = Found();
        ASSERT_EQ(found.size(), 1U);
        EXPECT_TRUE(Contains(found.front(), "|7|has the name of 1")) << found.front();
    }
}

TEST_F(Doctor, CableTablesDuctMaterialsAndConnectionSeriesMayShareAName) {
    const auto wire = static_cast<short>(tolm::TolmProjectSettingMEPObjectType::Wire);
    const auto duct = static_cast<short>(tolm::TolmProjectSettingMEPObjectType::Duct);
    for (const wchar_t* id : {L"1", L"2"}) {
        ASSERT_TRUE(Store("PSI", id, Text(1601, L"YJV"), wire, 3));
        ASSERT_TRUE(Store("MTS", id, Text(1601, L"Sheet steel"), duct, 1));
        ASSERT_TRUE(Store("COS", id, Text(1601, L"2")));
    }
    ExpectFound({});
    for (const wchar_t* id : {L"3", L"4"}) {
        ASSERT_TRUE(Store("PSI", id, Text(1601, L"Duct"), duct, 1));
        ASSERT_TRUE(Store("MTS", id, Text(1601, L"YJV"), wire, 3));
    }
    ExpectFound({"names|material|4|has the name of 3", "names|size table|4|has the name of 3"});
}

TEST_F(Doctor, AListOfOddLengthOrWithTooManyEntriesIsFound) {
    const std::vector<char> bytes(301 * 16);
    const auto pipes = [&](int count) {
        return [&bytes, count](CQbase& store) { store.setBinaryArray(1614, bytes.data(), count, 0); };
    };
    ASSERT_TRUE(Store("PSI", L"full", pipes(300)));
    ExpectFound({});
    ASSERT_TRUE(Store("PSI", L"over", pipes(301)));
    ASSERT_TRUE(Store("PSI", L"odd", pipes(2)));
    ASSERT_TRUE(RunSql(m_path, "update PSI set PipeSizeList = zeroblob(37) where id = 'odd'"));
    const std::vector<float> trays(301);
    ASSERT_TRUE(Store("PSI", L"tray", [&](CQbase& store) { store.setFloatArray(1302, trays.data(), 301); }));
    ExpectFound({"packed lists|size table|over|PipeSizeList has 301 entries, over the 300 that are read",
                 "packed lists|size table|odd|PipeSizeList has 37 bytes, which are no whole entries of 16",
                 "packed lists|size table|tray|CableTraySizeList has 301 entries, over the 300 that are read"});
}

TEST_F(Doctor, EveryPackedListIsMeasuredByItsEntry) {
    struct Case {
        const char* classCode;
        const char* attribute;
        int size;
    };
    for (const Case& c :
         {Case{"COS", "FittingList", 106}, Case{"PSI", "PipeSizeList", 16}, Case{"PSI", "DuctSizeList", 8},
          Case{"PSI", "CableSpecificationList", 56}, Case{"ISS", "CircularMaxSizes", 4}, Case{"ISS", "RectMaxSizes", 6},
          Case{"PSM", "DimensionMethods", 10}}) {
        SCOPED_TRACE(c.attribute);
        ASSERT_TRUE(CQbase::removeStore(m_path));
        ASSERT_TRUE(Store(c.classCode, L"1", Nothing()));
        const auto set = [&](int bytes) {
            return RunSql(m_path, ("update " + std::string(c.classCode) + " set " + c.attribute + " = zeroblob(" +
                                   std::to_string(bytes) + ")")
                                      .c_str());
        };
        ASSERT_TRUE(set(2 * c.size + 1));
        const auto found = Found();
        ASSERT_EQ(found.size(), 1U);
        EXPECT_TRUE(Contains(found.front(), "no whole entries of " + std::to_string(c.size))) << found.front();
    }
}

TEST_F(Doctor, AnIdListBeyondWhatIsReadIsFound) {
    ASSERT_TRUE(Store("SMS", L"p1", Nothing()));
    ASSERT_TRUE(Store("SYS", L"y1", Texts(1607, std::vector<std::wstring>(101, L"p1"))));
    ExpectFound({"packed lists|system type|y1|MaterialSerieIds has 101 entries, over the 100 that are read"});
}

TEST_F(Doctor, AValueOfAnotherKindIsFound) {
    ASSERT_TRUE(Store("PSI", L"s1", Text(1601, L"Tube")));
    ASSERT_TRUE(RunSql(m_path, "update PSI set CableTraySizeList = zeroblob(7), Name = x'00', roughness = 'rough'"));
    const auto found = Found();
    for (const char* finding : {"records|size table|s1|CableTraySizeList does not read as float[] in the dataset",
                                "records|size table|s1|Name does not read as text in the dataset",
                                "records|size table|s1|roughness does not read as double in the dataset"})
        EXPECT_EQ(std::count(found.begin(), found.end(), finding), 1) << finding;
}

TEST_F(Doctor, ANotedChangeOfWhatIsGoneIsFound) {
    const auto note = [&](const wchar_t* id, short change) {
        return Put(m_statusPath, "MTS", id, [change](CQbase& store) { store.setShort(1109, change); });
    };
    ASSERT_TRUE(Store("MTS", L"stands", Nothing()));
    ASSERT_TRUE(note(L"stands", 2) && note(L"1", 1) && note(L"2", 2) && note(L"3", 3));
    ExpectFound({"noted changes|material|1|is noted as created, and is not there",
                 "noted changes|material|2|is noted as edited, and is not there"});
}

TEST_F(Doctor, AFileThatIsNoStoreIsFound) {
    std::ofstream(vorn::StringUtil::ToString(m_statusPath)) << "not a store at all, but some text of some length";
    ExpectFound({"files|||the status store cannot be opened: damaged, or no store (error 3)"});
    std::ofstream(m_dataset) << "not a store at all, but some text of some length";
    const auto found = Found();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found.front(), "files|||the dataset cannot be opened: damaged, or no store (error 3)");
}

TEST_F(Doctor, ADamagedPageIsFoundAndNothingIsCalledGoneForIt) {
    for (const char* tree : {"MTS", "sqlite_autoindex_MTS_1"}) {
        SCOPED_TRACE(tree);
        ASSERT_TRUE(CQbase::removeStore(m_path));
        ASSERT_TRUE(Store("PSI", L"s1", Text(1504, L"gone")));
        for (int i = 0; i < 40; ++i)
            ASSERT_TRUE(Store("MTS", std::to_wstring(i).c_str(), Text(1601, std::to_wstring(i).c_str())));
        Damage(RootPageOf(tree));
        const auto found = Found();
        ASSERT_EQ(found.size(), 1U);
        EXPECT_TRUE(Contains(found.front(), "files|material|")) << found.front();
        EXPECT_TRUE(Contains(found.front(), "the dataset cannot be read any further: ")) << found.front();
    }
}

TEST_F(Doctor, ARecordThatIsNotFoundByItsIdIsFound) {
    for (const wchar_t* id : {L"a", L"b", L"c"})
        ASSERT_TRUE(Store("MTS", id, Nothing()));
    // The index takes over the root of another one, which is empty.
    const auto other = std::to_string(RootPageOf("sqlite_autoindex_PSI_1"));
    ASSERT_TRUE(RunSql(m_path, ("pragma writable_schema=1; update sqlite_master set rootpage = " + other +
                                " where name = 'sqlite_autoindex_MTS_1'; delete from sqlite_master where name like "
                                "'%PSI%'")
                                   .c_str()));
    const auto found = Found();
    for (const char* id : {"a", "b", "c"})
        EXPECT_EQ(std::count(found.begin(), found.end(),
                             std::string("records|material|") + id + "|is not found by its id in the dataset"),
                  1)
            << id;
}

TEST_F(Doctor, ALockedDatasetIsNotCalledHealthy) {
    CQbase::setLockTimeout(50);
    CQbase writer;
    ASSERT_TRUE(OpenStore(writer) && writer.lockForUpdate());
    const auto run = On("doctor");
    CQbase::setLockTimeout(5000);
    EXPECT_EQ(run.code, Failed);
    EXPECT_TRUE(Contains(run.out, "locked")) << run.out;
}

TEST_F(Doctor, NothingIsChanged) {
    AddCopper();
    ASSERT_TRUE(Store("PSI", L"s1", Text(1504, L"m1")));
    const std::string data = BytesOf(m_path);
    const std::string status = BytesOf(m_statusPath);
    ASSERT_FALSE(data.empty() || status.empty());
    EXPECT_EQ(On("doctor").code, Failed);
    EXPECT_EQ(BytesOf(m_path), data);
    EXPECT_EQ(BytesOf(m_statusPath), status);
}

TEST_F(Doctor, NoStatusStoreComesIntoBeing) {
    ASSERT_EQ(On("doctor").code, Done);
    EXPECT_FALSE(std::ifstream(vorn::StringUtil::ToString(m_statusPath)).good());
}

TEST_F(Doctor, ControlCharactersDoNotReachTheTerminal) {
    ASSERT_TRUE(Store("PSI", L"evil\x1b[2J", Text(1504, L"gone\x1b[2J")));
    EXPECT_FALSE(Contains(On("doctor").out, "\x1b"));
}
