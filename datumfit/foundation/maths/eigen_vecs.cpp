#include <datumfit/foundation/maths/eigen_vecs.h>

mlEigenVecs::mlEigenVecs(mlMatrix const & m) : matrix_(m) {
    clear_results();
}

mlEigenVecs::~mlEigenVecs() = default;

void mlEigenVecs::clear_results() {
    values_.become(mlVectorZero, matrix_.rows());
    vectors_ = mlMatrix(mlMatrixZero, matrix_.rows(), matrix_.rows());
    num_real_ = 0;
}

void mlEigenVecs::append_result(double value, mlSlice const & vector) {
    values_[num_real_] = value;
    vectors_.col(num_real_) = vector;
    ++num_real_;
}
