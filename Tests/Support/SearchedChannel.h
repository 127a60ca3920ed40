#pragma once

#include <string>
#include <thread>

namespace tolmtest {

/// A channel on which a child process speaks. A thread of its own reads it to its end, so that the child never waits,
/// and what was said is searched for secrets. Used from one thread at a time.
class SearchedChannel {
public:
    /// `where` tells of a leak.
    explicit SearchedChannel(std::string where);
    /// Finishes.
    ~SearchedChannel();
    SearchedChannel(const SearchedChannel&) = delete;
    SearchedChannel& operator=(const SearchedChannel&) = delete;

    /// The child's end, which no other child inherits. It is closed here by `Begin`.
    int ChildsEnd() const { return m_to; }
    /// To be called when the child has its end.
    void Begin();
    /// Waits until the child has closed its end; what it said. Without effect when called again.
    const std::string& Finish();

private:
    void Read();

    std::string m_where;
    int m_from = -1;
    int m_to = -1;
    std::string m_said;
    std::thread m_reader;
};

} // namespace tolmtest
