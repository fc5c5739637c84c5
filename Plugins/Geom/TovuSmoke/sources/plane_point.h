// A point in the plane that outlines or a mask lie in.
#pragma once

namespace tovu {

struct PlanePoint {
    float across;  // x
    float along;   // y, or z in the x-z plane
};

}  // namespace tovu
