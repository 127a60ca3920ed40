#include "Host/Components.h"

#include "Host/ComponentFileInternal.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>

namespace tolm {
namespace {

/// Nothing changes a component: its clones share what it holds.
class TolmProjectSettingComponent final : public ITolmProjectSettingComponent {
public:
    explicit TolmProjectSettingComponent(std::shared_ptr<const TolmComponentData> data) : m_data(std::move(data)) {}

    vorn::OwnerPtr<ITolmProjectSettingComponent> Clone() const override {
        return vorn::MakeOwner<TolmProjectSettingComponent>(m_data);
    }
    std::wstring GetId() const override { return m_data->id; }
    std::wstring GetCategoryCode() const override { return m_data->categoryCode; }
    int GetVersion() const override { return m_data->version; }
    __int64 GetPublicComponentId() const override { return m_data->publicId; }
    std::wstring GetComponentTypeId() const override { return m_data->componentTypeId; }
    std::wstring GetName() const override { return m_data->name; }
    std::map<std::wstring, std::wstring> GetAttributes() const override { return m_data->attributes; }

private:
    std::shared_ptr<const TolmComponentData> m_data;
};

using Components = std::vector<TolmComponentData>;
using Conditions = std::map<std::wstring, std::wstring>;

constexpr int kRow = 0;
constexpr int kAttributeName = 8;
constexpr int kAttributeValue = 9;
constexpr std::string_view kSelect =
    "SELECT c.Row, c.Id, c.ComponentTypeId, c.CategoryCode, c.Name, c.Version, c.PublicId, c.ProductId,"
    " a.Name, a.Value FROM components c LEFT JOIN component_attributes a ON a.ComponentRow = c.Row WHERE ";
constexpr std::string_view kOrder = " ORDER BY c.Id, c.Version, c.Row";

TolmComponentData ReadColumns(const sql::Statement& rows) {
    return {rows.Text(1),         rows.Text(2),    rows.Text(3),    rows.Text(4),
            rows.SmallInteger(5), rows.Integer(6), rows.Integer(7), {}};
}

/// Gathers a component from its rows, one for each attribute.
bool ReadComponents(sql::Statement& rows, Components& components) {
    __int64 current = 0;
    while (rows.Next()) {
        const __int64 row = rows.Integer(kRow);
        if (components.empty() || row != current)
            components.push_back(ReadColumns(rows));
        current = row;
        if (!rows.IsNull(kAttributeName))
            components.back().attributes[rows.Text(kAttributeName)] = rows.Text(kAttributeValue);
    }
    return !rows.Failed();
}

std::string Query(std::string_view where) {
    std::string query(kSelect);
    return query.append(where).append(kOrder);
}

/// A condition that names one of these asks for the component's own field, any other one for an attribute.
constexpr std::array<std::pair<std::wstring_view, std::string_view>, 6> kConditionColumns{{
    {L"Id", "c.Id"},
    {L"Name", "c.Name"},
    {L"ComponentTypeId", "c.ComponentTypeId"},
    {L"Version", "CAST(c.Version AS TEXT)"},
    {L"PublicId", "CAST(c.PublicId AS TEXT)"},
    {L"ProductId", "CAST(c.ProductId AS TEXT)"},
}};

std::string ConditionText(const std::wstring& name, int nameParameter) {
    const auto column = std::ranges::find(kConditionColumns, name, [](const auto& row) { return row.first; });
    const std::string value = "?" + std::to_string(nameParameter + 1);
    if (column != kConditionColumns.end())
        return " AND " + std::string(column->second) + " = " + value;
    return " AND EXISTS(SELECT 1 FROM component_attributes x WHERE x.ComponentRow = c.Row AND x.Name = ?" +
           std::to_string(nameParameter) + " AND x.Value = " + value + ")";
}

/// The statement for one category; each condition takes two parameters, its name and its value.
sql::Statement PrepareConditions(sql::Connection& sql, const std::wstring& code, const Conditions& conditions) {
    std::string where = "c.CategoryCode = ?1";
    int parameter = 2;
    for (const auto& condition : conditions) {
        where += ConditionText(condition.first, parameter);
        parameter += 2;
    }
    sql::Statement rows = sql.Prepare(Query(where));
    rows.Bind(1, code);
    parameter = 2;
    for (const auto& [name, value] : conditions) {
        rows.Bind(parameter, name).Bind(parameter + 1, value);
        parameter += 2;
    }
    return rows;
}

vorn::OwnerPtr<ITolmProjectSettingComponent> MakeComponent(TolmComponentData&& data) {
    return vorn::MakeOwner<TolmProjectSettingComponent>(std::make_shared<const TolmComponentData>(std::move(data)));
}

/// Adds all of them or, where the reading fails, none.
bool AppendComponents(sql::Statement& rows, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result) {
    Components components;
    if (!ReadComponents(rows, components))
        return false;
    for (auto& component : components)
        result.push_back(MakeComponent(std::move(component)));
    return true;
}

std::vector<std::wstring> CodesOf(const std::vector<const ITolmCategoryInfo*>& categories) {
    std::vector<std::wstring> codes;
    for (const ITolmCategoryInfo* category : categories) {
        if (category != nullptr)
            codes.push_back(category->GetCode());
    }
    return codes;
}

} // namespace

ITolmProjectSettingComponent::~ITolmProjectSettingComponent() = default;

bool TolmComponentSqlUtil::ReadComponentList(
    const std::wstring& path, const std::vector<const ITolmCategoryInfo*>& categories,
    std::map<std::wstring, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>>& result, bool) {
    ComponentFile file(path, ComponentFile::Purpose::Read);
    if (!file.IsReady())
        return file.IsAbsent();
    if (!FillTextSet(file.Sql(), "wanted", CodesOf(categories)))
        return false;
    sql::Statement rows = file.Sql().Prepare(Query("c.CategoryCode IN (SELECT Value FROM temp.wanted)"));
    Components components;
    if (!ReadComponents(rows, components))
        return false;
    for (auto& component : components) {
        auto& list = result[component.categoryCode];
        list.push_back(MakeComponent(std::move(component)));
    }
    return true;
}

bool TolmComponentSqlUtil::ReadComponentListWithCondition(
    const std::wstring& path, const ITolmCategoryInfo* category, const std::map<std::wstring, std::wstring>& conditions,
    std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result, bool) {
    ComponentFile file(path, ComponentFile::Purpose::Read);
    if (!file.IsReady() || category == nullptr)
        return file.IsAbsent() && category != nullptr;
    sql::Statement rows = PrepareConditions(file.Sql(), category->GetCode(), conditions);
    return AppendComponents(rows, result);
}

// --- many categories -----------------------------------------------------------------------------------------------

/// The file, and the statement for a category.
struct TolmComponentReader::Opened {
    explicit Opened(const std::wstring& path) : file(path, ComponentFile::Purpose::Read) {}

