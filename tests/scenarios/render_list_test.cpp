// The draw list: its content, its order and the calls to the host.
#include <gmock/gmock.h>
#include <tovu/exchange.h>

#include <utility>

#include "render_host.h"
#include "stage/plugins/frames.h"

namespace tovu {
namespace {

using Log = std::vector<std::string>;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// A host whose camera stands at the origin and looks along -z.
struct ListHost : RenderHost {
    ListHost() { stage().camera.position = {0, 0, 0}; }
    /// The live particles; each gets its place in the active list as its red.
    std::vector<Particle*> numbered(SmokeHandle smoke) {
        uint8_t red = 0;
        for (Particle* p : active(smoke)) p->color[0] = red++;
        return active(smoke);
    }
    /// The numbers of the particles in the order in which a pass draws them.
    std::vector<int> drawn(SmokeHandle smoke) {
        std::vector<int> reds;
        const std::string start = "glColor4ub(";
        for (const std::string& call : pass(smoke))
            if (call.starts_with(start)) reds.push_back(std::stoi(call.substr(start.size())));
        return reds;
    }
};

TEST(DrawList, ReadsTheCameraSortedOrNot) {
    const Log camera = {"_api__get_cameraid", "_api__get_camera_position",
                        "_api__get_position", "_api__get_camera_direction",
                        "_api__get_position", "_api__container_get_inverse_matrix"};
    const struct {
        int particles;
        bool sorted;
    } rows[] = {{2, false}, {2, true}, {0, true}};
    for (const auto& row : rows) {
        RenderHost host;
        const SmokeHandle smoke = host.smoke_of(row.particles, {{"sort", row.sorted}});
        Log expected = {"pelEventStart"};
        if (row.particles > 0) expected.insert(expected.end(), camera.begin(), camera.end());
        if (row.particles > 0 && row.sorted) expected.insert(expected.end(), {"pelEventStart", "pelEventEnd"});
        expected.push_back("pelEventEnd");
        host.pass(smoke);
        Log names = host.call_names();
        std::erase_if(names, [](const std::string& name) { return name.starts_with("gl"); });
        EXPECT_THAT(names, ElementsAreArray(expected)) << row.particles << " particles, sort " << row.sorted;
    }
}

TEST(DrawList, RunsFromTheFarthestToTheNearest) {
    const struct {
        const char* name;
        bool sorted;
        std::vector<float> depths;  // of the particles in active-list order, in front of the camera
        std::vector<int> order;     // their positions in the active list as drawn
    } rows[] = {
        {"active-list order", false, {10, 30, 20}, {0, 1, 2}},
        {"farthest first", true, {10, 30, 20}, {1, 2, 0}},
        {"behind the camera comes last", true, {-5, 10, 0}, {1, 2, 0}},
        {"less than a thousandth apart is equal", true, {0.0004f, -0.0004f}, {0, 1}},
        {"a thousandth decides", true, {0.004f, 0.006f}, {1, 0}},
        {"equal before a farther one: turned around", true, {1, 1, 5}, {2, 1, 0}},
        {"too deep for a key is deepest", true, {1e30f, 3e9f, 1e6f, -1e30f}, {0, 1, 2, 3}},
    };
    for (const auto& row : rows) {
        ListHost host;
        const SmokeHandle smoke = host.smoke_of(static_cast<int>(row.depths.size()), {{"sort", row.sorted}});
        const std::vector<Particle*> active = host.numbered(smoke);
        for (size_t i = 0; i < active.size(); ++i)
            active[i]->position = {100.0f * static_cast<float>(i), 0, -row.depths[i]};
        EXPECT_EQ(row.order, host.drawn(smoke)) << row.name;
    }
}

TEST(DrawList, MeasuresDepthInTheContainersCoordinates) {
    for (const char* billboard : {"None", "Particle"})
        for (const std::string reference : {"Local", "World"}) {
            ListHost host;
            const SmokeHandle smoke =
                host.smoke_of(2, {{"sort", true}, {"reference", reference}, {"billboard", billboard}});
            host.container(smoke).placement.rotation_degrees = {0, 90, 0};  // its own x points along the world's -z
            host.container(smoke).placement.scale = {4, 1, 1};
            host.run_frames(1);
            const std::vector<Particle*> active = host.numbered(smoke);
            active.at(0)->position = {2, 0, -1};
            active.at(1)->position = {3, 0, 0};
            const bool by_z = reference == "World";  // else by x, where the second is farther
            EXPECT_THAT(host.drawn(smoke), by_z ? ElementsAre(0, 1) : ElementsAre(1, 0))
                << reference << ", " << billboard;
        }
}

TEST(DrawList, OmitsParticlesNeitherClaimedNorReleased) {
    ListHost host;
    const SmokeHandle smoke = host.smoke_of(4, {{"sort", true}});
    ParticleAttachRequest request{100, 100.0f, 0};
    ParticleExchangeBlock* block = nullptr;
    stage::dispatch(host.stage(), smoke.container, TOVU_REQUEST_ATTACH, &request, &block);
    const std::vector<Particle*> active = host.numbered(smoke);
    EXPECT_THAT(host.drawn(smoke), IsEmpty());
    EXPECT_EQ(1, host.count_calls("_api__get_cameraid"));
    active.at(1)->claimed = -1;
    active.at(3)->released = 1;
    EXPECT_THAT(host.drawn(smoke), ElementsAre(1, 3));
}

TEST(DrawList, FollowsTheLinksWithoutCachesUpToThePoolLimit) {
    ListHost host;
    const SmokeHandle smoke = host.smoke_of(3);
    const std::vector<Particle*> active = host.numbered(smoke);
    InstanceCaches* const caches = std::exchange(host.block(smoke).caches, nullptr);
    EXPECT_THAT(host.drawn(smoke), ElementsAre(0, 1, 2));
    active.at(2)->next = active.at(0);
    host.render(smoke);
    EXPECT_EQ(kMaxParticles, host.block(smoke).draw_count);
    active.at(2)->next = nullptr;
    host.block(smoke).caches = caches;
}

}  // namespace
}  // namespace tovu
