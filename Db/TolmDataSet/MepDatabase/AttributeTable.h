#pragma once

#include "MepDatabase/PackedLists.h"
#include "Qbase/Qbase.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <type_traits>

/// The attributes of a store class as a table: each row tells one attribute and how its value comes from the record
/// and goes back to it. A row without `write` is only read, a row without `read` only written.
namespace tolm {

template <class Record> struct Attribute {
    short id;
    void (*write)(CQbase& qb, short id, const Record& record);
    /// An attribute that the current record lacks leaves the value of `record`. False when the attribute is there
    /// but holds no data.
    bool (*read)(CQbase& qb, short id, Record& record);
};

template <class Record> using AttributeTable = std::span<const Attribute<Record>>;

/// Sets the attributes of the current record.
template <class Record>
void WriteAttributes(CQbase& qb, const Record& record, std::type_identity_t<AttributeTable<Record>> table) {
    for (const auto& row : table)
        if (row.write != nullptr)
            row.write(qb, row.id, record);
}

/// Reads the attributes of the current record. False when one of them is there but holds no data.
template <class Record>
bool ReadAttributes(CQbase& qb, Record& record, std::type_identity_t<AttributeTable<Record>> table) {
    bool whole = true;
    for (const auto& row : table)
        if (row.read != nullptr && !row.read(qb, row.id, record))
            whole = false;
    return whole;
}

/// Reads the id of the current record.
template <class Record> void ReadId(CQbase& qb, Record& record) {
    CWsz text;
    if (!qb.getObjId(text))
        return;
    std::wstring id = text.take();
    record.SetId(id);
}

/// A number brought into the range of another type; what is no number is 0.
template <class Target> Target ClampTo(double value) {
    if (std::isnan(value))
        return Target{};
    if (value <= static_cast<double>(std::numeric_limits<Target>::lowest()))
        return std::numeric_limits<Target>::lowest();
    if (value >= static_cast<double>(std::numeric_limits<Target>::max()))
        return std::numeric_limits<Target>::max();
    return static_cast<Target>(value);
}

/// An enumeration, a flag or an integer as the store's short.
template <class Value> short ToShort(Value value) {
    return static_cast<short>(std::clamp<std::int64_t>(
        static_cast<std::int64_t>(value), std::numeric_limits<short>::min(), std::numeric_limits<short>::max()));
}

/// Makers of rows. `Getter` and `Setter` are members of the record.
namespace attribute {

template <class Member> struct GetterOf;
template <class R, class V> struct GetterOf<V (R::*)() const> {
    using Record = R;
    using Value = std::remove_cvref_t<V>;
};
template <auto Getter> using RecordOf = typename GetterOf<decltype(Getter)>::Record;
template <auto Getter> using ValueOf = typename GetterOf<decltype(Getter)>::Value;

template <auto Getter, auto Setter, class Record = RecordOf<Getter>> constexpr Attribute<Record> Text(short id) {
    return {id, [](CQbase& qb, short at, const Record& record) { qb.setWsz(at, (record.*Getter)().c_str(), -1); },
            [](CQbase& qb, short at, Record& record) {
                CWsz text;
                if (qb.getWsz(at, text, 1)) {
                    std::wstring value = text.take();
                    (record.*Setter)(value);
                }
                return true;
            }};
}

template <auto Getter, auto Setter, class Record = RecordOf<Getter>> constexpr Attribute<Record> Short(short id) {
    return {id, [](CQbase& qb, short at, const Record& record) { qb.setShort(at, ToShort((record.*Getter)())); },
            [](CQbase& qb, short at, Record& record) {
                short value = 0;
                if (qb.getShort(at, value)) {
                    auto number = static_cast<ValueOf<Getter>>(value);
                    (record.*Setter)(number);
                }
                return true;
            }};
}

/// A flag kept as the byte 1 or 0.
template <auto Getter, auto Setter, class Record = RecordOf<Getter>> constexpr Attribute<Record> Flag(short id) {
    return {id,
            [](CQbase& qb, short at, const Record& record) {
                qb.setByte(at, static_cast<unsigned char>((record.*Getter)() ? 1 : 0));
            },
            [](CQbase& qb, short at, Record& record) {
                unsigned char value = 0;
                if (qb.getByte(at, value))
                    (record.*Setter)(value != 0);
                return true;
            }};
}

/// Any number kept as a double: a double as it is, a 64-bit time truncated when it is read.
template <auto Getter, auto Setter, class Record = RecordOf<Getter>> constexpr Attribute<Record> Double(short id) {
    return {id,
            [](CQbase& qb, short at, const Record& record) {
                qb.setDouble(at, ClampTo<double>(static_cast<double>((record.*Getter)())));
            },
            [](CQbase& qb, short at, Record& record) {
                double value = 0.0;
                if (qb.getDouble(at, value))
                    (record.*Setter)(ClampTo<ValueOf<Getter>>(value));
                return true;
            }};
}

template <auto Getter, auto Setter, class Record = RecordOf<Getter>> constexpr Attribute<Record> Float(short id) {
    return {id,
            [](CQbase& qb, short at, const Record& record) {
                qb.setFloat(at, ClampTo<float>(static_cast<double>((record.*Getter)())));
            },
            [](CQbase& qb, short at, Record& record) {
                float value = 0.0F;
                if (qb.getFloat(at, value))
                    (record.*Setter)(static_cast<ValueOf<Getter>>(value));
                return true;
            }};
}

/// A packed list; `Adder` takes one entry. An empty list removes the attribute.
template <const auto& Layout, auto Getter, auto Adder, class Record = RecordOf<Getter>>
constexpr Attribute<Record> List(short id) {
    return {id,
            [](CQbase& qb, short at, const Record& record) {
                const auto& list = (record.*Getter)();
                if (list.empty()) {
                    qb.removeAttribute(at);
                    return;
                }
                const std::vector<char> bytes = Pack(Layout, list);
                qb.setBinaryArray(at, bytes.data(), static_cast<int>(list.size()), 0);
            },
            [](CQbase& qb, short at, Record& record) {
                CByteBuffer bytes;
                int byteCount = 0;
                if (!qb.getBinaryArray(at, bytes, byteCount))
                    return true;
                ForEachEntry(Layout, bytes.data(), std::min(byteCount, bytes.dataLen()),
                             [&](const auto& entry) { (record.*Adder)(entry); });
                return bytes.dataLen() > 0;
            }};
}

template <class Record> constexpr Attribute<Record> ReadOnly(Attribute<Record> row) {
    row.write = nullptr;
    return row;
}

template <class Record> constexpr Attribute<Record> WriteOnly(Attribute<Record> row) {
    row.read = nullptr;
    return row;
}

/// The same number in every record, whatever the record says; never read.
template <class Record, short Value> constexpr Attribute<Record> Constant(short id) {
    return {id, [](CQbase& qb, short at, const Record&) { qb.setShort(at, Value); }, nullptr};
}

} // namespace attribute
} // namespace tolm
