#include "Fuzz/Support/Mutators.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace tolmfuzz {
namespace {

using nlohmann::json;

std::size_t Below(Random& random, std::size_t limit) {
    return limit == 0 ? 0 : random() % limit;
}

/// What no reader expects, and what readers may take for something else.
const std::vector<json>& HostileValues() {
    static const std::vector<json> values = {
        nullptr,
        true,
        0,
        -1,
        1.5,
        32768,
        -32769,
        2147483648LL,
        9223372036854775807LL,
        18446744073709551615ULL,
        1e308,
        -1e308,
        1e-320,
        "",
        "x",
        "1",
        "1e999",
        "-0x1p9",
        " 12abc",
        "..",
        "../up",
        "/abs",
        "a\\b",
        "set.db",
        std::string("a\0b", 3),
        "\xF0\x9F\x98\x80",
        std::string(300, 'x'),
        std::string(60, '\xC3') + "\xA9",
        json::array(),
        json::object(),
        json::array({nullptr}),
        json{{"ID", "x"}},
    };
    return values;
}

void Collect(json& at, std::vector<json*>& nodes) {
    nodes.push_back(&at);
    if (at.is_structured()) {
        for (auto& child : at)
            Collect(child, nodes);
    }
}

std::vector<json*> NodesOf(json& root) {
    std::vector<json*> nodes;
    Collect(root, nodes);
    return nodes;
}

json& Any(json& root, Random& random) {
    const auto nodes = NodesOf(root);
    return *nodes[Below(random, nodes.size())];
}

void ToHostile(json& root, Random& random) {
    Any(root, random) = HostileValues()[Below(random, HostileValues().size())];
}

void ToAnother(json& root, Random& random) {
    const json from = Any(root, random);
    Any(root, random) = from;
}

/// A text takes that of another place, so that ids meet.
void ToAnotherText(json& root, Random& random) {
    auto nodes = NodesOf(root);
    std::erase_if(nodes, [](const json* node) { return !node->is_string(); });
    if (nodes.empty())
        return;
    const json from = *nodes[Below(random, nodes.size())];
    *nodes[Below(random, nodes.size())] = from;
}

bool Holds(json& outer, const json& inner) {
    const auto nodes = NodesOf(outer);
    return std::ranges::find(nodes, &inner) != nodes.end();
}

void Swap(json& root, Random& random) {
    json& a = Any(root, random);
    json& b = Any(root, random);
    if (!Holds(a, b) && !Holds(b, a))
        std::swap(a, b);
}

/// An object or array that has something in it; null when there is none.
json* AnyFilled(json& root, Random& random) {
    auto nodes = NodesOf(root);
    std::erase_if(nodes, [](const json* node) { return !node->is_structured() || node->empty(); });
    return nodes.empty() ? nullptr : nodes[Below(random, nodes.size())];
}

void Remove(json& root, Random& random) {
    if (json* const from = AnyFilled(root, random))
        from->erase(std::next(from->begin(), static_cast<std::ptrdiff_t>(Below(random, from->size()))));
}

std::string AnyKey(json& root, Random& random) {
    std::vector<std::string> keys;
    for (json* node : NodesOf(root)) {
        if (node->is_object()) {
            for (const auto& item : node->items())
                keys.push_back(item.key());
        }
    }
    return keys.empty() ? std::string() : keys[Below(random, keys.size())];
}

void Double(json& root, Random& random) {
    json* const in = AnyFilled(root, random);
    if (in == nullptr)
        return;
    const json one = *std::next(in->begin(), static_cast<std::ptrdiff_t>(Below(random, in->size())));
    if (in->is_object())
        (*in)[AnyKey(root, random)] = one;
    else
        in->insert(in->end(), Below(random, 40) == 0 ? 301 : 1, one);
}

void Rename(json& root, Random& random) {
    json* const in = AnyFilled(root, random);
    if (in == nullptr || !in->is_object())
        return;
    const auto member = std::next(in->begin(), static_cast<std::ptrdiff_t>(Below(random, in->size())));
    const json kept = *member;
    in->erase(member);
    (*in)[AnyKey(root, random)] = kept;
}

void ChangeText(json& root, Random& random) {
    json& node = Any(root, random);
    if (node.is_string())
        node = ChangeBytes(node.get<std::string>(), {}, random);
    else if (node.is_number())
        node = node.get<double>() * (static_cast<double>(Below(random, 5)) - 1) + static_cast<double>(Below(random, 3));
}

constexpr std::array kChanges{ToHostile, ToAnother, ToAnotherText, Swap, Remove, Double, Rename, ChangeText};

std::string TextOf(const json& value) {
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace

std::string ChangeJson(const std::string& text, Random& random) {
    json root = json::parse(text, nullptr, false);
    if (root.is_discarded())
        return text;
    kChanges.at(Below(random, kChanges.size()))(root, random);
    return TextOf(root);
}

std::string CrossJson(const std::string& text, const std::string& other, Random& random) {
    json root = json::parse(text, nullptr, false);
    json from = json::parse(other, nullptr, false);
    if (root.is_discarded() || from.is_discarded())
        return text;
    Any(root, random) = Any(from, random);
    return TextOf(root);
}

std::string ChangeBytes(const std::string& bytes, const std::vector<std::string>& others, Random& random) {
    std::string changed = bytes;
    const std::size_t at = Below(random, changed.size() + 1);
    const std::size_t length = std::min(Below(random, 9), changed.size() - at);
    switch (Below(random, others.empty() ? 4 : 5)) {
    case 0:
        if (at < changed.size())
            changed[at] = static_cast<char>(changed[at] ^ (1 << Below(random, 8)));
        break;
    case 1:
        changed.erase(at, length);
        break;
    case 2:
        changed.insert(at, changed.substr(at, length));
        break;
    case 3:
        changed.insert(at, 1 + Below(random, 4), static_cast<char>(random()));
        break;
    default: {
        const std::string& other = others[Below(random, others.size())];
        const std::size_t from = Below(random, other.size() + 1);
        changed.insert(at, other.substr(from, Below(random, 64)));
        break;
    }
    }
    return changed;
}

} // namespace tolmfuzz
