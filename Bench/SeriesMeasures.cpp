// Reads all series of one kind as whole trees (20 fittings, group, size table with material) against 5,000 components,
// and, for the floor, the same records with one bare query each.
#include "Bench/Measure.h"
#include "Bench/World.h"
#include "Host/Components.h"
#include "Host/Definitions.h"
#include "MepDatabase/PackedLists.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <map>

namespace tolm::bench {
namespace {

using std::wstring;

constexpr int kComponents = 5000;
constexpr int kFittings = 20;
constexpr int kSizeTables = 50;
constexpr int kFirstGeneratedCategory = 16'000'000;
constexpr int kGeneratedCategories = 1000;

/// A folder with a component database and one store for each number of series asked for.
class SeriesFiles {
public:
    SeriesFiles() {
        MakeComponents();
        TolmCategoryInfoUtilsHandler::Get().SetUtils(CreateCategoryInfoUtils(Components()));
    }

    wstring Components() const { return Wide(m_folder / "components.db"); }

    const wstring& Store(int series) {
        auto& path = m_stores[series];
        if (path.empty()) {
            path = Wide(m_folder / ("series" + std::to_string(series) + ".db"));
            MakeStore(path, series);
        }
        return path;
    }

private:
    void MakeComponents() {
        std::vector<TolmComponentData> components;
        for (int i = 0; i < kComponents; ++i) {
            TolmComponentData component;
            component.id = L"c" + std::to_wstring(i);
            component.categoryCode = L"threaded";
            component.name = L"Fitting " + std::to_wstring(i);
            components.push_back(component);
        }
        Require(TolmComponentSqlUtil::Import(Components(), {{L"2", L"给排水", L"Plumbing"}}, Categories(), components),
                "components");
    }

    /// That of the components, and all that a generated project's fittings name.
    static std::vector<TolmCategoryData> Categories() {
        std::vector<TolmCategoryData> categories{{L"threaded", L"", L"2", L"丝接", L"Threaded"}};
        for (int i = 0; i < kGeneratedCategories; ++i) {
            const wstring code = std::to_wstring(kFirstGeneratedCategory + 10 * i);
            categories.push_back({code, L"", L"2", L"Category " + code, L"Category " + code});
        }
        return categories;
    }

    static void Begin(CQbase& qb, const char* classCode, const wstring& id) {
        Require(qb.createRec(classCode, id), "createRec");
        qb.setWsz(schema::kName, (L"Record " + id).c_str(), -1);
        qb.setShort(schema::kMEPType, 1);
        qb.setShort(schema::kDisciplineId, 2);
    }

    static void MakeShared(CQbase& qb) {
        const std::vector<ProjectSettingPipeSize> sizes(15, {16.1F, 21.3F, 15.0F, 2.6F});
        const auto bytes = Pack(kPipeSizeLayout, sizes);
        for (int i = 0; i < kSizeTables; ++i) {
            const wstring number = std::to_wstring(i);
            Begin(qb, schema::kMaterial, L"m" + number);
            Require(qb.saveRec(), "saveRec");
            Begin(qb, schema::kMaterialSerieGroup, L"g" + number);
            Require(qb.saveRec(), "saveRec");
            Begin(qb, schema::kSizeModule, L"s" + number);
            qb.setWsz(schema::kMaterialId, (L"m" + number).c_str(), -1);
            qb.setBinaryArray(schema::kPipeSizeList, bytes.data(), static_cast<int>(sizes.size()), 0);
            Require(qb.saveRec(), "saveRec");
        }
    }

    static void MakeConnection(CQbase& qb, int number) {
        std::vector<PackedFitting> fittings;
        for (int i = 0; i < kFittings; ++i) {
            const int component = (number * kFittings + i) % kComponents;
            fittings.push_back({L"threaded", FittingPartType::Elbow, RoutingPreferenceRuleGroupType::Elbows,
                                L"c" + std::to_wstring(component), 15.0F, 80.0F});
        }
        const auto bytes = Pack(kFittingLayout, fittings);
        Require(qb.createRec(schema::kConnectionSerie, L"k" + std::to_wstring(number)), "createRec");
        qb.setShort(schema::kConnectionType, 1);
        qb.setBinaryArray(schema::kFittingList, bytes.data(), kFittings, 0);
        Require(qb.saveRec(), "saveRec");
    }

