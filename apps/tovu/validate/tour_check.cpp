// Checks whose findings come from the watch while the plug-in runs with many values.
#include <tovu/exchange.h>
#include "checks.h"
#include "heap_watch.h"
#include "rig.h"
#include "watch.h"

namespace tovu::validate {

void check_by_tour(const Subject& subject) {
    const auto rig = make_rig(subject);
    TourOptions options;
    options.settings = 14;
    tour(*rig, options);
    if (watch().check != "box.finite") return;
    // A smoke with a consumer that claims nothing.
    add_instance(*rig, rig->carrier);
    ParticleAttachRequest request{100, 100, 0};
    ParticleExchangeBlock* block = nullptr;
    run_frame(*rig);
    stage::dispatch(*rig->stage, rig->carrier, TOVU_REQUEST_ATTACH, &request, &block);
    if (block) watch().during = "while a consumer is attached";
    for (int frame = 0; frame < 3; ++frame) run_frame(*rig);
    if (block) stage::dispatch(*rig->stage, rig->carrier, TOVU_REQUEST_DETACH, nullptr, &block);
    watch().during.clear();
    stage::remove_geometry(*rig->stage, rig->carrier);
}

}  // namespace tovu::validate
