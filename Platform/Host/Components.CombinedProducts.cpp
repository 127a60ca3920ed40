#include "Host/Components.h"

#include "Host/ComponentFileInternal.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>
#include <variant>

namespace tolm {
namespace {

using Product = TolmCombinedProduct;
using Reference = TolmComponentReference;
using Products = std::vector<Product>;

struct ProductColumn {
    std::string_view name;
    std::variant<std::wstring Product::*, std::int32_t Product::*, double Product::*> field;
};
constexpr std::array<ProductColumn, 13> kProductColumns{{
    {"Id", &Product::Id},
    {"CategoryCode", &Product::categoryCode},
    {"Name", &Product::Name},
    {"Spacing", &Product::spacing},
    {"SupplySystemTypeId", &Product::supplySystemTypeId},
    {"SupplyHoseLength", &Product::supplyHoseLength},
    {"SupplyAirTerminalNumber", &Product::supplyAirTerminalNumber},
    {"SupplyAirTerminalDist1", &Product::supplyAirTerminalDist1},
    {"SupplyAirTerminalDist2", &Product::supplyAirTerminalDist2},
    {"SupplyDuctTypeId", &Product::supplyDuctTypeId},
    {"ReturnSystemTypeId", &Product::returnSystemTypeId},
    {"ReturnDuctTypeId", &Product::returnDuctTypeId},
    {"ReturnHoseLength", &Product::returnHoseLength},
}};

struct ReferenceColumn {
    std::string_view name;
    std::wstring Reference::*field;
};
constexpr std::array<ReferenceColumn, 5> kReferenceColumns{{
    {"CategoryStandardCode", &Reference::categoryStandardCode},
    {"ComponentId", &Reference::componentId},
    {"ComponentTypeId", &Reference::componentTypeId},
    {"CategoryName", &Reference::categoryName},
    {"CategoryEnglishName", &Reference::categoryEnglishName},
}};

/// What a component is to its product. The numbers stand in files.
constexpr int kListRole = 0;
struct Role {
    int number;
    Reference Product::*field;
};
constexpr std::array<Role, 3> kRoles{{
    {1, &Product::equipment},
    {2, &Product::supplyAirTerminal},
    {3, &Product::returnAirTerminal},
}};

void Bind(sql::Statement& statement, int parameter, const std::wstring& value) {
    statement.Bind(parameter, value);
}
void Bind(sql::Statement& statement, int parameter, std::int32_t value) {
    statement.Bind(parameter, __int64{value});
}
void Bind(sql::Statement& statement, int parameter, double value) {
    statement.Bind(parameter, value);
}

void Read(const sql::Statement& rows, int column, std::wstring& value) {
    value = rows.Text(column);
}
void Read(const sql::Statement& rows, int column, std::int32_t& value) {
    value = rows.SmallInteger(column);
}
void Read(const sql::Statement& rows, int column, double& value) {
    value = rows.Real(column);
}

/// Writes products with the statements prepared once.
class CombinedProductWriter {
public:
    explicit CombinedProductWriter(sql::Connection& sql)
        : m_insert(sql.Prepare("INSERT OR IGNORE INTO combined_products(Id) VALUES(?1) RETURNING 1")),
          m_update(sql.Prepare("UPDATE combined_products SET (" + JoinNames(kProductColumns, "", "") + ") = (" +
                               JoinNames(kProductColumns, ":", "") + ") WHERE Id = ?1")),
          m_clear(sql.Prepare("DELETE FROM combined_components WHERE CombinedProductId = ?1")),
          m_component(sql.Prepare("INSERT INTO combined_components(CombinedProductId, Role, Position, " +
                                  JoinNames(kReferenceColumns, "", "") + ") VALUES(?1, ?2, ?3, " +
                                  JoinNames(kReferenceColumns, ":", "") + ")")) {}

    bool Write(const Product& product, bool& isNew) {
        isNew = m_insert.Bind(1, product.Id).Next();
        return m_insert.Run() && WriteFields(product) && m_clear.Bind(1, product.Id).Run() && WriteReferences(product);
    }

private:
    bool WriteFields(const Product& product) {
        int parameter = 1;
        for (const auto& column : kProductColumns) {
            std::visit([&](auto field) { Bind(m_update, parameter, product.*field); }, column.field);
            ++parameter;
        }
        return m_update.Run();
    }

    bool WriteReferences(const Product& product) {
        __int64 position = 0;
        for (const auto& component : product.components) {
            if (!WriteReference(product, kListRole, position++, component))
                return false;
        }
        return std::ranges::all_of(kRoles, [&](const Role& role) {
            const Reference& reference = product.*role.field;
            return reference == Reference() || WriteReference(product, role.number, 0, reference);
        });
    }

    bool WriteReference(const Product& product, int role, __int64 position, const Reference& reference) {
        m_component.Bind(1, product.Id).Bind(2, __int64{role}).Bind(3, position);
        int parameter = 4;
        for (const auto& column : kReferenceColumns)
            m_component.Bind(parameter++, reference.*column.field);
        return m_component.Run();
    }

