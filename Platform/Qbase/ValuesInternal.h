#pragma once

#include "Qbase/ClassTableInternal.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace qbase {

/// One attribute's value as the file keeps it.
struct Cell {
    enum class Kind : std::uint8_t { Missing, Integer, Real, Text, Blob };
    Kind kind = Kind::Missing;
    std::int64_t integer = 0;
    double real = 0.0;
    std::string bytes; ///< of a text (UTF-8) or blob

    void Clear() { kind = Kind::Missing; }
    void Set(std::int64_t value) {
        kind = Kind::Integer;
        integer = value;
    }
    void Set(double value) {
        kind = Kind::Real;
        real = value;
    }
    void SetBytes(Kind newKind, std::string_view value) {
        kind = newKind;
        bytes = value;
    }
};

/// The record that a handle works on.
struct Record {
    enum class State : std::uint8_t {
        None, ///< there is no current record
        New,  ///< made, and not saved yet
        Stored,
        Removed, ///< deleted through this handle; still the place from which a walk goes on
    };
    State state = State::None;
    ClassTable* table = nullptr;
    sqlite3_int64 number = 0;
    std::string id;
    std::optional<unsigned> epoch; ///< of the connection when it was read under a lock
    std::vector<Cell> cells;       ///< one for each attribute of the class
    std::vector<bool> changed;     ///< the same, for what is not saved yet

    bool HasValues() const { return state == State::New || state == State::Stored; }
    bool HasChanges() const;
    /// Takes over the row on which the statement stands.
    void Load(ClassTable& from, const Statement& row);
    /// Becomes a new record without attributes.
    void Start(ClassTable& in, std::string_view newId);
    /// Binds the attribute to the statement's parameter.
    void Bind(Statement& statement, int index, std::size_t position) const;
};

/// The nearest number that the type holds.
template <class Number> Number Fitted(std::int64_t value) {
    using Limits = std::numeric_limits<Number>;
    if constexpr (sizeof(Number) < sizeof(value)) {
        if (value < std::int64_t{Limits::min()})
            return Limits::min();
        if (value > std::int64_t{Limits::max()})
            return Limits::max();
    }
    return static_cast<Number>(value);
}

/// The nearest finite number of the type; 0 for what is no number.
template <class Number> Number Finite(double value) {
    constexpr double most = std::numeric_limits<Number>::max();
    if (value != value)
        return 0;
    if (value > most)
        return std::numeric_limits<Number>::max();
    if (value < -most)
        return std::numeric_limits<Number>::lowest();
    return static_cast<Number>(value);
}

/// Numbers as the file keeps a list of them: four bytes each, the least significant first.
std::string EncodeFloats(const float* values, std::size_t count);
/// False when the bytes are no whole number of floats.
bool DecodeFloats(std::string_view bytes, std::vector<float>& values);

} // namespace qbase
