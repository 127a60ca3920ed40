#include "MepDatabase/MepQbaseUtil.h"
#include "MepDatabase/RecordAttributes.h"
#include "MepDatabase/StoreFrame.h"
#include "MepDatabase/StoreSchema.h"
#include "Vorn/DebugMessage.h"

#include <initializer_list>
#include <new>
#include <type_traits>
#include <utility>

namespace tolm {
namespace {

/// A class of design methods in the store.
template <class Record> struct MethodClass {
    const char* code;
    AttributeTable<Record> (*attributes)();
    const wchar_t* notMade;
};

constexpr MethodClass<DataSetBalancingMethod> kBalancing{schema::kBalancingMethod, &BalancingMethodAttributes,
                                                         L"ptempSerie为空"};
constexpr MethodClass<DataSetInsulationSerie> kInsulation{schema::kInsulationSerie, &InsulationSerieAttributes,
                                                          L"ptempSerie为空"};
constexpr MethodClass<DataSetSizingMethod> kSizing{schema::kSizingMethod, &SizingMethodAttributes, L"sizingMethod为空"};

struct Filter {
    short attributeId;
    short value;
};

/// An empty owner when there is no memory for a record.
template <class Record> vorn::OwnerPtr<Record> MakeMethod() {
    try {
        return vorn::MakeOwner<Record>();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

/// Replaces the list by what passes the filters; `finish(record)` ends the reading of each.
template <class Record, class Finish>
void ReadMethods(StoreFrame& store, const MethodClass<Record>& methods, std::initializer_list<Filter> filters,
                 std::vector<Record>& list, Finish finish) {
    store->resetFilters();
    for (const Filter& filter : filters)
        store->setFilter(filter.attributeId, "=", filter.value);
    const auto read = [&](vorn::OwnerPtr<Record>& method) {
        ReadId(*store, *method);
        ReadAttributes(*store, *method, methods.attributes());
        finish(*method);
        return true;
    };
    std::vector<vorn::OwnerPtr<Record>> methodsRead;
    store.ReadAll(methods.code, methods.notMade, &MakeMethod<Record>, read, methodsRead);
    for (auto& method : methodsRead)
        list.push_back(std::move(*method));
}

template <class Record>
bool AddMethod(StoreFrame& store, const MethodClass<Record>& methods, const Record& method, const CallSite& site) {
    const auto target = store.FetchOrCreate(methods.code, method.GetId());
    if (target) {
        WriteAttributes(*store, method, methods.attributes());
        store->saveRec();
    }
    if (!store.Close())
        return false;
    if (!target)
        site.Warn(L"createRec 失败");
    return target.has_value();
}

template <class Record>
bool DeleteMethods(StoreFrame& store, const MethodClass<Record>& methods, const std::vector<Record>& list) {
    for (const Record& method : list) {
        const wstring id = method.GetId();
        if (store->existRec(methods.code, id))
            store->deleteRec(methods.code, id);
    }
    return store.Close();
}

constexpr auto kNothingMore = [](const auto&) {};

/// What is wrong with a series whose sizes are too many to be stored; empty for all others.
wstring ListFault(const DataSetInsulationSerie& serie) {
    wstring fault = PackedListFault(L"CircularMaxSizes", serie.GetCircularMaxSizes().size());
    return fault.empty() ? PackedListFault(L"RectMaxSizes", serie.GetRectMaxSizes().size()) : fault;
}

} // namespace

bool MepQbaseUtil::readBalancingMethodList(wstring filePath, wstring ddqFilePath, MEPDisciplineId disciplineId,
                                           std::vector<DataSetBalancingMethod>& list) {
    list.clear();
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    ReadMethods(store, kBalancing, {{schema::kDisciplineId, ToShort(disciplineId)}}, list, kNothingMore);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::addBalancingMethod(wstring filePath, wstring ddqFilePath, const DataSetBalancingMethod& method) {
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Write) &&
           AddMethod(store, kBalancing, method, TOLM_CALL_SITE);
}

bool MepQbaseUtil::deleteBalancingMethodList(wstring filePath, wstring ddqFilePath,
                                             std::vector<DataSetBalancingMethod> list) {
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Change) && DeleteMethods(store, kBalancing, list);
}

bool MepQbaseUtil::readInsulationSerieList(wstring filePath, wstring ddqFilePath, MEPDisciplineId disciplineId,
                                           TolmInsulationSerieType insulationType,
                                           std::vector<DataSetInsulationSerie>& list) {
    list.clear();
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    const auto finish = [&](DataSetInsulationSerie& serie) {
        serie.SetDisciplineType(disciplineId);
        serie.SetInsulationType(insulationType);
    };
    ReadMethods(store, kInsulation,
                {{schema::kDisciplineId, ToShort(disciplineId)}, {schema::kInsulationType, ToShort(insulationType)}},
                list, finish);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::addInsulationSerie(wstring filePath, wstring ddqFilePath, const DataSetInsulationSerie& serie) {
    if (const wstring fault = ListFault(serie); !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Write) &&
           AddMethod(store, kInsulation, serie, TOLM_CALL_SITE);
}

bool MepQbaseUtil::deleteInsulationSerieList(wstring filePath, wstring ddqFilePath,
                                             std::vector<DataSetInsulationSerie> list) {
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Change) && DeleteMethods(store, kInsulation, list);
}

bool MepQbaseUtil::readSizingMethodList(wstring filePath, wstring ddqFilePath, TolmSizingMethodType methodType,
                                        std::vector<DataSetSizingMethod>& list) {
    list.clear();
    StoreFrame store(TOLM_CALL_SITE);
    if (!store.Open(filePath, ddqFilePath, StoreAccess::Read))
        return false;
    ReadMethods(store, kSizing, {{schema::kMethodType, ToShort(methodType)}}, list, kNothingMore);
    return store.Close() && !list.empty();
}

bool MepQbaseUtil::addSizingMethod(wstring filePath, wstring ddqFilePath, const DataSetSizingMethod& method) {
    if (const wstring fault = PackedListFault(L"DimensionMethods", method.GetDimensionMethods().size());
        !fault.empty()) {
        VORN_DEBUG_WARN(fault);
        return false;
    }
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Write) && AddMethod(store, kSizing, method, TOLM_CALL_SITE);
}

bool MepQbaseUtil::deleteSizingMethodList(wstring filePath, wstring ddqFilePath,
                                          std::vector<DataSetSizingMethod> list) {
    StoreFrame store(TOLM_CALL_SITE);
    return store.Open(filePath, ddqFilePath, StoreAccess::Change) && DeleteMethods(store, kSizing, list);
}

} // namespace tolm
