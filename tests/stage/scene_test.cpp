// Objects of the scene: handles that stay stale, look-up, images, mesh access, and wrong handles.
#include <gmock/gmock.h>

#include "host_services.h"
#include "opengl.h"
#include "stage/plugins/frames.h"
#include "stage/scene/stage.h"

namespace stage {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> complaint_texts(const Stage& stage) {
    std::vector<std::string> texts;
    for (const Complaint& complaint : stage.complaints.list) texts.push_back(to_string(complaint));
    return texts;
}

class Scene : public testing::Test {
  protected:
    StagePtr stage_ = make_stage();
};

TEST_F(Scene, RemovedObjectsStayGone) {
    const int32_t parent = add_container(*stage_, "parent");
    const int32_t child = add_container(*stage_, "child", parent);
    const int32_t geometry = set_mesh_geometry(*stage_, child, {});
    for (const int32_t handle : {parent, child, geometry}) EXPECT_NE(_api__object_valid(handle), 0);

    EXPECT_TRUE(remove_container(*stage_, parent));
    const int32_t next = add_container(*stage_, "child");
    for (const int32_t handle : {parent, child, geometry}) {
        EXPECT_EQ(_api__object_valid(handle), 0);
        EXPECT_EQ(_api__get_objectid_from_objectid(number_of(handle)), kNoObject);
        EXPECT_NE(handle, next);
    }
    EXPECT_FALSE(remove_container(*stage_, parent));
    EXPECT_EQ(add_container(*stage_, "orphan", parent), kNoObject);
    EXPECT_EQ(_api__get_objectid("child", "", TOVU_OBJECT_CONTAINER), next);
}

TEST_F(Scene, ReplacedMeshesKeepTheirHandleAndRemovedOnesDoNot) {
    const int32_t container = add_container(*stage_, "outline");
    const int32_t first = set_mesh_geometry(*stage_, container, {});
    EXPECT_EQ(set_mesh_geometry(*stage_, container, {{{{1, 2, 3}}}}), first);
    int32_t carried = -1;
    _api__container_get_geometry(container, &carried);
    EXPECT_EQ(carried, first);

    EXPECT_TRUE(remove_geometry(*stage_, container));
    EXPECT_EQ(_api__object_valid(first), 0);
    _api__container_get_geometry(container, &carried);
    EXPECT_EQ(carried, kNoObject);
    EXPECT_NE(set_mesh_geometry(*stage_, container, {}), first);
}

TEST_F(Scene, ObjectsAreFoundInTreeOrderByNameAndByNumber) {
    const int32_t a = add_container(*stage_, "a");
    const int32_t b = add_container(*stage_, "b");
    const int32_t first = add_container(*stage_, "same", b);
    const int32_t second = add_container(*stage_, "same", a);
    EXPECT_THAT(containers_in_tree_order(*stage_), ElementsAre(a, second, b, first));
    EXPECT_EQ(_api__get_objectid("same", "", TOVU_OBJECT_CONTAINER), second);
    EXPECT_EQ(_api__get_objectid("other", "", TOVU_OBJECT_CONTAINER), kNoObject);
    EXPECT_EQ(number_of(a), 1);
    EXPECT_EQ(_api__get_objectid_from_objectid(3), first);
    for (const int32_t number : {-1, 0, 5, 1 << 24}) EXPECT_EQ(_api__get_objectid_from_objectid(number), kNoObject);
    EXPECT_THAT(complaint_texts(*stage_), IsEmpty());
}

TEST_F(Scene, ShownAndOpaqueDownTheTree) {
    const int32_t parent = add_container(*stage_, "parent");
    const int32_t child = add_container(*stage_, "child", parent);
    set_mesh_geometry(*stage_, child, {});
    find_container(*stage_, parent)->opacity = 0.5f;
    find_container(*stage_, child)->opacity = 0.25f;
    std::vector<float> opacities;
    const auto note = [&](const DrawItem& item) { opacities.push_back(item.opacity); };
    for_each_shown(*stage_, note);
    EXPECT_THAT(opacities, ElementsAre(0.125f)) << "the parent carries nothing to draw";
    find_container(*stage_, parent)->visible = false;
    for_each_shown(*stage_, note);
    EXPECT_THAT(opacities, testing::SizeIs(1)) << "hidden with its parent";
}

TEST_F(Scene, ImagesChangeWhileRunning) {
    const auto added = add_image(*stage_, "mask", 2, 1, GL_RGB, {1, 2, 3, 4, 5, 6});
    ASSERT_TRUE(added);
    const int32_t image = _api__get_image_objectid("mask");
    EXPECT_EQ(image, *added);
    int32_t width = -1, height = -1, format = -1;
    uint8_t* pixels = nullptr;
    _api__get_image_data(image, &pixels);
    EXPECT_EQ(pixels[5], 6);

    ASSERT_TRUE(replace_image(*stage_, image, 1, 3, GL_LUMINANCE, {7, 8, 9}));
    _api__get_image_size(image, &width, &height);
    _api__get_image_format(image, &format);
    _api__get_image_data(image, &pixels);
    EXPECT_THAT(std::vector({width, height, format, int32_t{pixels[2]}}), ElementsAre(1, 3, GL_LUMINANCE, 9));

    EXPECT_TRUE(unload_image(*stage_, image));
    _api__get_image_data(image, &pixels);
    EXPECT_EQ(pixels, nullptr);
    EXPECT_NE(_api__object_valid(image), 0);
    EXPECT_TRUE(remove_image(*stage_, image));
    EXPECT_EQ(_api__object_valid(image), 0);
    EXPECT_EQ(_api__get_image_objectid("mask"), kNoObject);
}

struct WrongImage {
    const char* name;
    int32_t width, height, format;
    size_t bytes;
    const char* message;
};
const WrongImage kWrongImages[] = {
    {"fresh", 2, 2, GL_RGBA, 15, "need 16 bytes, but 15"},  {"fresh", 2, 2, GL_ALPHA, 5, "need 4 bytes, but 5"},
    {"fresh", 3, 1, GL_LUMINANCE_ALPHA, 3, "need 6 bytes"}, {"fresh", 0, 2, GL_RGB, 0, "at least 1"},
    {"taken", 1, 1, GL_RGB, 3, "of this name already"},
};

TEST_F(Scene, WrongImagesAreRefused) {
    ASSERT_TRUE(add_image(*stage_, "taken", 1, 1, GL_ALPHA, {0}));
    for (const WrongImage& row : kWrongImages) {
        const auto added =
            add_image(*stage_, row.name, row.width, row.height, row.format, std::vector<uint8_t>(row.bytes));
        ASSERT_FALSE(added) << row.message;
        EXPECT_THAT(added.error().message, testing::AllOf(HasSubstr(row.name), HasSubstr(row.message)));
    }
    EXPECT_EQ(stage_->images.size(), 1u);
}

class MeshAccess : public Scene {
  protected:
    int32_t open() {
        int32_t detail = -1;
        int32_t access = 0;
        _api__get_geom_detail(geometry_, &detail);
        _api__get_geom_geomod(geometry_, 2, detail, &access);
        return access;
    }

