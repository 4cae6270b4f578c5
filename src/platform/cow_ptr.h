// A copy-on-write pointer: copies share a value until one of them changes it.
//
// A value type; two pointers are equal if they point at the same object. Many threads may read the shared value; each
// pointer object is for one thread at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace zembrastel {

template <class T>
class CowPtr {
public:
    CowPtr() = default; // null
    explicit CowPtr(T value) : box(new Box{.owners = 1, .value = std::move(value)}) {}
    CowPtr(const CowPtr& other) : box(other.box) {
        if (box != nullptr) box->owners.fetch_add(1, std::memory_order_relaxed);
    }
    CowPtr(CowPtr&& other) noexcept : box(std::exchange(other.box, nullptr)) {}
    CowPtr& operator=(CowPtr other) noexcept {
        std::swap(box, other.box);
        return *this;
    }
    ~CowPtr() {
        if (box != nullptr && box->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete box;
    }

    [[nodiscard]] explicit operator bool() const { return box != nullptr; }
    [[nodiscard]] const T* get() const { return box == nullptr ? nullptr : &box->value; }
    const T& operator*() const { return box->value; }
    const T* operator->() const { return &box->value; }

    // The value for changing: a new one if this is null, a copy if others share it. Valid until this is copied.
    [[nodiscard]] T& own() {
        if (box == nullptr) {
            *this = CowPtr(T());
        } else if (box->owners.load(std::memory_order_acquire) != 1) { // acquire: other owners have finished reading
            *this = CowPtr(T(box->value));
        }
        return box->value;
    }

    friend bool operator==(const CowPtr& a, const CowPtr& b) { return a.box == b.box; }

private:
    struct Box {
        std::atomic<std::size_t> owners;
        T value;
    };

    Box* box = nullptr;
};

} // namespace zembrastel
