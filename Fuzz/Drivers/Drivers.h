#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// What is tried with inputs that nobody vouches for. Each driver holds its part of the project to properties that
/// every input leaves true, and throws `BrokenProperty` where one does not hold; sanitizers see the rest. They return
/// 0, as libFuzzer wants it. One thread at a time runs them.
namespace tolmfuzz {

/// Base64 of the library and of the service: any bytes there and back, any text.
int TryBase64(const std::uint8_t* data, std::size_t size);
/// Lists packed into one attribute: the first byte says which, the others are its bytes.
int TryPackedLists(const std::uint8_t* data, std::size_t size);
/// The text of a list of texts.
int TryTextList(const std::uint8_t* data, std::size_t size);
/// The text of a definition file; where it is one, a store is made of it.
int TryDefinition(const std::uint8_t* data, std::size_t size);
/// What is done to the file of a store before it is read and written: see DamagedStore.cpp.
int TryDamagedStore(const std::uint8_t* data, std::size_t size);
/// An increment of the cloud, or several one after the other, applied to a store as a refresh does it:
/// {"localVersion": 1, "recover": ["id"], "add": {...}, "del": {...}}.
int TryIngest(const std::uint8_t* data, std::size_t size);
/// The same increments merged into a store with local changes.
int TryMerge(const std::uint8_t* data, std::size_t size);
/// Requests to the service, one after the other: {"method", "path", "user", "token", "body"}.
int TryServiceRequests(const std::uint8_t* data, std::size_t size);

enum class InputKind { Bytes, Json };

struct Driver {
    std::string_view name; ///< also of its folder under Corpus and Findings
    int (*run)(const std::uint8_t* data, std::size_t size);
    InputKind kind;
    int shortRuns; ///< with changed inputs, in the tests
};

inline constexpr Driver kDrivers[] = {
    {"Base64", TryBase64, InputKind::Bytes, 2000},
    {"PackedLists", TryPackedLists, InputKind::Bytes, 2000},
    {"TextList", TryTextList, InputKind::Bytes, 2000},
    {"Definition", TryDefinition, InputKind::Bytes, 400},
    {"DamagedStore", TryDamagedStore, InputKind::Bytes, 60},
    {"Ingest", TryIngest, InputKind::Json, 100},
    {"Merge", TryMerge, InputKind::Json, 100},
    {"ServiceRequests", TryServiceRequests, InputKind::Json, 200},
};

} // namespace tolmfuzz
