#pragma once

#include "Tolm/Workplace.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tolmcli {

/// A kind of record that the command keeps as JSON objects with an "id": circuit templates, design methods and combined
/// products, which go out to a file and come in from one, and the components of the catalogue, which are only read.
struct ExchangeKind {
    const char* many;
    const char* one;
    const char* words;                ///< what a list counts
    std::vector<const char*> columns; ///< members that a list shows; the first is what a record goes by beside its id
    bool isShared;                    ///< goes to the service at once
    const char* nameMember;           ///< what --name sets; null where a record has no name of its own
    nlohmann::ordered_json (*read)(Workplace& place);
    /// A new record with an id of its own. Null, like the operations and members behind it, for what is only read.
    nlohmann::ordered_json (*make)();
    /// Stores the records, new ones and changed ones, and sends them where the kind is shared at once.
    void (*write)(Workplace& place, const nlohmann::ordered_json& records);
    void (*remove)(Workplace& place, const nlohmann::ordered_json& record);
    std::vector<std::string> taken; ///< members that are taken, and not only told

    bool IsEditable() const { return write != nullptr; }
};

const std::vector<ExchangeKind>& ExchangeKinds();

/// The kind under the word for many or for one; null for other words.
const ExchangeKind* FindExchangeKind(const std::string& word);

/// The record of this id, or the only one that goes by this name. Throws Failure.
const nlohmann::ordered_json& FindRecord(const ExchangeKind& kind, const nlohmann::ordered_json& records,
                                         const std::string& idOrName);

/// For what is shared at once: signs in where the dataset has a service, and opens a session without a project where
/// it has none, so that it stays here. All else needs no session.
void OpenSession(Workplace& place, const ExchangeKind& kind);

} // namespace tolmcli
