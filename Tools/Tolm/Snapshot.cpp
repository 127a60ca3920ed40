#include "Tolm/Snapshot.h"

#include "Tolm/Kinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <set>

namespace tolmcli {
namespace {

using Type = tolm::TolmProjectSettingMEPObjectType;
using Values = std::map<short, StoredValue>;

// Attributes, as the definition file numbers them.
constexpr short kMEPType = 1104;
constexpr short kConnectionType = 1105;
constexpr short kStatus = 1109;
constexpr short kDisciplineId = 1181;
constexpr short kLocalVersion = 1200;
constexpr short kMinSize = 1300;
constexpr short kMaxSize = 1301;
constexpr short kTraySizes = 1302;
constexpr short kMaterialId = 1504;
constexpr short kConnectionSerieId = 1609;
constexpr short kFittings = 1611;
constexpr short kPipeSizes = 1614;
constexpr short kDuctSizes = 1615;

constexpr std::array kSettingClasses{"MTS", "PSI", "SMS", "MSG", "SYS", "CRT"};

/// Attributes whose numbers are 32-bit floats; such a number travels with three decimals, any other with four.
constexpr std::array kFloats{kMinSize, kMaxSize, kTraySizes};
constexpr double kFloatGrain = 0.00101;
constexpr double kDoubleGrain = 0.000101;

/// A packed list whose entries end in floats.
struct PackedFloats {
    short attribute;
    std::size_t entry;
    std::size_t firstFloat;
};

constexpr std::array kPackedFloats{
    PackedFloats{kPipeSizes, 16, 0},
    PackedFloats{kDuctSizes, 8, 0},
    PackedFloats{kFittings, 106, 98},
};

bool IsDuct(const StoredRecord& record) {
    return record.Number(kMEPType) == static_cast<long>(Type::Duct);
}

std::map<std::wstring, const StoredRecord*> ById(const std::vector<StoredRecord>& records) {
    std::map<std::wstring, const StoredRecord*> byId;
    for (const StoredRecord& record : records)
        byId.emplace(record.id, &record);
    return byId;
}

/// The parts of a setting that stand in records of their own under ids that mean nothing to anybody.
class Parts {
public:
    explicit Parts(const StoreContents& contents)
        : m_materials(ById(RecordsOf(contents, "MTS"))), m_connections(ById(RecordsOf(contents, "COS"))) {
        for (const StoredRecord& module : RecordsOf(contents, "PSI")) {
            if (IsDuct(module))
                m_ductMaterials.insert(module.Text(kMaterialId));
        }
    }

    /// The material of a duct table is a part of the table.
    bool IsPart(const std::string& code, const StoredRecord& record) const {
        return code == "MTS" && m_ductMaterials.count(record.id) != 0;
    }

    void PutIn(const std::string& code, const StoredRecord& record, Values& values) const {
        values.erase(kStatus);
        if (code == "SMS")
            PutConnectionIn(record, values);
        if (code == "PSI" && IsDuct(record))
            PutMaterialIn(record, values);
    }

private:
    void PutConnectionIn(const StoredRecord& serie, Values& values) const {
        values.erase(kConnectionSerieId);
        const auto found = m_connections.find(serie.Text(kConnectionSerieId));
        if (found == m_connections.end())
            return;
        for (const short attribute : {kConnectionType, kFittings}) {
            const auto value = found->second->values.find(attribute);
            if (value != found->second->values.end())
                values[attribute] = value->second;
        }
    }

    void PutMaterialIn(const StoredRecord& module, Values& values) const {
        const auto found = m_materials.find(module.Text(kMaterialId));
        values[kMaterialId].texts = {found != m_materials.end() ? found->second->Text(kNameAttribute) : L""};
    }

