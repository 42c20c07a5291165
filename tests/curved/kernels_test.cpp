#include "support/passes.h"
#include "support/ridders.h"
#include "support/shapes.h"

#include <datumfit/curved/cone/cone_kernel.h>
#include <datumfit/curved/cylinder/cylinder_kernel.h>
#include <datumfit/curved/torus/torus_kernel.h>

#include <gtest/gtest.h>

namespace {

using namespace datumfit::internal;

template <class Kernel>
class AxisKernels : public testing::Test {};
using Kernels = testing::Types<cylinder_kernel<false>, cylinder_kernel<true>, cone_kernel<false>, cone_kernel<true>,
                               torus_kernel<false>, torus_kernel<true>>;
TYPED_TEST_SUITE(AxisKernels, Kernels);

// An axis in general position, and axes near those of the coordinates, where frames might jump.
giVector3 const directions[] = {giVector3(0.31, -0.52, 0.79), giVector3(1e-9, 1.0, -1e-9), giVector3(-1.0, 0.0, 0.0),
                                giVector3(0.57, 0.58, -0.58)};

// A surface around the points, and one that they see from near.
double const reaches[] = {0.0, 0.8};

template <class Kernel>
void set_reach(Kernel & kernel, double reach) {
    if constexpr (Kernel::sees_reach) kernel.reach = reach;
}

template <class Kernel>
mlVector placed(Kernel & kernel, giVector3 const & direction, double reach) {
    giVector3 const side = giUnitVec3(direction).any_normal();
    double const r = 1.7, d = reach > 0.0 ? 1.9 : 0.3;
    double const p[] = {d * side.x(), d * side.y(), d * side.z(), direction.x(), direction.y(), direction.z(), r, 0.6};
    mlVector x(utConvert, p, Kernel::parameters);
    set_reach(kernel, reach);
    kernel.place(x);
    return x;
}

template <class Kernel>
void row_of(Kernel const & kernel, double const (&q)[3], double (&row)[1][Kernel::unknowns + 1]) {
    if constexpr (Kernel::sees_reach) {
        if (kernel.is_near()) return kernel.near_row(q, 0.4, row);
    }
    kernel.row(q, 0.4, row);
}

template <class Kernel>
double distance_after(mlVector const & x, mlVector const & step, double reach, double const (&q)[3], double radius) {
    mlVector to(x);
    Kernel kernel;
    set_reach(kernel, reach);
    kernel.move(x, step, to);
    kernel.place(to);
    double d[1];
    kernel.distance(q, radius, d);
    return d[0];
}

TYPED_TEST(AxisKernels, RowsAreTheDerivativesByEachStep) {
    double const q[3] = {0.6, 0.5, 0.3};
    for (double const reach : reaches) {
        for (giVector3 const & direction : directions) {
            TypeParam kernel;
            mlVector const x = placed(kernel, direction, reach);
            double row[1][TypeParam::unknowns + 1];
            row_of(kernel, q, row);
            mlVector step(mlVectorZero, TypeParam::unknowns);
            EXPECT_NEAR(distance_after<TypeParam>(x, step, reach, q, 0.4), row[0][TypeParam::unknowns], 1e-14);
            if constexpr (TypeParam::sees_reach) {
                EXPECT_EQ(reach > 0.0, kernel.section.near);
            }
            for (int k = 0; k < TypeParam::unknowns; ++k) {
                auto const along = [&](double by) {
                    step.fill(0.0);
                    step[k] = by;
                    return distance_after<TypeParam>(x, step, reach, q, 0.4);
                };
                EXPECT_NEAR(derivative(along, 0.0, 0.01), row[0][k], 1e-9) << k << " reach " << reach;
            }
        }
    }
}

TYPED_TEST(AxisKernels, DifferencesUndoSmallSteps) {
    for (double const reach : reaches) {
        for (giVector3 const & direction : directions) {
            TypeParam kernel;
            mlVector const x = placed(kernel, direction, reach);
            mlVector step(mlVectorDim, TypeParam::unknowns), back(step), to(x);
            for (int k = 0; k < TypeParam::unknowns; ++k) step[k] = 1e-7 * (k + 1);
            kernel.move(x, step, to);
            kernel.place(to);
            kernel.difference(x, to, back);
            for (int k = 0; k < TypeParam::unknowns; ++k) EXPECT_NEAR(step[k], back[k], 1e-12) << k;
        }
    }
}

// Through a plane: the surface keeps its place and slope, and bends to the other side.
TEST(CylinderKernel, StepsLeadThroughThePlaneToTheOtherSide) {
    double const reach = 0.8, centre[3] = {0.0, 0.0, 0.0}, aside[3] = {0.0, 1e-3, 0.0};
    using kernel_type = cylinder_kernel<false>;
    kernel_type kernel;
    mlVector const x = placed(kernel, giVector3(1.0, 0.0, 0.0), reach);
    mlVector step(mlVectorZero, kernel_type::unknowns);
    double const before = distance_after<kernel_type>(x, step, reach, centre, 0.0);
    double const bend = distance_after<kernel_type>(x, step, reach, aside, 0.0) - before;
    step[4] = reach * reach / kernel.section.radius;  // twice the sagitta
    EXPECT_NEAR(-before, distance_after<kernel_type>(x, step, reach, centre, 0.0), 1e-14);
    // The origin lies off the surface, and nearer to the one axis than to the other.
    EXPECT_NEAR(1.0, (distance_after<kernel_type>(x, step, reach, aside, 0.0) + before) / bend, 0.3);
}

TYPED_TEST(AxisKernels, PassesGiveTheSameBitsInLanesOfBothKinds) {
    expect_equal_passes<TypeParam>();
}

}  // namespace
