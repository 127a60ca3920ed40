#include "Tolm/Commands.h"

#include "Tolm/Errors.h"
#include "Tolm/Exchange.h"
#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <fstream>
#include <ostream>

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
    if (kind == nullptr)
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

} // namespace

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
    const auto* kind = FindExchangeKind(options.what);
    if (kind == nullptr)
        return false;
    Workplace place(StringUtil::ToWString(options.dataset));
    OpenSession(place);
    for (const auto& name : options.names) {
        const Json records = ReadAll(place, *kind);
        kind->remove(place, FindRecord(*kind, records, name));
        context.out << "Deleted " << name << '\n';
    }
    return true;
}

std::vector<std::string> ExchangedWords(bool many) {
    std::vector<std::string> words;
    for (const auto& kind : ExchangeKinds())
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
    OpenSession(place);
    if (!records.empty())
        kind.write(place, records);
    context.out << "Imported " << records.size() << ' ' << kind.words << '\n';
}

} // namespace tolmcli
