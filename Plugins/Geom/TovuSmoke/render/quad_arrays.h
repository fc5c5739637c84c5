// The client arrays from which OpenGL reads quads: one set for the whole library, filled by each pass that uses it.
#pragma once

#include <cstdint>

#include "../instance/smoke_instance.h"

namespace tovu {

constexpr int32_t kFloatsPerQuad = 12;  // four corners of x, y, z
constexpr int32_t kBytesPerQuad = 16;   // four corners of red, green, blue, alpha
constexpr int32_t kShortsPerQuad = 8;   // four corners of s, t

/// s and t of the four corners in drawing order: top left, bottom left, bottom right, top right.
constexpr int16_t kQuadTexcoords[kShortsPerQuad] = {0, 32767, 0, 0, 32767, 0, 32767, 32767};

/// Corners are stored as four floats; the next corner overwrites the fourth. The last corner needs one float more.
extern float quad_vertices[kMaxParticles * kFloatsPerQuad + 1];
extern uint8_t quad_colors[kMaxParticles * kBytesPerQuad];
extern int16_t quad_texcoords[kMaxParticles * kShortsPerQuad];  // filled by `initialise_quad_arrays`, then only read

/// Fills the shared colours with 255 and the shared texture coordinates with their fixed pattern, sends the texture
/// coordinate pointer to OpenGL, and sets the z of the instance's `quad_corners` to 0. Part of building an instance.
void initialise_quad_arrays(SmokeInstance& instance);

}  // namespace tovu
