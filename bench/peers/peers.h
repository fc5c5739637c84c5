// Particle systems of other engines. Each has its own source file, which is built if the engine's package is installed,
// as C++17, which the engines' headers need.
#pragma once

#include <memory>

#include "rounds.h"

namespace bench {

struct PeerNote {
    const char* peer;
    const char* does;
};

/// frames: number of frames that the systems run before they are measured.
void add_irrlicht_cases(std::vector<Case>& cases, int frames);
PeerNote irrlicht_note();

void add_ogre_cases(std::vector<Case>& cases, int frames);
PeerNote ogre_note();

void add_osg_cases(std::vector<Case>& cases, int frames);
PeerNote osg_note();

}  // namespace bench
