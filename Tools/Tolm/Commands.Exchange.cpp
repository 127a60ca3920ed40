#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Exchange.h"
#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <algorithm>
#include <fstream>
#include <optional>
#include <ostream>
#include <utility>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;

constexpr const char* kFormat = "tolm-records";
constexpr int kFormatVersion = 1;

std::wstring Cell(const Json& value) {
    return StringUtil::ToWString(value.is_string() ? value.get<std::string>() : value.dump());
}

Json ReadAll(Workplace& place, const ExchangeKind& kind) {
    Json records = kind.read(place);
    place.FailOnFaults("the dataset could not be read whole");
    return records;
}

const ExchangeKind& KindOfFile(const Options& options) {
    const auto* kind = FindExchangeKind(options.what);
    if (kind == nullptr || !kind->IsEditable())
        throw Failure("no such kind: " + options.what, Misused);
    return *kind;
}

/// The records of a file of this kind. Throws Failure for any other file.
Json RecordsOf(const std::string& path, const ExchangeKind& kind) {
    std::ifstream in(path);
    if (!in)
        throw Failure("cannot read " + path);
    Json file;
    try {
        file = Json::parse(in);
    } catch (const Json::exception& error) {
        throw Failure(path + " is no JSON: " + error.what());
    }
    if (!file.is_object() || file.value("format", Json()) != kFormat ||
        file.value("formatVersion", Json()) != kFormatVersion || file.value("what", Json()) != kind.many ||
        !file.value("records", Json()).is_array())
        throw Failure(path + " is no file of " + kind.words + " that this version knows");
    return file.at("records");
}

/// What materials and size tables have, and no other record.
constexpr std::pair<const char*, std::optional<std::string> Options::*> kForeignOptions[] = {
    {"--material", &Options::material},
    {"--roughness", &Options::roughness},
    {"--shape", &Options::shape},
    {"--pressure-grade", &Options::pressureGrade},
    {"--cable-material", &Options::cableMaterial},
    {"--temperature", &Options::environmentTemperature},
    {"--cable-type", &Options::cableTypeName},
};

void RefuseForeignOptions(const ExchangeKind& kind, const Options& options) {
    const auto refuse = [&kind](const std::string& flag) {
        throw Failure(flag + " means nothing to a " + kind.one + ": its members are given by --set", Misused);
    };
    for (const auto& [flag, option] : kForeignOptions)
        if (options.*option)
            refuse(flag);
    if (!options.kind.empty())
        refuse("--kind");
    if (!options.addRows.empty() || !options.removeRows.empty() || options.clearRows)
        refuse("a row");
}

/// The value of a member as the user writes it: text as it is, anything else as JSON. What the member holds tells
/// which.
Json ValueOf(const Json& held, const std::string& member, const std::string& text) {
    if (held.is_string())
        return text;
    Json value = Json::parse(text, nullptr, false);
    if (value.is_discarded())
        throw Failure("\"" + member + "\" cannot be " + text, Misused);
    return value;
}

void SetMember(const ExchangeKind& kind, Json& record, const std::string& member, const std::string& text) {
    if (std::find(kind.taken.begin(), kind.taken.end(), member) == kind.taken.end()) {
        std::string choices;
        for (const auto& each : kind.taken)
            choices += (choices.empty() ? "" : ", ") + each;
        throw Failure("a " + std::string(kind.one) + " takes no \"" + member + "\" (one of " + choices + ")", Misused);
    }
    record[member] = ValueOf(record.at(member), member, text);
}

void ChangeMembers(const ExchangeKind& kind, Json& record, const Options& options) {
    RefuseForeignOptions(kind, options);
    if (options.name && kind.nameMember == nullptr)
        throw Failure("a " + std::string(kind.one) + " goes by the name of its system type and has no --name", Misused);
    if (options.name)
        SetMember(kind, record, kind.nameMember, *options.name);
    for (const auto& given : options.setMembers) {
        const auto equals = given.find('=');
        if (equals == std::string::npos)
            throw Failure("--set takes MEMBER=VALUE, not " + given, Misused);
        SetMember(kind, record, given.substr(0, equals), given.substr(equals + 1));
    }
}

/// Null when there is none.
const Json* FindById(const Json& records, const Json& id) {
    const auto found =
        std::find_if(records.begin(), records.end(), [&](const Json& each) { return each.at("id") == id; });
    return found != records.end() ? &*found : nullptr;
}

/// Writes the record and tells of it as the dataset gives it back.
void StoreOne(Workplace& place, const ExchangeKind& kind, const Json& record, const char* done, Context& context) {
    kind.write(place, Json::array({record}));
    const Json records = ReadAll(place, kind);
    const Json* stored = FindById(records, record.at("id"));
    if (stored == nullptr)
        throw Failure("stored, but the dataset does not list what is neither of its disciplines nor of its types");
    if (context.json)
        context.out << stored->dump(2) << '\n';
    else
        context.out << done << ' ' << StringUtil::ToString(WithoutControls(Cell(stored->at(kind.columns.front()))))
                    << "  (" << stored->at("id").get<std::string>() << ")\n";
}

