#pragma once

#include <datumfit/align3d/plane_and_point.h>

/// A positioning record set aside, with the place that its point had before any transform moved it.
struct sqRPSData : sqPlaneAndPoint {
    /// As a record made by default, with an invalid source point.
    sqRPSData() = default;
    sqRPSData(sqPlaneAndPoint const & record, giPoint3 const & source)
        : sqPlaneAndPoint(record), source_point(source) {}

    giPoint3 source_point;
};

using sqRPSDatacoDynArr = coDynArr<sqRPSData>;
using sqRPSDatacoDynArrcoIterator = coDynArrcoIterator<sqRPSData>;
