#include "Qbase/Qbase.h"

#include "Qbase/QbaseImplInternal.h"
#include "Qbase/TextListInternal.h"

#include "Vorn/Text.h"

#include <cstring>
#include <limits>
#include <string_view>

using qbase::AttributeType;
using qbase::Cell;

namespace {

/// Hands the stored value to `take`, which says whether it is of the attribute's kind.
template <class Impl, class Take> bool Read(Impl& impl, short attributeId, AttributeType type, Take take) {
    return impl.Run([&] {
        typename Impl::Value value;
        const auto error = impl.Get(attributeId, type, value);
        if (error != QbaseError::None)
            return error;
        return take(*value.cell, value.entrySize) ? QbaseError::None : QbaseError::NotAStore;
    });
}

/// Hands the place of the value to `put`.
template <class Impl, class Put> bool Write(Impl& impl, short attributeId, AttributeType type, Put put) {
    return impl.Run([&] {
        typename Impl::NewValue value;
        const auto error = impl.Change(attributeId, type, value);
        if (error == QbaseError::None)
            put(*value.cell, value.entrySize);
        return error;
    });
}

template <class Impl> bool Refuse(Impl& impl) {
    return impl.Run([] { return QbaseError::BadArgument; });
}

template <class Number> bool TakeInteger(const Cell& cell, Number& value) {
    if (cell.kind != Cell::Kind::Integer)
        return false;
    value = qbase::Fitted<Number>(cell.integer);
    return true;
}

template <class Number> bool TakeReal(const Cell& cell, Number& value) {
    if (cell.kind != Cell::Kind::Real && cell.kind != Cell::Kind::Integer)
        return false;
    value = qbase::Finite<Number>(cell.kind == Cell::Kind::Real ? cell.real : static_cast<double>(cell.integer));
    return true;
}

bool TakeTexts(const Cell& cell, CWszArray& texts, int maxCount) {
    std::vector<std::string> entries;
    if (cell.kind != Cell::Kind::Text || !qbase::DecodeTextList(cell.bytes, entries))
        return false;
    texts.reset();
    for (const auto& entry : entries) {
        if (texts.length() >= maxCount)
            break;
        texts.append(CWsz(vorn::StringUtil::ToWString(entry)));
    }
    return true;
}

bool TakeFloats(const Cell& cell, CFloatArray& values) {
    std::vector<float> entries;
    if (cell.kind != Cell::Kind::Blob || !qbase::DecodeFloats(cell.bytes, entries))
        return false;
    values.reset();
    for (const float entry : entries)
        values.append(entry);
    return true;
}

bool TakeBinary(const Cell& cell, std::size_t size, void* bytes) {
    if (cell.kind != Cell::Kind::Blob || cell.bytes.size() != size)
        return false;
    std::memcpy(bytes, cell.bytes.data(), size);
    return true;
}

} // namespace

// --- getters -------------------------------------------------------------------------------------------------------

bool CQbase::getObjId(CWsz& id) {
    return m_impl->Run([&] { return m_impl->ObjectId(id); });
}

bool CQbase::getByte(short attributeId, unsigned char& value) {
    return Read(*m_impl, attributeId, AttributeType::Byte,
                [&](const Cell& cell, std::size_t) { return TakeInteger(cell, value); });
}

bool CQbase::getShort(short attributeId, short& value) {
    return Read(*m_impl, attributeId, AttributeType::Short,
                [&](const Cell& cell, std::size_t) { return TakeInteger(cell, value); });
}

bool CQbase::getLong(short attributeId, long& value) {
    return Read(*m_impl, attributeId, AttributeType::Long,
                [&](const Cell& cell, std::size_t) { return TakeInteger(cell, value); });
}

bool CQbase::getFloat(short attributeId, float& value) {
    return Read(*m_impl, attributeId, AttributeType::Float,
                [&](const Cell& cell, std::size_t) { return TakeReal(cell, value); });
}

bool CQbase::getDouble(short attributeId, double& value) {
    return Read(*m_impl, attributeId, AttributeType::Double,
                [&](const Cell& cell, std::size_t) { return TakeReal(cell, value); });
}

bool CQbase::getWsz(short attributeId, CWsz& text, int) {
    return Read(*m_impl, attributeId, AttributeType::Text, [&](const Cell& cell, std::size_t) {
        if (cell.kind != Cell::Kind::Text)
            return false;
        text = CWsz(vorn::StringUtil::ToWString(cell.bytes));
        return true;
    });
}

bool CQbase::getWszArray(short attributeId, CWszArray& texts, int maxCount, int) {
    return Read(*m_impl, attributeId, AttributeType::TextArray,
                [&](const Cell& cell, std::size_t) { return TakeTexts(cell, texts, maxCount); });
}

