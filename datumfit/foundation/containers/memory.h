#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace datumfit {
namespace internal {

/// Runs a step that copies elements; 0 when an element threw on the way, as one does whose own memory runs out, else 1.
/// It is part of its caller, so that the check costs nothing where no element throws.
template <class Step>
[[gnu::always_inline]] inline int survives(Step const & step) {
    try {
        step();
        return 1;
    } catch (...) {
        return 0;
    }
}

/// `count` default-constructed elements; null for a count below 1, or without memory for them and what they hold.
template <class T>
std::unique_ptr<T[]> new_elements(int count) {
    T * elements = nullptr;
    if (count > 0) {
        survives([&] { elements = new (std::nothrow) T[static_cast<std::size_t>(count)]; });
    }
    return std::unique_ptr<T[]>(elements);
}

}  // namespace internal
}  // namespace datumfit
