#include "Qbase/DefinitionInternal.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <map>
#include <set>
#include <stdexcept>

namespace qbase {
namespace {

constexpr std::string_view kFirstLine = "store-definition";
constexpr int kDefinitionVersion = 1;
constexpr std::size_t kMaxNameLength = 60;
constexpr int kMaxEntrySize = 1 << 20;
// Far from what SQLite can hold in one table and in one statement.
constexpr std::size_t kMostClasses = 500;
constexpr std::size_t kMostAttributes = 500;

struct TypeName {
    std::string_view name;
    AttributeType type;
};

constexpr std::array kTypeNames{
    TypeName{"byte", AttributeType::Byte},          TypeName{"short", AttributeType::Short},
    TypeName{"long", AttributeType::Long},          TypeName{"float", AttributeType::Float},
    TypeName{"double", AttributeType::Double},      TypeName{"text", AttributeType::Text},
    TypeName{"float[]", AttributeType::FloatArray}, TypeName{"text[]", AttributeType::TextArray},
};

/// A fault of the text, without its line.
struct Fault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Words = std::vector<std::string_view>;

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r';
}

Words Split(std::string_view line) {
    line = line.substr(0, line.find('#'));
    Words words;
    while (!line.empty()) {
        const auto begin = std::find_if_not(line.begin(), line.end(), IsSpace);
        const auto end = std::find_if(begin, line.end(), IsSpace);
        if (begin != end)
            words.emplace_back(begin, end);
        line = std::string_view(end, line.end());
    }
    return words;
}

int Number(std::string_view text, int least, int most) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < least || value > most)
        throw Fault("'" + std::string(text) + "' is no number from " + std::to_string(least) + " to " +
                    std::to_string(most));
    return value;
}

std::string Name(std::string_view text, bool digitFirst) {
    const auto isNamePart = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    const bool startsWell = !text.empty() && (digitFirst || std::isdigit(static_cast<unsigned char>(text[0])) == 0);
    if (!startsWell || text.size() > kMaxNameLength || !std::ranges::all_of(text, isNamePart))
        throw Fault("'" + std::string(text) + "' is no name");
    return std::string(text);
}

