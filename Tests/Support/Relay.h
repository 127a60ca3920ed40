#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace tolmtest {

/// Passes connections on to a port of this machine, and goes away when the test wants it to, as a service or a network
/// does: in the middle of an answer, for good. Any thread may call it; the destructor ends all connections.
class Relay {
public:
    explicit Relay(int targetPort);
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    /// "http://127.0.0.1:port"
    std::wstring Address() const;

    /// Lets so many bytes of the answers on this connection through (the first one is 1); then that connection is cut
    /// and no further one is taken. Without bytes the request does not reach the target.
    void GoAway(std::size_t connection, std::size_t answerBytes);

    /// Loses one answer: that to the next request whose line has this text. The request reaches the target, which does
    /// what it is asked; then the connection is cut before the first byte of the answer. All others pass.
    void LoseAnswerTo(const std::string& text);
    /// Whether the answer that was to be lost is lost.
    bool HasLost() const;

    /// Bytes that the target answered on a connection; 0 for one that was not made.
    std::size_t AnswerBytes(std::size_t connection) const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace tolmtest
