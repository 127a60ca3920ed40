#pragma once

#include "ConvergeHost/Slices.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace tolmtest {

/// One state of one setting in the cloud: it stands from the version `born` up to but not in the version `gone`.
struct LoggedState {
    long long born = 0;
    long long gone = 0;
    nlohmann::json row;

    std::int64_t Mark() const { return row.value("CreateTime", std::int64_t{0}); }
    std::string Name() const;
};

/// What the service keeps of the past of one project, read from its database.
class VersionLog {
public:
    VersionLog(const std::wstring& databasePath, const std::string& project);

    /// The states of a setting in the order of their versions.
    const std::vector<LoggedState>& Of(const Slice& slice, const std::string& id) const;
    /// Settings whose state was followed by the same state once more.
    std::vector<std::string> Repeated() const;

private:
    std::map<std::string, std::vector<LoggedState>> m_states; ///< by id space and id
};

/// One edit that a host was told to have made, and the two cloud versions between which it has to show: the one that
/// the host stood at when it made it, and the one that its next synchronisation brought it to.
struct NotedEdit {
    nlohmann::json step;
    long long from = 0;
    long long to = 0;
};

/// What became of it.
enum class Fate {
    Landed,     ///< the cloud had it, under its own name or a repaired one
    Nothing,    ///< a deletion of what the cloud never had
    Overridden, ///< the cloud changed the same setting in between
    Lost
};

struct FateOfEdit {
    Fate fate = Fate::Lost;
    long long version = 0; ///< that it landed with, or that overrode it
};

FateOfEdit FindFate(const VersionLog& log, const NotedEdit& edit);

} // namespace tolmtest
