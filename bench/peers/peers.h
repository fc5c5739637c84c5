// Particle systems of other engines. Each has a source of its own, built only where its package was found, by the
// standard that its headers can bear: C++17.
#pragma once

#include <memory>

#include "rounds.h"

namespace bench {

struct PeerNote {
    const char* peer;
    const char* does;
};

/// frames: how long the systems run before they are measured.
void add_irrlicht_cases(std::vector<Case>& cases, int frames);
PeerNote irrlicht_note();

void add_ogre_cases(std::vector<Case>& cases, int frames);
PeerNote ogre_note();

void add_osg_cases(std::vector<Case>& cases, int frames);
PeerNote osg_note();

}  // namespace bench
