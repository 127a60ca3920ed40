#include "Support/SearchedChannel.h"

#include "Support/Canary.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace tolmtest {

SearchedChannel::SearchedChannel(std::string where) : m_where(std::move(where)) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    m_from = ends[0];
    m_to = ends[1];
}

SearchedChannel::~SearchedChannel() {
    if (m_to >= 0)
        close(m_to);
    Finish();
    close(m_from);
}

void SearchedChannel::Begin() {
    close(std::exchange(m_to, -1));
    m_reader = std::thread([this] { Read(); });
}

const std::string& SearchedChannel::Finish() {
    if (m_reader.joinable()) {
        m_reader.join();
        SearchForSecrets(m_where, std::string_view(m_said));
    }
    return m_said;
}

void SearchedChannel::Read() {
    std::array<char, 8192> bytes{};
    for (;;) {
        const auto count = read(m_from, bytes.data(), bytes.size());
        if (count > 0)
            m_said.append(bytes.data(), static_cast<std::size_t>(count));
        else if (count == 0 || errno != EINTR)
            return;
    }
}

} // namespace tolmtest
