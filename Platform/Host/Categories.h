#pragma once

#include "Host/HostTypes.h"
#include "Vorn/Export.h"
#include "Vorn/OwnerPtr.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tolm {

/// A discipline of the catalogue.
class TOLM_PLATFORM_API ITolmDisciplineInfo {
public:
    virtual ~ITolmDisciplineInfo();
    virtual std::wstring GetId() const = 0;
    virtual std::wstring GetName() const = 0;
    virtual std::wstring GetEnglishName() const = 0;
};

/// A category of catalogue components. Its children are owned by it.
class TOLM_PLATFORM_API ITolmCategoryInfo {
public:
    virtual ~ITolmCategoryInfo();
    /// The text that identifies the category, in fittings too.
    virtual std::wstring GetCode() const = 0;
    virtual std::wstring GetParentCode() const = 0;
    virtual std::wstring GetDisciplineId() const = 0;
    virtual std::wstring GetName() const = 0;
    virtual std::wstring GetEnglishName() const = 0;
    /// In their order; plain pointers that live as long as this object.
    virtual std::vector<const ITolmCategoryInfo*> GetChildren() const = 0;
};

/// The category service. Slot order is fixed: hosts put their own implementation in place.
class TOLM_PLATFORM_API ITolmCategoryInfoUtils {
public:
    virtual ~ITolmCategoryInfoUtils();
    /// Fills the map with the disciplines under their ids. False when they cannot be read.
    virtual bool ReadDisciplineList(std::map<std::wstring, vorn::OwnerPtr<ITolmDisciplineInfo>>& disciplines) = 0;
    /// Codes of the categories without a parent that is known, in their order.
    virtual std::vector<std::wstring> GetRootCategoryCodes() = 0;
    /// The category of this code with all below it; empty when the code is unknown.
    virtual vorn::OwnerPtr<ITolmCategoryInfo> GetCategoryInfo(const std::wstring& code) = 0;
    /// Codes of the children of a category, in their order.
    virtual std::vector<std::wstring> GetChildCategoryCodes(const std::wstring& code) = 0;
    /// The category of this code, alone and for its names; null when unknown. Owned by the service, valid until the
    /// next call to it.
    virtual const ITolmCategoryInfo* FindCategoryInfo(const std::wstring& code) = 0;
};

/// Holds the category service of the process. Used from one thread at a time.
class TOLM_PLATFORM_API TolmCategoryInfoUtilsHandler {
public:
    static TolmCategoryInfoUtilsHandler& Get();
    /// Null while no service is up.
    ITolmCategoryInfoUtils* GetUtils() const { return m_utils.get(); }
    /// Puts a service in place and releases the one before; an empty owner takes it down.
    void SetUtils(vorn::OwnerPtr<ITolmCategoryInfoUtils> utils) { m_utils = std::move(utils); }

private:
    TolmCategoryInfoUtilsHandler() = default;
    vorn::OwnerPtr<ITolmCategoryInfoUtils> m_utils;
};

/// The default category service: reads the disciplines and categories of the component database at
/// `componentFilePath` with one query each, when it is first asked, and keeps them. While the file cannot be read it
/// knows nothing and tries again at the next call. Parent links that run in a circle are cut where they close. Used
/// from one thread at a time.
TOLM_PLATFORM_API vorn::OwnerPtr<ITolmCategoryInfoUtils> CreateCategoryInfoUtils(const std::wstring& componentFilePath);

} // namespace tolm
