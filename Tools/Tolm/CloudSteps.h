#pragma once

#include "Tolm/Comparison.h"
#include "Tolm/Workplace.h"

#include <string>

namespace tolmcli {

/// How one step with the cloud ended. A step that cannot succeed by being tried again throws Failure instead.
struct StepResult {
    bool done = true;  ///< false: compare anew and try again
    std::string word;  ///< what was done, as "pulled"
    std::string cause; ///< why it has to be tried again
};

/// Brings the cloud's changes down. Refused for a dataset with local changes, save one that was never synchronised and
/// holds nothing else: there both sides are merged.
StepResult Pull(Workplace& place, const Comparison& comparison);
/// Sends the local changes and stamps the version that they made.
StepResult Push(Workplace& place, const Comparison& comparison);
/// Brings both sides together, sends what remains and stamps the version.
StepResult Merge(Workplace& place, const Comparison& comparison);
/// Has the service fill the project with its default settings. The dataset is not touched.
void FillFromTemplate(Workplace& place, const Comparison& comparison);
/// Notes all of the dataset's settings as created and forgets its version, so that the next push makes them the first
/// ones of a project.
void PrepareToFillFromDataset(Workplace& place);

} // namespace tolmcli
