#include "Tolm/StoreWalk.h"

#include "Tolm/Errors.h"

#include "Host/Definitions.h"
#include "Qbase/Qbase.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <optional>
#include <sstream>

namespace tolmcli {
namespace {

using vorn::StringUtil;

/// A list has at most so many entries; of a list of ids the library reads at most so many.
constexpr std::size_t kMostEntries = 300;
constexpr std::size_t kMostIds = 100;

/// How an attribute of one type is read. `size` is that of the value or of an entry, for binary types.
struct TypeReader {
    const char* type;
    bool (*read)(CQbase& store, short attribute, std::size_t size, StoredValue& value);
    std::size_t mostEntries;
};

template <class Value, bool (CQbase::*get)(short, Value&)>
bool ReadInteger(CQbase& store, short attribute, std::size_t, StoredValue& value) {
    Value number = 0;
    const bool done = (store.*get)(attribute, number);
    value.number = static_cast<long>(number);
    return done;
}

template <class Value, bool (CQbase::*get)(short, Value&)>
bool ReadReal(CQbase& store, short attribute, std::size_t, StoredValue& value) {
    Value number = 0;
    const bool done = (store.*get)(attribute, number);
    value.reals.push_back(number);
    return done;
}

bool ReadText(CQbase& store, short attribute, std::size_t, StoredValue& value) {
    CWsz text;
    const bool done = store.getWsz(attribute, text, 1);
    value.texts.push_back(text.str());
    return done;
}

bool ReadTexts(CQbase& store, short attribute, std::size_t, StoredValue& value) {
    CWszArray texts;
    const bool done = store.getWszArray(attribute, texts, std::numeric_limits<int>::max(), 1);
    for (int i = 0; i < texts.length(); ++i)
        value.texts.push_back(texts.wszAt(i).str());
    value.entryCount = value.texts.size();
    return done;
}

bool ReadFloats(CQbase& store, short attribute, std::size_t, StoredValue& value) {
    CFloatArray floats;
    const bool done = store.getFloatArray(attribute, floats);
    value.entryCount = static_cast<std::size_t>(floats.length());
    for (int i = 0; i < floats.length(); ++i)
        value.reals.push_back(floats.valueAt(i));
    return done;
}

bool ReadBinary(CQbase& store, short attribute, std::size_t size, StoredValue& value) {
    value.bytes.resize(size);
    return store.getBinary(attribute, value.bytes.data());
}

bool ReadBinaries(CQbase& store, short attribute, std::size_t size, StoredValue& value) {
    CByteBuffer bytes;
    int count = 0;
    const bool done = store.getBinaryArray(attribute, bytes, count);
    value.bytes.assign(bytes.data(), bytes.data() + count);
    value.entryCount = value.bytes.size() / size;
    return done;
}

constexpr std::array kTypeReaders{
    TypeReader{"byte", ReadInteger<unsigned char, &CQbase::getByte>, 0},
    TypeReader{"short", ReadInteger<short, &CQbase::getShort>, 0},
    TypeReader{"long", ReadInteger<long, &CQbase::getLong>, 0},
    TypeReader{"float", ReadReal<float, &CQbase::getFloat>, 0},
    TypeReader{"double", ReadReal<double, &CQbase::getDouble>, 0},
    TypeReader{"text", ReadText, 0},
    TypeReader{"text[]", ReadTexts, kMostIds},
    TypeReader{"float[]", ReadFloats, kMostEntries},
    TypeReader{"binary", ReadBinary, 0},
    TypeReader{"binary[]", ReadBinaries, kMostEntries},
};

struct Attribute {
    short number = 0;
    std::wstring name;
    std::wstring type; ///< as the definition file spells it
    std::size_t size = 1;
    const TypeReader* reader = nullptr;
};

struct StoreClass {
    std::string code;
    std::vector<Attribute> attributes;
};

/// The attribute of a line "NUMBER TYPE NAME"; none for any other line.
std::optional<Attribute> ParseAttribute(const std::string& line) {
    std::istringstream words(line);
    Attribute attribute;
    std::string type;
    std::string name;
    if (!(words >> attribute.number >> type >> name))
        return std::nullopt;
    attribute.name = StringUtil::ToWString(name);
    attribute.type = StringUtil::ToWString(type);
    const auto open = type.find('(');
    const auto close = type.find(')');
    if (open != std::string::npos && close != std::string::npos) {
        std::istringstream(type.substr(open + 1, close - open - 1)) >> attribute.size;
        type.erase(open, close - open + 1);
    }
    for (const TypeReader& reader : kTypeReaders) {
        if (type == reader.type)
            attribute.reader = &reader;
    }
    if (attribute.reader == nullptr || attribute.size == 0)
        throw Failure("the definition file has a line that is not understood: " + line);
    return attribute;
}

/// The classes of the definition file. Whether it is sound is seen by the store that is opened under it.
std::vector<StoreClass> ReadDefinition() {
    const std::string path = StringUtil::ToString(tolm::DataSetFilePath::TOLMDDQFilePath);
    std::ifstream file(path);
    if (!file)
        throw Failure("the definition file " + path + " cannot be read");
    std::vector<StoreClass> classes;
    for (std::string line; std::getline(file, line);) {
        line.erase(std::min(line.find('#'), line.size()));
        std::istringstream words(line);
        std::string word;
        std::string code;
        words >> word >> code;
        if (word == "class")
            classes.push_back({code, {}});
        else if (!classes.empty()) {
            if (auto attribute = ParseAttribute(line))
                classes.back().attributes.push_back(std::move(*attribute));
        }
    }
    return classes;
}

std::wstring ErrorWords(short code) {
    constexpr std::array<const wchar_t*, 11> kWords{
        L"no error",
        L"wrong use",
        L"not found",
        L"damaged, or no store",
        L"written by a later version",
        L"the definition file is not understood",
        L"locked by another program",
        L"not locked for a change",
        L"an earlier failure",
        L"the disk reported a failure",
        L"not open",
    };
    const auto index = static_cast<std::size_t>(code);
    return (index < kWords.size() ? kWords.at(index) : L"unknown") + (L" (error " + std::to_wstring(code) + L")");
}

bool Is(short error, QbaseError code) {
    return error == static_cast<short>(code);
}

/// One walk through one file.
class Walk {
public:
    Walk(CQbase& store, const std::wstring& what, std::vector<Finding>& findings, bool lookUp)
        : m_store(store), m_what(what), m_findings(findings), m_lookUp(lookUp) {}

