// Checks every OpenGL call of the plug-in against OpenGL 1.1's rules and the contract's, without OpenGL.
#pragma once

namespace tovu::validate {

struct ElfFile;

/// Sends the plug-in's OpenGL calls here from now on. library: for the sizes of the plug-in's own arrays.
void watch_opengl(const ElfFile& library);

/// Whether the passes to come have bit 0 of their flags set.
void expect_reduced_pass(bool is_reduced);

}  // namespace tovu::validate
