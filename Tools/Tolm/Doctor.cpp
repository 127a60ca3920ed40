#include "Tolm/Doctor.h"

#include "Tolm/Find.h"

#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <tuple>

namespace tolmcli {
namespace {

using vorn::StringUtil;

// Attributes, as Docs/store-format.md gives them.
constexpr short kMEPType = 1104;
constexpr short kStatus = 1109;
constexpr short kDisciplineId = 1181;

struct ClassWords {
    const char* code;
    const char* word;
    bool namesAreUnique; ///< within object type and discipline
};

constexpr std::array kClasses{
    ClassWords{"MTS", "material", true},
    ClassWords{"PSI", "size table", true},
    ClassWords{"COS", "connection series", false},
    ClassWords{"SMS", "series", true},
    ClassWords{"MSG", "group", true},
    ClassWords{"SYS", "system type", true},
    ClassWords{"CRT", "circuit template", false},
    ClassWords{"BMD", "balancing method", false},
    ClassWords{"ISS", "insulation series", false},
    ClassWords{"PSM", "sizing method", false},
    ClassWords{"000", "header", false},
};

constexpr std::array kGroups{"files", "records", "packed lists", "references", "names", "noted changes", "library"};
static_assert(kGroups.size() == static_cast<std::size_t>(FindingGroup::Library) + 1);

/// An attribute that names records of another class, one or several.
struct Reference {
    const char* from;
    short attribute;
    const char* to;
    const wchar_t* words; ///< what the record takes the other one for
};

constexpr std::array kReferences{
    Reference{"PSI", 1504, "MTS", L"material"},
    Reference{"SMS", 1506, "PSI", L"size table"},
    Reference{"SMS", 1609, "COS", L"connection series"},
    Reference{"SMS", 1520, "MSG", L"group"},
    Reference{"SYS", 1607, "SMS", L"series"},
    Reference{"SYS", 1610, "PSI", L"cable table"},
    Reference{"CRT", 1509, "SYS", L"system type"},
    Reference{"CRT", 1512, "PSI", L"wire"},
    Reference{"CRT", 1511, "SMS", L"conduit series"},
};

std::set<std::wstring> IdsOf(const std::vector<StoredRecord>& records) {
    std::set<std::wstring> ids;
    for (const StoredRecord& record : records)
        ids.insert(record.id);
    return ids;
}

void CheckReferences(const StoreContents& contents, std::vector<Finding>& findings) {
    for (const Reference& reference : kReferences) {
        const auto targets = IdsOf(RecordsOf(contents, reference.to));
        for (const StoredRecord& record : RecordsOf(contents, reference.from)) {
            const auto value = record.values.find(reference.attribute);
            if (value == record.values.end())
                continue;
            for (const auto& id : value->second.texts) {
                if (!id.empty() && targets.count(id) == 0)
                    findings.push_back({FindingGroup::Reference, reference.from, record.id, record.Text(kNameAttribute),
                                        std::wstring(reference.words) + L" " + id + L" is not there"});
            }
        }
    }
}

/// Records of one object type that may share a name with others of it.
struct SharedNames {
    const char* classCode;
    tolm::TolmProjectSettingMEPObjectType type;
};

/// What travels to the cloud as the name of a cable table is its type name. The material of a duct table travels as
/// text within the table, so that each table has one of its own.
constexpr std::array kSharedNames{
    SharedNames{"PSI", tolm::TolmProjectSettingMEPObjectType::Wire},
    SharedNames{"MTS", tolm::TolmProjectSettingMEPObjectType::Duct},
};

bool MayShareItsName(const std::string& classCode, const StoredRecord& record) {
    if (record.Text(kNameAttribute).empty())
        return true;
    return std::any_of(kSharedNames.begin(), kSharedNames.end(), [&](const SharedNames& shared) {
        return classCode == shared.classCode && record.Number(kMEPType) == static_cast<long>(shared.type);
    });
}

void CheckChanges(const StoreContents& contents, const StoreContents& status, std::vector<Finding>& findings) {
    constexpr std::array kStandingChanges{L"created", L"edited"};
    for (const auto& [classCode, changes] : status) {
        const auto ids = IdsOf(RecordsOf(contents, classCode));
        for (const StoredRecord& change : changes) {
            const long kind = change.Number(kStatus);
            if (kind >= 1 && kind <= 2 && ids.count(change.id) == 0)
                findings.push_back({FindingGroup::Change, classCode, change.id, L"",
                                    std::wstring(L"is noted as ") +
                                        kStandingChanges.at(static_cast<std::size_t>(kind - 1)) +
                                        L", and is not there"});
        }
    }
}

/// The library says by itself what it stumbles over when it collects everything.
void CheckLibrary(Workplace& place, std::vector<Finding>& findings) {
    CollectMaterials(place, "");
    CollectSizes(place, "");
    CollectConnections(place, "");
    CollectSeries(place, "");
    CollectGroups(place, "");
    CollectSystems(place, "");
    std::set<std::string> told;
    for (const auto& fault : place.Heard().TakeFaults()) {
        if (told.insert(fault).second)
            findings.push_back({FindingGroup::Library, "", L"", L"", StringUtil::ToWString(fault)});
    }
}

bool Concerns(const std::vector<Finding>& findings, FindingGroup group) {
    return std::any_of(findings.begin(), findings.end(),
                       [&](const Finding& finding) { return finding.group == group; });
}

} // namespace

const char* WordOf(FindingGroup group) {
    return kGroups.at(static_cast<std::size_t>(group));
}

const char* WordOfClass(const std::string& classCode) {
    for (const ClassWords& words : kClasses) {
        if (classCode == words.code)
            return words.word;
    }
    return "record";
}

void CheckNames(const StoreContents& contents, std::vector<Finding>& findings) {
    for (const ClassWords& words : kClasses) {
        if (!words.namesAreUnique)
            continue;
        std::map<std::tuple<long, long, std::wstring>, std::wstring> firstIds;
        for (const StoredRecord& record : RecordsOf(contents, words.code)) {
            if (MayShareItsName(words.code, record))
                continue;
            const std::wstring name = record.Text(kNameAttribute);
            const auto [first, isNew] =
                firstIds.try_emplace({record.Number(kMEPType), record.Number(kDisciplineId), name}, record.id);
            if (!isNew)
                findings.push_back(
                    {FindingGroup::Name, words.code, record.id, name, L"has the name of " + first->second});
        }
    }
}

std::vector<Finding> Examine(Workplace& place) {
    std::vector<Finding> findings;
    const StoreContents contents = WalkStore(place.Path(), L"dataset", findings);
    const bool readWhole = !Concerns(findings, FindingGroup::File);
    const std::wstring statusPath = StatusPath(place.Path());
    StoreContents status;
    if (vorn::FileInfo(statusPath).Size() != 0)
        status = WalkStore(statusPath, L"status store", findings);
    // Of a file that was read in part nobody can say what is gone.
    if (readWhole) {
        CheckReferences(contents, findings);
        CheckChanges(contents, status, findings);
        CheckNames(contents, findings);
        CheckLibrary(place, findings);
    }
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding& a, const Finding& b) { return a.group < b.group; });
    return findings;
}

} // namespace tolmcli
