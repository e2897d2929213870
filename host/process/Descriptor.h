#pragma once

#include <unistd.h>

#include <utility>

namespace quillohost {

/// A file descriptor, closed with this object; -1 for none.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }

    [[nodiscard]] int Number() const { return number; }
    void Close() {
        if (number >= 0) close(std::exchange(number, -1));
    }

private:
    int number;
};

}  // namespace quillohost
