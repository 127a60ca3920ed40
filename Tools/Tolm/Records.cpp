#include "Tolm/Records.h"

#include "Tolm/Errors.h"
#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using tolm::IProjectSettingMaterial;
using tolm::IProjectSettingSizeModule;
using Type = tolm::TolmProjectSettingMEPObjectType;
using vorn::StringUtil;

std::string Utf8(const std::wstring& text) {
    return StringUtil::ToString(text);
}

template <class Enum> int AsInt(Enum value) {
    return static_cast<int>(value);
}

/// A float as the shortest decimal that reads back as the same float.
double Decimal(float value) {
    std::ostringstream text;
    text.precision(std::numeric_limits<float>::digits10);
    text << value;
    return std::stod(text.str());
}

/// The rows of one kind of list: its columns and how a row goes in and out. Cells travel as text.
struct RowForm {
    std::vector<const char*> columns;
    void (*add)(IProjectSettingSizeModule&, const std::vector<std::string>&);
    std::vector<std::vector<std::wstring>> (*read)(const IProjectSettingSizeModule&);
    void (*remove)(IProjectSettingSizeModule&, int);
    void (*clear)(IProjectSettingSizeModule&);
};

float Length(const std::string& text, const char* column) {
    return static_cast<float>(ParseNumber(text, column));
}

int Integer(const std::string& text, const char* column) {
    const double value = ParseNumber(text, column);
    if (value != std::floor(value) || std::abs(value) > std::numeric_limits<int>::max())
        throw Failure(std::string(column) + " takes a whole number, not " + text, Misused);
    return static_cast<int>(value);
}

void AddPipeRow(IProjectSettingSizeModule& module, const std::vector<std::string>& cells) {
    tolm::ProjectSettingPipeSize size;
    size.nominalDiameter = Length(cells[0], "DN");
    size.outerDiameter = Length(cells[1], "OD");
    size.innerDiameter = Length(cells[2], "ID");
    if (cells.size() > 3)
        size.thickness = Length(cells[3], "Thickness");
    module.AddPipeSize(size);
}

std::vector<std::vector<std::wstring>> ReadPipeRows(const IProjectSettingSizeModule& module) {
    std::vector<std::vector<std::wstring>> rows;
    for (const auto& size : module.GetPipeSizeList())
        rows.push_back({Number(size.nominalDiameter), Number(size.outerDiameter), Number(size.innerDiameter),
                        Number(size.thickness)});
    return rows;
}

void AddDuctRow(IProjectSettingSizeModule& module, const std::vector<std::string>& cells) {
    tolm::ProjectSettingDuctSize size;
    size.size = Length(cells[0], "Size");
    if (cells.size() > 1)
        size.thickness = Length(cells[1], "Thickness");
    module.AddDuctSize(size);
}

std::vector<std::vector<std::wstring>> ReadDuctRows(const IProjectSettingSizeModule& module) {
    std::vector<std::vector<std::wstring>> rows;
    for (const auto& size : module.GetDuctSizeList())
        rows.push_back({Number(size.size), Number(size.thickness)});
    return rows;
}

void AddWireRow(IProjectSettingSizeModule& module, const std::vector<std::string>& cells) {
    tolm::ProjectSettingCableSpec spec;
    spec.area = StringUtil::ToWString(cells[0]);
    spec.current = Integer(cells[1], "current");
    spec.temperature = static_cast<tolm::EnvironmentTemperature>(Integer(cells[2], "temperature"));
    module.AddCableSpecification(spec);
}

std::vector<std::vector<std::wstring>> ReadWireRows(const IProjectSettingSizeModule& module) {
    std::vector<std::vector<std::wstring>> rows;
    for (const auto& spec : module.GetCableSpecificationList())
        rows.push_back({spec.area, std::to_wstring(spec.current), std::to_wstring(AsInt(spec.temperature))});
    return rows;
}

void RemovePipeRow(IProjectSettingSizeModule& module, int row) {
    module.DeletePipeSize(row);
}
void ClearPipeRows(IProjectSettingSizeModule& module) {
    module.ClearPipeSizes();
}
void RemoveDuctRow(IProjectSettingSizeModule& module, int row) {
    module.DeleteDuctSize(row);
}
void ClearDuctRows(IProjectSettingSizeModule& module) {
    module.ClearDuctSize();
}
void RemoveWireRow(IProjectSettingSizeModule& module, int row) {
    module.DeleteCableSpecification(row);
}
void ClearWireRows(IProjectSettingSizeModule& module) {
    module.ClearCableSpecifications();
}

const RowForm& FormOf(Type type) {
    static const RowForm pipe{{"DN", "OD", "ID", "Thickness"}, AddPipeRow, ReadPipeRows, RemovePipeRow, ClearPipeRows};
    static const RowForm duct{{"Size", "Thickness"}, AddDuctRow, ReadDuctRows, RemoveDuctRow, ClearDuctRows};
    static const RowForm wire{
        {"area", "current", "temperature"}, AddWireRow, ReadWireRows, RemoveWireRow, ClearWireRows};
    switch (type) {
    case Type::Duct:
    case Type::CableTray:
        return duct;
    case Type::Wire:
        return wire;
    default:
        return pipe;
    }
}

/// Columns that a row must have: a wall thickness may be left out.
std::size_t RequiredColumns(const RowForm& form) {
    return form.columns.size() - (std::string(form.columns.back()) == "Thickness" ? 1 : 0);
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> cells;
    std::istringstream in(text);
    for (std::string cell; std::getline(in, cell, ',');)
        cells.push_back(Utf8(StringUtil::TrimSpace(StringUtil::ToWString(cell))));
    return cells;
}

