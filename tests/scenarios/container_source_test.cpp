// Births from another container: what is asked of the host, what is kept of the answers, and geometries that answer
// for themselves.
#include <gmock/gmock.h>

#include <cstdlib>

#include "host/spawn_requests.h"
#include "math/polygon.h"
#include "render_host.h"

namespace tovu {
namespace {

using testing::ElementsAre;

constexpr int kBirths = 20;
const stage::Mesh kSquare{{{0, 0, 1}, {100, 0, 2}, {100, 100, 3}, {0, 100, 4}}};
const stage::Mesh kSmall{{{20, 20, 9}, {40, 20, 9}, {40, 40, -9}}};

/// A smoke that is born in the container "shape".
struct Source {
    explicit Source(std::vector<stage::Mesh> meshes, stage::ParameterValues values = {}) {
        shape = host.add_outlines("shape", std::move(meshes));
        values.insert(values.begin(), {{"spawn_type", 2},
                                       {"spawn_cont_name", std::string("shape")},
                                       {"birth_rate", 1e7},
                                       {"number_of_particles", kBirths},
                                       {"life_time", 1000.0},
                                       {"initial_speed", 0.0}});
        smoke = host.add_smoke(values);
        host.run_frames(1);  // picks the name up
    }
    ContainerSpawnSource& source() { return host.block(smoke).container_source; }
    RenderHost host;
    int32_t shape = -1;
    SmokeHandle smoke;
};

TEST(ContainerSource, ReadsEveryMeshVertexByVertex) {
    Source s({kSmall, kSmall});
    s.host.start_recording();
    s.host.run_frames(1);
    std::vector<std::string> names = s.host.call_names();
    const auto end = std::find(names.begin(), names.end(), "_api__container_get_absolute_position");
    std::vector<std::string> expected = {"_api__pellor_get_is_post_recording",
                                         "_api__pellor_get_retrace_counter",
                                         "_api__pellor_get_refreshrate",
                                         "_api__object_valid",
                                         "_api__object_valid",
                                         "_api__container_get_geometry",
                                         "_api__object_valid",
                                         "_api__geom_dispatcher",
                                         "_api__container_get_transformation_matrix",
                                         "_api__get_geom_detail",
                                         "_api__get_geom_geomod",
                                         "_api__geomod_init",
                                         "_api__geomod_get_info",
                                         "_api__geomod_goto_mesh",
                                         "_api__geomod_goto_vertex",
                                         "_api__geomod_get_vertex"};
    for (int mesh = 0; mesh < 2; ++mesh) {
        expected.insert(expected.end(), {"_api__geomod_get_num_mesh_verices", "_api__geomod_goto_vertex"});
        for (int vertex = 0; vertex < 3; ++vertex)
            expected.insert(expected.end(), {"_api__geomod_get_vertex", "_api__geomod_next_vertex"});
        expected.push_back("_api__geomod_next_mesh");
    }
    EXPECT_EQ(expected, std::vector<std::string>(names.begin(), end));
    const int32_t geometry = stage::geometry_of(s.host.stage(), s.shape)->handle;
    EXPECT_THAT(s.host.calls(), testing::Contains(logged("_api__get_geom_geomod", geometry, 2, 0)));
    EXPECT_THAT(s.host.calls(), testing::Contains(logged("_api__geom_dispatcher", geometry, 0x5350574E)));
    EXPECT_TRUE(s.host.complaints().empty());
}

TEST(ContainerSource, KeepsOutlinesWithoutGapsInStoresThatNeverShrink) {
    Source s({kSquare, kSmall});
    s.host.run_frames(1);
    const ContainerSpawnSource& c = s.source();
    ASSERT_EQ(2, c.outline_count);
    EXPECT_THAT((std::vector<int32_t>{c.outline_sizes[0], c.outline_sizes[1], c.outline_capacity, c.vertex_capacity}),
                ElementsAre(4, 3, 2, 14));
    EXPECT_EQ(c.vertex_store, c.outline_starts[0]);
    EXPECT_EQ(c.vertex_store + 4, c.outline_starts[1]);
    EXPECT_EQ(-9.0f, c.outline_starts[1][2].z);
    EXPECT_THAT(
        (std::vector<float>{c.bbox_min.x, c.bbox_min.y, c.bbox_min.z, c.bbox_max.x, c.bbox_max.y, c.bbox_max.z}),
        ElementsAre(0, 0, -9, 100, 100, 9));
    const Vector3* store = c.vertex_store;
    stage::set_mesh_geometry(s.host.stage(), s.shape, {kSmall});
    s.host.run_frames(1);
    EXPECT_EQ(1, c.outline_count);
    EXPECT_EQ(14, c.vertex_capacity);
    EXPECT_EQ(store, c.vertex_store);
    EXPECT_EQ(20.0f, c.bbox_min.x);
    stage::set_mesh_geometry(s.host.stage(), s.shape, {{}, kSmall});
    s.host.run_frames(1);
    EXPECT_THAT((std::vector<int32_t>{c.outline_sizes[0], c.outline_sizes[1]}), ElementsAre(0, 3));
    EXPECT_EQ(0.0f, c.bbox_min.x) << "begun with a first vertex that is not there";
    EXPECT_THAT(s.host.complaints(), testing::IsEmpty());
}

TEST(ContainerSource, CoordinatesFollowOneRefreshLate) {
    Source s({kSquare}, {{"spawn_cont_coord", 0}});
    s.host.container(s.shape).placement.position = {1000, 0, 0};
    const float smallest_x[] = {1000, 0, 0};  // in the world at first, whatever the parameter says
    for (const float x : smallest_x) {
        s.host.run_frames(1);
        EXPECT_EQ(x, s.source().bbox_min.x);
    }
    s.host.set(s.smoke, "spawn_cont_coord", 1);
    s.host.run_frames(1);
    EXPECT_EQ(0.0f, s.source().bbox_min.x);
    s.host.run_frames(1);
    EXPECT_EQ(1000.0f, s.source().bbox_min.x);
}

struct ExtentCase {
    const char* name;
    Vector3 extent;  // of a right triangle along two of its axes
    int ref_plane;
    bool usable;
};

TEST(ContainerSource, NeedsAHundredthAlongBothAxes) {
    const ExtentCase rows[] = {
        {"just wide enough", {0.01f, 1, 0}, 0, true}, {"too narrow", {0.0099f, 1, 0}, 0, false},
        {"just high enough", {1, 0.01f, 0}, 0, true}, {"too low", {1, 0.0099f, 0}, 0, false},
        {"flat in x-z", {1, 1, 0}, 1, false},         {"just deep enough", {1, 0, 0.01f}, 1, true}};
    for (const ExtentCase& row : rows) {
        const Vector3 e = row.extent;
        Source s({{{{0, 0, 0}, {e.x, 0, 0}, {0, e.y, e.z}}}}, {{"spawn_cont_ref_plane", row.ref_plane}});
        s.host.run_frames(2);
        EXPECT_EQ(row.usable ? kBirths : 0, s.host.active_count(s.smoke)) << row.name;
    }
}

TEST(ContainerSource, SliversDoNotStallAFrame) {
    const stage::Mesh sliver{{{0, 0, 7}, {1000, 1000, 7}, {1000, 1000.25f, 7}}};
    Source s({sliver}, {{"spawn_range_z", 2.0}});
    s.host.run_frames(1);
    ASSERT_EQ(kBirths, s.host.active_count(s.smoke)) << "in the first frame that knows the shape";
    for (const Particle* p : s.host.active(s.smoke)) {
        EXPECT_TRUE(point_in_polygon_xy(3, sliver.vertices.data(), p->position));
        EXPECT_TRUE(p->position.z >= 7 && p->position.z <= 11);
    }
}

TEST(ContainerSource, SaysOnceAStepWhatIsMissing) {
    Source s({kSquare});
    s.host.run_frames(1);
    stage::remove_geometry(s.host.stage(), s.shape);
    testing::internal::CaptureStdout();
    s.host.run_frames(2);
    EXPECT_EQ("Geom not valid\nGeom not valid\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(0, s.source().outline_count);
    EXPECT_EQ(100.0f, s.source().bbox_max.x) << "the rest stays";
    const auto added = stage::add_instance(s.host.stage(), s.shape, s.host.smoke_plugin());  // offers no spawn points
    ASSERT_TRUE(added);
    testing::internal::CaptureStdout();
    s.host.run_frames(2);
    EXPECT_EQ("GeoModifier not valid\nGeoModifier not valid\n", testing::internal::GetCapturedStdout());
    stage::remove_container(s.host.stage(), s.shape);
    testing::internal::CaptureStdout();
    s.host.run_frames(2);
    EXPECT_EQ("", testing::internal::GetCapturedStdout()) << "a container that is gone is not refreshed";
}

TEST(ContainerSource, AContainerThatGoesAsBirthsBeginDrawsNoCandidates) {
    Source s({kSquare}, {{"opening_angle_x", 0.0}, {"opening_angle_z", 0.0}});
    int asked = 0;
    s.host.stage().overrides.object_valid = [&](int32_t) { return ++asked <= 4 ? 1 : 0; };  // the last before births
    std::srand(7);
    s.host.run_frames(1);
    EXPECT_EQ(0, s.host.active_count(s.smoke));
    const int next = std::rand();
    std::srand(7);
    for (int i = 0; i < kBirths; ++i) std::rand();  // of each record's size alone
    EXPECT_EQ(std::rand(), next);
    s.host.stage().overrides.object_valid = nullptr;
}

struct AnswerCase {
    const char* name;
    int32_t dispatched, replied;
    bool accepted;
};

TEST(ContainerSource, AGeometryMaySupplyItsOwnPoints) {
    const AnswerCase rows[] = {{"yes", 1, 5, true}, {"no", 1, 0, false}, {"nobody listened", 0, 1, false}};
    for (const AnswerCase& row : rows)
        for (const int32_t refused : {0, TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, TOVU_REQUEST_NEW_SPAWN_POINT}) {
            SCOPED_TRACE(testing::Message() << row.name << ", but for " << refused);
            Source s({kSquare}, {{"life_time_scale", 50.0}});
            int asked = 0;
            int inside_tests = 0;
            for (Particle* p : s.host.inactive(s.smoke)) p->position = {9, 9, 9};
            s.host.stage().overrides.geom_dispatcher = [&](int32_t, int32_t code, void* data, void* reply) {
                auto& answer = *static_cast<int32_t*>(reply);
                EXPECT_EQ(0, answer);
                EXPECT_EQ(code == TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, data == nullptr);
                asked += code == TOVU_REQUEST_NEW_SPAWN_POINT;
                inside_tests += code == TOVU_REQUEST_IS_INSIDE;
                if (code == refused) return 1;
                if (code == TOVU_REQUEST_NEW_SPAWN_POINT) {
                    auto& point = *static_cast<Vector3*>(data);
                    EXPECT_EQ(0, dot(point, point)) << "set before it is asked for";
                    point = {-1, -2, static_cast<float>(asked)};
                }
                answer = row.replied;
                return row.dispatched;
            };
            s.host.run_frames(1);
            const bool supplies = row.accepted && refused != TOVU_REQUEST_SUPPLIES_SPAWN_POINTS;
            const bool gives_points = supplies && refused != TOVU_REQUEST_NEW_SPAWN_POINT;
            EXPECT_EQ(supplies, s.source().plugin_mode == 1);
            EXPECT_EQ(supplies ? kBirths : 0, asked) << "once a birth, and no more refusals than records";
            EXPECT_EQ(gives_points ? kBirths : 0, inside_tests);
            ASSERT_EQ(supplies && !gives_points ? 0 : kBirths, s.host.active_count(s.smoke));
            if (gives_points) {
                EXPECT_EQ(static_cast<float>(kBirths), s.host.active(s.smoke)[0]->position.z);
                EXPECT_EQ(0, s.host.active(s.smoke)[0]->accelerated) << "all are inside";
            }
            s.host.stage().overrides.geom_dispatcher = nullptr;
            s.host.run_frames(1);
            EXPECT_EQ(0, s.source().plugin_mode) << "a plain mesh again";
            EXPECT_EQ(1, s.source().outline_count);
        }
}

struct CountCase {
    const char* name;
    int32_t total, meshes, per_mesh;  // as the host claims them; 0 per mesh: the truth
    std::vector<int32_t> sizes;       // kept of two squares
};

TEST(ContainerSource, CountsThatDoNotAddUpStayWithinTheStore) {
    const CountCase rows[] = {{"more in the meshes than in all", 3, 2, 0, {4, 2}},
                              {"none in all", 0, 2, 0, {0, 0}},
                              {"fewer than none", -5, 2, 0, {0, 0}},
                              {"meshes of fewer than none", 8, 2, -1, {0, 0}},
                              {"fewer meshes than none", 8, -2, 0, {}},
                              {"more than memory", 2147483647, 2, 0, {}},
                              {"endless meshes", 3, 2, 2147483647, {6, 0}}};
    for (const CountCase& row : rows) {
        SCOPED_TRACE(row.name);
        RenderHost host;
        host.add_outlines("shape", {kSquare, kSquare});
        stage::Overrides& overrides = host.stage().overrides;
        overrides.geomod_get_info = [&row](int32_t access, int32_t* total, int32_t* meshes, uint8_t* a, uint8_t* b,
                                           uint8_t* c) {
            _api__geomod_get_info(access, total, meshes, a, b, c);
            *total = row.total;
            *meshes = row.meshes;
        };
        overrides.geomod_get_num_mesh_verices = [&row](int32_t access, int32_t mesh, int32_t* count) {
            _api__geomod_get_num_mesh_verices(access, mesh, count);
            if (row.per_mesh != 0) *count = row.per_mesh;
        };
        const SmokeHandle smoke =
            host.add_smoke({{"spawn_type", 2}, {"spawn_cont_name", std::string("shape")}, {"birth_rate", 1e7}});
        host.run_frames(2);
        const ContainerSpawnSource& c = host.block(smoke).container_source;
        EXPECT_EQ(row.sizes, std::vector<int32_t>(c.outline_sizes, c.outline_sizes + c.outline_count));
        for (int32_t i = 0, first = 0; i < c.outline_count; first += c.outline_sizes[i++])
            EXPECT_EQ(c.vertex_store + first, c.outline_starts[i]);
    }
}

}  // namespace
}  // namespace tovu
