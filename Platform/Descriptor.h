#pragma once

#include <unistd.h>

namespace mossbit {

/// An open file, closed with its owner. Holds what `open` returned, negative if that failed.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }

    explicit operator bool() const { return m_number >= 0; }
    int number() const { return m_number; }

private:
    const int m_number;
};

} // namespace mossbit
