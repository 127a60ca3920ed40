#pragma once

#include "Converge/HostProcess.h"
#include "Converge/VersionLog.h"
#include "StoreSupport/SyncFixture.h"

#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tolmtest {

/// Edits of the histories that were played, by what became of them, and how the hosts got on.
struct ConvergeCounts {
    std::map<Fate, int> fates;
    int skipped = 0; ///< edits that a host could not make
    int lostAnswers = 0;
    int direct = 0;                   ///< calls for templates and products
    int takenBack = 0;                ///< pulls that took removed system types back
    int refused = 0;                  ///< rounds of synchronisations that had to be tried again
    std::map<std::string, int> steps; ///< of synchronisations: pull, push, merge
};

/// One service, and hosts in processes of their own with a user, a token and a dataset each. A history is a project of
/// its own; the processes stay.
class ConvergeFixture : public SyncFixture {
protected:
    /// Starts what hosts there are not yet, and opens a dataset for each that is pulled once.
    void OpenHosts(int count, const std::string& project);
    /// Plays a history and holds all that it must lead to against it. A failure prints it.
    void Play(const nlohmann::json& history, const std::string& project);
    /// Plays steps, up to the first failure.
    void PlayAll(const nlohmann::json& steps);
    /// Brings all hosts to the end of what they have to tell each other.
    void Settle();
    void ExpectConverged();

    /// Lets a host synchronise, which has to come to its end.
    void ExpectSynced(int host);
    nlohmann::json Ask(int host, nlohmann::json command);
    nlohmann::json SyncCommand() const;
    void TakeAnswer(int host, const nlohmann::json& answer);
    int HostCount() const { return static_cast<int>(m_hosts.size()); }

    ConvergeCounts counts;

private:
    struct Host {
        std::unique_ptr<HostProcess> process;
        std::string token;
        std::unique_ptr<HostedDataset> dataset;
        long long version = 0;
        std::map<std::string, NotedEdit> open; ///< by setting: the last one since the last synchronisation
        std::set<std::string> takenBack;       ///< settings whose removal was taken back since then
    };

    void OpenHost(int number, const std::string& project);
    void PlayStep(const nlohmann::json& step);
    void PlayEdit(const nlohmann::json& step);
    /// As the host can do it now; null for an edit that the claim leaves out.
    static nlohmann::json CommandFor(const nlohmann::json& step, Host& host);
    void PlaySync(const nlohmann::json& step);
    void PlayDirect(const nlohmann::json& step);
    void PlayTogether(const nlohmann::json& step);
    void ExpectNamesApart(const nlohmann::json& tables) const;
    void ExpectFates();
    /// Of templates and products the last call counts.
    void ExpectDirect(const nlohmann::json& tables) const;

    std::vector<Host> m_processes; ///< all that were started
    std::vector<Host*> m_hosts;    ///< those of the history
    std::vector<NotedEdit> m_edits;
    std::map<std::string, int> m_direct; ///< mark of each template and product that stands
    std::string m_project;
};

} // namespace tolmtest
