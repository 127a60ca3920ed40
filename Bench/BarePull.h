#pragma once

#include "Bench/BareStore.h"
#include "Bench/World.h"

#include <string>
#include <utility>
#include <vector>

namespace tolm::bench {

using NamedBytes = std::vector<std::pair<fs::path, std::string>>;

/// Everything that a full pull leaves behind, ready to be written again, as durable as the library leaves it.
class BareFullPull {
public:
    explicit BareFullPull(const DatasetFiles& files);
    void WriteTo(const DatasetFiles& files) const;

private:
    BareFile m_store;
    BareFile m_combined;
    NamedBytes m_binary;
};

/// The same for what an increment makes of a dataset.
class BareIncrement {
public:
    BareIncrement(const DatasetFiles& before, const DatasetFiles& after);
    void ApplyTo(const DatasetFiles& files) const;

private:
    BareChange m_store;
    BareChange m_combined;
    NamedBytes m_binary;
};

} // namespace tolm::bench
