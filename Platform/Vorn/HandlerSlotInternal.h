#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace vorn {

/// Holds a replaceable callback. A caller works on its own reference, so that a handler may be replaced, by itself
/// even, while it runs. Any thread may call it.
template <class Handler> class HandlerSlot {
public:
    /// An empty handler clears the slot.
    void Set(Handler handler) {
        auto next = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
        const std::lock_guard lock(m_mutex);
        m_handler.swap(next);
    }

    /// The handler; null when none is set.
    std::shared_ptr<const Handler> Get() const {
        const std::lock_guard lock(m_mutex);
        return m_handler;
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Handler> m_handler;
};

} // namespace vorn
