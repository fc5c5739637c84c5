// Births from another container: the calls to the host, the data that is kept, and spawn plug-ins.
#include <gmock/gmock.h>
#include <tovu/spawn_requests.h>

#include <cmath>
#include <cstring>

#include "math/polygon.h"
#include "render_host.h"

namespace tovu {
namespace {

using testing::ElementsAre;

constexpr int kBirths = 20;
const stage::Mesh kSquare{{{0, 0, 1}, {100, 0, 2}, {100, 100, 3}, {0, 100, 4}}};
const stage::Mesh kSmall{{{20, 20, 9}, {40, 20, 9}, {40, 40, -9}}};

/// A smoke whose spawn container "shape" is known since the first frame.
struct Source {
    explicit Source(std::vector<stage::Mesh> meshes, const stage::ParameterValues& values = {}) {
        shape = host.add_outlines("shape", std::move(meshes));
        smoke = host.add_smoke(with({{"spawn_type", 2},
                                     {"spawn_cont_name", "shape"},
                                     {"birth_rate", 1e7},
                                     {"number_of_particles", kBirths},
                                     {"initial_speed", 0.0}},
                                    values));
        host.run_frames(1);
    }
    RenderHost host;
    int32_t shape = -1;
    SmokeHandle smoke;
    const ContainerSpawnSource& kept() { return host.block(smoke).container_source; }
};

TEST(ContainerSource, ReadsEveryMeshVertexByVertex) {
    Source s({kSmall, kSmall});
    s.host.start_recording();
    s.host.run_frames(1);
    std::string names;
    for (const std::string& name : s.host.call_names()) names += name.substr(std::strlen("_api__")) + ' ';
    std::string expected =
        "pellor_get_is_post_recording pellor_get_retrace_counter pellor_get_refreshrate object_valid object_valid "
        "container_get_geometry object_valid geom_dispatcher container_get_transformation_matrix get_geom_detail "
        "get_geom_geomod geomod_init geomod_get_info geomod_goto_mesh geomod_goto_vertex geomod_get_vertex ";
    for (int mesh = 0; mesh < 2; ++mesh) {
        expected += "geomod_get_num_mesh_verices geomod_goto_vertex ";
        for (int vertex = 0; vertex < 3; ++vertex) expected += "geomod_get_vertex geomod_next_vertex ";
        expected += "geomod_next_mesh ";
    }
    EXPECT_EQ(expected, names.substr(0, names.find("container_get_absolute_position")));
    const int32_t geometry = stage::geometry_of(s.host.stage(), s.shape)->handle;
    EXPECT_THAT(s.host.calls(), testing::IsSupersetOf({logged("_api__get_geom_geomod", geometry, 2, 0),
                                                       logged("_api__geom_dispatcher", geometry, 0x5350574E)}));
}

TEST(ContainerSource, StoresOutlinesWithoutGapsAndNeverShrinks) {
    Source s({kSquare, kSmall});
    s.host.run_frames(1);
    const ContainerSpawnSource& c = s.kept();
    ASSERT_EQ(2, c.outline_count);
    EXPECT_THAT((std::vector<int32_t>{c.outline_sizes[0], c.outline_sizes[1], c.outline_capacity, c.vertex_capacity}),
                ElementsAre(4, 3, 2, 14));
    EXPECT_EQ(c.vertex_store, c.outline_starts[0]);
    EXPECT_EQ(c.vertex_store + 4, c.outline_starts[1]);
    EXPECT_EQ(-9.0f, c.outline_starts[1][2].z);
    expect_near({0, 0, -9}, c.bbox_min, 0);
    expect_near({100, 100, 9}, c.bbox_max, 0);
    const Vector3* store = c.vertex_store;
    stage::set_mesh_geometry(s.host.stage(), s.shape, {{}, kSmall});
    s.host.run_frames(1);
    EXPECT_THAT((std::vector<int32_t>{c.outline_sizes[0], c.outline_sizes[1]}), ElementsAre(0, 3));
    EXPECT_EQ(14, c.vertex_capacity);
    EXPECT_EQ(store, c.vertex_store);
    EXPECT_EQ(0.0f, c.bbox_min.x) << "an empty first mesh adds the origin";
    EXPECT_THAT(s.host.complaints(), testing::IsEmpty());
}

TEST(ContainerSource, CoordinatesTakeEffectAtTheNextRefresh) {
    Source s({kSquare});
    s.host.container(s.shape).placement.position = {1000, 0, 0};
    const auto smallest_x = [&](int coordinates) {
        s.host.set(s.smoke, "spawn_cont_coord", coordinates);
        s.host.run_frames(1);
        return s.kept().bbox_min.x;
    };
    std::vector<float> x;
    for (const int coordinates : {0, 0, 0, 1, 1}) x.push_back(smallest_x(coordinates));
    EXPECT_THAT(x, ElementsAre(1000, 0, 0, 0, 1000)) << "world coordinates at first, whatever the parameter says";
}

TEST(ContainerSource, NeedsAnExtentOfAHundredthAlongBothAxes) {
    const struct {
        const char* name;
        Vector3 extent;  // of a right triangle along two of its axes
        int ref_plane;
        bool usable;
    } rows[] = {{"just wide enough", {0.01f, 1, 0}, 0, true}, {"too narrow", {0.0099f, 1, 0}, 0, false},
                {"just high enough", {1, 0.01f, 0}, 0, true}, {"too low", {1, 0.0099f, 0}, 0, false},
                {"flat in x-z", {1, 1, 0}, 1, false},         {"just deep enough", {1, 0, 0.01f}, 1, true}};
    for (const auto& row : rows) {
        const Vector3 e = row.extent;
        Source s({{{{0, 0, 0}, {e.x, 0, 0}, {0, e.y, e.z}}}}, {{"spawn_cont_ref_plane", row.ref_plane}});
        s.host.run_frames(2);
        EXPECT_EQ(row.usable ? kBirths : 0, s.host.active_count(s.smoke)) << row.name;
    }
}

/// A thin outline: a line of corners and a parallel line back.
stage::Mesh stroke(int corners, Vector3 beside, Vector3 (*corner)(int)) {
    stage::Mesh mesh;
    for (int i = 0; i < corners; ++i) mesh.vertices.push_back(corner(i));
    for (int i = corners; i-- > 0;) mesh.vertices.push_back(corner(i) + beside);
    return mesh;
}

TEST(ContainerSource, GivesEveryBirthAPointInTheThinnestShapes) {
    const struct {
        const char* name;
        stage::Mesh mesh;
    } rows[] = {{"a spiral", stroke(720, {0.01f, 0, 0},
                                    [](int i) {
                                        const float angle = 0.35f * static_cast<float>(i);
                                        const float radius = 10 + 0.5f * static_cast<float>(i);
                                        return Vector3{radius * std::cos(angle), radius * std::sin(angle), 7};
                                    })},
                {"a zigzag", stroke(2400, {0.002f, 0, 0},
                                    [](int i) {
                                        const float height = 50.0f + static_cast<float>(i * 7919 % 1000) * 0.05f;
                                        return Vector3{static_cast<float>(i), i % 2 == 0 ? height : -height, 7};
                                    })},
                {"a sliver", {{{0, 0, 7}, {1000, 1000, 7}, {1000, 1000.25f, 7}}}}};
    Source s({}, {{"spawn_range_z", 2.0}, {"birth_rate", 50.05 * kBirths}});
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        stage::set_mesh_geometry(s.host.stage(), s.shape, {row.mesh});
        s.host.press(s.smoke, "reset");
        s.host.run_frames(1);
        ASSERT_EQ(kBirths, s.host.active_count(s.smoke)) << "in the first frame that knows the shape";
        const auto corners = static_cast<int32_t>(row.mesh.vertices.size());
        for (const Particle* p : s.host.active(s.smoke)) {
            EXPECT_TRUE(point_in_polygon_xy(corners, row.mesh.vertices.data(), p->position));
            EXPECT_TRUE(p->position.z >= 7 && p->position.z <= 11);
        }
    }
}

TEST(ContainerSource, ReportsWhatIsMissingInEveryStep) {
    Source s({kSquare});
    const auto said_in_two_frames = [&s] {
        testing::internal::CaptureStdout();
        s.host.run_frames(2);
        return testing::internal::GetCapturedStdout();
    };
    s.host.run_frames(1);
    stage::remove_geometry(s.host.stage(), s.shape);
    EXPECT_EQ("Geom not valid\nGeom not valid\n", said_in_two_frames());
    EXPECT_EQ(0, s.kept().outline_count);
    EXPECT_EQ(100.0f, s.kept().bbox_max.x) << "the rest stays";
    ASSERT_TRUE(stage::add_instance(s.host.stage(), s.shape, s.host.smoke_plugin()));  // offers no spawn points
    EXPECT_EQ("GeoModifier not valid\nGeoModifier not valid\n", said_in_two_frames());
    stage::remove_container(s.host.stage(), s.shape);
    EXPECT_EQ("", said_in_two_frames()) << "a container that is gone is not refreshed";
}

TEST(ContainerSource, ARemovedContainerDrawsNoCandidates) {
    Source s({kSquare}, {{"opening_angle_x", 0.0}, {"opening_angle_z", 0.0}});
    int asked = 0;
    s.host.stage().overrides.object_valid = [&](int32_t) { return ++asked <= 4 ? 1 : 0; };  // the last before births
    std::srand(7);
    s.host.run_frames(1);
    EXPECT_EQ(25000, draws_since(7)) << "of each birth's size alone, until as many in a row found no point";
    EXPECT_EQ(0, s.host.active_count(s.smoke));
    s.host.stage().overrides.object_valid = nullptr;
}

TEST(ContainerSource, ASpawnPluginSuppliesPoints) {
    const struct {
        const char* name;
        int32_t dispatched, replied;
        int32_t refused;  // request that is answered by 0 all the same
        bool supplies, gives_points;
        int refusals = 0;  // before the first point
    } rows[] = {{"yes", 1, 5, 0, true, true},
                {"no", 1, 0, 0, false, false},
                {"not dispatched", 0, 1, 0, false, false},
                {"refused", 1, 5, TOVU_REQUEST_SUPPLIES_SPAWN_POINTS, false, false},
                {"no point", 1, 5, TOVU_REQUEST_NEW_SPAWN_POINT, true, false, 25000},
                {"after many refusals", 1, 5, 0, true, true, 24999}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
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
            if (code == row.refused || (code == TOVU_REQUEST_NEW_SPAWN_POINT && asked <= row.refusals)) return 1;
            if (code == TOVU_REQUEST_NEW_SPAWN_POINT) {
                auto& point = *static_cast<Vector3*>(data);
                EXPECT_EQ(0, dot(point, point)) << "set before it is asked for";
                point.z = static_cast<float>(asked);
            }
            answer = row.replied;
            return row.dispatched;
        };
        s.host.run_frames(1);
        EXPECT_EQ(row.supplies, s.kept().plugin_mode == 1);
        EXPECT_EQ((row.gives_points ? kBirths : 0) + row.refusals, asked) << "once a birth, whatever the pool's size";
        EXPECT_EQ(row.gives_points ? kBirths : 0, inside_tests);
        ASSERT_EQ(row.supplies && !row.gives_points ? 0 : kBirths, s.host.active_count(s.smoke));
        if (row.gives_points) {
            EXPECT_EQ(static_cast<float>(asked), s.host.active(s.smoke)[0]->position.z);
            EXPECT_EQ(0, s.host.active(s.smoke)[0]->accelerated) << "all are inside";
        }
        s.host.stage().overrides.geom_dispatcher = nullptr;
        s.host.run_frames(1);
        EXPECT_EQ(0, s.kept().plugin_mode) << "a plain mesh again";
        EXPECT_EQ(1, s.kept().outline_count);
    }
}

