#include <datumfit/align3d/plane_and_point.h>

sqPlaneAndPoint::sqPlaneAndPoint(giPoint3 const & measured, giPoint3 const & nominal, giVector3 const & direction,
                                 int is_located, double lowest, double highest, double factor)
    : plane_point(nominal), normal(factor * direction.x(), factor * direction.y(), factor * direction.z()),
      point(measured), located(is_located), lower(lowest), upper(highest), weight(factor) {}

sqPlaneAndPoint::sqPlaneAndPoint(giPoint3 const & measured, giPlane const & plane, int is_located, double lowest,
                                 double highest, double factor)
    : sqPlaneAndPoint(measured, plane.point(), plane.normal(), is_located, lowest, highest, factor) {}