    sql::Statement m_insert;
    sql::Statement m_update;
    sql::Statement m_clear;
    sql::Statement m_component;
};

bool ReadProducts(sql::Connection& sql, const std::wstring& categoryCode, Products& products) {
    sql::Statement rows = sql.Prepare("SELECT " + JoinNames(kProductColumns, "", "") +
                                      " FROM combined_products WHERE ?1 = '' OR CategoryCode = ?1 ORDER BY Id");
    rows.Bind(1, categoryCode);
    while (rows.Next()) {
        Product& product = products.emplace_back();
        int index = 0;
        for (const auto& column : kProductColumns) {
            std::visit([&](auto field) { Read(rows, index, product.*field); }, column.field);
            ++index;
        }
    }
    return !rows.Failed();
}

void PlaceReference(Product& product, int role, Reference reference) {
    if (role == kListRole) {
        product.components.push_back(std::move(reference));
        return;
    }
    const auto found = std::ranges::find(kRoles, role, &Role::number);
    if (found != kRoles.end())
        product.*found->field = std::move(reference);
}

Reference ReadReference(const sql::Statement& rows, int firstColumn) {
    Reference reference;
    for (const auto& column : kReferenceColumns)
        reference.*column.field = rows.Text(firstColumn++);
    return reference;
}

/// Adds their components to the products, in one pass over all.
bool ReadReferences(sql::Connection& sql, const std::wstring& categoryCode, Products& products) {
    std::unordered_map<std::wstring, Product*> byId;
    for (Product& product : products)
        byId.emplace(product.Id, &product);
    sql::Statement rows =
        sql.Prepare("SELECT r.CombinedProductId, r.Role, " + JoinNames(kReferenceColumns, "r.", "") +
                    " FROM combined_components r JOIN combined_products p ON p.Id = r.CombinedProductId"
                    " WHERE ?1 = '' OR p.CategoryCode = ?1 ORDER BY r.CombinedProductId, r.Role, r.Position");
    rows.Bind(1, categoryCode);
    while (rows.Next()) {
        const auto product = byId.find(rows.Text(0));
        if (product != byId.end())
            PlaceReference(*product->second, rows.SmallInteger(1), ReadReference(rows, 2));
    }
    return !rows.Failed();
}

/// A category and what it may be called by: its code and, where it is known, its names.
struct CategoryNames {
    std::wstring code;
    std::vector<std::wstring> names;

    /// An empty text beside another says nothing; two of them give a category without names.
    bool IsGivenBy(const std::wstring& first, const std::wstring& second) const {
        const bool bothEmpty = first.empty() && second.empty();
        return (Has(first) || (first.empty() && !bothEmpty)) && (Has(second) || (second.empty() && !bothEmpty));
    }

private:
    bool Has(const std::wstring& text) const { return text == code || std::ranges::find(names, text) != names.end(); }
};

/// The names of a category as the file has them and as the category service has them: the file of the combined
/// products need not be the one of the categories.
CategoryNames ReadNames(const sql::Statement& row) {
    CategoryNames category{row.Text(0), {}};
    if (!row.IsNull(1))
        category.names = {row.Text(1), row.Text(2)};
    ITolmCategoryInfoUtils* const utils = TolmCategoryInfoUtilsHandler::Get().GetUtils();
    const ITolmCategoryInfo* const info = utils != nullptr ? utils->FindCategoryInfo(category.code) : nullptr;
    if (info != nullptr)
        category.names.insert(category.names.end(), {info->GetName(), info->GetEnglishName()});
    return category;
}

/// Codes of the categories with combined products that both texts give.
bool FindCategories(sql::Connection& sql, const std::wstring& first, const std::wstring& second,
                    std::vector<std::wstring>& codes) {
    sql::Statement rows = sql.Prepare("SELECT DISTINCT p.CategoryCode, c.Name, c.EnglishName FROM combined_products p"
                                      " LEFT JOIN categories c ON c.Code = p.CategoryCode");
    while (rows.Next()) {
        CategoryNames category = ReadNames(rows);
        if (category.IsGivenBy(first, second))
            codes.push_back(std::move(category.code));
    }
    return !rows.Failed();
}

} // namespace

bool TolmComponentSqlUtil::InsertCombinedProduct(const std::wstring& path,
                                                 const std::vector<TolmCombinedProduct>& products,
                                                 std::vector<std::wstring>& newIds) {
    newIds.clear();
    if (products.empty())
        return true;
    ComponentFile file(path, ComponentFile::Purpose::Create);
    if (!file.IsReady())
        return false;
    CombinedProductWriter writer(file.Sql());
    std::vector<std::wstring> created;
    for (const auto& product : products) {
        bool isNew = false;
        if (!writer.Write(product, isNew))
            return false;
        if (isNew)
            created.push_back(product.Id);
    }
    if (!file.Commit())
        return false;
    newIds = std::move(created);
    return true;
}

bool TolmComponentSqlUtil::RemoveCombinedProduct(const std::wstring& path, const std::wstring& localKey,
                                                 const std::wstring& targetId, const std::vector<std::wstring>& ids) {
    ComponentFile file(path, ComponentFile::Purpose::Update);
    if (!file.IsReady())
        return file.IsAbsent();
    std::vector<std::wstring> codes;
    return FindCategories(file.Sql(), localKey, targetId, codes) && FillTextSet(file.Sql(), "given_codes", codes) &&
           FillTextSet(file.Sql(), "given_ids", ids) &&
           file.Sql().Execute("DELETE FROM combined_products WHERE Id IN (SELECT Value FROM temp.given_ids)"
                              " AND CategoryCode IN (SELECT Value FROM temp.given_codes)") &&
           file.Commit();
}

bool TolmComponentSqlUtil::ReadCombinedProductList(const std::wstring& path, const std::wstring& categoryCode,
                                                   std::vector<TolmCombinedProduct>& products) {
    ComponentFile file(path, ComponentFile::Purpose::Read);
    if (!file.IsReady())
        return file.IsAbsent();
    Products found;
    if (!ReadProducts(file.Sql(), categoryCode, found) || !ReadReferences(file.Sql(), categoryCode, found))
        return false;
    products.insert(products.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    return true;
}

} // namespace tolm
