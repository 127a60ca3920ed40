#include "Service/JsonText.h"

#include "Service/Answer.h"

#include <nlohmann/json.hpp>

namespace tolm::service {
namespace {

using nlohmann::json;

bool RefuseDepth(int depth, json::parse_event_t event, json&) {
    const bool begins = event == json::parse_event_t::array_start || event == json::parse_event_t::object_start;
    if (begins && depth >= kDeepestJson)
        throw Refusal(Answer::IllFormed, "the JSON text is nested too deeply");
    return true;
}

} // namespace

json ParseJson(std::string_view text) {
    // The parser takes a zero byte for the end of the text.
    if (text.find('\0') != std::string_view::npos)
        throw Refusal(Answer::IllFormed, "the JSON text holds a zero byte");
    try {
        return json::parse(text.begin(), text.end(), RefuseDepth);
    } catch (const json::parse_error& error) {
        throw Refusal(Answer::IllFormed, "no well-formed JSON text in UTF-8, at byte " + std::to_string(error.byte));
    } catch (const json::out_of_range&) {
        throw Refusal(Answer::IllFormed, "the JSON text holds a number that is out of range");
    }
}

std::string QuotedJson(std::string_view text) {
    return json(std::string(text)).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string CompactJson(const json& value) {
    return value.dump();
}

} // namespace tolm::service
