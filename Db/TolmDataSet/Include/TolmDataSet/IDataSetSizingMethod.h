#pragma once

#include "TolmDataSet/MepEnums.h"
#include "TolmDataSet/SmallRecords.h"
#include "TolmDataSet/TolmDataSetExport.h"

#include <vector>

namespace tolm {

/// How pipes and ducts are sized. A record is used from one thread at a time.
class TOLM_DATASET_API IDataSetSizingMethod {
public:
    virtual ~IDataSetSizingMethod();
    virtual wstring GetId() const = 0;
    virtual void SetId(const wstring& id) = 0;
    virtual wstring GetCode() const = 0;
    virtual void SetCode(const wstring& code) = 0;
    virtual wstring GetDesc() const = 0;
    virtual void SetDesc(const wstring& description) = 0;
    virtual bool GetKeepConnectTerminalSize() const = 0;
    virtual void SetKeepConnectTerminalSize(bool keep) = 0;
    virtual bool GetUseStaticRegain() const = 0;
    virtual void SetUseStaticRegain(bool use) = 0;
    /// Least ratio of width to height of a rectangular duct.
    virtual float GetMinWPerHRatio() const = 0;
    virtual void SetMinWPerHRatio(float ratio) = 0;
    virtual TolmSizingMethodType GetMethodType() const = 0;
    virtual void SetMethodType(TolmSizingMethodType type) = 0;
    /// The steps of the method in order.
    virtual const std::vector<DataSetDimensionMethodItem>& GetDimensionMethods() const = 0;
    virtual void DeleteAllDimensionMethod() = 0;
    virtual void AddDimensionMethod(const DataSetDimensionMethodItem& item) = 0;
    /// `index` must be that of a step: it is not tested.
    virtual void DeleteDimensionMethod(int index) = 0;

protected:
    IDataSetSizingMethod() = default;
    IDataSetSizingMethod(const IDataSetSizingMethod&) = default;
    IDataSetSizingMethod& operator=(const IDataSetSizingMethod&) = default;
};

} // namespace tolm
