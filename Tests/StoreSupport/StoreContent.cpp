#include "StoreSupport/StoreContent.h"

#include "Host/Components.h"
#include "Service/Base64Text.h"
#include "StoreSupport/StoreFixture.h"
#include "Vorn/Text.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>

namespace tolmtest {
namespace {

constexpr int kLongestDifference = 30;

/// One query for all there is: class, id, attribute and value. A record as such is the attribute without a name.
std::string EverythingQuery(const std::wstring& path) {
    std::string query;
    for (const auto& column : Sql(path, "SELECT m.name, p.name FROM sqlite_schema m, pragma_table_info(m.name) p "
                                        "WHERE m.type = 'table' AND p.name <> 'seq' ORDER BY m.name, p.cid")) {
        const bool isId = column[1] == "id";
        query += query.empty() ? "" : " UNION ALL ";
        query +=
            "SELECT '" + column[0] + "', id, " + (isId ? "'', ''" : "'" + column[1] + "', quote(" + column[1] + ")");
        query += " FROM \"" + column[0] + "\"" + (isId ? "" : " WHERE " + column[1] + " IS NOT NULL");
    }
    return query;
}

std::string WithoutDoubledQuotes(std::string_view literal) {
    std::string text;
    for (std::size_t i = 0; i < literal.size(); ++i) {
        text += literal[i];
        if (literal[i] == '\'')
            ++i;
    }
    return text;
}

/// A value as SQLite writes it, in the form of a fact.
std::string FactOf(const std::string& literal) {
    if (literal.empty() || literal[0] == 'X')
        return literal;
    if (literal[0] == '\'')
        return TextFact(WithoutDoubledQuotes(std::string_view(literal).substr(1, literal.size() - 2)));
    return NumberFact(std::strtod(literal.c_str(), nullptr));
}

/// An attribute that holds the id of a record made locally.
struct LocalLink {
    const char* ownerClass;
    const char* attribute;
    const char* madeClass;
    bool ductsOnly;
};
constexpr LocalLink kConnectionLink = {"SMS", "ConnectionSerieId", "COS", false};
constexpr LocalLink kDuctMaterialLink = {"PSI", "MaterialId", "MTS", true};

/// Ids made locally, each with the id of its owner.
using Owners = std::map<std::string, std::string>;

/// Ids of the size tables of ducts.
std::set<std::string> DuctIds(const std::vector<SqlRow>& rows) {
    std::set<std::string> ids;
    for (const auto& row : rows) {
        if (row[0] == "PSI" && row[2] == "MEPType" && row[3] == "2")
            ids.insert(row[1]);
    }
    return ids;
}

bool IsLink(const SqlRow& row, const LocalLink& link) {
    return row[0] == link.ownerClass && row[2] == link.attribute;
}

std::string TextOf(const std::string& fact) {
    return fact.substr(1, fact.size() - 2);
}

Owners OwnersOf(const std::vector<SqlRow>& rows, const LocalLink& link) {
    const auto ducts = DuctIds(rows);
    Owners owners;
    for (const auto& row : rows) {
        if (IsLink(row, link) && (!link.ductsOnly || ducts.contains(row[1])))
            owners.emplace(TextOf(row[3]), row[1]);
    }
    return owners;
}

std::string Renamed(const Owners& owners, const std::string& id) {
    const auto owner = owners.find(id);
    return owner == owners.end() ? id : "of " + owner->second;
}

/// The rows with the ids that are made locally told by their owners.
void RenameLocalIds(std::vector<SqlRow>& rows, const LocalLink& link) {
    const Owners owners = OwnersOf(rows, link);
    for (auto& row : rows) {
        if (row[0] == link.madeClass)
            row[1] = Renamed(owners, row[1]);
        if (IsLink(row, link))
            row[3] = TextFact(Renamed(owners, TextOf(row[3])));
    }
}

std::string ReferenceFact(const tolm::TolmComponentReference& reference) {
    std::string text = "[";
    for (const auto* part : {&reference.categoryStandardCode, &reference.componentId, &reference.componentTypeId,
                             &reference.categoryName, &reference.categoryEnglishName})
        text += TextFact(vorn::StringUtil::ToString(*part));
    return text + "]";
}

void AppendMissing(const Facts& from, const Facts& in, const char* sign, std::ostringstream& out, int& count) {
    for (const auto& [key, value] : from) {
        const auto found = in.find(key);
        if (found != in.end() && found->second == value)
            continue;
        if (++count <= kLongestDifference)
            out << sign << key << " = " << value.substr(0, 400) << "\n";
    }
}

} // namespace

std::string TextFact(std::string_view text) {
    return "'" + std::string(text) + "'";
}

std::string NumberFact(double number) {
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), end.ptr};
}

std::string BytesFact(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "X'";
    for (const char c : bytes) {
        text += digits[static_cast<unsigned char>(c) >> 4];
        text += digits[static_cast<unsigned char>(c) & 15];
    }
    return text + "'";
}

std::string CombinedProductFact(const tolm::TolmCombinedProduct& product) {
    std::string text;
    for (const auto* part : {&product.Name, &product.supplySystemTypeId, &product.supplyDuctTypeId,
                             &product.returnSystemTypeId, &product.returnDuctTypeId})
        text += TextFact(vorn::StringUtil::ToString(*part));
    for (const double number :
         {double{1} * product.spacing, double{1} * product.supplyAirTerminalNumber, product.supplyHoseLength,
          product.supplyAirTerminalDist1, product.supplyAirTerminalDist2, product.returnHoseLength})
        text += " " + NumberFact(number);
    for (const auto* part : {&product.equipment, &product.supplyAirTerminal, &product.returnAirTerminal})
        text += ReferenceFact(*part);
    for (const auto& part : product.components)
        text += " part" + ReferenceFact(part);
    return text;
}

Facts StoreFacts(const std::wstring& path) {
    auto rows = Sql(path, EverythingQuery(path));
    for (auto& row : rows)
        row[3] = FactOf(row[3]);
    RenameLocalIds(rows, kConnectionLink);
    RenameLocalIds(rows, kDuctMaterialLink);
    Facts facts;
    for (const auto& row : rows)
        facts.emplace(row[0] + "/" + row[1] + (row[2].empty() ? "" : "/" + row[2]), row[3]);
    return facts;
}

Facts CombinedProductFacts(const std::wstring& path) {
    std::vector<tolm::TolmCombinedProduct> products;
    EXPECT_TRUE(tolm::TolmComponentSqlUtil::ReadCombinedProductList(path, L"", products));
    Facts facts;
    for (const auto& product : products) {
        const auto key = L"combined/" + product.categoryCode + L"/" + product.Id;
        facts.emplace(vorn::StringUtil::ToString(key), CombinedProductFact(product));
    }
    return facts;
}

Facts FileFacts(const std::wstring& folder) {
    Facts facts;
    const std::filesystem::path native = vorn::FileSystem::ToNative(folder);
    if (!std::filesystem::exists(native))
        return facts;
    for (const auto& file : std::filesystem::directory_iterator(native)) {
        const auto name = file.path().filename().string();
        facts.emplace("file/" + name,
                      tolm::service::ToBase64(FileBytes(folder + L"/" + vorn::StringUtil::ToWString(name))));
    }
    return facts;
}

std::string Difference(const Facts& expected, const Facts& actual) {
    std::ostringstream out;
    int count = 0;
    AppendMissing(expected, actual, "- ", out, count);
    AppendMissing(actual, expected, "+ ", out, count);
    if (count > kLongestDifference)
        out << "and " << count - kLongestDifference << " more\n";
    return out.str();
}

} // namespace tolmtest
