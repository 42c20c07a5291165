#pragma once

#include <datumfit/foundation/maths/vector.h>

#include <memory>
#include <typeinfo>

namespace datumfit {
namespace internal {
class all_points_model;
class slot_model;
}  // namespace internal
}  // namespace datumfit

/// A model for mlLevenbergMarquardt: the distances of n measured points from a geometry of some parameters.
///
/// A derived class tells the distance of one point and its derivatives; the solver finds the parameters whose mean
/// square distance is least. Objects are bound to the points that they were made for and are not copied.
class mlDistanceLeastSquares {
public:
    mlDistanceLeastSquares(int n_parameters, int n_points);
    mlDistanceLeastSquares(mlDistanceLeastSquares const &) = delete;
    mlDistanceLeastSquares & operator=(mlDistanceLeastSquares const &) = delete;

    /// Makes p the current parameters. A class that derives values from them overrides this, and calls the base first.
    virtual void set_parameters(mlVector const & p);

    /// Brings p to the model's unique form, such as a direction to unit length; the current parameters stay.
    virtual void normalize_parameters(mlVector & p) const = 0;

    /// The distance of point i (not checked) from the geometry of the current parameters, and its derivative by each of
    /// them in their order; g is extended as needed.
    virtual void get_distance_and_gradient(double & d, mlVector & g, int i) const = 0;

    /// The distance alone.
    virtual void get_distance(double & d, int i) const = 0;

    /// The square of the distance computed last by either of the two. The base's squares what the model told it through
    /// remember_distance(); a model that knows the square more exactly than the distance overrides it.
    virtual double get_last_square_distance() const;

    /// The degrees of freedom of the parameter vector; the base's gives n_parameters().
    virtual int n_independent_parameters() const;

    /// Fills s with one positive scale for each parameter: the length by which the geometry moves, roughly, when that
    /// parameter grows by one. The base's gives 1 for all, right for positions and radii.
    virtual void parameter_scales(mlVector & s) const;

    virtual ~mlDistanceLeastSquares();

    int n_parameters() const { return n_parameters_; }

    /// Normalises p, makes it current and gives the sum of the squared distances; where that exceeds `bound`, any
    /// number above it. The way to compare candidates without fitting them.
    double score(mlVector & p, double bound);

    /// Normalises p, makes it current and writes the distance of each point, which has its sign.
    void distances(mlVector & p, mlVector & d);

    /// How well the points determine the geometry of parameters p, from 0 for not at all.
    ///
    /// It is the singular value number n_independent_parameters(), in descending order, of the Jacobian of the
    /// distances at p, each column divided by its parameter's scale, over the root of the number of points. Points all
    /// around a circle give 0.7071, all over a sphere 0.5774. p becomes current. Without points, or with derivatives
    /// that are not finite, 0.
    double point_distribution_quality(mlVector const & p);

protected:
    mlVector const & parameters() const { return parameters_; }
    int n_points() const { return n_points_; }

    /// Keeps d for get_last_square_distance().
    void remember_distance(double d) const { last_distance_ = d; }

    /// Flag 1 says that the distance is a norm, never negative, whose square is known more exactly than itself: the
    /// solver then reads get_last_square_distance() in place of squaring.
    void set_norm_distance(int flag) { norm_distance_ = flag; }

    /// Offers the solver a form of this model that treats all points at once, in place of the slots. It is used for
    /// objects of that class only: one derived from it is asked through what it overrides.
    void offer_all_points(std::unique_ptr<datumfit::internal::all_points_model> model, std::type_info const & of_class);

    /// What was offered for this object's class, or null.
    datumfit::internal::all_points_model * all_points() const;

private:
    friend class datumfit::internal::slot_model;
    friend class mlLevenbergMarquardt;

    template <class Action>
    auto look_at_all(mlVector & p, Action const & action);

    int n_points_;
    int n_parameters_;
    mlVector parameters_, scored_;
    int norm_distance_;
    mutable double last_distance_;
    std::unique_ptr<datumfit::internal::all_points_model> all_points_;
    std::type_info const * all_points_of_;
};
