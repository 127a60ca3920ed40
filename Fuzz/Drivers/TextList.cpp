#include "Fuzz/Drivers/Drivers.h"

#include "Fuzz/Support/Require.h"
#include "Qbase/TextListInternal.h"

#include <sstream>
#include <string>
#include <vector>

namespace tolmfuzz {
namespace {

using Texts = std::vector<std::string>;

void RequireThereAndBack(const Texts& texts) {
    Texts read{"what stood before"};
    Require(qbase::DecodeTextList(qbase::EncodeTextList(texts), read), "a written list can be read");
    Require(read == texts, "texts come back from their list");
}

Texts Lines(const std::string& bytes) {
    Texts lines;
    std::istringstream all(bytes);
    for (std::string line; std::getline(all, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

int TryTextList(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(data, data + size);
    Texts texts{"what stood before"};
    if (qbase::DecodeTextList(bytes, texts))
        RequireThereAndBack(texts);
    else
        Require(texts == Texts{"what stood before"}, "a list that is none changes nothing");
    RequireThereAndBack(Lines(bytes));
    return 0;
}

} // namespace tolmfuzz
