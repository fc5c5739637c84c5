#include "peers.h"

namespace bench {

void add_peer_cases([[maybe_unused]] std::vector<Case>& cases, [[maybe_unused]] int frames) {
#ifdef TOVU_BENCH_IRRLICHT
    add_irrlicht_cases(cases, frames);
#endif
#ifdef TOVU_BENCH_OGRE
    add_ogre_cases(cases, frames);
#endif
#ifdef TOVU_BENCH_OSG
    add_osg_cases(cases, frames);
#endif
}

std::vector<PeerNote> peer_notes() {
    std::vector<PeerNote> notes;
#ifdef TOVU_BENCH_IRRLICHT
    notes.push_back(irrlicht_note());
#endif
#ifdef TOVU_BENCH_OGRE
    notes.push_back(ogre_note());
#endif
#ifdef TOVU_BENCH_OSG
    notes.push_back(osg_note());
#endif
    return notes;
}

}  // namespace bench
