#include "Bench/ProjectGenerator.h"

#include "Bench/GeneratedRows.h"

#include <algorithm>
#include <set>

namespace tolm::bench {
namespace {

using nlohmann::json;

constexpr int kFormatVersion = 1;

/// One row and what is known of it.
struct GeneratedRow {
    const RowKind* kind;
    json row;
};

std::size_t SumOfShares() {
    std::size_t sum = 0;
    for (const auto& kind : RowKinds())
        sum += kind.share;
    return sum;
}

/// How many rows of each kind: by share, the remainder to the pipes' size tables.
std::vector<std::size_t> CountsFor(std::size_t rows) {
    constexpr std::size_t remainderGoesTo = 2;
    std::vector<std::size_t> counts;
    std::size_t given = 0;
    const std::size_t sum = std::max<std::size_t>(SumOfShares(), 1);
    for (const auto& kind : RowKinds()) {
        counts.push_back(rows * kind.share / sum);
        given += counts.back();
    }
    counts[remainderGoesTo] += rows - given;
    return counts;
}

/// A project in the making: further rows find the ids of those before them.
class Project {
public:
    explicit Project(const GeneratorSettings& settings) : m_dice(settings.seed), m_numbers(RowKinds().size(), 0) {
        const auto counts = CountsFor(settings.rows);
        for (std::size_t kind = 0; kind < counts.size(); ++kind) {
            for (std::size_t i = 0; i < counts[kind]; ++i)
                m_rows.push_back(Make(kind));
        }
    }

    GeneratedRow Make(std::size_t kind) {
        return {&RowKinds()[kind], RowKinds()[kind].make({m_dice, m_made, ++m_numbers[kind]})};
    }
    const std::vector<GeneratedRow>& Rows() const { return m_rows; }
    Dice& Random() { return m_dice; }

private:
    Dice m_dice;
    MadeIds m_made;
    std::vector<std::size_t> m_numbers;
    std::vector<GeneratedRow> m_rows;
};

void Append(json& tables, const GeneratedRow& row) {
    tables[std::string(row.kind->table)].push_back(row.row);
}

std::string IdOf(const GeneratedRow& row) {
    return row.row.at(row.row.contains("ID") ? "ID" : "fileName");
}

/// Changes what a person would change: the name.
json Edited(const GeneratedRow& row) {
    auto edited = row.row;
    for (const char* key : {"text", "name", "systemType", "Name", "LayingMode"}) {
        if (edited.contains(key)) {
            edited[key] = edited[key].get<std::string>() + " rev";
            return edited;
        }
    }
    edited["data"] = "AAEC";
    edited["length"] = 3;
    return edited;
}

/// Numbers below a bound in a random order.
std::vector<std::size_t> Shuffled(Dice& dice, std::size_t bound) {
    std::vector<std::size_t> numbers(bound);
    for (std::size_t i = 0; i < bound; ++i)
        numbers[i] = i;
    for (std::size_t i = bound; i > 1; --i)
        std::swap(numbers[i - 1], numbers[dice.Below(i)]);
    return numbers;
}

} // namespace

std::string GenerateProject(const GeneratorSettings& settings) {
    json tables = json::object();
    const Project project(settings);
    for (const auto& row : project.Rows())
        Append(tables, row);
    const auto name = "Generated, seed " + std::to_string(settings.seed);
    return json{{"format", "tolm-project"},
                {"formatVersion", kFormatVersion},
                {"id", "generated"},
                {"name", name},
                {"tables", tables}}
               .dump(1) +
           "\n";
}

std::string GenerateChange(const GeneratorSettings& settings) {
    Project project(settings);
    const auto touched = static_cast<std::size_t>(static_cast<double>(settings.rows) * settings.changedPercent / 100.0);
    auto removals = touched / 5;
    const auto additions = touched / 5;
    auto edits = touched - removals - additions;
    json add = json::object();
    json edit = json::object();
    json remove = json::object();
    for (const auto i : Shuffled(project.Random(), project.Rows().size())) {
        const auto& row = project.Rows()[i];
        if (removals > 0 && !row.kind->referredTo) {
            remove[std::string(row.kind->table)].push_back(IdOf(row));
            --removals;
        } else if (edits > 0) {
            Append(edit, {row.kind, Edited(row)});
            --edits;
        }
    }
    for (std::size_t i = 0; i < additions; ++i)
        Append(add, project.Make(project.Random().Below(RowKinds().size())));
    return json{{"format", "tolm-change"},
                {"formatVersion", kFormatVersion},
                {"description", "Generated"},
                {"add", add},
                {"edit", edit},
                {"remove", remove}}
               .dump(1) +
           "\n";
}

} // namespace tolm::bench