TEST(ContainerSource, ContradictoryCountsStayWithinTheStore) {
    const struct {
        const char* name;
        int32_t total, meshes, per_mesh;  // as the host reports them; 0 per mesh: the true count
        std::vector<int32_t> sizes;       // kept of two squares
    } rows[] = {{"meshes hold more than the total", 3, 2, 0, {4, 2}},
                {"more meshes than vertices", 2, 20000000, 0, {4, 0}},
                {"a total of 0", 0, 2, 0, {0}},
                {"negative", -5, 2, 0, {0}},
                {"meshes of negative size", 8, 2, -1, {0, 0}},
                {"a negative number of meshes", 8, -2, 0, {}},
                {"more than memory", 2147483647, 2, 0, {}},
                {"meshes of the largest size", 3, 2, 2147483647, {6, 0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Source s({kSquare, kSquare});
        stage::Overrides& overrides = s.host.stage().overrides;
        overrides.geomod_get_info = [&row](int32_t, int32_t* total, int32_t* meshes, uint8_t*, uint8_t*, uint8_t*) {
            *total = row.total;
            *meshes = row.meshes;
        };
        overrides.geomod_get_num_mesh_verices = [&row](int32_t, int32_t, int32_t* count) {
            *count = row.per_mesh != 0 ? row.per_mesh : 4;
        };
        s.host.run_frames(1);
        const ContainerSpawnSource& c = s.kept();
        EXPECT_EQ(row.sizes, std::vector<int32_t>(c.outline_sizes, c.outline_sizes + c.outline_count));
        for (int32_t i = 0, first = 0; i < c.outline_count; first += c.outline_sizes[i++])
            EXPECT_EQ(c.vertex_store + first, c.outline_starts[i]);
    }
}

}  // namespace
}  // namespace tovu
