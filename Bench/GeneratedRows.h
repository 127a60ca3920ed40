#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tolm::bench {

/// Random numbers that are the same with every standard library.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}
    std::uint64_t Below(std::uint64_t bound) { return m_engine() % bound; }
    int From(int low, int high) { return low + static_cast<int>(Below(static_cast<std::uint64_t>(high - low) + 1)); }
    /// An id in the form of a GUID.
    std::string Id();
    /// One of the list; empty when the list is.
    std::string OneOf(const std::vector<std::string>& list) {
        return list.empty() ? std::string() : list[Below(list.size())];
    }

private:
    std::mt19937_64 m_engine;
};

/// Ids made so far, for the links of later rows.
struct MadeIds {
    std::vector<std::string> pipeMaterials;
    std::vector<std::string> hvacMaterials;
    std::vector<std::string> pipeSizes;
    std::vector<std::string> conduitSizes;
    std::vector<std::string> wireSizes;
    std::vector<std::string> groups;
    std::vector<std::string> series;
    std::vector<std::string> systemTypes;
};

/// What a maker of rows has to hand.
struct RowMaking {
    Dice& dice;
    MadeIds& made;
    std::size_t number; ///< counts the rows of a kind; its names take it in
};

/// One kind of row that a project is made of.
struct RowKind {
    std::string_view table;
    unsigned share;  ///< rows of this kind among the sum of all shares
    bool referredTo; ///< other rows may hold its id
    nlohmann::json (*make)(const RowMaking& making);
};

/// The kinds in an order in which each finds the rows it links to made before it.
const std::vector<RowKind>& RowKinds();

} // namespace tolm::bench
