// Reading one record, one edit, and lists of one type, against bare statements on the same files.
#include "Bench/Measure.h"
#include "Bench/World.h"
#include "Host/Definitions.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/Text.h"

namespace tolm::bench {
namespace {

constexpr const char* kRead = "read one material by id";
constexpr const char* kEdit = "one edit of a material, durable, status noted";
constexpr const char* kList = "list of all sizes of one type, objects included";
constexpr const char* kMaterialColumns = "seq,id,MEPType,DisciplineId,Status,CreateTime,Name";
constexpr std::size_t kPipeSizeBytes = 16;

const std::wstring kDefinition = DataSetFilePath::TOLMDDQFilePath;

std::vector<std::string> MaterialIds(const DatasetFiles& files) {
    return TextsOf(files.Store().string(), "SELECT id FROM MTS ORDER BY seq");
}

struct BareMaterial {
    std::wstring id;
    std::wstring name;
    int mepType = 0;
    int disciplineId = 0;
    double createTime = 0;
};

BareMaterial MaterialOf(sqlite3_stmt* row) {
    return {WideColumn(row, 1), WideColumn(row, 6), sqlite3_column_int(row, 2), sqlite3_column_int(row, 3),
            sqlite3_column_double(row, 5)};
}

void ReadFloor(benchmark::State& state, World& world) {
    const std::string path = world.New().Store().string();
    const auto ids = MaterialIds(world.New());
    const std::string sql = "SELECT " + std::string(kMaterialColumns) + " FROM MTS WHERE id=?";
    std::size_t next = 0;
    while (state.KeepRunning()) {
        const auto database = OpenBare(path);
        ExecuteBare(database.get(), "BEGIN");
        const auto select = PrepareBare(database.get(), sql);
        BindText(select.get(), 1, ids[next++ % ids.size()]);
        Require(sqlite3_step(select.get()) == SQLITE_ROW, "no material");
        benchmark::DoNotOptimize(MaterialOf(select.get()));
        sqlite3_reset(select.get());
        ExecuteBare(database.get(), "COMMIT");
    }
}

void ReadMaterial(benchmark::State& state, World& world) {
    const std::wstring path = Wide(world.New().Store());
    std::vector<std::wstring> ids;
    for (const auto& id : MaterialIds(world.New()))
        ids.push_back(vorn::StringUtil::ToWString(id));
    std::size_t next = 0;
    while (state.KeepRunning()) {
        vorn::OwnerPtr<IProjectSettingMaterial> material;
        const bool read =
            MepQbaseUtil::GetInstance()->ReadMaterial(path, kDefinition, ids[next++ % ids.size()], material);
        Require(read && material != nullptr, "no material");
    }
}

/// A dataset whose status store has no record, so that each edit notes one.
class EditedDataset {
public:
    EditedDataset(World& world, const std::string& name) : m_files(world.Scratch(name)) {
        m_files.CopyFrom(world.New());
        MakeStatus(m_files);
    }
    const DatasetFiles& Files() const { return m_files; }
    void ForgetStatus() const { ExecuteBare(OpenBare(m_files.Status().string()).get(), "DELETE FROM MTS"); }

private:
    DatasetFiles m_files;
};

void EditBare(const DatasetFiles& files, const std::string& id, const std::string& name) {
    const auto database = OpenBare(files.Store().string());
    ExecuteBare(database.get(), "ATTACH '" + files.Status().string() + "' AS status");
    ExecuteBare(database.get(), "BEGIN EXCLUSIVE");
    const auto edit = PrepareBare(database.get(), "UPDATE main.MTS SET Name=?2 WHERE id=?1");
    const auto note = PrepareBare(
        database.get(), "INSERT INTO status.MTS(id,MEPType,DisciplineId,Status) SELECT ?1,MEPType,DisciplineId,2"
                        " FROM main.MTS WHERE id=?1");
    BindText(edit.get(), 2, name);
    for (auto* statement : {edit.get(), note.get()}) {
        BindText(statement, 1, id);
        RunOnce(statement);
    }
    ExecuteBare(database.get(), "COMMIT");
}

/// Runs an edit for each iteration, of another material each time.
template <class Edit> void RunEdits(benchmark::State& state, const EditedDataset& dataset, Edit edit) {
    const auto ids = MaterialIds(dataset.Files());
    std::size_t next = 0;
    while (state.KeepRunning()) {
        if (next % ids.size() == 0) {
            state.PauseTiming();
            dataset.ForgetStatus();
            state.ResumeTiming();
        }
        edit(next % ids.size(), ids[next % ids.size()]);
        ++next;
    }
}

void EditFloor(benchmark::State& state, World& world) {
    const EditedDataset dataset(world, "floor");
    int number = 0;
    RunEdits(state, dataset, [&](std::size_t, const std::string& id) {
        EditBare(dataset.Files(), id, "Steel " + std::to_string(++number));
    });
}

void EditMaterial(benchmark::State& state, World& world) {
    const EditedDataset dataset(world, "work");
    const std::wstring path = Wide(dataset.Files().Store());
    std::vector<vorn::OwnerPtr<IProjectSettingMaterial>> materials;
    for (const auto& id : MaterialIds(dataset.Files()))
        MepQbaseUtil::GetInstance()->ReadMaterial(path, kDefinition, vorn::StringUtil::ToWString(id),
                                                  materials.emplace_back());
    int number = 0;
    RunEdits(state, dataset, [&](std::size_t place, const std::string&) {
        std::wstring name = L"Steel " + std::to_wstring(++number);
        materials[place]->SetName(name);
        Require(MepQbaseUtil::GetInstance()->WriteMaterial(path, kDefinition, materials[place].get()), "no edit");
    });
}

struct BareSizeModule {
    std::wstring id;
    std::wstring name;
    double createTime = 0;
    double roughness = 0;
    BareMaterial material;
    std::vector<ProjectSettingPipeSize> sizes;
};

BareSizeModule SizeModuleOf(sqlite3_stmt* row) {
    BareSizeModule module{
        WideColumn(row, 0), WideColumn(row, 1), sqlite3_column_double(row, 2), sqlite3_column_double(row, 3), {}, {}};
    module.material = {WideColumn(row, 5), WideColumn(row, 6), sqlite3_column_int(row, 7), sqlite3_column_int(row, 8),
                       sqlite3_column_double(row, 9)};
    module.sizes.resize(static_cast<std::size_t>(sqlite3_column_bytes(row, 4)) / kPipeSizeBytes);
    const auto* bytes = static_cast<const float*>(sqlite3_column_blob(row, 4));
    for (std::size_t i = 0; i < module.sizes.size(); ++i)
        module.sizes[i] = {bytes[4 * i], bytes[4 * i + 1], bytes[4 * i + 2], bytes[4 * i + 3]};
    return module;
}

/// One statement gives size tables and materials.
void ListFloor(benchmark::State& state, World& world) {
    const std::string path = world.New().Store().string();
    while (state.KeepRunning()) {
        const auto database = OpenBare(path);
        const auto select = PrepareBare(
            database.get(), "SELECT s.id,s.Name,s.CreateTime,s.roughness,s.PipeSizeList,m.id,m.Name,m.MEPType,"
                            "m.DisciplineId,m.CreateTime FROM PSI s LEFT JOIN MTS m ON m.id=s.MaterialId"
                            " WHERE s.MEPType=1 AND s.DisciplineId=2 ORDER BY s.seq");
        std::vector<std::unique_ptr<BareSizeModule>> list;
        while (sqlite3_step(select.get()) == SQLITE_ROW)
            list.push_back(std::make_unique<BareSizeModule>(SizeModuleOf(select.get())));
        Require(!list.empty(), "no sizes");
    }
}

void ListSizes(benchmark::State& state, World& world) {
    const std::wstring path = Wide(world.New().Store());
    while (state.KeepRunning()) {
        std::vector<vorn::OwnerPtr<IProjectSettingSizeModule>> list;
        Require(MepQbaseUtil::GetInstance()->ReadSizeModuleList(
                    path, kDefinition, TolmProjectSettingMEPObjectType::Pipe, MEPDisciplineId::Plumbing, list),
                "no sizes");
    }
}

using Side = void (*)(benchmark::State&, World&);

void AddAtBothSizes(Measures& measures, const Sizes& sizes, Measure measure, bool perRow, Side floor, Side run) {
    for (const std::size_t rows : {2'000, 50'000}) {
        const std::size_t made = sizes.Of(rows);
        measure.size = std::to_string(rows);
        measure.units = perRow ? static_cast<double>(made) : 1;
        measure.floor = [made, floor](benchmark::State& state) { floor(state, WorldOf(made)); };
        measure.run = [made, run](benchmark::State& state) { run(state, WorldOf(made)); };
        measures.push_back(measure);
    }
}

} // namespace

void AddStoreMeasures(Measures& measures, const Sizes& sizes) {
    AddAtBothSizes(measures, sizes, {kRead, {}, 0, 1.5, 1, 1.15, {}, {}}, false, ReadFloor, ReadMaterial);
    AddAtBothSizes(measures, sizes, {kEdit, {}, 0, 1.3, 1, 1.15, {}, {}}, false, EditFloor, EditMaterial);
    AddAtBothSizes(measures, sizes, {kList, {}, 0, 2, 1, 1.15, {}, {}}, true, ListFloor, ListSizes);
}

} // namespace tolm::bench
