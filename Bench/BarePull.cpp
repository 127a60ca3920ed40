#include "Bench/BarePull.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace tolm::bench {
namespace {

NamedBytes BinaryFilesOf(const DatasetFiles& files) {
    NamedBytes all;
    for (const auto& entry : fs::directory_iterator(files.Binary())) {
        std::ifstream file(entry.path(), std::ios::binary);
        all.emplace_back(entry.path().filename(),
                         std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
    }
    return all;
}

void WriteBinaryFiles(const DatasetFiles& files, const NamedBytes& binary) {
    for (const auto& [name, bytes] : binary) {
        std::ofstream(files.Binary() / name, std::ios::binary | std::ios::trunc) << bytes;
        SyncFile(files.Binary() / name);
    }
}

} // namespace

BareFullPull::BareFullPull(const DatasetFiles& files)
    : m_store(ReadBareFile(files.Store().string())), m_combined(ReadBareFile(files.Combined().string())),
      m_binary(BinaryFilesOf(files)) {}

void BareFullPull::WriteTo(const DatasetFiles& files) const {
    fs::create_directories(files.Binary());
    WriteBareFile(files.Store().string(), m_store);
    WriteBareFile(files.Combined().string(), m_combined);
    WriteBinaryFiles(files, m_binary);
}

BareIncrement::BareIncrement(const DatasetFiles& before, const DatasetFiles& after)
    : m_store(DifferenceOf(before.Store().string(), after.Store().string())),
      m_combined(DifferenceOf(before.Combined().string(), after.Combined().string())), m_binary(BinaryFilesOf(after)) {
    const auto known = BinaryFilesOf(before);
    std::erase_if(m_binary, [&](const auto& file) { return std::ranges::find(known, file) != known.end(); });
}

void BareIncrement::ApplyTo(const DatasetFiles& files) const {
    ApplyBareChange(files.Store().string(), m_store);
    ApplyBareChange(files.Combined().string(), m_combined);
    WriteBinaryFiles(files, m_binary);
}

} // namespace tolm::bench