    static void MakeStore(const wstring& path, int series) {
        CQbase qb;
        Require(qb.openDatabase(DataSetFilePath::TOLMDDQFilePath, path, true) && qb.lockForUpdate(), "store");
        MakeShared(qb);
        for (int i = 0; i < series; ++i) {
            const wstring shared = std::to_wstring(i % kSizeTables);
            MakeConnection(qb, i);
            Begin(qb, schema::kMaterialSerie, L"p" + std::to_wstring(i));
            qb.setWsz(schema::kSizeModuleId, (L"s" + shared).c_str(), -1);
            qb.setWsz(schema::kSerieGroupId, (L"g" + shared).c_str(), -1);
            qb.setWsz(schema::kConnectionSerieId, (L"k" + std::to_wstring(i)).c_str(), -1);
            Require(qb.saveRec(), "saveRec");
        }
        Require(qb.closeDatabase(), "closeDatabase");
    }

    fs::path m_folder = BenchFolder();
    std::map<int, wstring> m_stores;
};

SeriesFiles& Shared() {
    static SeriesFiles files;
    return files;
}

/// As a host reads them.
void WholeTrees(benchmark::State& state, int series) {
    const auto dataset =
        ITolmDataSetFactory::Get()->CreateDataset(Shared().Store(series), Shared().Components(), L"", L"");
    while (state.KeepRunning()) {
        dataset->CollectData(false, {TolmProjectSettingTableId::PlumbingPipeSeries});
        Require(dataset->GetMEPMaterialSerieData()->GetSerieList().size() == static_cast<std::size_t>(series),
                "not all series were read");
    }
}

/// Fetches records by id with one statement, all columns taken.
class BareCursor {
public:
    BareCursor(const wstring& path, const std::string& table)
        : m_database(OpenBare(vorn::StringUtil::ToString(path))),
          m_select(PrepareBare(m_database.get(), "SELECT * FROM " + table + " WHERE id=?")) {
        ExecuteBare(m_database.get(), "BEGIN");
    }

    void Fetch(char letter, int number) {
        const std::string id = letter + std::to_string(number);
        BindText(m_select.get(), 1, id);
        Require(sqlite3_step(m_select.get()) == SQLITE_ROW, "no record");
        for (int i = 0; i < sqlite3_column_count(m_select.get()); ++i)
            benchmark::DoNotOptimize(sqlite3_column_blob(m_select.get(), i));
        sqlite3_reset(m_select.get());
    }

private:
    BareDatabase m_database;
    BareStatement m_select;
};

/// The records that a tree is made of, one query each: series, connection, size table, material, group. Each
/// component is fetched once, however many trees hold it.
void OneQueryPerRecord(benchmark::State& state, int series) {
    const wstring store = Shared().Store(series);
    while (state.KeepRunning()) {
        BareCursor trees(store, "SMS");
        BareCursor connections(store, "COS");
        BareCursor sizes(store, "PSI");
        BareCursor materials(store, "MTS");
        BareCursor groups(store, "MSG");
        BareCursor components(Shared().Components(), "components");
        for (int i = 0; i < series; ++i) {
            trees.Fetch('p', i);
            connections.Fetch('k', i);
            sizes.Fetch('s', i % kSizeTables);
            materials.Fetch('m', i % kSizeTables);
            groups.Fetch('g', i % kSizeTables);
        }
        for (int i = 0; i < std::min(kComponents, series * kFittings); ++i)
            components.Fetch('c', i);
    }
}

} // namespace

void PrepareComponents() {
    Shared();
}

void AddSeriesMeasures(Measures& measures, const Sizes& sizes) {
    for (const int series : {500, 5'000}) {
        const int made = sizes.tiny ? 10 : series;
        measures.push_back({"list of all series as whole trees", std::to_string(series), static_cast<double>(made), 2,
                            1, 1.15, [made](benchmark::State& state) { OneQueryPerRecord(state, made); },
                            [made](benchmark::State& state) { WholeTrees(state, made); }});
    }
}

} // namespace tolm::bench
