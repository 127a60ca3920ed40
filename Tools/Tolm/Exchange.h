#pragma once

#include "Tolm/Workplace.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tolmcli {

/// A kind of record that goes out to a file and comes in from one: circuit templates, design methods and combined
/// products. Each record is a JSON object with an "id".
struct ExchangeKind {
    const char* many;
    const char* one;
    const char* words;                ///< what a list counts
    std::vector<const char*> columns; ///< members that a list shows; the first is what a record goes by beside its id
    nlohmann::ordered_json (*read)(Workplace& place);
    /// Stores the records, new ones and changed ones, and sends them where the kind is shared at once.
    void (*write)(Workplace& place, const nlohmann::ordered_json& records);
    void (*remove)(Workplace& place, const nlohmann::ordered_json& record);
};

const std::vector<ExchangeKind>& ExchangeKinds();

/// The kind under the word for many or for one; null for other words.
const ExchangeKind* FindExchangeKind(const std::string& word);

/// The record of this id, or the only one that goes by this name. Throws Failure.
const nlohmann::ordered_json& FindRecord(const ExchangeKind& kind, const nlohmann::ordered_json& records,
                                         const std::string& idOrName);

/// Signs in where the dataset has a service, and opens a session without a project where it has none: what is shared
/// at once then stays here.
void OpenSession(Workplace& place);

} // namespace tolmcli
