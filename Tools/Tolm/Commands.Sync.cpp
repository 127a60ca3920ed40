#include "Tolm/Commands.h"

#include "Tolm/Backoff.h"
#include "Tolm/CloudSteps.h"
#include "Tolm/Comparison.h"
#include "Tolm/Errors.h"
#include "Tolm/Snapshot.h"
#include "Tolm/Summary.h"
#include "Tolm/Workplace.h"

#include "Vorn/Text.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <thread>

namespace tolmcli {
namespace {

using tolm::CompareVersionResult;
using vorn::StringUtil;

/// One run of a command that works with the cloud.
struct CloudRun {
    Workplace place;
    const Options& options;
    Context& context;
    Snapshot before;
    int attempts = 0;

    CloudRun(const Options& given, Context& where)
        : place(StringUtil::ToWString(given.dataset)), options(given), context(where),
          before(TakeSnapshot(place.Path())) {
        place.Connect();
    }

    void Say(const std::string& text) const {
        if (!context.json)
            context.out << text << '\n';
    }
};

using Step = StepResult (*)(CloudRun&, const Comparison&);

/// What a command does where the comparison has this result; the results stand in their order.
struct StepFor {
    CompareVersionResult result;
    Step step;
};
using Plan = std::array<StepFor, 6>;

/// The library takes changes that it cannot read for none.
StepResult DoNothing(CloudRun& run, const Comparison&) {
    if (!ReadNotedChanges(run.place.Path()).empty())
        return {false, "", "there are local changes that the comparison did not see"};
    return {true, "up to date", ""};
}

StepResult PullStep(CloudRun& run, const Comparison& comparison) {
    return Pull(run.place, comparison);
}

StepResult PushStep(CloudRun& run, const Comparison& comparison) {
    return Push(run.place, comparison);
}

StepResult MergeStep(CloudRun& run, const Comparison& comparison) {
    return Merge(run.place, comparison);
}

/// A service that is silent may answer in a moment; one that knows less than the dataset will not know more, unless
/// another program synchronised the dataset in the middle of the comparison.
StepResult TellWhyNotComparable(CloudRun& run, const Comparison& comparison) {
    if (comparison.cloud < 1)
        return {false, "", WithMessages(run.place, "the service did not tell its version")};
    if (Compare(run.place).result != CompareVersionResult::NotComparable)
        return {false, "", "the cloud moved on during the comparison"};
    throw Failure("the cloud stands at version " + std::to_string(comparison.cloud) + ", below this dataset's " +
                      std::to_string(comparison.local) +
                      ": the service was set back to an older state, or is another one. Nothing was changed, neither "
                      "here nor there. 'tolm pull --discard' puts the cloud's state in place of the dataset's, which "
                      "is kept in a file beside it.",
                  Refused);
}

StepResult FillFromDataset(CloudRun& run, Comparison comparison) {
    PrepareToFillFromDataset(run.place);
    comparison.local = 0;
    run.before.changes = TakeSnapshot(run.place.Path()).changes;
    StepResult result = Push(run.place, comparison);
    if (result.done)
        result.word = "filled from this dataset";
    return result;
}

StepResult FillStep(CloudRun& run, const Comparison& comparison) {
    if (run.options.fromLocal)
        return FillFromDataset(run, comparison);
    if (comparison.local > 0)
        throw Failure("the project has no settings in the cloud, but this dataset holds version " +
                          std::to_string(comparison.local) +
                          " of some: the service lost them, or is another one. With --from-local this dataset's "
                          "settings become the project's first ones.",
                      Refused);
    FillFromTemplate(run.place, comparison);
    StepResult result = Pull(run.place, Compare(run.place));
    if (result.done)
        result.word = "filled from the default template and " + result.word;
    return result;
}

StepResult RefuseEmptyProject(CloudRun&, const Comparison&) {
    throw Failure("the project has no settings in the cloud yet: 'tolm sync' fills it", Refused);
}

StepResult RefuseToPush(CloudRun&, const Comparison& comparison) {
    throw Failure("the cloud moved on to version " + std::to_string(comparison.cloud) + ", this dataset holds " +
                      std::to_string(comparison.local) + ": run 'tolm sync'",
                  Refused);
}

StepResult NothingToMerge(CloudRun&, const Comparison& comparison) {
    return {true, std::string("nothing to merge: ") + WordsOf(comparison.result).word, ""};
}

constexpr Plan kSync{{{CompareVersionResult::NotComparable, TellWhyNotComparable},
                      {CompareVersionResult::Same, DoNothing},
                      {CompareVersionResult::CloudAhead, PullStep},
                      {CompareVersionResult::LocalChanges, PushStep},
                      {CompareVersionResult::BothChanged, MergeStep},
                      {CompareVersionResult::CloudNotInitialised, FillStep}}};

constexpr Plan kMerge{{{CompareVersionResult::NotComparable, TellWhyNotComparable},
                       {CompareVersionResult::Same, NothingToMerge},
                       {CompareVersionResult::CloudAhead, NothingToMerge},
                       {CompareVersionResult::LocalChanges, NothingToMerge},
                       {CompareVersionResult::BothChanged, MergeStep},
                       {CompareVersionResult::CloudNotInitialised, RefuseEmptyProject}}};

constexpr Plan kPush{{{CompareVersionResult::NotComparable, TellWhyNotComparable},
                      {CompareVersionResult::Same, DoNothing},
                      {CompareVersionResult::CloudAhead, RefuseToPush},
                      {CompareVersionResult::LocalChanges, PushStep},
                      {CompareVersionResult::BothChanged, RefuseToPush},
                      {CompareVersionResult::CloudNotInitialised, RefuseEmptyProject}}};

/// Each plan has each result at its place.
constexpr bool IsInOrder(const Plan& plan) {
    for (std::size_t i = 0; i < plan.size(); ++i) {
        if (IndexOf(plan[i].result) != i)
            return false;
    }
    return true;
}
static_assert(IsInOrder(kSync) && IsInOrder(kMerge) && IsInOrder(kPush));

StepResult Attempt(CloudRun& run, const Plan& plan) {
    ++run.attempts;
    const Comparison comparison = Compare(run.place);
    run.Say("Cloud version " + std::to_string(comparison.cloud) + ", local version " +
            std::to_string(comparison.local) + ": " + WordsOf(comparison.result).word);
    return plan.at(IndexOf(comparison.result)).step(run, comparison);
}

std::string Seconds(std::chrono::milliseconds pause) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << static_cast<double>(pause.count()) / 1000;
    return text.str();
}

StepResult AttemptUntilDone(CloudRun& run, const Plan& plan, int most) {
    Backoff backoff(std::chrono::milliseconds(std::llround(run.options.pause * 1000)));
    while (true) {
        StepResult result = Attempt(run, plan);
        if (result.done)
            return result;
        if (run.attempts >= most)
            throw Failure(result.cause + "\n  given up after " + std::to_string(run.attempts) +
                          (run.attempts == 1 ? " attempt" : " attempts") + "; your changes are kept");
        const auto pause = backoff.Next();
        run.Say("Not yet: " + result.cause + "\nTrying again in " + Seconds(pause) + " s");
        std::this_thread::sleep_for(pause);
    }
}

void Report(CloudRun& run, const std::string& word) {
    const Snapshot after = TakeSnapshot(run.place.Path());
    const Summary summary = Summarise(run.before, after);
    const auto faults = run.place.Heard().TakeFaults();
    if (run.context.json) {
        nlohmann::ordered_json json{{"result", word},
                                    {"fromVersion", run.before.version},
                                    {"toVersion", after.version},
                                    {"attempts", run.attempts}};
        AddTo(json, summary);
        json["faults"] = faults;
        run.context.out << json.dump(2) << '\n';
        return;
    }
    Print(run.context.out, summary);
    for (const auto& fault : faults)
        run.context.out << "noticed: " << fault << '\n';
    run.context.out << static_cast<char>(std::toupper(word.front())) << word.substr(1);
    if (after.version > 0)
        run.context.out << "; the dataset holds version " << after.version;
    run.context.out << '\n';
}

/// Tells also of what was done before a failure.
void Run(const Options& options, Context& context, const Plan& plan, int mostAttempts) {
    CloudRun run(options, context);
    try {
        Report(run, AttemptUntilDone(run, plan, mostAttempts).word);
    } catch (const Failure&) {
        if (Summary summary = Summarise(run.before, TakeSnapshot(run.place.Path()));
            !summary.came.empty() || !summary.went.empty() || !summary.overridden.empty() || !summary.renamed.empty())
            Report(run, "not finished");
        throw;
    }
}

} // namespace

void RunSync(const Options& options, Context& context) {
    Run(options, context, kSync, options.attempts);
}

void RunMerge(const Options& options, Context& context) {
    Run(options, context, kMerge, 1);
}

void RunPush(const Options& options, Context& context) {
    Run(options, context, kPush, 1);
}

} // namespace tolmcli
