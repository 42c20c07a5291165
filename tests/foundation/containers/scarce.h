#pragma once

#include <new>

/// An element that counts how many of it live. Making one by default throws when the allowance is used up, and so does
/// copying one whose value is unassignable.
struct Scarce {
    static inline int live = 0;
    static inline int allowance = 0;
    static constexpr int unassignable = 13;
    int value = -1;

    Scarce() {
        if (allowance == 0) {
            throw std::bad_alloc();
        }
        --allowance;
        ++live;
    }
    Scarce(int v) : value(v) { ++live; }
    Scarce(Scarce const & other) : Scarce(other.value) {}
    Scarce & operator=(Scarce const & other) {
        if (other.value == unassignable) {
            throw std::bad_alloc();
        }
        value = other.value;
        return *this;
    }
    ~Scarce() { --live; }
};
