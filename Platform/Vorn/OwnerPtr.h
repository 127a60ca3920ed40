#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace vorn {

/// Owner of one object together with the function that deletes it.
///
/// The deleter travels with the pointer, so that an object is released by the library that made it. An owner is
/// moved, never copied; a moved-from owner is empty. Like a plain pointer it is not safe to use from two threads
/// at once.
template <class T> class OwnerPtr {
public:
    /// Releases the object that was handed to the owner first, before any conversion to a base.
    using Deleter = void (*)(void*);

    constexpr OwnerPtr() noexcept = default;
    constexpr OwnerPtr(std::nullptr_t) noexcept {}

    /// Takes over an object made with `new`. A null pointer gives an empty owner.
    explicit OwnerPtr(T* object) noexcept : OwnerPtr(object, [](void* p) { delete static_cast<T*>(p); }) {}

    /// Takes over `object`, to be released by `deleter`.
    OwnerPtr(T* object, Deleter deleter) noexcept
        : m_object(object), m_origin(const_cast<std::remove_const_t<T>*>(object)), m_deleter(deleter) {}

    OwnerPtr(OwnerPtr&& other) noexcept { swap(other); }

    /// Takes over from an owner of a derived object; the object is still deleted as what it was made.
    template <class U, class = std::enable_if_t<!std::is_same_v<U, T> && std::is_convertible_v<U*, T*>>>
    OwnerPtr(OwnerPtr<U>&& other) noexcept
        : m_object(other.m_object), m_origin(other.m_origin), m_deleter(other.m_deleter) {
        other.forget();
    }

    OwnerPtr(const OwnerPtr&) = delete;
    OwnerPtr& operator=(const OwnerPtr&) = delete;

    OwnerPtr& operator=(OwnerPtr&& other) noexcept {
        OwnerPtr(std::move(other)).swap(*this);
        return *this;
    }

    ~OwnerPtr() { reset(); }

    /// The object, still owned here; null when empty.
    T* get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    /// Releases the object now; the owner is empty afterwards.
    void reset() noexcept {
        void* origin = m_origin;
        const Deleter deleter = m_deleter;
        forget();
        if (origin != nullptr)
            deleter(origin);
    }

    void swap(OwnerPtr& other) noexcept {
        std::swap(m_object, other.m_object);
        std::swap(m_origin, other.m_origin);
        std::swap(m_deleter, other.m_deleter);
    }

    friend bool operator==(const OwnerPtr& owner, std::nullptr_t) noexcept { return owner.m_object == nullptr; }

private:
    template <class U> friend class OwnerPtr;

    void forget() noexcept {
        m_object = nullptr;
        m_origin = nullptr;
        m_deleter = nullptr;
    }

    T* m_object = nullptr;
    void* m_origin = nullptr;
    Deleter m_deleter = nullptr;
};

/// Makes a `T` on the heap and hands it out in an owner.
template <class T, class... Args> OwnerPtr<T> MakeOwner(Args&&... args) {
    return OwnerPtr<T>(new T(std::forward<Args>(args)...));
}

} // namespace vorn