Json RowsToJson(const IProjectSettingSizeModule& module) {
    Json rows = Json::array();
    for (const auto& size : module.GetPipeSizeList())
        rows.push_back({{"DN", Decimal(size.nominalDiameter)},
                        {"OD", Decimal(size.outerDiameter)},
                        {"ID", Decimal(size.innerDiameter)},
                        {"Thickness", Decimal(size.thickness)}});
    for (const auto& size : module.GetDuctSizeList())
        rows.push_back({{"Size", Decimal(size.size)}, {"Thickness", Decimal(size.thickness)}});
    for (const auto& spec : module.GetCableSpecificationList())
        rows.push_back(
            {{"area", Utf8(spec.area)}, {"current", spec.current}, {"temperature", AsInt(spec.temperature)}});
    return rows;
}

/// What a size table of this object type has beside its rows, as pairs of a word and a value.
std::vector<std::pair<const char*, Json>> Particulars(const IProjectSettingSizeModule& module) {
    switch (module.GetMEPType()) {
    case Type::Pipe:
        return {{"roughness", module.GetRoughness()}};
    case Type::Duct:
        return {{"shape", AsInt(module.GetDuctShape())}, {"pressureGrade", AsInt(module.GetPressureGrade())}};
    case Type::CableTray:
        return {{"shape", AsInt(module.GetCableTrayShape())}};
    case Type::Wire:
        return {{"cableMaterial", AsInt(module.GetCableMaterial())},
                {"environmentTemperature", AsInt(module.GetCableEnvironmentTemperature())},
                {"cableTypeName", Utf8(module.GetCableSpecTypeName())}};
    default:
        return {};
    }
}

} // namespace

double ParseNumber(const std::string& text, const std::string& what) {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    double value = 0.0;
    if (!(in >> value) || !(in >> std::ws).eof() || !std::isfinite(value))
        throw Failure(what + " takes a number, not \"" + text + "\"", Misused);
    return value;
}

Json ToJson(const IProjectSettingMaterial& material) {
    return {{"id", Utf8(material.GetId())},
            {"name", Utf8(material.GetName())},
            {"kind", Utf8(KindWord(AsInt(material.GetMEPType()), AsInt(material.GetDisciplineId())))},
            {"createTime", material.GetCreateTime()}};
}

Json ToJson(const IProjectSettingSizeModule& module) {
    Json json{{"id", Utf8(module.GetId())},
              {"name", Utf8(module.GetName())},
              {"kind", Utf8(KindWord(AsInt(module.GetMEPType()), AsInt(module.GetDisciplineId())))},
              {"createTime", module.GetCreateTime()}};
    if (const auto* material = module.GetMaterial())
        json["material"] = {{"id", Utf8(material->GetId())}, {"name", Utf8(material->GetName())}};
    for (const auto& [word, value] : Particulars(module))
        json[word] = value;
    json["sizes"] = RowsToJson(module);
    return json;
}

void Print(std::ostream& out, const IProjectSettingSizeModule& module) {
    out << Utf8(module.GetName()) << '\n'
        << "  id        " << Utf8(module.GetId()) << '\n'
        << "  kind      " << Utf8(KindWord(AsInt(module.GetMEPType()), AsInt(module.GetDisciplineId()))) << '\n';
    if (const auto* material = module.GetMaterial())
        out << "  material  " << Utf8(material->GetName()) << "  (" << Utf8(material->GetId()) << ")\n";
    for (const auto& [word, value] : Particulars(module))
        out << "  " << word << "  " << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
    const RowForm& form = FormOf(module.GetMEPType());
    std::vector<std::wstring> header{L"row"};
    for (const char* column : form.columns)
        header.push_back(StringUtil::ToWString(column));
    TextTable table(std::move(header));
    for (const auto& cells : form.read(module)) {
        std::vector<std::wstring> row{std::to_wstring(table.RowCount() + 1)};
        row.insert(row.end(), cells.begin(), cells.end());
        table.Add(std::move(row));
    }
    out << '\n';
    table.Print(out);
}

std::size_t RowCount(const IProjectSettingSizeModule& module) {
    return FormOf(module.GetMEPType()).read(module).size();
}

std::string RowColumns(Type type) {
    std::string text;
    for (const char* column : FormOf(type).columns)
        text += (text.empty() ? "" : ",") + std::string(column);
    return text;
}

void AddRow(IProjectSettingSizeModule& module, const std::string& text) {
    const RowForm& form = FormOf(module.GetMEPType());
    const auto cells = Split(text);
    if (cells.size() < RequiredColumns(form) || cells.size() > form.columns.size())
        throw Failure("a row of this table is given as " + RowColumns(module.GetMEPType()) + ", not \"" + text + "\"",
                      Misused);
    form.add(module, cells);
}

void RemoveRow(IProjectSettingSizeModule& module, int row) {
    if (row < 1 || static_cast<std::size_t>(row) > RowCount(module))
        throw Failure("there is no row " + std::to_string(row) + ": the table has " + std::to_string(RowCount(module)),
                      Misused);
    FormOf(module.GetMEPType()).remove(module, row - 1);
}

void ClearRows(IProjectSettingSizeModule& module) {
    FormOf(module.GetMEPType()).clear(module);
}

} // namespace tolmcli
