#pragma once

#include <unistd.h>
#include <utility>

namespace orloview {

/// A file descriptor, or none (-1), that is closed at its end.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : fNumber(number) {}
    Descriptor(Descriptor&& other) noexcept : fNumber(std::exchange(other.fNumber, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fNumber, other.fNumber);
        return *this;
    }
    ~Descriptor() { close(); }

    int number() const { return fNumber; }
    void close() {
        if (fNumber >= 0)
            ::close(fNumber);
        fNumber = -1;
    }

private:
    int fNumber;
};

} // namespace orloview
