/* Shared by hosts and plug-ins: three floats in a row, for positions, directions and angles. C11 and C++. */
#ifndef TOVU_HOST_VECTOR3_H
#define TOVU_HOST_VECTOR3_H

/** Three contiguous floats: a pointer to `x` can be passed to OpenGL and in requests as `float[3]`. */
typedef struct Vector3 {
    float x;
    float y;
    float z;
} Vector3;

#endif
