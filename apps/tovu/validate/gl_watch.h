// Checks every OpenGL call of the plug-in against OpenGL 1.1's rules and the contract's, without OpenGL.
#pragma once

namespace tovu::validate {

/// Sends the plug-in's OpenGL calls here from now on.
void watch_opengl();

/// Whether the passes to come have bit 0 of their flags set.
void expect_reduced_pass(bool is_reduced);

}  // namespace tovu::validate
