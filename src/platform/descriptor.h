// An owned file descriptor, closed by the destructor. The program opens every descriptor with close-on-exec.
#pragma once

#include <unistd.h>
#include <utility>

namespace zembrastel {

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int owned) : number(owned) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            close();
            number = std::exchange(other.number, -1);
        }
        return *this;
    }
    ~Descriptor() { close(); }

    [[nodiscard]] int get() const { return number; }
    [[nodiscard]] explicit operator bool() const { return number >= 0; }

    // Ignores a failed close: data that must be on the disk was flushed before.
    void close() noexcept {
        if (number >= 0) ::close(std::exchange(number, -1));
    }

private:
    int number = -1;
};

} // namespace zembrastel
