#include "support/passes.h"
#include "support/ridders.h"
#include "support/shapes.h"

#include <datumfit/curved/cone/cone_kernel.h>
#include <datumfit/curved/cylinder/cylinder_kernel.h>

#include <gtest/gtest.h>

namespace {

using namespace datumfit::internal;

template <class Kernel>
class AxisKernels : public testing::Test {};
using Kernels = testing::Types<cylinder_kernel<false>, cylinder_kernel<true>, cone_kernel<false>, cone_kernel<true>>;
TYPED_TEST_SUITE(AxisKernels, Kernels);

// An axis in general position, and axes near those of the coordinates, where frames might jump.
giVector3 const directions[] = {giVector3(0.31, -0.52, 0.79), giVector3(1e-9, 1.0, -1e-9), giVector3(-1.0, 0.0, 0.0),
                                giVector3(0.57, 0.58, -0.58)};

template <class Kernel>
mlVector placed(Kernel & kernel, giVector3 const & direction) {
    double const p[] = {0.3, 0.2, -0.1, direction.x(), direction.y(), direction.z(), 1.7, 0.6};
    mlVector x(utConvert, p, Kernel::parameters);
    kernel.place(x);
    return x;
}

template <class Kernel>
double distance_after(mlVector const & x, mlVector const & step, double const (&q)[3], double radius) {
    mlVector to(x);
    Kernel kernel;
    kernel.move(x, step, to);
    kernel.place(to);
    double d[1];
    kernel.distance(q, radius, d);
    return d[0];
}

TYPED_TEST(AxisKernels, RowsAreTheDerivativesByEachStep) {
    double const q[3] = {3.0, 1.5, 0.3};
    for (giVector3 const & direction : directions) {
        TypeParam kernel;
        mlVector const x = placed(kernel, direction);
        double row[1][TypeParam::unknowns + 1];
        kernel.row(q, 0.4, row);
        mlVector step(mlVectorZero, TypeParam::unknowns);
        EXPECT_NEAR(distance_after<TypeParam>(x, step, q, 0.4), row[0][TypeParam::unknowns], 1e-14);
        for (int k = 0; k < TypeParam::unknowns; ++k) {
            auto const along = [&](double by) {
                step.fill(0.0);
                step[k] = by;
                return distance_after<TypeParam>(x, step, q, 0.4);
            };
            EXPECT_NEAR(derivative(along, 0.0, 0.05), row[0][k], 1e-10) << k;
        }
    }
}

TYPED_TEST(AxisKernels, DifferencesUndoSmallSteps) {
    for (giVector3 const & direction : directions) {
        TypeParam kernel;
        mlVector const x = placed(kernel, direction);
        mlVector step(mlVectorDim, TypeParam::unknowns), back(step), to(x);
        for (int k = 0; k < TypeParam::unknowns; ++k) step[k] = 1e-7 * (k + 1);
        kernel.move(x, step, to);
        kernel.place(to);
        kernel.difference(x, to, back);
        for (int k = 0; k < TypeParam::unknowns; ++k) EXPECT_NEAR(step[k], back[k], 1e-12) << k;
    }
}

TYPED_TEST(AxisKernels, PassesGiveTheSameBitsInLanesOfBothKinds) {
    expect_equal_passes<TypeParam>();
}

}  // namespace
