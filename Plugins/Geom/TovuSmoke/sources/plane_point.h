// A point in the plane of outlines or of a mask.
#pragma once

namespace tovu {

struct PlanePoint {
    float across;  // x
    float along;   // y, or z in the x-z plane
};

}  // namespace tovu