    std::map<std::wstring, const StoredRecord*> m_materials;
    std::map<std::wstring, const StoredRecord*> m_connections;
    std::set<std::wstring> m_ductMaterials;
};

Setting MakeSetting(const std::string& code, const StoredRecord& record, const Parts& parts) {
    Setting setting;
    setting.name = record.Text(kNameAttribute);
    if (record.values.count(kMEPType) != 0)
        setting.kind =
            KindWord(static_cast<int>(record.Number(kMEPType)), static_cast<int>(record.Number(kDisciplineId)));
    setting.values = record.values;
    parts.PutIn(code, record, setting.values);
    return setting;
}

int VersionIn(const StoreContents& contents) {
    const auto& headers = RecordsOf(contents, "000");
    return headers.empty() || headers.front().values.count(kLocalVersion) == 0
               ? -1
               : static_cast<int>(headers.front().Number(kLocalVersion));
}

bool AreNear(double one, double other, double grain) {
    return one == other || std::abs(one - other) < grain;
}

bool AreNear(const std::vector<double>& one, const std::vector<double>& other, double grain) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [grain](double a, double b) { return AreNear(a, b, grain); });
}

float FloatAt(const std::vector<char>& bytes, std::size_t position) {
    float value = 0;
    std::memcpy(&value, bytes.data() + position, sizeof(value));
    return value;
}

bool AreNear(const std::vector<char>& one, const std::vector<char>& other, const PackedFloats& packed) {
    if (one.size() != other.size() || one.size() % packed.entry != 0)
        return false;
    for (std::size_t entry = 0; entry < one.size(); entry += packed.entry) {
        if (std::memcmp(one.data() + entry, other.data() + entry, packed.firstFloat) != 0)
            return false;
        for (std::size_t i = entry + packed.firstFloat; i < entry + packed.entry; i += sizeof(float)) {
            if (!AreNear(FloatAt(one, i), FloatAt(other, i), kFloatGrain))
                return false;
        }
    }
    return true;
}

double GrainOf(short attribute, Nearness nearness) {
    if (nearness == Nearness::Exact)
        return 0;
    return std::find(kFloats.begin(), kFloats.end(), attribute) != kFloats.end() ? kFloatGrain : kDoubleGrain;
}

bool AreBytesAlike(short attribute, const StoredValue& one, const StoredValue& other, Nearness nearness) {
    if (one.bytes == other.bytes || nearness == Nearness::Exact)
        return one.bytes == other.bytes;
    const auto packed = std::find_if(kPackedFloats.begin(), kPackedFloats.end(),
                                     [&](const PackedFloats& each) { return each.attribute == attribute; });
    return packed != kPackedFloats.end() && AreNear(one.bytes, other.bytes, *packed);
}

bool AreAlike(short attribute, const StoredValue& one, const StoredValue& other, Nearness nearness) {
    return one.number == other.number && one.texts == other.texts &&
           AreNear(one.reals, other.reals, GrainOf(attribute, nearness)) &&
           AreBytesAlike(attribute, one, other, nearness);
}

/// An attribute that a record lacks, and one that says nothing, mean the same.
StoredValue Plain(const Values& values, short attribute) {
    const auto found = values.find(attribute);
    StoredValue value = found != values.end() ? found->second : StoredValue();
    if (value.texts == std::vector<std::wstring>{L""})
        value.texts.clear();
    if (value.reals == std::vector<double>{0.0})
        value.reals.clear();
    return value;
}

} // namespace

Snapshot TakeSnapshot(const std::wstring& datasetPath) {
    const StoreContents contents = ReadStore(datasetPath, L"dataset");
    const Parts parts(contents);
    Snapshot snapshot;
    snapshot.version = VersionIn(contents);
    for (const char* code : kSettingClasses) {
        for (const StoredRecord& record : RecordsOf(contents, code)) {
            if (!parts.IsPart(code, record))
                snapshot.settings.emplace(SettingKey(code, record.id), MakeSetting(code, record, parts));
        }
    }
    for (NotedChange& change : ReadNotedChanges(datasetPath)) {
        const SettingKey key(change.code, change.id);
        snapshot.changes.emplace(key, std::move(change));
    }
    return snapshot;
}

bool AreAlike(const Setting& one, const Setting& other, Nearness nearness, bool exceptName) {
    std::set<short> attributes;
    for (const Values* values : {&one.values, &other.values}) {
        for (const auto& [attribute, value] : *values)
            attributes.insert(attribute);
    }
    if (exceptName)
        attributes.erase(kNameAttribute);
    return std::all_of(attributes.begin(), attributes.end(), [&](short attribute) {
        return AreAlike(attribute, Plain(one.values, attribute), Plain(other.values, attribute), nearness);
    });
}

} // namespace tolmcli