/// The kind of a record that can be changed; null for other words.
const ExchangeKind* EditableKind(const std::string& word) {
    const auto* kind = FindExchangeKind(word);
    return kind != nullptr && kind->IsEditable() ? kind : nullptr;
}

} // namespace

bool AddExchanged(const Options& options, Context& context) {
    const auto* kind = EditableKind(options.what);
    if (kind == nullptr)
        return false;
    Json record = kind->make();
    ChangeMembers(*kind, record, options);
    if (record.at("id") == "")
        throw Failure("an id must not be empty", Misused);
    Workplace place(StringUtil::ToWString(options.dataset));
    if (FindById(ReadAll(place, *kind), record.at("id")) != nullptr)
        throw Failure("the id " + record.at("id").get<std::string>() + " is taken: 'tolm edit' changes what it names",
                      Refused);
    OpenSession(place, *kind);
    StoreOne(place, *kind, record, "Added", context);
    return true;
}

bool EditExchanged(const Options& options, Context& context) {
    const auto* kind = EditableKind(options.what);
    if (kind == nullptr)
        return false;
    Workplace place(StringUtil::ToWString(options.dataset));
    const Json records = ReadAll(place, *kind);
    Json record = FindRecord(*kind, records, options.names.front());
    const Json id = record.at("id");
    ChangeMembers(*kind, record, options);
    if (!options.name && options.setMembers.empty())
        throw Failure("nothing to change: give --set MEMBER=VALUE", Misused);
    if (record.at("id") != id)
        throw Failure("the id of a record does not change", Misused);
    OpenSession(place, *kind);
    StoreOne(place, *kind, record, "Changed", context);
    return true;
}

bool ListExchanged(const Options& options, Context& context) {
    const auto* kind = FindExchangeKind(options.what);
    if (kind == nullptr)
        return false;
    Workplace place(StringUtil::ToWString(options.dataset));
    const Json records = ReadAll(place, *kind);
    if (context.json) {
        context.out << records.dump(2) << '\n';
        return true;
    }
    std::vector<std::wstring> header;
    for (const char* column : kind->columns)
        header.push_back(StringUtil::ToWString(column));
    TextTable table(header);
    for (const auto& record : records) {
        std::vector<std::wstring> row;
        for (const char* column : kind->columns)
            row.push_back(Cell(record.at(column)));
        table.Add(std::move(row));
    }
    table.Print(context.out);
    context.out << records.size() << ' ' << kind->words << '\n';
    return true;
}

bool ShowExchanged(const Options& options, Context& context) {
    const auto* kind = FindExchangeKind(options.what);
    if (kind == nullptr)
        return false;
    Workplace place(StringUtil::ToWString(options.dataset));
    const Json records = ReadAll(place, *kind);
    const Json& record = FindRecord(*kind, records, options.names.front());
    if (context.json) {
        context.out << record.dump(2) << '\n';
        return true;
    }
    for (const auto& [key, value] : record.items())
        context.out << "  " << key << "  " << StringUtil::ToString(WithoutControls(Cell(value))) << '\n';
    return true;
}

bool DeleteExchanged(const Options& options, Context& context) {
    const auto* kind = EditableKind(options.what);
    if (kind == nullptr)
        return false;
    Workplace place(StringUtil::ToWString(options.dataset));
    OpenSession(place, *kind);
    for (const auto& name : options.names) {
        const Json records = ReadAll(place, *kind);
        kind->remove(place, FindRecord(*kind, records, name));
        context.out << "Deleted " << name << '\n';
    }
    return true;
}

std::vector<std::string> ExchangedWords(bool many, bool readOnlyToo) {
    std::vector<std::string> words;
    for (const auto& kind : ExchangeKinds())
        if (readOnlyToo || kind.IsEditable())
            words.emplace_back(many ? kind.many : kind.one);
    return words;
}

void RunExport(const Options& options, Context& context) {
    const auto& kind = KindOfFile(options);
    Workplace place(StringUtil::ToWString(options.dataset));
    const Json records = ReadAll(place, kind);
    const Json file{{"format", kFormat}, {"formatVersion", kFormatVersion}, {"what", kind.many}, {"records", records}};
    std::ofstream out(options.file);
    out << file.dump(2) << '\n';
    if (!out.flush())
        throw Failure("cannot write " + options.file);
    context.out << "Exported " << records.size() << ' ' << kind.words << '\n';
}

void RunImport(const Options& options, Context& context) {
    const auto& kind = KindOfFile(options);
    const Json records = RecordsOf(options.file, kind);
    Workplace place(StringUtil::ToWString(options.dataset));
    OpenSession(place, kind);
    if (!records.empty())
        kind.write(place, records);
    context.out << "Imported " << records.size() << ' ' << kind.words << '\n';
}

} // namespace tolmcli
