#include "quad_arrays.h"

#include <cstring>

#include "../host/opengl.h"

namespace tovu {

alignas(64) float quad_vertices[kMaxParticles * kFloatsPerQuad + 1];
alignas(64) uint8_t quad_colors[kMaxParticles * kBytesPerQuad];
alignas(64) int16_t quad_texcoords[kMaxParticles * kShortsPerQuad];

void initialise_quad_arrays(SmokeInstance& instance) {
    std::memset(quad_colors, 0xFF, sizeof(quad_colors));
    for (int32_t quad = 0; quad < kMaxParticles; ++quad)
        std::memcpy(quad_texcoords + quad * kShortsPerQuad, kQuadTexcoords, sizeof(kQuadTexcoords));
    ormixGL_glTexCoordPointer(2, GL_SHORT, 0, quad_texcoords);
    for (Vector3& corner : instance.quad_corners) corner.z = 0.0f;
}

}  // namespace tovu
