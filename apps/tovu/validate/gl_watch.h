// Checks every OpenGL call of the plug-in against the rules of OpenGL 1.1 and of the contract. Needs no OpenGL.
#pragma once

namespace tovu::validate {

/// Checks the plug-in's OpenGL calls from now on.
void watch_opengl();

/// Says whether the next passes have bit 0 of their flags set.
void expect_reduced_pass(bool is_reduced);

}  // namespace tovu::validate
