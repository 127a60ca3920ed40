#include "Tolm/Summary.h"

#include "Tolm/Doctor.h"
#include "Tolm/TextTable.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <ostream>

namespace tolmcli {
namespace {

using vorn::StringUtil;

/// Longer lists are told in numbers.
constexpr std::size_t kMostLines = 20;

const Setting* Find(const Snapshot& snapshot, const SettingKey& key) {
    const auto found = snapshot.settings.find(key);
    return found != snapshot.settings.end() ? &found->second : nullptr;
}

Effect Tell(const SettingKey& key, const Setting& setting, const char* change) {
    return {key, setting.name, setting.kind, change, L"", ""};
}

/// Name and kind as they are now, else as they were, else as the note has them.
Effect Tell(const NotedChange& note, const Setting* before, const Setting* after) {
    const Setting* setting = after != nullptr ? after : before;
    return {{note.code, note.id},
            setting != nullptr ? setting->name : note.name,
            setting != nullptr ? setting->kind : note.kind,
            StringUtil::ToString(note.change),
            L"",
            ""};
}

/// True for a name that was made from the other one by a number behind it, as Steel(1) from Steel.
bool IsNumbered(const std::wstring& name, const std::wstring& plain) {
    if (name.size() < plain.size() + 3 || !name.starts_with(plain) || name[plain.size()] != L'(' || name.back() != L')')
        return false;
    return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(plain.size()) + 1, name.end() - 1,
                       [](wchar_t letter) { return letter >= L'0' && letter <= L'9'; });
}

bool IsRenamed(const Setting* before, const Setting* after) {
    return before != nullptr && after != nullptr && IsNumbered(after->name, before->name) &&
           AreAlike(*before, *after, Nearness::AsSent, true);
}

/// What the cloud did to a setting in place of our change; empty when our change stands.
std::string DoneByCloud(const NotedChange& note, const Setting* before, const Setting* after) {
    if (note.change == L"removed")
        return after != nullptr ? "changed" : "";
    if (after == nullptr)
        return before != nullptr ? "removed" : "";
    if (note.change == L"created" || before == nullptr)
        return "";
    return AreAlike(*before, *after, Nearness::AsSent) || IsRenamed(before, after) ? "" : "changed";
}

void AddOurs(Summary& summary, const NotedChange& note, const Snapshot& beforeAll, const Snapshot& afterAll) {
    const SettingKey key(note.code, note.id);
    const Setting* before = Find(beforeAll, key);
    const Setting* after = Find(afterAll, key);
    Effect effect = Tell(note, before, after);
    const bool waits = afterAll.changes.count(key) != 0;
    if (!waits)
        effect.cloud = DoneByCloud(note, before, after);
    (waits ? summary.waiting : effect.cloud.empty() ? summary.went : summary.overridden).push_back(effect);
    if (effect.cloud.empty() && IsRenamed(before, after)) {
        effect.was = before->name;
        summary.renamed.push_back(effect);
    }
}

void AddCame(Summary& summary, const Snapshot& before, const Snapshot& after) {
    const auto isOurs = [&](const SettingKey& key) {
        return before.changes.count(key) != 0 || after.changes.count(key) != 0;
    };
    for (const auto& [key, setting] : after.settings) {
        const Setting* old = Find(before, key);
        if (!isOurs(key) && (old == nullptr || !AreAlike(*old, setting, Nearness::Exact)))
            summary.came.push_back(Tell(key, setting, old == nullptr ? "new" : "changed"));
    }
    for (const auto& [key, setting] : before.settings) {
        if (!isOurs(key) && Find(after, key) == nullptr)
            summary.came.push_back(Tell(key, setting, "gone"));
    }
}

/// One list of the summary: its key in JSON, and how it is told.
struct Chapter {
    const char* key;
    const char* title;
    std::vector<Effect> Summary::*effects;
    std::string (*line)(const Effect&);
    bool mayBeNumbers; ///< whether a long list is told in numbers alone
};

std::string Named(const Effect& effect) {
    std::string text = WordOfClass(effect.key.first) + std::string(" ") +
                       StringUtil::ToString(WithoutControls(effect.name.empty() ? effect.key.second : effect.name));
    if (!effect.kind.empty())
        text += " (" + StringUtil::ToString(effect.kind) + ")";
    return text;
}

std::string ChangeLine(const Effect& effect) {
    return effect.change + std::string(8 - std::min<std::size_t>(7, effect.change.size()), ' ') + Named(effect);
}

std::string RenamedLine(const Effect& effect) {
    Effect old = effect;
    old.name = effect.was;
    return Named(old) + " is now " + StringUtil::ToString(WithoutControls(effect.name));
}

std::string OverriddenLine(const Effect& effect) {
    return Named(effect) + ": you " + effect.change + " it, the cloud " + effect.cloud + " it";
}

constexpr std::array kChapters{
    Chapter{"came", "Came from the cloud", &Summary::came, ChangeLine, true},
    Chapter{"went", "Went to the cloud", &Summary::went, ChangeLine, true},
    Chapter{"renamed", "Renamed, since the cloud has another one of that name", &Summary::renamed, RenamedLine, false},
    Chapter{"overridden", "Overridden: others changed the same, the cloud's state stands and your change is dropped",
            &Summary::overridden, OverriddenLine, false},
    Chapter{"waiting", "Still to be sent", &Summary::waiting, ChangeLine, true},
};

void PrintNumbers(std::ostream& out, const std::vector<Effect>& effects) {
    std::map<std::pair<std::string, std::string>, std::size_t> numbers;
    for (const Effect& effect : effects)
        ++numbers[{effect.change, WordOfClass(effect.key.first)}];
    for (const auto& [what, number] : numbers)
        out << "  " << what.first << ": " << number << ' ' << what.second
            << (number == 1 || what.second == "series" ? "" : "s") << '\n';
}

nlohmann::ordered_json ToJson(const Effect& effect) {
    nlohmann::ordered_json json{{"what", WordOfClass(effect.key.first)},
                                {"name", StringUtil::ToString(effect.name)},
                                {"kind", StringUtil::ToString(effect.kind)},
                                {"id", StringUtil::ToString(effect.key.second)},
                                {"change", effect.change}};
    if (!effect.was.empty())
        json["was"] = StringUtil::ToString(effect.was);
    if (!effect.cloud.empty())
        json["cloud"] = effect.cloud;
    return json;
}

} // namespace

bool Summary::IsEmpty() const {
    return std::all_of(kChapters.begin(), kChapters.end(),
                       [&](const Chapter& chapter) { return (this->*chapter.effects).empty(); });
}

Summary Summarise(const Snapshot& before, const Snapshot& after) {
    Summary summary;
    for (const auto& [key, note] : before.changes)
        AddOurs(summary, note, before, after);
    AddCame(summary, before, after);
    return summary;
}

void AddTo(nlohmann::ordered_json& json, const Summary& summary) {
    for (const Chapter& chapter : kChapters) {
        json[chapter.key] = nlohmann::ordered_json::array();
        for (const Effect& effect : summary.*chapter.effects)
            json[chapter.key].push_back(ToJson(effect));
    }
}

void Print(std::ostream& out, const Summary& summary) {
    for (const Chapter& chapter : kChapters) {
        const auto& effects = summary.*chapter.effects;
        if (effects.empty())
            continue;
        out << chapter.title << ":\n";
        if (chapter.mayBeNumbers && effects.size() > kMostLines) {
            PrintNumbers(out, effects);
            continue;
        }
        for (const Effect& effect : effects)
            out << "  " << chapter.line(effect) << '\n';
    }
}

} // namespace tolmcli
