#pragma once

#include <unistd.h>

#include <utility>

namespace quilloauth {

/// Owns a file descriptor, or none (-1), and closes it.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number(number) {}
    ~Descriptor() {
        if (number >= 0) close(number);
    }
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }

    [[nodiscard]] bool IsOpen() const { return number >= 0; }
    [[nodiscard]] int Get() const { return number; }

private:
    int number;
};

}  // namespace quilloauth
