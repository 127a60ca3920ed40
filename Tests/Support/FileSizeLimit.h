#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstdint>

namespace tolmtest {

/// While it lives, no file of this process can be written beyond `bytes`: what a full disk looks like to a store.
class FileSizeLimit {
public:
    explicit FileSizeLimit(std::uint64_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

} // namespace tolmtest
