#pragma once

#include "MepDatabase/MepProjectSettingHttpUtility.h"
#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordFactory.h"
#include "MepDatabase/SharedReads.h"
#include "MepDatabase/StoreSchema.h"
#include "Qbase/Qbase.h"

#include <limits>
#include <span>
#include <tuple>

/// What an upload knows of the tracked classes, as tables.
namespace tolm {

/// The readers of whole records, what `reads` holds is not read again.
struct UploadReads {
    static bool SystemType(CQbase* qb, vorn::OwnerPtr<IProjectSettingSystemType>& made, SharedReads& reads) {
        return MepQbaseUtil::GetInstance()->read_system_type_att(qb, made, reads);
    }
    static bool Serie(CQbase* qb, vorn::OwnerPtr<IProjectSettingMEPMaterialSerie>& made, SharedReads& reads) {
        return MepQbaseUtil::GetInstance()->read_mep_materialserie_att(qb, made, reads);
    }
    static bool SizeModule(CQbase* qb, vorn::OwnerPtr<IProjectSettingSizeModule>& made, SharedReads& reads) {
        return MepQbaseUtil::GetInstance()->read_sizemodule_att(qb, made, reads.materials);
    }
    static bool Material(CQbase* qb, vorn::OwnerPtr<IProjectSettingMaterial>& made, SharedReads&) {
        return MepQbaseUtil::GetInstance()->read_materialserie_att(qb, made);
    }
    static bool Group(CQbase* qb, vorn::OwnerPtr<IProjectSettingMEPMaterialSerieGroup>& made, SharedReads&) {
        return MepQbaseUtil::GetInstance()->read_serie_group_att(qb, made);
    }
};

/// How the created and edited records of one class are found, read and handed to the client. Their rows go into a
/// table of their own or, for the classes of the configuration tree, into the one array that these share.
template <class RecordType> struct UploadClass {
    using Record = RecordType;
    using Client = TolmProjectSettingHttpUtility;
    using Pointer = vorn::OwnerPtr<Record>;
    using List = Client::RecordList<Record>;

    const char* classCode;
    const wchar_t* notMade; ///< what is reported when the factory makes no record
    Pointer (*make)();
    bool (*read)(CQbase*, Pointer&, SharedReads&);
    bool (CQbase::*next)(); ///< how the walk over the status records goes on
    bool (Client::*send)(wstring, List, bool, bool);
    void (Client::*gather)(web::json::value&, wstring, List, bool, bool);
    void (Client::*gatherConfigTree)(web::json::value&, int&, wstring, List, bool, bool);
};

// clang-format off
/// The tracked classes in the order in which they are sent.
inline constexpr std::tuple kUploadClasses{
    UploadClass<IProjectSettingSystemType>{
        schema::kSystemType, L"pTempSystemType为空", &MakeSystemType, &UploadReads::SystemType, &CQbase::fetchNextRec,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedSystemTypeList,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedSystemTypeList, nullptr},
    UploadClass<IProjectSettingMEPMaterialSerie>{
        schema::kMaterialSerie, L"pTemSysMatSerie为空", &MakeMaterialSerie, &UploadReads::Serie, &CQbase::fetchNextRec,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedMEPMaterialSerieList,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedMEPMaterialSerieList, nullptr},
    UploadClass<IProjectSettingSizeModule>{
        schema::kSizeModule, L"pTemSizeModule为空", &MakeSizeModule, &UploadReads::SizeModule, &CQbase::fetchNextRec,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedSizeModelList, nullptr,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedSizeModelList},
    UploadClass<IProjectSettingMaterial>{
        schema::kMaterial, L"pMaterial为空", &MakeMaterial, &UploadReads::Material, &CQbase::fetchNextMember,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedMateriaList, nullptr,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedMateriaList},
    UploadClass<IProjectSettingMEPMaterialSerieGroup>{
        schema::kMaterialSerieGroup, L"pGroup为空", &MakeMaterialSerieGroup, &UploadReads::Group,
        &CQbase::fetchNextMember, &TolmProjectSettingHttpUtility::SendCreatedOrEditedMaterieSerieGroupList, nullptr,
        &TolmProjectSettingHttpUtility::SendCreatedOrEditedMaterieSerieGroupList},
};
// clang-format on

/// Which table of the service a removed record belongs to. Its record is gone: what the status store notes of it
/// decides, by the first row that fits.
struct RemovedTable {
    static constexpr short kAny = std::numeric_limits<short>::min();

    short disciplineId;
    short mepType;
    wstring (*table)(); ///< null for the empty name

    constexpr bool Fits(short discipline, short type) const {
        return (disciplineId == kAny || disciplineId == discipline) && (mepType == kAny || mepType == type);
    }
};

inline constexpr RemovedTable kRemovedSystemTypeTables[] = {
    {1, 1, &TolmProjectSettingHttpUtility::HVACPipeSystemTypeTable},
    {1, 2, &TolmProjectSettingHttpUtility::DuctSystemTypeTable},
    {1, RemovedTable::kAny, nullptr},
    {2, RemovedTable::kAny, &TolmProjectSettingHttpUtility::PipeSystemTypeTable},
    {3, RemovedTable::kAny, &TolmProjectSettingHttpUtility::ElectricalSystemTypeTable},
};

inline constexpr RemovedTable kRemovedSerieTables[] = {
    {1, 1, &TolmProjectSettingHttpUtility::HVACPipeTypeTable},
    {2, 1, &TolmProjectSettingHttpUtility::PipeTypeTable},
    {RemovedTable::kAny, 1, nullptr},
    {RemovedTable::kAny, 2, &TolmProjectSettingHttpUtility::DuctTypeTable},
    {RemovedTable::kAny, 3, &TolmProjectSettingHttpUtility::CableTrayFittingsTypeTable},
    {RemovedTable::kAny, 4, &TolmProjectSettingHttpUtility::ConduitFittingsTypeTable},
};

/// A class whose removed records are sorted by table.
struct RemovedClass {
    const char* classCode;
    std::span<const RemovedTable> tables;
    const wchar_t* noTable; ///< what is reported of a record that no row fits
};

inline constexpr RemovedClass kRemovedSystemTypes{schema::kSystemType, kRemovedSystemTypeTables, L"disciplineId 非法"};
inline constexpr RemovedClass kRemovedSeries{schema::kMaterialSerie, kRemovedSerieTables, L"mepType 非法"};

/// The classes whose removed records share the table of the configuration tree, in their order.
inline constexpr const char* kRemovedConfigTreeClasses[] = {schema::kSizeModule, schema::kMaterial,
                                                            schema::kMaterialSerieGroup};

} // namespace tolm