    /// The records of a class as far as the walk comes; false when it broke off.
    bool Read(const StoreClass& storeClass, std::vector<StoredRecord>& records) {
        for (bool more = m_store.fetchFirstMember(storeClass.code.c_str()); more; more = m_store.fetchNextMember()) {
            StoredRecord record;
            CWsz id;
            m_store.getObjId(id);
            record.id = id.str();
            if (!Read(storeClass, record))
                return false;
            CheckLists(storeClass, record);
            records.push_back(std::move(record));
        }
        const short error = m_store.getLastError();
        if (!Is(error, QbaseError::NotFound))
            return BreakOff(storeClass, L"", error);
        return !m_lookUp || FindById(storeClass, records);
    }

private:
    /// Who refers to a record looks it up by its id, which goes by an index and not by the walk.
    bool FindById(const StoreClass& storeClass, const std::vector<StoredRecord>& records) {
        for (const StoredRecord& record : records) {
            if (m_store.existRec(storeClass.code.c_str(), record.id))
                continue;
            const short error = m_store.getLastError();
            if (!Is(error, QbaseError::NotFound))
                return BreakOff(storeClass, record.id, error);
            Tell(FindingGroup::Record, storeClass, record, L"is not found by its id in the " + m_what);
        }
        return true;
    }

