#include "MepDatabase/IngestRecord.h"

#include "MepDatabase/JsonRead.h"
#include "MepDatabase/WireText.h"
#include "Vorn/Guid.h"

#include <stdexcept>

namespace tolm::ingest {
namespace {

void WriteField(CQbase& qb, const Field& field, const web::json::value& value) {
    switch (field.kind) {
    case FieldKind::Text:
        SetText(qb, field.attribute, WideText(value));
        break;
    case FieldKind::Short:
        qb.setShort(field.attribute, jsonread::ShortOf(value));
        break;
    case FieldKind::Float:
        qb.setFloat(field.attribute, FiniteFloat(value));
        break;
    case FieldKind::Time:
        qb.setDouble(field.attribute, static_cast<double>(jsonread::UInt64Of(value)));
        break;
    }
}

} // namespace

void WriteFields(CQbase& qb, std::span<const Field> fields, const web::json::object& row) {
    for (const Field& field : fields) {
        if (field.presence == Presence::Required)
            WriteField(qb, field, row.at(field.key));
        else if (const web::json::value* value = jsonread::Find(row, field.key))
            WriteField(qb, field, *value);
    }
}

bool FetchOrCreate(CQbase& qb, const char* classCode, const std::wstring& id) {
    const bool exists = qb.existRec(classCode, id);
    if (!(exists ? qb.fetchEqualRec(classCode, id) : qb.createRec(classCode, id)))
        throw std::runtime_error("The record can neither be found nor be made");
    return !exists;
}

void Save(CQbase& qb) {
    if (!qb.saveRec())
        throw std::runtime_error("The record cannot be stored");
}

void SetText(CQbase& qb, short attribute, const std::wstring& text) {
    qb.setWsz(attribute, text.c_str(), -1);
}

std::wstring GetText(CQbase& qb, short attribute) {
    CWsz text;
    qb.getWsz(attribute, text, 1);
    return text.str();
}

std::wstring NewId() {
    return vorn::GuidUtils::ToString(vorn::GuidUtils::Generate(), false, false);
}

void RequireRoom(std::size_t rowCount) {
    if (rowCount > kPackedListCapacity)
        throw std::length_error("A list has more than 300 entries");
}

} // namespace tolm::ingest
