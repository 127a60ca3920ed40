#include "TolmDataSet/DataSetMethods.h"

#include "MepDataSetInterface/RecordBasics.h"

namespace tolm {
namespace {

constexpr bool kInBraces = true;

}

IDataSetInsulationSerie::~IDataSetInsulationSerie() = default;
IDataSetSizingMethod::~IDataSetSizingMethod() = default;

DataSetInsulationSerie::DataSetInsulationSerie() : m_id(NewRecordId()) {}

DataSetInsulationSerie DataSetInsulationSerie::Clone() const {
    DataSetInsulationSerie clone(*this);
    clone.m_id = NewRecordId();
    return clone;
}

DataSetSizingMethod::DataSetSizingMethod() : m_id(NewRecordId(kInBraces)) {}

DataSetSizingMethod DataSetSizingMethod::Clone() const {
    DataSetSizingMethod clone(*this);
    clone.m_id = NewRecordId(kInBraces);
    return clone;
}

DataSetBalancingMethod::DataSetBalancingMethod() : m_id(NewRecordId()) {}

} // namespace tolm
