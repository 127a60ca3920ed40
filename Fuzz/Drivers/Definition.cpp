#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Files.h"
#include "Fuzz/Support/Require.h"
#include "Qbase/DefinitionInternal.h"
#include "Qbase/Qbase.h"
#include "Support/TempFolder.h"

#include <map>
#include <string>

namespace tolmfuzz {
namespace {

using qbase::Attribute;
using qbase::AttributeType;
using qbase::ClassDefinition;
using qbase::Definition;

const std::map<AttributeType, std::string> kTypeNames = {
    {AttributeType::Byte, "byte"},          {AttributeType::Short, "short"},      {AttributeType::Long, "long"},
    {AttributeType::Float, "float"},        {AttributeType::Double, "double"},    {AttributeType::Text, "text"},
    {AttributeType::FloatArray, "float[]"}, {AttributeType::TextArray, "text[]"},
};

std::string TypeText(const Attribute& attribute) {
    if (const auto name = kTypeNames.find(attribute.type); name != kTypeNames.end())
        return name->second;
    return "binary(" + std::to_string(attribute.entrySize) + ")" +
           (attribute.type == AttributeType::BinaryArray ? "[]" : "");
}

void AppendClass(const ClassDefinition& definition, std::string& text) {
    text += "class " + definition.code + "\n";
    for (const Attribute& attribute : definition.attributes)
        text += std::to_string(attribute.id) + " " + TypeText(attribute) + " " + attribute.name + "\n";
    for (const auto& index : definition.indexes) {
        text += "index";
        for (const int position : index)
            text += " " + definition.attributes.at(static_cast<std::size_t>(position)).name;
        text += "\n";
    }
}

/// The definition as a text of its own, without what does not matter.
std::string TextOf(const Definition& definition) {
    std::string text = "store-definition 1\n";
    for (const ClassDefinition& each : definition.Classes())
        AppendClass(each, text);
    return text;
}

void RequireFound(const Definition& definition) {
    for (std::size_t i = 0; i < definition.Classes().size(); ++i) {
        const ClassDefinition& each = definition.Classes()[i];
        Require(definition.Find(each.code) == static_cast<int>(i), "every class is found under its code");
        for (std::size_t k = 0; k < each.attributes.size(); ++k) {
            const Attribute& attribute = each.attributes[k];
            Require(each.Find(attribute.id) == static_cast<int>(k), "every attribute is found under its number");
            Require(each.FindName(attribute.name) == static_cast<int>(k), "and under its name");
            Require(definition.FindAttribute(attribute.id)->type == attribute.type, "a number has one type");
        }
    }
}

/// What the definition says can be made: a store with its classes, in which a record stands.
void RequireStore(const Definition& definition) {
    const tolmtest::TempFolder folder;
    const std::wstring text = folder.File(L"classes.ddq");
    const std::wstring path = folder.File(L"store.db");
    WriteBytes(text, TextOf(definition));
    for (const bool create : {true, false}) {
        CQbase qb;
        Require(qb.openDatabase(text, path, create), "a store of a definition opens");
        Require(qb.lockForUpdate(), "and is locked");
        for (const ClassDefinition& each : definition.Classes()) {
            const bool done = create ? qb.createRec(each.code.c_str(), L"id") && qb.saveRec()
                                     : qb.fetchEqualRec(each.code.c_str(), L"id");
            Require(done, "a record stands in each class");
        }
        Require(qb.closeDatabase(), "and is closed");
    }
    std::size_t indexes = 0;
    for (const ClassDefinition& each : definition.Classes())
        indexes += each.indexes.size();
    Require(SqlValue(path, "SELECT count(*) FROM sqlite_schema WHERE type='index' AND sql IS NOT NULL") ==
                std::to_string(indexes),
            "every index of the definition stands in the store");
}

} // namespace

int TryDefinition(const std::uint8_t* data, std::size_t size) {
    std::string error;
    const auto definition = Definition::Parse({reinterpret_cast<const char*>(data), size}, error);
    if (!definition) {
        Require(error.starts_with("line "), "a fault is told with its line");
        return 0;
    }
    Require(!definition->Classes().empty(), "a definition has a class");
    RequireFound(*definition);
    const std::string text = TextOf(*definition);
    const auto again = Definition::Parse(text, error);
    Require(again && TextOf(*again) == text, "a definition comes back from its text");
    RequireStore(*definition);
    return 0;
}

} // namespace tolmfuzz