bool SameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b,
                              [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// "binary(12)" or "binary(12)[]".
bool ParseBinaryType(std::string_view text, Attribute& attribute) {
    constexpr std::string_view prefix = "binary(";
    if (!text.starts_with(prefix))
        return false;
    const bool isArray = text.ends_with(")[]");
    if (!isArray && !text.ends_with(")"))
        return false;
    text.remove_prefix(prefix.size());
    text.remove_suffix(isArray ? 3 : 1);
    attribute.type = isArray ? AttributeType::BinaryArray : AttributeType::Binary;
    attribute.entrySize = Number(text, 1, kMaxEntrySize);
    return true;
}

void ParseType(std::string_view text, Attribute& attribute) {
    if (ParseBinaryType(text, attribute))
        return;
    const auto found = std::ranges::find(kTypeNames, text, &TypeName::name);
    if (found == kTypeNames.end())
        throw Fault("'" + std::string(text) + "' is no type");
    attribute.type = found->type;
}

class Parser {
public:
    std::vector<ClassDefinition> Run(std::string_view text) {
        while (!text.empty()) {
            ++m_line;
            const auto end = text.find('\n');
            ParseLine(Split(text.substr(0, end)));
            text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        }
        if (m_classes.empty())
            throw Fault("there is no class");
        std::ranges::for_each(m_classes, Finish);
        return std::move(m_classes);
    }

    int Line() const { return m_line; }

private:
    void ParseLine(const Words& words) {
        if (words.empty())
            return;
        if (!m_begun)
            ParseFirstLine(words);
        else if (words[0] == "class")
            ParseClass(words);
        else if (words[0] == "index")
            ParseIndex(words);
        else
            ParseAttribute(words);
    }

    void ParseFirstLine(const Words& words) {
        if (words.size() != 2 || words[0] != kFirstLine)
            throw Fault("this is no definition of a store");
        Number(words[1], kDefinitionVersion, kDefinitionVersion);
        m_begun = true;
    }

    void ParseClass(const Words& words) {
        if (words.size() != 2)
            throw Fault("a class has one code");
        const std::string code = Name(words[1], true);
        const auto isSame = [&](const ClassDefinition& other) { return SameName(other.code, code); };
        if (std::ranges::any_of(m_classes, isSame) || SameName(code.substr(0, 7), "sqlite_"))
            throw Fault("class '" + code + "' cannot stand here");
        if (m_classes.size() == kMostClasses)
            throw Fault("there are more than " + std::to_string(kMostClasses) + " classes");
        Claim(code);
        m_classes.push_back({code, {}, {}, {}});
    }

    ClassDefinition& Current() {
        if (m_classes.empty())
            throw Fault("no class has begun");
        return m_classes.back();
    }

    void ParseAttribute(const Words& words) {
        if (words.size() != 3)
            throw Fault("an attribute has a number, a type and a name");
        Attribute attribute;
        attribute.id = static_cast<short>(Number(words[0], 1, 32767));
        ParseType(words[1], attribute);
        attribute.name = Name(words[2], false);
        CheckIsNew(attribute);
        CheckKeepsItsType(attribute);
        if (Current().attributes.size() == kMostAttributes)
            throw Fault("the class has more than " + std::to_string(kMostAttributes) + " attributes");
        Current().attributes.push_back(std::move(attribute));
    }

    void CheckIsNew(const Attribute& attribute) {
        const auto clashes = [&](const Attribute& other) {
            return other.id == attribute.id || SameName(other.name, attribute.name);
        };
        if (std::ranges::any_of(Current().attributes, clashes) || SameName(attribute.name, "seq") ||
            SameName(attribute.name, "id"))
            throw Fault("attribute '" + attribute.name + "' stands twice");
    }

    void CheckKeepsItsType(const Attribute& attribute) {
        const auto [known, isNew] = m_types.try_emplace(attribute.id, attribute.type, attribute.entrySize);
        if (!isNew && known->second != std::pair(attribute.type, attribute.entrySize))
            throw Fault("attribute " + std::to_string(attribute.id) + " has another type in another class");
    }

    void ParseIndex(const Words& words) {
        std::vector<int> positions;
        for (auto word = words.begin() + 1; word != words.end(); ++word) {
            positions.push_back(Current().FindName(*word));
            if (positions.back() < 0)
                throw Fault("index over '" + std::string(*word) + "', which is no attribute of the class");
        }
        if (positions.empty())
            throw Fault("an index names its attributes");
        Claim(Current().IndexName(positions));
        Current().indexes.push_back(std::move(positions));
    }

    /// Tables and indexes of a store share their names.
    void Claim(std::string name) {
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (!m_names.insert(name).second)
            throw Fault("two tables or indexes of a store would be named '" + name + "'");
    }

    static void Finish(ClassDefinition& definition) {
        for (std::size_t i = 0; i < definition.attributes.size(); ++i)
            definition.byId.emplace_back(definition.attributes[i].id, static_cast<int>(i));
        std::ranges::sort(definition.byId);
    }

    bool m_begun = false;
    int m_line = 0;
    std::vector<ClassDefinition> m_classes;
    std::map<short, std::pair<AttributeType, int>> m_types;
    std::set<std::string> m_names; ///< in lower case
};

} // namespace

std::shared_ptr<const Definition> Definition::Parse(std::string_view text, std::string& error) {
    Parser parser;
    try {
        auto definition = std::make_shared<Definition>();
        definition->m_classes = parser.Run(text);
        return definition;
    } catch (const Fault& fault) {
        error = "line " + std::to_string(parser.Line()) + ": " + fault.what();
        return nullptr;
    }
}

} // namespace qbase
