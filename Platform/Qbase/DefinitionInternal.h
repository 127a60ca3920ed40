#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qbase {

enum class AttributeType : std::uint8_t {
    Byte,
    Short,
    Long,
    Float,
    FloatArray,
    Double,
    Text,
    TextArray,
    Binary,
    BinaryArray
};

struct Attribute {
    short id = 0;
    AttributeType type = AttributeType::Short;
    std::string name;
    int entrySize = 0; ///< bytes of a binary, or of one entry of a binary array
};

struct ClassDefinition {
    std::string code;
    std::vector<Attribute> attributes;       ///< in the order of their columns
    std::vector<std::vector<int>> indexes;   ///< positions in `attributes`
    std::vector<std::pair<short, int>> byId; ///< attribute id and position, in order of id

    /// Position of the attribute; -1 when the class lacks it.
    int Find(short attributeId) const;
    int FindName(std::string_view name) const;
    /// What an index of this class is called in a store. Nothing else in the definition is called so.
    std::string IndexName(const std::vector<int>& index) const;
};

/// The classes and attributes of a store, as its definition file tells them. Never changes once it is made.
class Definition {
public:
    /// The definition in the file; null when it cannot be read or understood, and then the log tells why. A file
    /// that has not changed since is not read again. Any thread may call it.
    static std::shared_ptr<const Definition> Load(const std::wstring& path);

    /// The definition in the text; null when it has a fault, which `error` tells with its line.
    static std::shared_ptr<const Definition> Parse(std::string_view text, std::string& error);

    const std::vector<ClassDefinition>& Classes() const { return m_classes; }
    /// Position of the class; -1 when there is none.
    int Find(std::string_view code) const;
    /// Any attribute with this id; null when no class has one.
    const Attribute* FindAttribute(short attributeId) const;

private:
    std::vector<ClassDefinition> m_classes;
};

} // namespace qbase