bool CQbase::getFloatArray(short attributeId, CFloatArray& values) {
    return Read(*m_impl, attributeId, AttributeType::FloatArray,
                [&](const Cell& cell, std::size_t) { return TakeFloats(cell, values); });
}

bool CQbase::getBinary(short attributeId, void* bytes) {
    if (bytes == nullptr)
        return Refuse(*m_impl);
    return Read(*m_impl, attributeId, AttributeType::Binary,
                [&](const Cell& cell, std::size_t size) { return TakeBinary(cell, size, bytes); });
}

bool CQbase::getBinaryArray(short attributeId, CByteBuffer& bytes, int& byteCount) {
    return Read(*m_impl, attributeId, AttributeType::BinaryArray, [&](const Cell& cell, std::size_t) {
        if (cell.kind != Cell::Kind::Blob)
            return false;
        bytes.assign(cell.bytes.data(), cell.bytes.size());
        byteCount = bytes.dataLen();
        return true;
    });
}

// --- setters -------------------------------------------------------------------------------------------------------

bool CQbase::setByte(short attributeId, unsigned char value) {
    return Write(*m_impl, attributeId, AttributeType::Byte,
                 [&](Cell& cell, std::size_t) { cell.Set(std::int64_t{value}); });
}

bool CQbase::setShort(short attributeId, short value) {
    return Write(*m_impl, attributeId, AttributeType::Short,
                 [&](Cell& cell, std::size_t) { cell.Set(std::int64_t{value}); });
}

bool CQbase::setLong(short attributeId, long value) {
    return Write(*m_impl, attributeId, AttributeType::Long,
                 [&](Cell& cell, std::size_t) { cell.Set(std::int64_t{value}); });
}

bool CQbase::setFloat(short attributeId, float value) {
    return Write(*m_impl, attributeId, AttributeType::Float,
                 [&](Cell& cell, std::size_t) { cell.Set(double{qbase::Finite<float>(double{value})}); });
}

bool CQbase::setDouble(short attributeId, double value) {
    return Write(*m_impl, attributeId, AttributeType::Double,
                 [&](Cell& cell, std::size_t) { cell.Set(qbase::Finite<double>(value)); });
}

bool CQbase::setWsz(short attributeId, const wchar_t* text, int length) {
    if (text == nullptr || length < -1)
        return Refuse(*m_impl);
    const auto whole = length < 0 ? std::wstring_view(text) : std::wstring_view(text, static_cast<std::size_t>(length));
    return Write(*m_impl, attributeId, AttributeType::Text,
                 [&](Cell& cell, std::size_t) { cell.SetBytes(Cell::Kind::Text, vorn::StringUtil::ToString(whole)); });
}

bool CQbase::setWszArray(short attributeId, const CWszArray& texts, int) {
    return Write(*m_impl, attributeId, AttributeType::TextArray, [&](Cell& cell, std::size_t) {
        std::vector<std::string> entries;
        for (int i = 0; i < texts.length(); ++i)
            entries.push_back(vorn::StringUtil::ToString(texts.wszAt(i).str()));
        cell.SetBytes(Cell::Kind::Text, qbase::EncodeTextList(entries));
    });
}

bool CQbase::setFloatArray(short attributeId, const float* values, int count) {
    if (count < 0 || (values == nullptr && count > 0))
        return Refuse(*m_impl);
    return Write(*m_impl, attributeId, AttributeType::FloatArray, [&](Cell& cell, std::size_t) {
        cell.SetBytes(Cell::Kind::Blob, qbase::EncodeFloats(values, static_cast<std::size_t>(count)));
    });
}

bool CQbase::setBinary(short attributeId, const void* bytes, short) {
    if (bytes == nullptr)
        return Refuse(*m_impl);
    return Write(*m_impl, attributeId, AttributeType::Binary, [&](Cell& cell, std::size_t size) {
        cell.SetBytes(Cell::Kind::Blob, std::string_view(static_cast<const char*>(bytes), size));
    });
}

bool CQbase::setBinaryArray(short attributeId, const void* bytes, int count, short) {
    if (count < 0 || (bytes == nullptr && count > 0))
        return Refuse(*m_impl);
    return Write(*m_impl, attributeId, AttributeType::BinaryArray, [&](Cell& cell, std::size_t entrySize) {
        const std::size_t size = entrySize * static_cast<std::size_t>(count);
        const char* first = size > 0 ? static_cast<const char*>(bytes) : "";
        cell.SetBytes(Cell::Kind::Blob, std::string_view(first, size));
    });
}
