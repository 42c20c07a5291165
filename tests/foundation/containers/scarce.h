#pragma once

#include <new>

/// An element that counts how many of it live. One made by default takes from an allowance, and throws when that is
/// used up; copying throws for the value 13.
struct Scarce {
    static inline int live = 0, allowance = 0;
    int value = -1;

    Scarce() : Scarce(allowance > 0 ? --allowance : throw std::bad_alloc()) {}
    Scarce(int v) : value(v) { ++live; }
    Scarce(Scarce const & other) : Scarce(other.value) {}
    Scarce & operator=(Scarce const & other) {
        value = other.value == 13 ? throw std::bad_alloc() : other.value;
        return *this;
    }
    ~Scarce() { --live; }
};
