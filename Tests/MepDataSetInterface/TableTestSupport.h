#pragma once

#include "MepDataSetInterface/RecordTestSupport.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDataSetInterface/TolmProject.h"
#include "StoreSupport/StoreFixture.h"

#include <vector>

namespace tolm {

/// What tests see of the tables: their lists, which a test may put empty entries into.
struct TableTestAccess {
    static auto& List(MaterialData& table) { return table.m_materialList; }
    static auto& List(SizeModuleData& table) { return table.m_sizeModuleList; }
    static auto& List(ConnectorData& table) { return table.m_connectionSerieList; }
    static auto& List(SystemTypeData& table) { return table.m_SystemTypeList; }
    static auto& List(MEPMaterialSerieData& table) { return table.m_serieList; }
    static auto& Groups(MEPMaterialSerieData& table) { return table.m_serieGroupList; }
    static auto& List(CircuitTemplateData& table) { return table.m_circuitTemplateList; }
};

/// What tests see of a dataset: its tables, which a test may take away.
struct TolmDatasetTestAccess {
    static auto& SystemTypes(TolmDataset& dataset) { return dataset.m_systemData; }
    static auto& Connections(TolmDataset& dataset) { return dataset.m_ConnectorData; }
    static auto& Sizes(TolmDataset& dataset) { return dataset.m_sizeData; }
    static auto& Materials(TolmDataset& dataset) { return dataset.m_materialData; }
    static auto& Series(TolmDataset& dataset) { return dataset.m_MEPmaterialSerieData; }
    static auto& CircuitTemplates(TolmDataset& dataset) { return dataset.m_circuitTemplateData; }
    static wstring CombinedProductFilePath(const TolmDataset& dataset) { return dataset.m_combinedProductFilePath; }
    static wstring ComponentFilePath(const TolmDataset& dataset) { return dataset.m_componentFilePath; }
    static wstring BinaryFileFolder(const TolmDataset& dataset) { return dataset.m_binaryFileFolder; }
};

} // namespace tolm

namespace tolmtest {

using TableId = tolm::TolmProjectSettingTableId;
using ObjectType = tolm::TolmProjectSettingMEPObjectType;
using tolm::MEPDisciplineId;
using Ids = std::vector<wstring>;

inline vorn::OwnerPtr<tolm::IProjectSettingMaterial>
MakeMaterial(wstring id, wstring name = L"", ObjectType type = ObjectType::Pipe,
             MEPDisciplineId discipline = MEPDisciplineId::Plumbing) {
    auto material = tolm::IProjectSettingMaterial::Create();
    material->SetId(id);
    material->SetName(name);
    material->SetMEPType(type);
    material->SetDisciplineId(discipline);
    return material;
}

inline vorn::OwnerPtr<tolm::IProjectSettingSizeModule>
MakeSizeModule(wstring id, wstring name = L"", ObjectType type = ObjectType::Pipe,
               MEPDisciplineId discipline = MEPDisciplineId::Plumbing) {
    auto module = tolm::IProjectSettingSizeModule::Create();
    module->SetId(id);
    module->SetName(name);
    module->SetMEPType(type);
    module->SetDisciplineId(discipline);
    return module;
}

template <class Record> Ids IdsOf(const std::vector<const Record*>& records) {
    Ids ids;
    for (const auto* record : records)
        ids.push_back(record->GetId());
    return ids;
}

template <class Record> Ids IdsOf(const std::vector<vorn::OwnerPtr<Record>>& records) {
    Ids ids;
    for (const auto& record : records)
        ids.push_back(record->GetId());
    return ids;
}

/// The identifiers of records that come by identifier.
template <class T> Ids KeysOf(const tolm::IdMap<T>& records) {
    Ids ids;
    for (const auto& [id, record] : records) {
        EXPECT_EQ(record->GetId(), id);
        ids.push_back(id);
    }
    return ids;
}

/// A table on a fresh store.
template <class Table, class Store = StoreFixture> class TableOnStore : public Store {
protected:
    using Store::ddq;
    using Store::path;
    using Store::util;

    /// The table after a collection of an id without meaning: it has its paths and is empty.
    void Attach(const wstring& componentPath = L"") {
        table->CollectDesignData(path, componentPath, static_cast<TableId>(4));
    }

    /// What the store holds of pipes and plumbing.
    Ids StoredMaterials() {
        std::vector<vorn::OwnerPtr<tolm::IProjectSettingMaterial>> list;
        util.ReadMaterialList(path, ddq, ObjectType::Pipe, MEPDisciplineId::Plumbing, list);
        return IdsOf(list);
    }
    Ids StoredSizeModules() {
        std::vector<vorn::OwnerPtr<tolm::IProjectSettingSizeModule>> list;
        util.ReadSizeModuleList(path, ddq, ObjectType::Pipe, MEPDisciplineId::Plumbing, list);
        return IdsOf(list);
    }

    auto& List() { return tolm::TableTestAccess::List(dynamic_cast<Table&>(*table)); }

    decltype(Table::Create()) table = Table::Create();
};

} // namespace tolmtest
