#include "Tolm/Commands.h"

#include "Tolm/Doctor.h"
#include "Tolm/Errors.h"
#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <ostream>

namespace tolmcli {
namespace {

using Json = nlohmann::ordered_json;
using vorn::StringUtil;

std::string Shown(const std::wstring& text) {
    return StringUtil::ToString(WithoutControls(text));
}

/// The record that a finding is about, as "series Copper (4711): "; empty for none.
std::string Subject(const Finding& finding) {
    if (finding.classCode.empty())
        return {};
    std::string subject = WordOfClass(finding.classCode);
    if (!finding.name.empty())
        subject += " " + Shown(finding.name);
    if (!finding.id.empty())
        subject += " (" + Shown(finding.id) + ")";
    return subject + ": ";
}

void PrintFindings(std::ostream& out, const std::vector<Finding>& findings) {
    std::optional<FindingGroup> group;
    for (const Finding& finding : findings) {
        if (group != finding.group)
            out << WordOf(finding.group) << '\n';
        group = finding.group;
        out << "  " << Subject(finding) << Shown(finding.text) << '\n';
    }
    if (findings.empty())
        out << "healthy\n";
    else
        out << findings.size() << (findings.size() == 1 ? " finding\n" : " findings\n");
}

Json ToJson(const std::vector<Finding>& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings)
        list.push_back({{"group", WordOf(finding.group)},
                        {"what", finding.classCode.empty() ? "" : WordOfClass(finding.classCode)},
                        {"id", StringUtil::ToString(finding.id)},
                        {"name", StringUtil::ToString(finding.name)},
                        {"finding", StringUtil::ToString(finding.text)}});
    return {{"healthy", findings.empty()}, {"findings", std::move(list)}};
}

} // namespace

void RunDoctor(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    const auto findings = Examine(place);
    if (context.json)
        context.out << ToJson(findings).dump(2) << '\n';
    else
        PrintFindings(context.out, findings);
    context.exitCode = findings.empty() ? Done : Failed;
}

} // namespace tolmcli
