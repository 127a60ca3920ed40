#include "Tolm/BalancingMethods.h"

#include "Tolm/Errors.h"

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "Vorn/Text.h"

namespace tolmcli {
namespace {

using Method = tolm::DataSetBalancingMethod;

// Attributes of a balancing method, as Docs/store-format.md gives them.

struct TextAttribute {
    short id;
    void (Method::*set)(const std::wstring&);
};
constexpr TextAttribute kTexts[] = {{1601, &Method::SetName}, {1501, &Method::SetDesc}};

struct PressureAttribute {
    short id;
    void (Method::*set)(float);
};
constexpr PressureAttribute kPressures[] = {
    {1315, &Method::SetDev1Min}, {1371, &Method::SetDev1Max}, {1316, &Method::SetDev2Min}, {1370, &Method::SetDev2Max}};

struct LimitAttribute {
    short id;
    void (Method::*set)(std::int32_t);
};
constexpr LimitAttribute kLimits[] = {{1172, &Method::SetThrottlingLimit1Min},
                                      {1173, &Method::SetThrottlingLimit1Max},
                                      {1170, &Method::SetThrottlingLimit2Min},
                                      {1171, &Method::SetThrottlingLimit2Max}};
constexpr short kIsWarningNearRoot = 1005;
constexpr short kDisciplineId = 1181;

void ReadNumbers(CQbase& store, Method& method) {
    for (const auto& attribute : kPressures)
        if (float pressure = 0.0F; store.getFloat(attribute.id, pressure))
            (method.*attribute.set)(pressure);
    for (const auto& attribute : kLimits)
        if (short limit = 0; store.getShort(attribute.id, limit))
            (method.*attribute.set)(limit);
    if (unsigned char warning = 0; store.getByte(kIsWarningNearRoot, warning))
        method.SetIsWarningNearRoot(warning != 0);
    short discipline = 0;
    store.getShort(kDisciplineId, discipline);
    method.setDisciplineType(static_cast<tolm::MEPDisciplineId>(discipline));
}

Method ReadMethod(CQbase& store) {
    Method method;
    CWsz text;
    if (store.getObjId(text))
        method.SetId(text.str());
    for (const auto& attribute : kTexts)
        if (store.getWsz(attribute.id, text, 1))
            (method.*attribute.set)(text.str());
    ReadNumbers(store, method);
    return method;
}

} // namespace

std::vector<Method> ReadBalancingMethods(const std::wstring& datasetPath) {
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, datasetPath, false) || !store.lockForRead())
        throw Failure("cannot open " + vorn::StringUtil::ToString(datasetPath) + " (error " +
                      std::to_string(store.getLastError()) + ")");
    std::vector<Method> methods;
    for (bool found = store.fetchFirstMember("BMD"); found; found = store.fetchNextMember())
        methods.push_back(ReadMethod(store));
    if (!store.closeDatabase())
        throw Failure("the balancing methods could not be read");
    return methods;
}

} // namespace tolmcli
