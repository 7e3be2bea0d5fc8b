#pragma once

#include <orvaspace/ustr.h>

#include <cstdint>

/// Where an object lies in the drawings of the project, for zooming to it.
struct ObjPosInDwg {
    ustr_pre<260> drawing;     ///< path of the drawing; empty: the current drawing
    std::uint64_t handle = 0;  ///< the object's handle in its drawing, 0 for none
    double x = 0;              ///< mm, in the drawing's world coordinates
    double y = 0;
    double z = 0;
    bool hasPoint = false;  ///< x, y and z are meant

    /// Whether there is a place to zoom to.
    bool IsSet() const { return handle != 0 || hasPoint; }
    bool operator==(const ObjPosInDwg&) const = default;
};
