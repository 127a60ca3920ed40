#include "Tolm/Commands.h"

#include "Tolm/Comparison.h"
#include "Tolm/Errors.h"
#include "Tolm/Profile.h"
#include "Tolm/ProgressBar.h"
#include "Tolm/Workplace.h"

#include "Qbase/Qbase.h"
#include "Vorn/Files.h"
#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace tolmcli {
namespace {

using tolm::CompareVersionResult;
using vorn::StringUtil;

/// The dataset as it was before its changes were discarded: a dataset beside it, with these changes noted.
class KeptDataset {
public:
    explicit KeptDataset(const std::wstring& path) : m_path(path), m_kept(PathOf(path)) {
        if (!Copy(m_path, m_kept) || !vorn::FileUtility::Copy(Profile::PathFor(m_path), Profile::PathFor(m_kept)))
            throw Failure("the dataset cannot be copied to " + Name() + "; nothing was pulled");
    }

    std::string Name() const { return StringUtil::ToString(m_kept); }
    bool PutBack() const { return Copy(m_kept, m_path); }

private:
    static std::wstring PathOf(const std::wstring& path) {
        const auto point = path.rfind(L'.');
        return path.substr(0, point) + L"_discarded" + path.substr(point);
    }
    static bool Copy(const std::wstring& from, const std::wstring& to) {
        if (!CQbase::removeStore(StatusPath(to)) || !CQbase::copyStore(from, to))
            return false;
        return !vorn::FileInfo(StatusPath(from)).Exists() || CQbase::copyStore(StatusPath(from), StatusPath(to));
    }

    std::wstring m_path;
    std::wstring m_kept;
};

bool PullNow(Workplace& place) {
    ProgressBar progress("Pulling");
    const bool pulled = place.Dataset().SyncDataFromCloud(true, &progress, nullptr);
    if (pulled)
        progress.ReportProgress(100.0);
    return pulled;
}

/// Local changes are thrown away by loading the project whole: what was only edited here would otherwise stay.
void PullDiscarding(Workplace& place, Context& context) {
    const KeptDataset before(place.Path());
    if (!place.Dataset().SetLocalVersion(0))
        FailWithMessages(place, "the dataset cannot be written");
    if (!PullNow(place))
        FailWithMessages(place, before.PutBack() ? "nothing was pulled; the dataset is as it was"
                                                 : "nothing was pulled; the dataset as it was is in " + before.Name());
    if (!CQbase::removeStore(StatusPath(place.Path())))
        throw Failure("the project was pulled, but the noted changes could not be removed");
    context.out << "The dataset as it was is kept in " << before.Name() << '\n';
}

} // namespace

void RunCompare(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    place.Connect();
    const Comparison comparison = Compare(place);
    const ResultWords& words = WordsOf(comparison.result);
    if (context.json) {
        const nlohmann::ordered_json json{{"result", words.word},
                                          {"code", static_cast<int>(comparison.result)},
                                          {"project", StringUtil::ToString(comparison.project)},
                                          {"cloudVersion", comparison.cloud},
                                          {"localVersion", comparison.local},
                                          {"lastUpdate", StringUtil::ToString(comparison.timePoint)}};
        context.out << json.dump(2) << '\n';
    } else {
        PrintMessages(place, context.out);
        context.out << "project " << StringUtil::ToString(comparison.project) << ": cloud version " << comparison.cloud
                    << ", local version " << comparison.local;
        if (!comparison.timePoint.empty())
            context.out << " of " << StringUtil::ToString(comparison.timePoint);
        context.out << "\n" << words.word << ". " << words.advice << '\n';
    }
    if (comparison.result == CompareVersionResult::NotComparable)
        FailWithMessages(place, "no comparison was possible");
}

void RunPull(const Options& options, Context& context) {
    Workplace place(StringUtil::ToWString(options.dataset));
    const auto changes = ReadNotedChanges(place.Path());
    if (!changes.empty() && !options.discard)
        throw Failure("there are " + std::to_string(changes.size()) +
                          " local changes, which a pull could overwrite: see 'tolm changes', or throw them away with "
                          "--discard",
                      Refused);
    place.Connect();
    const Comparison before = Compare(place);
    if (before.cloud < 1)
        FailWithMessages(place, "nothing was pulled");
    const bool discarding = !changes.empty() || (options.discard && before.cloud < before.local);
    if (!discarding && before.cloud == before.local) {
        context.out << "Up to date at version " << before.local << '\n';
        return;
    }
    if (discarding)
        PullDiscarding(place, context);
    else if (!PullNow(place))
        FailWithMessages(place, "nothing was pulled");
    for (const auto& fault : place.Heard().TakeFaults())
        context.out << "not applied: " << fault << '\n';
    PrintMessages(place, context.out);
    context.out << "Pulled "
                << (before.local > 0 && !discarding
                        ? "the changes from version " + std::to_string(before.local) + " to "
                        : "version ")
                << before.cloud << '\n';
}

} // namespace tolmcli