    int32_t container_ = add_container(*stage_, "outline");
    int32_t geometry_ =
        set_mesh_geometry(*stage_, container_, {{{{1, 2, 3}, {4, 5, 6}}}, {{}}, {{{7, 8, 9}, {10, 11, 12}}}});
};

// The walk of a plug-in that takes every mesh as an outline.
TEST_F(MeshAccess, WalksAllVerticesInOrder) {
    const int32_t access = open();
    ASSERT_GT(access, 0);
    _api__geomod_init(access);
    int32_t total = -1, meshes = -1, mesh = -1, vertex = -1;
    uint8_t flags[3];
    _api__geomod_get_info(access, &total, &meshes, &flags[0], &flags[1], &flags[2]);
    EXPECT_EQ(total, 4);
    ASSERT_EQ(meshes, 3);
    std::vector<std::vector<float>> walked;
    _api__geomod_goto_mesh(access, 0, &mesh);
    for (int32_t i = 0; i < meshes; ++i, _api__geomod_next_mesh(access, &mesh)) {
        int32_t count = -1;
        _api__geomod_get_num_mesh_verices(access, mesh, &count);
        walked.emplace_back();
        _api__geomod_goto_vertex(access, mesh, 0, &vertex);
        for (int32_t k = 0; k < count; ++k, _api__geomod_next_vertex(access, mesh, &vertex)) {
            float x = -1, y = -1, z = -1;
            _api__geomod_get_vertex(access, vertex, &x, &y, &z);
            walked.back().insert(walked.back().end(), {x, y, z});
        }
    }
    EXPECT_THAT(walked, ElementsAre(ElementsAre(1, 2, 3, 4, 5, 6), IsEmpty(), ElementsAre(7, 8, 9, 10, 11, 12)));
    EXPECT_THAT(complaint_texts(*stage_), IsEmpty());
}

TEST_F(MeshAccess, DoesNotOutliveItsFrame) {
    const int32_t access = open();
    _api__geomod_init(access);
    advance_frame(*stage_);
    int32_t cursor = -7;
    _api__geomod_goto_mesh(access, 0, &cursor);
    EXPECT_EQ(cursor, -7);
    EXPECT_THAT(complaint_texts(*stage_),
                ElementsAre("_api__geomod_goto_mesh: the mesh access is of an earlier frame"));
}

/// A wrong call: the service as it is complained about, the call with an out value, and what the complaint says.
struct WrongCall {
    const char* service;
    std::function<void(const MeshAccess&, int32_t access, int32_t* out)> call;
    const char* message;
};
const WrongCall kWrongMeshCalls[] = {
    {"_api__geomod_goto_mesh", [](auto&, int32_t a, int32_t* out) { _api__geomod_goto_mesh(a, 3, out); }, "no mesh 3"},
    {"_api__geomod_next_mesh", [](auto&, int32_t a, int32_t* out) { _api__geomod_next_mesh(a, out); },
     "mesh cursor -7 stands on no mesh"},
    {"_api__geomod_get_num_mesh_verices",
     [](auto&, int32_t a, int32_t* out) { _api__geomod_get_num_mesh_verices(a, 4, out); },
     "mesh cursor 4 stands on no mesh"},
    {"_api__geomod_goto_vertex", [](auto&, int32_t a, int32_t* out) { _api__geomod_goto_vertex(a, 1, 2, out); },
     "no vertex 2 among 2"},
    {"_api__geomod_next_vertex", [](auto&, int32_t a, int32_t* out) { _api__geomod_next_vertex(a, 1, out); },
     "vertex cursor -7 stands on no vertex of its mesh"},
    {"_api__geomod_get_info",
     [](auto&, int32_t, int32_t* out) { _api__geomod_get_info(0, out, out, nullptr, nullptr, nullptr); },
     "0 is no handle"},
};

TEST_F(MeshAccess, WrongCursorsAreNotFollowed) {
    for (const WrongCall& row : kWrongMeshCalls) {
        const int32_t access = open();
        _api__geomod_init(access);
        stage_->complaints = {};
        int32_t out = -7;
        row.call(*this, access, &out);
        EXPECT_EQ(out, -7) << row.service;
        EXPECT_THAT(complaint_texts(*stage_),
                    ElementsAre(testing::AllOf(testing::StartsWith(row.service), HasSubstr(row.message))));
    }
}

TEST_F(MeshAccess, NoVertexIsReadBehindAMesh) {
    const int32_t access = open();
    _api__geomod_init(access);
    int32_t mesh = 0, vertex = 0;
    _api__geomod_goto_mesh(access, 0, &mesh);
    _api__geomod_goto_vertex(access, mesh, 1, &vertex);
    _api__geomod_next_vertex(access, mesh, &vertex);
    EXPECT_THAT(complaint_texts(*stage_), IsEmpty()) << "a cursor may pass the last vertex";
    float x = -7, y = -7, z = -7;
    _api__geomod_get_vertex(access, vertex, &x, &y, &z);
    EXPECT_THAT(std::vector({x, y, z}), ElementsAre(-7, -7, -7));
    EXPECT_THAT(complaint_texts(*stage_), ElementsAre(HasSubstr("stands on no vertex")));
}

TEST_F(MeshAccess, HasToBeBegun) {
    int32_t cursor = -7;
    _api__geomod_goto_mesh(open(), 0, &cursor);
    EXPECT_EQ(cursor, -7);
    EXPECT_THAT(complaint_texts(*stage_), ElementsAre(HasSubstr("_api__geomod_init")));
}

/// Every service that takes a handle and fills a value, called with `handle`.
struct Question {
    const char* service;
    std::function<void(int32_t handle, float* out)> ask;
};
int32_t* as_int(float* out) {
    return reinterpret_cast<int32_t*>(out);
}
const Question kQuestions[] = {
    {"_api__container_get_absolute_position",
     [](int32_t h, float* out) { _api__container_get_absolute_position(h, out, out, out); }},
    {"_api__container_get_absolute_rotation",
     [](int32_t h, float* out) { _api__container_get_absolute_rotation(h, out, out, out); }},
    {"_api__container_get_absolute_scaling",
     [](int32_t h, float* out) { _api__container_get_absolute_scaling(h, out, out, out); }},
    {"_api__container_get_transformation_matrix",
     [](int32_t h, float* out) { _api__container_get_transformation_matrix(h, out); }},
    {"_api__container_get_inverse_matrix", [](int32_t h, float* out) { _api__container_get_inverse_matrix(h, out); }},
    {"_api__container_get_geometry", [](int32_t h, float* out) { _api__container_get_geometry(h, as_int(out)); }},
    {"_api__get_geom_detail", [](int32_t h, float* out) { _api__get_geom_detail(h, as_int(out)); }},
    {"_api__get_geom_geomod", [](int32_t h, float* out) { _api__get_geom_geomod(h, 2, 0, as_int(out)); }},
    {"_api__get_image_size", [](int32_t h, float* out) { _api__get_image_size(h, as_int(out), as_int(out)); }},
    {"_api__get_image_format", [](int32_t h, float* out) { _api__get_image_format(h, as_int(out)); }},
    {"_api__get_image_data",
     [](int32_t h, float* out) {
         uint8_t* pixels = nullptr;
         _api__get_image_data(h, &pixels);
         if (pixels) *out = 0;
     }},
    {"_api__get_camera_pan", [](int32_t h, float* out) { _api__get_camera_pan(h, out); }},
    {"_api__get_camera_tilt", [](int32_t h, float* out) { _api__get_camera_tilt(h, out); }},
    {"_api__get_camera_view_matrix", [](int32_t h, float* out) { _api__get_camera_view_matrix(h, out); }},
    {"_api__get_camera_position", [](int32_t h, float* out) { _api__get_camera_position(h, as_int(out)); }},
    {"_api__get_camera_direction", [](int32_t h, float* out) { _api__get_camera_direction(h, as_int(out)); }},
    {"_api__get_position", [](int32_t h, float* out) { _api__get_position(h, out, out, out); }},
    {"_api__container_set_bounding_box",
     [](int32_t h, float*) { _api__container_set_bounding_box(h, 0, 0, 0, 1, 1, 1); }},
    {"_api__set_geom_changed", [](int32_t h, float*) { _api__set_geom_changed(h); }},
    {"_api__geom_dispatcher",
     [](int32_t h, float* out) {
         if (_api__geom_dispatcher(h, 1, nullptr, nullptr) != 0) *out = 0;
     }},
};

TEST_F(Scene, UnknownHandlesLeaveOutValuesAlone) {
    const int32_t gone = add_container(*stage_, "gone");
    remove_container(*stage_, gone);
    const int32_t made_up = make_handle(static_cast<ObjectKind>(5), 1);
    for (const Question& question : kQuestions)
        for (const int32_t handle : {kNoObject, gone, made_up, INT32_MIN, INT32_MAX}) {
            stage_->complaints = {};
            float out[16] = {-7};
            question.ask(handle, out);
            EXPECT_EQ(out[0], -7) << question.service << ' ' << handle;
            const size_t complaints = handle == kNoObject ? 0 : 1;  // "none" is no mistake
            ASSERT_EQ(stage_->complaints.list.size(), complaints) << question.service << ' ' << handle;
            for (const Complaint& complaint : stage_->complaints.list) EXPECT_EQ(complaint.call, question.service);
        }
}

TEST_F(Scene, HandlesOfAWrongKindAreNamed) {
    const int32_t container = add_container(*stage_, "outline");
    const int32_t geometry = set_mesh_geometry(*stage_, container, {});
    float pan = -7;
    int32_t detail = -7;
    _api__get_camera_pan(geometry, &pan);
    _api__get_geom_detail(container, &detail);
    _api__get_geom_detail(container, &detail);
    EXPECT_EQ(pan, -7);
    EXPECT_EQ(detail, -7);
    const std::string first = "_api__get_camera_pan: handle " + std::to_string(geometry);
    const std::string second = "_api__get_geom_detail: handle " + std::to_string(container);
    EXPECT_THAT(complaint_texts(*stage_), ElementsAre(first + " is that of a geometry, not of a camera",
                                                      second + " is that of a container, not of a geometry (2 times)"));
}

TEST(Services, WithoutAStageAnswerAsForUnknownObjects) {
    ASSERT_EQ(current_stage(), nullptr);
    double period = -7;
    _api__pellor_get_refreshrate(&period);
    EXPECT_EQ(period, -7);
    EXPECT_EQ(_api__get_objectid("a", "", TOVU_OBJECT_CONTAINER), kNoObject);
    EXPECT_EQ(_api__object_valid(1), 0);
}

TEST_F(Scene, StatusAndTimeAreTold) {
    stage_->clock = {0.04, 0, false, 1, true, true, 2.5};
    advance_frame(*stage_, 3);
    uint8_t on_air = 7, recording = 7;
    float post_seconds = -7;
    int32_t retrace = -7;
    double period = -7;
    _api__pellor_get_is_on_air(&on_air);
    _api__pellor_get_is_post_recording(&recording);
    _api__pellor_get_post_current_time(&post_seconds);
    _api__pellor_get_retrace_counter(&retrace);
    _api__pellor_get_refreshrate(&period);
    EXPECT_EQ(on_air, 1);
    EXPECT_EQ(recording, 1);
    EXPECT_FLOAT_EQ(post_seconds, 2.54f);
    EXPECT_EQ(retrace, 4);
    EXPECT_EQ(period, 0.04);
    EXPECT_DOUBLE_EQ(current_time_seconds(stage_->clock), 0.04);
}

TEST_F(Scene, OverridesStandInAndCanAskTheStage) {
    const int32_t container = add_container(*stage_, "steam");
    stage_->overrides.object_valid = [&](int32_t object) { return _api__object_valid(object) == 0 ? 5 : 6; };
    start_recording_calls();
    EXPECT_EQ(_api__object_valid(container), 6);
    EXPECT_EQ(_api__object_valid(kNoObject), 5);
    stop_recording_calls();
    EXPECT_EQ(recorded_calls().size(), 4u);
    stage_->overrides.object_valid = nullptr;
    EXPECT_EQ(_api__object_valid(container), 1);
}

}  // namespace
}  // namespace stage
