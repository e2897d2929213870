#pragma once

#include <unistd.h>

#include <utility>

namespace moxcore::utility {

/// Owns a file descriptor, or none, and closes it. Not for several threads at once.
class Descriptor {
public:
    /// Takes over `number`; a negative one, as a failed open(2) returns, is none.
    explicit Descriptor(int number = -1) : number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }

    /// Whether there is one.
    explicit operator bool() const { return number >= 0; }
    /// -1 when there is none.
    [[nodiscard]] int GetNumber() const { return number; }
    void Close() {
        if (number >= 0) close(std::exchange(number, -1));
    }

private:
    int number;
};

}  // namespace moxcore::utility
