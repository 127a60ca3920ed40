#pragma once

#include "Host/Categories.h"
#include "Vorn/Export.h"
#include "Vorn/Integers.h"
#include "Vorn/OwnerPtr.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tolm {

/// A catalogue component.
class TOLM_PLATFORM_API ITolmProjectSettingComponent {
public:
    virtual ~ITolmProjectSettingComponent();
    /// A copy with the same identity.
    virtual vorn::OwnerPtr<ITolmProjectSettingComponent> Clone() const = 0;
    virtual std::wstring GetId() const = 0;
    virtual std::wstring GetCategoryCode() const = 0;
    virtual int GetVersion() const = 0;
    virtual __int64 GetPublicComponentId() const = 0;
    virtual std::wstring GetComponentTypeId() const = 0;
    virtual std::wstring GetName() const = 0;
    virtual std::map<std::wstring, std::wstring> GetAttributes() const = 0;
};

/// Plain content of a component, as it is imported.
struct TolmComponentData {
    std::wstring id;
    std::wstring componentTypeId;
    std::wstring categoryCode;
    std::wstring name;
    int version = 1;
    __int64 publicId = 0;
    __int64 productId = 0; ///< numeric id under which versions of one product are found
    std::map<std::wstring, std::wstring> attributes;
};

struct TolmCategoryData {
    std::wstring code;
    std::wstring parentCode; ///< empty at the top
    std::wstring disciplineId;
    std::wstring name;
    std::wstring englishName;
};

struct TolmDisciplineData {
    std::wstring id;
    std::wstring name;
    std::wstring englishName;
};

/// Reads the components of categories for one operation through a file that it opens once. Each reading is a
/// transaction of its own: in between nobody waits for it, and what was committed meanwhile is seen. It is used from
/// one thread at a time. Nothing throws.
class TOLM_PLATFORM_API TolmComponentReader {
public:
    explicit TolmComponentReader(std::wstring path);
    ~TolmComponentReader();
    TolmComponentReader(const TolmComponentReader&) = delete;
    TolmComponentReader& operator=(const TolmComponentReader&) = delete;

    /// As `TolmComponentSqlUtil::ReadComponentListWithCondition` without a condition.
    bool Read(const ITolmCategoryInfo* category, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result);

private:
    struct Opened;

    std::wstring m_path;
    std::unique_ptr<Opened> m_opened;
};

/// The component database: disciplines, a category tree, components with attributes and versions, and combined
/// products, in one SQLite file. Each operation opens the file, works in one transaction and closes it. Reading a
/// file that does not exist, or an empty one, finds nothing and is no failure; inserting and importing create it,
/// removing and renaming do not. A damaged or foreign file makes every operation fail and stays as it was. When an
/// operation fails, file and out-parameters are as they were. Any thread may call; another process that holds the
/// file is waited for, five seconds at most. Nothing throws.
///
/// The `flag` of the reading operations is the caller's own and changes nothing.
class TOLM_PLATFORM_API TolmComponentSqlUtil {
public:
    /// Adds to the map, under each category's code, the components of the listed categories, in order of id and
    /// version, in one pass. A category without components makes no entry; a null pointer is passed over.
    static bool
    ReadComponentList(const std::wstring& path, const std::vector<const ITolmCategoryInfo*>& categories,
                      std::map<std::wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>>& result,
                      bool flag);

    /// Appends the category's components that meet all conditions. A condition names a column ("Id", "Name",
    /// "ComponentTypeId", "Version", "PublicId", "ProductId") or else an attribute, and asks for equality of the
    /// text. False without a category.
    static bool ReadComponentListWithCondition(const std::wstring& path, const ITolmCategoryInfo* category,
                                               const std::map<std::wstring, std::wstring>& conditions,
                                               std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result,
                                               bool flag);

    /// Reads the component of the category under the numeric product id, one for each listed version that exists.
    static std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>>
    ReadOneComponent(const std::wstring& path, const ITolmCategoryInfo* category, __int64 productId,
                     const std::vector<int>& versions);

    /// Inserts or updates each product, whole; `newIds` is emptied and receives the ids of those that were not there
    /// before. No products is no work: no file comes into being.
    static bool InsertCombinedProduct(const std::wstring& path, const std::vector<TolmCombinedProduct>& products,
                                      std::vector<std::wstring>& newIds);

    /// Removes the listed products of the category that the two texts give, each by code or by one of the names of
    /// the category, as the file or the category service has them; products of other categories stay. An empty text
    /// beside another says nothing; two empty texts give a known category without a name.
    static bool RemoveCombinedProduct(const std::wstring& path, const std::wstring& localKey,
                                      const std::wstring& targetId, const std::vector<std::wstring>& ids);

    /// Appends the combined products of a category, or all of them for an empty code, in order of id.
    static bool ReadCombinedProductList(const std::wstring& path, const std::wstring& categoryCode,
                                        std::vector<TolmCombinedProduct>& products);

    /// Changes component ids by the first map and component type ids by the second, in components and in combined
    /// products, all at once: a chain a to b, b to c does not run on. Two components that would end with the same
    /// id and version make it fail.
    static bool UpdateAllComponentId(const std::wstring& path, std::map<std::wstring, std::wstring>& componentIds,
                                     std::map<std::wstring, std::wstring>& componentTypeIds);

    /// Inserts disciplines, categories and components, or replaces those that are there: disciplines by id, categories
    /// by code, components by id and version, with all their attributes. What is replaced keeps its place in the order.
    static bool Import(const std::wstring& path, const std::vector<TolmDisciplineData>& disciplines,
                       const std::vector<TolmCategoryData>& categories,
                       const std::vector<TolmComponentData>& components);
};

} // namespace tolm
