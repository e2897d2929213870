#pragma once

#include <unistd.h>

#include <utility>

namespace quilloservice {

/// Owns a file descriptor. Converts to false if it is empty.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number(number) {}
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }

    explicit operator bool() const { return number >= 0; }
    [[nodiscard]] int GetNumber() const { return number; }

private:
    int number;
};

}  // namespace quilloservice