    /// True when a category can be read, in a transaction.
    bool Begin() { return m_isUsed ? file.Resume() : file.IsReady(); }

    bool Read(const std::wstring& code, std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result) {
        if (!m_isUsed)
            m_rows.emplace(file.Sql().Prepare(Query("c.CategoryCode = ?1")));
        m_isUsed = true;
        const bool isRead = AppendComponents(m_rows->Bind(1, code), result);
        m_rows->Reset();
        file.Pause();
        return isRead;
    }

    ComponentFile file;

private:
    std::optional<sql::Statement> m_rows; // goes before the file
    bool m_isUsed = false;
};

TolmComponentReader::TolmComponentReader(std::wstring path) : m_path(std::move(path)) {}

TolmComponentReader::~TolmComponentReader() = default;

/// A file that cannot be read is opened anew by the next reading.
bool TolmComponentReader::Read(const ITolmCategoryInfo* category,
                               std::vector<vorn::OwnerPtr<ITolmProjectSettingComponent>>& result) {
    if (m_opened == nullptr || !m_opened->Begin())
        m_opened = std::make_unique<Opened>(m_path);
    const bool isReady = m_opened->file.IsReady();
    const bool isAbsent = m_opened->file.IsAbsent();
    const bool isRead = isReady && category != nullptr && m_opened->Read(category->GetCode(), result);
    if (!isRead)
        m_opened.reset();
    return isRead || (isAbsent && category != nullptr);
}

// --- versions of one product ---------------------------------------------------------------------------------------

std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>>
TolmComponentSqlUtil::ReadOneComponent(const std::wstring& path, const ITolmCategoryInfo* category, __int64 productId,
                                       const std::vector<int>& versions) {
    std::map<int, vorn::OwnerPtr<ITolmProjectSettingComponent>> result;
    ComponentFile file(path, ComponentFile::Purpose::Read);
    if (!file.IsReady() || category == nullptr)
        return result;
    sql::Statement rows = file.Sql().Prepare(Query("c.ProductId = ?1 AND c.CategoryCode = ?2"));
    Components components;
    if (!ReadComponents(rows.Bind(1, productId).Bind(2, category->GetCode()), components))
        return result;
    for (auto& component : components) {
        const int version = component.version;
        if (std::ranges::find(versions, version) != versions.end() && !result.contains(version))
            result.emplace(version, MakeComponent(std::move(component)));
    }
    return result;
}

} // namespace tolm
