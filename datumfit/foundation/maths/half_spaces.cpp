#include <datumfit/foundation/maths/half_spaces.h>

#include <algorithm>
#include <cmath>

namespace datumfit {
namespace internal {

namespace {

// Directions come with a rounding of some 1e-16, so a row that should vanish has a few times that of its fellows'
// length.
constexpr double vanishing_share = 1e-14;

// Values beyond stand for no bound, or for one that no x reaches. Squares of those within are finite.
constexpr double out_of_reach = 1e100;

// Squares of the numbers of a shorter row lose their digits.
constexpr double shortest_length = 1e-150;

double length(double const * row, int n) {
    double sum = 0.0;
    for (int j = 0; j < n; ++j) sum += row[j] * row[j];
    return std::sqrt(sum);
}

}  // namespace

half_spaces::half_spaces(mlMatrix const & K, mlVector const & d) : rows_(K.rows()), unknowns_(K.cols()) {
    int const padded = (rows_ + block_rows - 1) / block_rows * block_rows;
    normals_.assign(static_cast<std::size_t>(place(padded)), 0.0);
    values_.assign(static_cast<std::size_t>(padded), -HUGE_VAL);
    std::vector<double> lengths;
    lengths.reserve(static_cast<std::size_t>(rows_));
    double shortest = shortest_length;
    for (int i = 0; i < rows_; ++i) {
        lengths.push_back(length(K.row_data(i), unknowns_));
        shortest = std::max(shortest, vanishing_share * lengths.back());
    }
    for (int i = 0; i < rows_; ++i) {
        bool const vanishes = lengths.data()[i] < shortest;
        double const scale = vanishes ? 1.0 : 1.0 / lengths.data()[i];
        double const v = scale * d[i];
        if (v > (vanishes ? negligible_gap : out_of_reach)) hopeless_.push_back(i);
        if (vanishes || std::abs(v) > out_of_reach) continue;
        values_.data()[i] = v;
        double * const normal = normals_.data() + place(i);
        for (int j = 0; j < unknowns_; ++j) normal[j * block_rows] = scale * K(i, j);
    }
}

void half_spaces::copy_normal(int i, double * n) const {
    double const * const normal = normals_.data() + place(i);
    for (int j = 0; j < unknowns_; ++j) n[j] = normal[j * block_rows];
}

double half_spaces::product(int i, double const * x) const {
    double const * const normal = normals_.data() + place(i);
    double sum = 0.0;
    for (int j = 0; j < unknowns_; ++j) sum += normal[j * block_rows] * x[j];
    return sum;
}

half_spaces::reading half_spaces::worst(std::vector<double> const & values, double const * x) const {
    reading found = {-1, -HUGE_VAL};
    double const * normal = normals_.data();
    for (int first = 0; first < rows_; first += block_rows) {
        double violation[block_rows];
        std::copy_n(values.data() + first, block_rows, violation);
        for (int j = 0; j < unknowns_; ++j, normal += block_rows) {
            for (int i = 0; i < block_rows; ++i) violation[i] -= normal[i] * x[j];
        }
        double const * const greatest = std::max_element(violation, violation + block_rows);
        if (*greatest > found.violation) found = {first + static_cast<int>(greatest - violation), *greatest};
    }
    return found;
}

}  // namespace internal
}  // namespace datumfit
