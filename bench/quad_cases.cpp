#include <benchmark/benchmark.h>
#include <tovu/opengl.h>

#include "cases.h"
#include "plain_frame.h"
#include "plain_quads.h"
#include "render/draw_list.h"
#include "render/quad_arrays.h"
#include "render/quads.h"

namespace bench {
namespace {

constexpr Features kFlat{.sort = true, .arrays = true};
constexpr Features kTurnedFacing{.sort = true, .arrays = true, .rotated = true, .facing = true};
constexpr Features kImmediateFlat{.sort = true};
constexpr Features kImmediateTurned{.sort = true, .rotated = true, .facing = true};

using Build = void (*)(tovu::SmokeInstance&);

// Collecting and sorting the list is not measured. The draw mode is set here, since no step runs.
Case quad_case(Scene& scene, const char* name, int32_t count, Features features, bool world, Build build) {
    return {
        case_name(name, count), static_cast<double>(count), [&scene, count, features, world, build](Stopwatch& watch) {
            Smoke& smoke = scene.long_run(count);
            set_features(smoke, features);
            smoke.block->draw_mode =
                tovu::draw_mode_of(static_cast<tovu::Reference>(world), static_cast<tovu::Billboard>(features.facing));
            tovu::collect_draw_list(*smoke.block);
            watch.start();
            build(*smoke.block);
            watch.stop();
        }};
}

void send_plain(tovu::SmokeInstance& block) {
    ormixGL_glBegin(GL_QUADS);
    for (int32_t i = 0; i < block.draw_count; ++i) {
        const plain::Quad quad = plain::immediate_quad(block, *tovu::draw_list[i].particle, 1.0f);
        ormixGL_glColor4ub(quad.rgba[0], quad.rgba[1], quad.rgba[2], quad.rgba[3]);
        for (size_t corner = 0; corner < 4; ++corner) {
            ormixGL_glTexCoord2s(tovu::kQuadTexcoords[2 * corner], tovu::kQuadTexcoords[2 * corner + 1]);
            ormixGL_glVertex3fv(&quad.corners[corner].x);
        }
    }
    ormixGL_glEnd();
}

}  // namespace

void add_quad_cases(std::vector<Case>& cases, Scene& scene) {
    const Build flat = [](tovu::SmokeInstance& block) { tovu::build_quads_flat(block, 1.0f); };
    const Build local = [](tovu::SmokeInstance& block) { tovu::build_quads_local_billboard(block, 1.0f); };
    const Build world = [](tovu::SmokeInstance& block) { tovu::build_quads_world_billboard(block, 1.0f); };
    const Build immediate = [](tovu::SmokeInstance& block) { tovu::draw_immediate(block, true, 1.0f); };
    Features turned_flat = kFlat;
    turned_flat.rotated = true;
    for (const int32_t count : kCounts) {
        cases.push_back(quad_case(scene, "arrays_flat/smoke", count, kFlat, false, flat));
        cases.push_back(quad_case(scene, "arrays_flat/plain", count, kFlat, false, build_plain));
        cases.push_back(quad_case(scene, "arrays_flat_turned/smoke", count, turned_flat, false, flat));
        cases.push_back(quad_case(scene, "arrays_facing/smoke", count, kTurnedFacing, false, local));
        cases.push_back(quad_case(scene, "arrays_facing/plain", count, kTurnedFacing, false, build_plain));
        cases.push_back(
            quad_case(scene, "arrays_facing/library_sine", count, kTurnedFacing, false, build_with_library_sine));
        cases.push_back(quad_case(scene, "arrays_facing_world/smoke", count, kTurnedFacing, true, world));
        cases.push_back(quad_case(scene, "immediate_flat/smoke", count, kImmediateFlat, false, immediate));
        cases.push_back(quad_case(scene, "immediate_flat/plain", count, kImmediateFlat, false, send_plain));
        cases.push_back(quad_case(scene, "immediate_turned/smoke", count, kImmediateTurned, false, immediate));
        cases.push_back(quad_case(scene, "immediate_turned/plain", count, kImmediateTurned, false, send_plain));
    }
}

}  // namespace bench
