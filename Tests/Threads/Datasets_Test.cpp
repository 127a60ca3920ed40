#include "TolmDataSet/TolmDataSet.h"

#include "Support/DebugWarnings.h"
#include "Support/TempFolder.h"

#include <gtest/gtest.h>

#include <barrier>
#include <set>
#include <thread>

namespace {

using namespace tolm;
using Type = TolmProjectSettingMEPObjectType;
using TableId = TolmProjectSettingTableId;

constexpr int kRounds = 12;

/// One host's work on a dataset through the facade: records of every table come, change and go.
class Host {
public:
    Host(const std::wstring& folder, std::wstring file, std::wstring mark)
        : m_dataset(ITolmDataSetFactory::Get()->CreateDataset(folder + L"/" + file, folder + L"/components.db",
                                                              folder + L"/" + mark + L"_combined.db",
                                                              folder + L"/" + mark)),
          m_mark(std::move(mark)) {}

    void Work() {
        Look();
        for (int round = 0; round < kRounds; ++round) {
            const auto id = m_mark + std::to_wstring(round);
            AddMaterial(id);
            AddSizes(id);
            AddSerie(id);
            AddSystem(id);
            if (round % 3 == 2)
                DeleteMaterial(m_mark + std::to_wstring(round - 1));
            Look();
        }
    }

    std::set<std::wstring> Materials() {
        m_dataset->CollectData(false, {TableId::HVACPipeMaterials});
        std::set<std::wstring> ids;
        for (const auto* material : m_dataset->GetMaterialData()->GetMaterialList())
            ids.insert(material->GetId());
        return ids;
    }

    static std::set<std::wstring> ExpectedMaterials(const std::wstring& mark) {
        std::set<std::wstring> ids;
        for (int round = 0; round < kRounds; ++round) {
            if (round % 3 != 1)
                ids.insert(mark + std::to_wstring(round));
        }
        return ids;
    }

private:
    template <class Record> static void Name(Record& record, std::wstring id, Type type = Type::Pipe) {
        record.SetId(id);
        record.SetName(id);
        record.SetMEPType(type);
        record.SetDisciplineId(MEPDisciplineId::HVAC);
    }

    void AddMaterial(const std::wstring& id) {
        auto material = ITolmDataSetFactory::Get()->CreateMaterial();
        Name(*material, id);
        EditTable(m_dataset->GetMaterialData())->AddMaterial(std::move(material));
    }
    void DeleteMaterial(const std::wstring& id) {
        const auto material = ITolmDataSetFactory::Get()->CreateMaterial();
        Name(*material, id);
        EditTable(m_dataset->GetMaterialData())->DeleteMaterialList({material.get()});
    }
    void AddSizes(const std::wstring& id) {
        auto sizes = ITolmDataSetFactory::Get()->CreateSizeModule();
        Name(*sizes, id + L" sizes");
        sizes->AddPipeSize({15.8F, 21.3F, 15.0F, 2.75F});
        EditTable(m_dataset->GetSizeModuleData())->AddSizeModule(std::move(sizes));
    }
    void AddSerie(const std::wstring& id) {
        auto serie = ITolmDataSetFactory::Get()->CreateMEPMaterialSerie();
        Name(*serie, id + L" serie");
        EditTable(m_dataset->GetMEPMaterialSerieData())->AddSerie(std::move(serie));
    }
    void AddSystem(const std::wstring& id) {
        auto system = ITolmDataSetFactory::Get()->CreateSystemType();
        Name(*system, id + L" system");
        EditTable(m_dataset->GetSystemTypeData())->AddSystemType(std::move(system));
    }
    void Look() {
        m_dataset->CollectData(false, {TableId::HVACPipeSystemTypes, TableId::HVACPipeSeries, TableId::HVACPipeSizes,
                                       TableId::HVACPipeMaterials});
        m_dataset->GetAvailableMaterialList(Type::Pipe, MEPDisciplineId::HVAC);
        m_dataset->GetAvailableMEPMaterialSerieList(Type::Pipe, MEPDisciplineId::HVAC);
    }

    vorn::OwnerPtr<ITolmDataset> m_dataset;
    std::wstring m_mark;
};

class TwoThreads : public testing::Test {
protected:
    /// Both begin at the same moment.
    static void WorkOn(Host& one, Host& two) {
        std::barrier start(2);
        const auto run = [&](Host& host) {
            start.arrive_and_wait();
            host.Work();
        };
        std::thread first(run, std::ref(one));
        std::thread second(run, std::ref(two));
        first.join();
        second.join();
    }

    tolmtest::TempFolder folder;
};

TEST_F(TwoThreads, WorkOnADatasetEach) {
    Host one(folder.Path(), L"one.db", L"one");
    Host two(folder.Path(), L"two.db", L"two");
    WorkOn(one, two);
    EXPECT_EQ(one.Materials(), Host::ExpectedMaterials(L"one"));
    EXPECT_EQ(two.Materials(), Host::ExpectedMaterials(L"two"));
}

/// Each has a dataset object of its own on it; the file's locks keep their operations apart.
TEST_F(TwoThreads, WorkOnOneFile) {
    Host one(folder.Path(), L"set.db", L"one");
    Host two(folder.Path(), L"set.db", L"two");
    WorkOn(one, two);
    auto expected = Host::ExpectedMaterials(L"one");
    expected.merge(Host::ExpectedMaterials(L"two"));
    EXPECT_EQ(one.Materials(), expected);
}

} // namespace
