#include "MepDataSetInterface/TolmProject.h"

#include "Host/Definitions.h"
#include "MepDataSetInterface/RecordBasics.h"
#include "MepDataSetInterface/TableSlices.h"
#include "MepDataSetInterface/TolmDataset_DesignData.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "Vorn/DebugMessage.h"

#include <array>
#include <type_traits>
#include <utility>

namespace tolm {
namespace {

/// A table with the words for its absence; the order of the rows is that of a reset.
struct TableWords {
    TableKind table;
    const wchar_t* missing;
};

constexpr std::array<TableWords, 6> kTables{{
    {TableKind::Connections, L"m_ConnectorData为空！"},
    {TableKind::SizeModules, L"m_sizeData为空！"},
    {TableKind::Materials, L"m_materialData为空！"},
    {TableKind::SystemTypes, L"m_systemData为空！"},
    {TableKind::Series, L"m_MEPmaterialSerieData为空！"},
    {TableKind::CircuitTemplates, L"m_circuitTemplateData为空！"},
}};

constexpr const wchar_t* WordsForMissing(TableKind table) {
    return std::ranges::find(kTables, table, &TableWords::table)->missing;
}

} // namespace

ITolmDataset::~ITolmDataset() = default;

vorn::OwnerPtr<ITolmDataset> TolmDataset::Create(wstring datasetFilePath, wstring componentFilePath,
                                                 wstring combinedProductFilePath, wstring binaryFileFolder) {
    return ObjectMaker::Create<ITolmDataset, TolmDataset>(std::move(datasetFilePath), std::move(componentFilePath),
                                                          std::move(combinedProductFilePath),
                                                          std::move(binaryFileFolder));
}

TolmDataset::TolmDataset(wstring datasetFilePath, wstring componentFilePath, wstring combinedProductFilePath,
                         wstring binaryFileFolder)
    : m_datasetFilePath(std::move(datasetFilePath)), m_componentFilePath(std::move(componentFilePath)),
      m_binaryFileFolder(std::move(binaryFileFolder)), m_combinedProductFilePath(std::move(combinedProductFilePath)) {
    m_ConnectorData = ConnectorData::Create();
    m_sizeData = SizeModuleData::Create();
    m_materialData = MaterialData::Create();
    m_systemData = SystemTypeData::Create();
    m_MEPmaterialSerieData = MEPMaterialSerieData::Create();
    m_circuitTemplateData = CircuitTemplateData::Create();
}

TolmDataset::~TolmDataset() = default;

void TolmDataset::ResetPathAndResetTables(wstring datasetFilePath, wstring componentFilePath,
                                          wstring combinedProductFilePath, wstring binaryFileFolder) {
    m_datasetFilePath = std::move(datasetFilePath);
    m_componentFilePath = std::move(componentFilePath);
    m_combinedProductFilePath = std::move(combinedProductFilePath);
    m_binaryFileFolder = std::move(binaryFileFolder);
    ResetDataTables();
}

template <class Use> auto TolmDataset::WithTable(TableKind table, const Use& use) {
    switch (table) {
    case TableKind::SystemTypes:
        return use(m_systemData);
    case TableKind::Connections:
        return use(m_ConnectorData);
    case TableKind::SizeModules:
        return use(m_sizeData);
    case TableKind::Materials:
        return use(m_materialData);
    case TableKind::Series:
        return use(m_MEPmaterialSerieData);
    case TableKind::CircuitTemplates:
        break;
    }
    return use(m_circuitTemplateData);
}

bool TolmDataset::HasTable(TableKind table) {
    return WithTable(table, [](const auto& owner) { return static_cast<bool>(owner); });
}

void TolmDataset::ResetDataTables() {
    for (const auto& [table, missing] : kTables) {
        if (!HasTable(table)) {
            VORN_DEBUG_WARN(missing);
            return;
        }
    }
    for (const auto& row : kTables)
        WithTable(row.table, [](const auto& owner) { owner->reset(); });
}

void TolmDataset::CollectData(bool, const std::vector<TolmProjectSettingTableId>& tableIds) {
    if (tableIds.empty())
        return;
    ResetDataTables();
    for (const auto id : tableIds) {
        const TableSlice* slice = FindSlice(id);
        if (slice == nullptr)
            continue;
        if (!HasTable(slice->table)) {
            VORN_DEBUG_WARN(WordsForMissing(slice->table));
            return;
        }
        CollectSlice(*slice);
    }
}

void TolmDataset::CollectSlice(const TableSlice& slice) {
    WithTable(slice.table, [&](const auto& owner) {
        if constexpr (std::is_same_v<decltype(owner), const vorn::OwnerPtr<ICircuitTemplateData>&>)
            owner->CollectDesignData(m_datasetFilePath, slice.id);
        else
            owner->CollectDesignData(m_datasetFilePath, m_componentFilePath, slice.id);
    });
}

bool TolmDataset::CollectForGetter(TolmProjectSettingTableId tableId, TableKind table) {
    const TableSlice* slice = FindSlice(tableId, table);
    if (slice == nullptr || !slice->byGetter)
        return false;
    CollectData(false, {tableId});
    return true;
}

const ISystemTypeData* TolmDataset::GetSystemTypeData(TolmProjectSettingTableId tableId) {
    return CollectForGetter(tableId, TableKind::SystemTypes) ? m_systemData.get() : nullptr;
}

const IConnectorData* TolmDataset::GetConnectionSerieData(TolmProjectSettingTableId tableId) {
    return CollectForGetter(tableId, TableKind::Connections) ? m_ConnectorData.get() : nullptr;
}

const ISizeModuleData* TolmDataset::GetSizeModuleData(TolmProjectSettingTableId tableId) {
    return CollectForGetter(tableId, TableKind::SizeModules) ? m_sizeData.get() : nullptr;
}

const IMaterialData* TolmDataset::GetMaterialData(TolmProjectSettingTableId tableId) {
    return CollectForGetter(tableId, TableKind::Materials) ? m_materialData.get() : nullptr;
}

const IMEPMaterialSerieData* TolmDataset::GetMEPMaterialSerieData(TolmProjectSettingTableId tableId) {
    return CollectForGetter(tableId, TableKind::Series) ? m_MEPmaterialSerieData.get() : nullptr;
}

bool TolmDataset::SetLocalVersion(int version) {
    return MepQbaseUtil::GetInstance()->SetLocalVersion(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath, version);
}

wstring TolmDataset::GetLastUpdateTimePointString() {
    return MepQbaseUtil::GetInstance()->GetLastUpdateTimePoint(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath);
}

wstring TolmDataset::SetLastUpdateTimePoint() {
    return MepQbaseUtil::GetInstance()->SetLastUpdateTimePoint(m_datasetFilePath, DataSetFilePath::TOLMDDQFilePath);
}

} // namespace tolm
