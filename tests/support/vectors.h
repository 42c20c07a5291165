#pragma once

#include <datumfit/foundation/maths/vector.h>

#include <vector>

inline mlVector vector_of(std::vector<double> const & x) {
    return mlVector(utConvert, x.data(), static_cast<int>(x.size()));
}
