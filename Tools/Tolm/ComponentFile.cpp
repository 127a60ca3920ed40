#include "Tolm/ComponentFile.h"

#include "Tolm/Errors.h"

#include "Host/Components.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <fstream>

namespace tolmcli {
namespace {

using nlohmann::json;
using vorn::StringUtil;

std::wstring Text(const json& object, const char* key) {
    return StringUtil::ToWString(object.value(key, std::string()));
}

/// An entry's key: it must not be missing or empty.
std::wstring Key(const json& object, const char* key) {
    std::wstring text = Text(object, key);
    if (text.empty())
        throw Failure("an entry without \"" + std::string(key) + "\": " + object.dump());
    return text;
}

tolm::TolmDisciplineData DisciplineOf(const json& object) {
    return {Key(object, "id"), Text(object, "name"), Text(object, "englishName")};
}

tolm::TolmCategoryData CategoryOf(const json& object) {
    return {Key(object, "code"), Text(object, "parentCode"), Text(object, "disciplineId"), Text(object, "name"),
            Text(object, "englishName")};
}

tolm::TolmComponentData ComponentOf(const json& object) {
    tolm::TolmComponentData component;
    component.id = Key(object, "id");
    component.categoryCode = Key(object, "categoryCode");
    component.componentTypeId = Text(object, "componentTypeId");
    component.name = Text(object, "name");
    component.version = object.value("version", 1);
    component.publicId = object.value("publicId", __int64{0});
    component.productId = object.value("productId", __int64{0});
    const json attributes = object.value("attributes", json::object());
    for (const auto& [name, value] : attributes.items())
        component.attributes[StringUtil::ToWString(name)] =
            StringUtil::ToWString(value.is_string() ? value.get<std::string>() : value.dump());
    return component;
}

template <class Row> std::vector<Row> RowsOf(const json& file, const char* key, Row (*read)(const json&)) {
    std::vector<Row> rows;
    const json list = file.value(key, json::array());
    for (const json& object : list)
        rows.push_back(read(object));
    return rows;
}

} // namespace

ImportCounts ImportComponents(const std::string& jsonFile, const std::wstring& database) {
    std::ifstream in(jsonFile);
    if (!in)
        throw Failure("cannot read " + jsonFile);
    try {
        const json file = json::parse(in);
        const auto disciplines = RowsOf(file, "disciplines", DisciplineOf);
        const auto categories = RowsOf(file, "categories", CategoryOf);
        const auto components = RowsOf(file, "components", ComponentOf);
        if (!tolm::TolmComponentSqlUtil::Import(database, disciplines, categories, components))
            throw Failure("cannot write " + StringUtil::ToString(database));
        return {disciplines.size(), categories.size(), components.size()};
    } catch (const json::exception& error) {
        throw Failure(jsonFile + " is no file of components: " + error.what());
    }
}

} // namespace tolmcli
