#pragma once

#include "Tolm/Kinds.h"
#include "Tolm/Profile.h"

#include "TolmDataSet/TolmDataSet.h"
#include "Vorn/DebugMessage.h"

#include <string>
#include <vector>

namespace tolmcli {

/// Hears what the library says while one command runs, and puts the handlers back at the end.
class Listener {
public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Faults since the start or the last call, as "function: message".
    std::vector<std::string> TakeFaults();
    /// Messages to the user since the start or the last call.
    std::vector<std::string> TakeMessages();

private:
    std::vector<std::string> m_faults;
    std::vector<std::string> m_messages;
};

/// One dataset with its profile, opened for one command.
class Workplace {
public:
    /// Throws Failure when the dataset or its profile is not there.
    explicit Workplace(const std::wstring& datasetPath);
    ~Workplace();
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    /// Signs in and opens the session. Throws Failure.
    void Connect();

    tolm::ITolmDataset& Dataset() { return *m_dataset; }
    const Profile& Settings() const { return m_profile; }
    const std::wstring& Path() const { return m_path; }
    Listener& Heard() { return m_listener; }

    /// Throws Failure with the faults that were heard, if any, behind `what`.
    void FailOnFaults(const std::string& what);

    /// An edit goes through the facade, which does not tell of a failure, and is read back. Throws Failure with the
    /// faults that were heard, or when what was read is not as wanted.
    void FailUnlessStored(bool asWanted);

    /// Throws Failure, told as `what` with the error's number, when the dataset cannot be had for a change now.
    void FailUnlessChangeable(const std::string& what) const;

private:
    Listener m_listener;
    std::wstring m_path;
    Profile m_profile;
    vorn::OwnerPtr<tolm::ITolmDataset> m_dataset;
};

/// Path of the status store beside a dataset.
std::wstring StatusPath(const std::wstring& datasetPath);

/// One noted change.
struct NotedChange {
    std::wstring what; ///< material, size table, ...
    std::wstring id;
    std::wstring name; ///< empty when the record is gone
    std::wstring kind;
    std::wstring change; ///< created, edited, removed
    std::string code;    ///< of the record's class
};

/// What the status store holds, in the order of its records. Throws Failure when it is there and cannot be read.
std::vector<NotedChange> ReadNotedChanges(const std::wstring& datasetPath);

} // namespace tolmcli
