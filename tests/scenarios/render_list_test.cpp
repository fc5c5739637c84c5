// The draw list: what is in it, in which order, and what the host is asked for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "host/exchange.h"
#include "render_host.h"
#include "stage/plugins/frames.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// Calls to services, without their arguments.
Log service_names(const Log& log) {
    Log names;
    for (const std::string& call : log)
        if (!call.starts_with("gl")) names.push_back(call.substr(0, call.find('(')));
    return names;
}

/// What was drawn, told apart by the red that each particle was given: quads in order.
std::vector<int> reds_drawn(const Log& log) {
    std::vector<int> reds;
    const std::string start = "glColor4ub(";
    for (const std::string& call : log)
        if (call.starts_with(start)) reds.push_back(std::stoi(call.substr(start.size())));
    return reds;
}

const Log kCameraQueries = {"_api__get_cameraid", "_api__get_camera_position",
                            "_api__get_position", "_api__get_camera_direction",
                            "_api__get_position", "_api__container_get_inverse_matrix"};

TEST(DrawList, AsksForTheCameraWhateverIsSorted) {
    for (bool sorted : {false, true}) {
        RenderHost host;
        const SmokeHandle smoke = host.smoke_of(2, {{"sort", sorted}});
        Log expected = {"pelEventStart"};
        expected.insert(expected.end(), kCameraQueries.begin(), kCameraQueries.end());
        if (sorted) expected.insert(expected.end(), {"pelEventStart", "pelEventEnd"});
        expected.push_back("pelEventEnd");
        EXPECT_THAT(service_names(host.pass(smoke)), ElementsAreArray(expected)) << "sort " << sorted;
    }
}

TEST(DrawList, OfNoParticlesAsksNothing) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(0, {{"sort", true}});
    EXPECT_THAT(service_names(host.pass(smoke)), ElementsAre("pelEventStart", "pelEventEnd"));
}

TEST(DrawList, TimesTheWholeAndTheSortApart) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(2, {{"sort", true}});
    host.stage().profile.totals.clear();
    std::vector<std::string> sections;
    host.stage().profile.sink = [&](const stage::TraceSpan& span) { sections.emplace_back(span.event); };
    host.render(smoke);
    host.stage().profile.sink = nullptr;
    EXPECT_THAT(sections, ElementsAre("qsort", "Sort", "PLUGIN_RENDER_OPENGL"));  // in the order they ended
}

struct OrderCase {
    const char* name;
    bool sorted;
    std::vector<float> depths;  // of the particles in active-list order, in front of the camera
    std::vector<int> order;     // their positions in the active list as drawn
};

TEST(DrawList, RunsFromTheFarthestToTheNearest) {
    const OrderCase cases[] = {
        {"active-list order", false, {10, 30, 20}, {0, 1, 2}},
        {"farthest first", true, {10, 30, 20}, {1, 2, 0}},
        {"behind the camera comes last", true, {-5, 10, 0}, {1, 2, 0}},
        {"less than a thousandth apart is equal", true, {0.0004f, -0.0004f}, {0, 1}},
        {"equal before a farther one: turned around", true, {1, 1, 5}, {2, 1, 0}},
        {"too deep for a key is deepest", true, {1e30f, 3e9f, 1e6f, -1e30f}, {0, 1, 2, 3}},
    };
    for (const OrderCase& row : cases) {
        RenderHost host;
        host.stage().camera.position = {0, 0, 0};  // looks along -z
        const int count = static_cast<int>(row.depths.size());
        const SmokeHandle smoke = host.smoke_of(count, {{"sort", row.sorted}});
        const std::vector<Particle*> active = host.active(smoke);
        for (int i = 0; i < count; ++i) {
            const auto at = static_cast<size_t>(i);
            active.at(at)->position = {100.0f * static_cast<float>(i), 0, -row.depths[at]};
            active.at(at)->color[0] = static_cast<uint8_t>(i);
        }
        EXPECT_THAT(reds_drawn(host.pass(smoke)), ElementsAreArray(row.order)) << row.name;
    }
}

TEST(DrawList, MeasuresLocalDepthAlongTheDirectionAsTheContainerSeesIt) {
    for (const char* billboard : {"None", "Particle"}) {
        for (const char* reference : {"Local", "World"}) {
            RenderHost host;
            host.stage().camera.position = {0, 0, 0};
            const SmokeHandle smoke =
                host.smoke_of(2, {{"sort", true}, {"reference", reference}, {"billboard", billboard}});
            host.container(smoke).placement.rotation_degrees = {0, 90, 0};  // its own x points along the world's -z
            host.container(smoke).placement.scale = {4, 1, 1};
            host.run_frames(1);
            const std::vector<Particle*> active = host.active(smoke);
            active.at(0)->position = {2, 0, -1};
            active.at(1)->position = {3, 0, 0};
            for (uint8_t i = 0; i < 2; ++i) active.at(i)->color[0] = i;
            const bool by_z = std::string_view(reference) == "World";  // else by x, where the second is farther
            EXPECT_THAT(reds_drawn(host.pass(smoke)), by_z ? ElementsAre(0, 1) : ElementsAre(1, 0))
                << reference << ", " << billboard;
        }
    }
}

TEST(DrawList, LeavesOutWhatAConsumerNeitherClaimsNorReleases) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(4, {{"sort", true}});
    ParticleAttachRequest request{100, 100.0f, 0};
    ParticleExchangeBlock* block = nullptr;
    _api__geom_dispatcher(smoke.geometry, TOVU_REQUEST_ATTACH, &request, &block);
    ASSERT_NE(nullptr, block);
    const std::vector<Particle*> active = host.active(smoke);
    for (uint8_t i = 0; i < 4; ++i) active.at(i)->color[0] = i;
    EXPECT_THAT(reds_drawn(host.pass(smoke)), IsEmpty());
    EXPECT_EQ(1, host.count_calls("_api__get_cameraid"));
    active.at(1)->claimed = -1;
    active.at(3)->released = 1;
    EXPECT_THAT(reds_drawn(host.pass(smoke)), ElementsAre(1, 3));

    _api__geom_dispatcher(smoke.geometry, TOVU_REQUEST_DETACH, nullptr, &block);
}

TEST(DrawList, FollowsTheLinksWhereTheArrayIsMissingButNoFurtherThanAPoolReaches) {
    RenderHost host;
    const SmokeHandle smoke = host.smoke_of(3);
    const std::vector<Particle*> active = host.active(smoke);
    for (uint8_t i = 0; i < 3; ++i) active.at(i)->color[0] = i;
    SpeedUps* const speed_ups = std::exchange(host.block(smoke).speed_ups, nullptr);
    EXPECT_THAT(reds_drawn(host.pass(smoke)), ElementsAre(0, 1, 2));
    active.at(2)->next = active.at(0);
    host.render(smoke);
    EXPECT_EQ(kMaxParticles, host.block(smoke).draw_count);
    active.at(2)->next = nullptr;
    host.block(smoke).speed_ups = speed_ups;
}

}  // namespace
}  // namespace tovu