    bool Read(const StoreClass& storeClass, StoredRecord& record) {
        for (const Attribute& attribute : storeClass.attributes) {
            StoredValue value;
            if (attribute.reader->read(m_store, attribute.number, attribute.size, value)) {
                record.values.emplace(attribute.number, std::move(value));
                continue;
            }
            const short error = m_store.getLastError();
            if (Is(error, QbaseError::NotFound))
                continue;
            if (!Is(error, QbaseError::NotAStore))
                return BreakOff(storeClass, record.id, error);
            Tell(FindingGroup::Record, storeClass, record,
                 attribute.name + L" does not read as " + attribute.type + L" in the " + m_what);
        }
        return true;
    }

    void CheckLists(const StoreClass& storeClass, const StoredRecord& record) {
        for (const Attribute& attribute : storeClass.attributes) {
            const auto found = record.values.find(attribute.number);
            if (found == record.values.end() || attribute.reader->mostEntries == 0)
                continue;
            const StoredValue& value = found->second;
            if (value.bytes.size() % attribute.size != 0)
                Tell(FindingGroup::List, storeClass, record,
                     attribute.name + L" has " + std::to_wstring(value.bytes.size()) +
                         L" bytes, which are no whole entries of " + std::to_wstring(attribute.size));
            if (value.entryCount > attribute.reader->mostEntries)
                Tell(FindingGroup::List, storeClass, record,
                     attribute.name + L" has " + std::to_wstring(value.entryCount) + L" entries, over the " +
                         std::to_wstring(attribute.reader->mostEntries) + L" that are read");
        }
    }

    void Tell(FindingGroup group, const StoreClass& storeClass, const StoredRecord& record, std::wstring text) {
        m_findings.push_back({group, storeClass.code, record.id, record.Text(kNameAttribute), std::move(text)});
    }

    bool BreakOff(const StoreClass& storeClass, const std::wstring& id, short error) {
        m_findings.push_back({FindingGroup::File, storeClass.code, id, L"",
                              L"the " + m_what + L" cannot be read any further: " + ErrorWords(error)});
        return false;
    }

    CQbase& m_store;
    const std::wstring& m_what;
    std::vector<Finding>& m_findings;
    bool m_lookUp;
};

StoreContents ReadThrough(const std::wstring& path, const std::wstring& what, std::vector<Finding>& findings,
                          bool lookUp) {
    const auto classes = ReadDefinition();
    StoreContents contents;
    CQbase store;
    if (!store.openDatabase(tolm::DataSetFilePath::TOLMDDQFilePath, path, false) || !store.lockForRead()) {
        findings.push_back({FindingGroup::File, "", L"", L"",
                            L"the " + what + L" cannot be opened: " + ErrorWords(store.getLastError())});
        return contents;
    }
    Walk walk(store, what, findings, lookUp);
    for (const StoreClass& storeClass : classes) {
        if (!walk.Read(storeClass, contents[storeClass.code]))
            break;
    }
    return contents;
}

} // namespace

long StoredRecord::Number(short attribute) const {
    const auto found = values.find(attribute);
    return found != values.end() ? found->second.number : 0;
}

std::wstring StoredRecord::Text(short attribute) const {
    const auto found = values.find(attribute);
    return found != values.end() && !found->second.texts.empty() ? found->second.texts.front() : std::wstring();
}

StoreContents WalkStore(const std::wstring& path, const std::wstring& what, std::vector<Finding>& findings) {
    return ReadThrough(path, what, findings, true);
}

StoreContents ReadStore(const std::wstring& path, const std::wstring& what) {
    std::vector<Finding> findings;
    StoreContents contents = ReadThrough(path, what, findings, false);
    for (const Finding& finding : findings) {
        if (finding.group == FindingGroup::File)
            throw Failure(StringUtil::ToString(finding.text));
    }
    return contents;
}

const std::vector<StoredRecord>& RecordsOf(const StoreContents& contents, const std::string& classCode) {
    static const std::vector<StoredRecord> none;
    const auto found = contents.find(classCode);
    return found != contents.end() ? found->second : none;
}

} // namespace tolmcli
