// A pointer to a value that copies of it share until one of them changes it.
//
// A value itself; equal when both point at the same thing. What it points at may be read by many threads; one pointer
// object is for one thread at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace zembrastel {

template <class T>
class Shared {
public:
    Shared() = default; // points at nothing
    explicit Shared(T value) : box(new Box{.owners = 1, .value = std::move(value)}) {}
    Shared(const Shared& other) : box(other.box) {
        if (box != nullptr) box->owners.fetch_add(1, std::memory_order_relaxed);
    }
    Shared(Shared&& other) noexcept : box(std::exchange(other.box, nullptr)) {}
    Shared& operator=(Shared other) noexcept {
        std::swap(box, other.box);
        return *this;
    }
    ~Shared() {
        if (box != nullptr && box->owners.fetch_sub(1, std::memory_order_acq_rel) == 1) delete box;
    }

    [[nodiscard]] explicit operator bool() const { return box != nullptr; }
    [[nodiscard]] const T* get() const { return box == nullptr ? nullptr : &box->value; }
    const T& operator*() const { return box->value; }
    const T* operator->() const { return &box->value; }

    // For changing: an empty value where there was none, a copy where others share it. Valid until this is copied.
    [[nodiscard]] T& own() {
        if (box == nullptr) {
            *this = Shared(T());
        } else if (box->owners.load(std::memory_order_acquire) != 1) { // whoever let go of it has read it to the end
            *this = Shared(T(box->value));
        }
        return box->value;
    }

    friend bool operator==(const Shared& a, const Shared& b) { return a.box == b.box; }

private:
    struct Box {
        std::atomic<std::size_t> owners;
        T value;
    };

    Box* box = nullptr;
};

} // namespace zembrastel
