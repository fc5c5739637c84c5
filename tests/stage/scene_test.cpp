// Objects of the scene: stale handles, look-up, images, mesh access, and wrong handles.
#include <gmock/gmock.h>
#include <tovu/host_services.h>
#include <tovu/opengl.h>

#include "stage/call_log.h"
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
    StagePtr stage = make_stage();
};

TEST_F(Scene, RemovedObjectsStayGone) {
    const int32_t parent = add_container(*stage, "parent");
    const int32_t child = add_container(*stage, "child", parent);
    const int32_t geometry = set_mesh_geometry(*stage, child, {});
    for (const int32_t handle : {parent, child, geometry}) EXPECT_NE(_api__object_valid(handle), 0);

    EXPECT_TRUE(remove_container(*stage, parent));
    const int32_t next = add_container(*stage, "child");
    for (const int32_t handle : {parent, child, geometry}) {
        EXPECT_EQ(_api__object_valid(handle), 0);
        EXPECT_EQ(_api__get_objectid_from_objectid(number_of(handle)), kNoObject);
        EXPECT_NE(handle, next);
    }
    EXPECT_FALSE(remove_container(*stage, parent));
    EXPECT_EQ(add_container(*stage, "orphan", parent), kNoObject);
    EXPECT_EQ(_api__get_objectid("child", "", TOVU_OBJECT_CONTAINER), next);
}

TEST_F(Scene, ObjectsAreFoundInTreeOrderByNameAndByNumber) {
    const int32_t a = add_container(*stage, "a");
    const int32_t b = add_container(*stage, "b");
    const int32_t first = add_container(*stage, "same", b);
    const int32_t second = add_container(*stage, "same", a);
    EXPECT_THAT(containers_in_tree_order(*stage), ElementsAre(a, second, b, first));
    EXPECT_EQ(_api__get_objectid("same", "", TOVU_OBJECT_CONTAINER), second);
    EXPECT_EQ(_api__get_objectid("other", "", TOVU_OBJECT_CONTAINER), kNoObject);
    EXPECT_EQ(number_of(a), 1);
    EXPECT_EQ(_api__get_objectid_from_objectid(3), first);
    for (const int32_t number : {-1, 0, 5, 1 << 24}) EXPECT_EQ(_api__get_objectid_from_objectid(number), kNoObject);
    EXPECT_THAT(complaint_texts(*stage), IsEmpty());
}

TEST_F(Scene, VisibilityAndOpacityGoDownTheTree) {
    const int32_t parent = add_container(*stage, "parent");
    const int32_t child = add_container(*stage, "child", parent);
    set_mesh_geometry(*stage, child, {});
    find_container(*stage, parent)->opacity = 0.5f;
    find_container(*stage, child)->opacity = 0.25f;
    std::vector<float> opacities;
    const auto note = [&](const DrawItem& item) { opacities.push_back(item.opacity); };
    for_each_shown(*stage, note);
    EXPECT_THAT(opacities, ElementsAre(0.125f)) << "the parent carries nothing to draw";
    find_container(*stage, parent)->visible = false;
    for_each_shown(*stage, note);
    EXPECT_THAT(opacities, testing::SizeIs(1)) << "hidden with its parent";
}

using WrongImage = std::tuple<const char*, int32_t, int32_t, int32_t, size_t, const char*>;
const WrongImage kWrongImages[] = {
    // name, width, height, format, bytes given, a part of the message
    {"fresh", 2, 2, GL_RGBA, 15, "'fresh': 2 x 2 pixels of 4 bytes need 16 bytes, but 15"},
    {"fresh", 0, 2, GL_RGB, 0, "at least 1"},
    {"taken", 1, 1, GL_RGB, 3, "'taken': there is an image of this name already"},
};

TEST_F(Scene, WrongImagesAreRefused) {
    ASSERT_TRUE(add_image(*stage, "taken", 1, 1, GL_ALPHA, {0}));
    for (const auto& [name, width, height, format, bytes, message] : kWrongImages) {
        const auto added = add_image(*stage, name, width, height, format, std::vector<uint8_t>(bytes));
        ASSERT_FALSE(added) << message;
        EXPECT_THAT(added.error().message, HasSubstr(message));
    }
    EXPECT_EQ(stage->images.size(), 1u);
}

class MeshAccess : public Scene {
  protected:
    int32_t open(bool begin = true) {
        int32_t detail = -1, access = 0;
        _api__get_geom_detail(outline_geometry, &detail);
        _api__get_geom_geomod(outline_geometry, 2, detail, &access);
        if (begin) _api__geomod_init(access);
        return access;
    }

    int32_t outline_container = add_container(*stage, "outline");
    int32_t outline_geometry =
        set_mesh_geometry(*stage, outline_container, {{{{1, 2, 3}, {4, 5, 6}}}, {{}}, {{{7, 8, 9}, {10, 11, 12}}}});
};

/// A wrong call with an out value, and a part of the complaint.
const std::pair<void (*)(int32_t access, int32_t* out), const char*> kWrongMeshCalls[] = {
    {[](int32_t a, int32_t* out) { _api__geomod_goto_mesh(a, 3, out); }, "no mesh 3"},
    {_api__geomod_next_mesh, "mesh cursor -7 stands on no mesh"},
    {[](int32_t a, int32_t* out) { _api__geomod_get_num_mesh_verices(a, 4, out); }, "mesh cursor 4 stands on no mesh"},
    {[](int32_t a, int32_t* out) { _api__geomod_goto_vertex(a, 1, 2, out); }, "no vertex 2 among 2"},
    {[](int32_t a, int32_t* out) { _api__geomod_next_vertex(a, 1, out); }, "vertex cursor -7 stands on no vertex of"},
    {[](int32_t, int32_t* out) { _api__geomod_get_info(0, out, out, nullptr, nullptr, nullptr); }, "0 is not a handle"},
};

TEST_F(MeshAccess, WrongCursorsAreNotFollowed) {
    const int32_t access = open();
    for (const auto& [call, message] : kWrongMeshCalls) {
        SCOPED_TRACE(message);
        stage->complaints = {};
        start_recording_calls();
        int32_t out = -7;
        call(access, &out);
        EXPECT_EQ(out, -7);
        const std::string service = recorded_calls().at(0).name;
        EXPECT_THAT(complaint_texts(*stage),
                    ElementsAre(testing::AllOf(testing::StartsWith(service), HasSubstr(message))));
    }
    stage->complaints = {};
    float x = -7, y = -7, z = -7;
    _api__geomod_get_vertex(access, 3, &x, &y, &z);  // of a cursor that has passed the first mesh's last vertex
    EXPECT_THAT(std::vector({x, y, z}), ElementsAre(-7, -7, -7));
    EXPECT_THAT(complaint_texts(*stage), ElementsAre(HasSubstr("vertex cursor 3 stands on no vertex")));
}

TEST_F(MeshAccess, MustBeBegunAndEndsWithItsFrame) {
    int32_t cursor = -7;
    const int32_t access = open(false);
    _api__geomod_goto_mesh(access, 0, &cursor);
    _api__geomod_init(access);
    advance_frame(*stage);
    _api__geomod_goto_mesh(access, 0, &cursor);
    EXPECT_EQ(cursor, -7);
    EXPECT_THAT(complaint_texts(*stage),
                ElementsAre("_api__geomod_goto_mesh: the mesh access was not begun with _api__geomod_init",
                            "_api__geomod_goto_mesh: the mesh access is of an earlier frame"));
}

// That all services leave out values unchanged is tested with the probe (tests/sdk).
TEST_F(Scene, WrongHandlesAreNamed) {
    const int32_t container = add_container(*stage, "outline");
    const int32_t geometry = set_mesh_geometry(*stage, container, {});
    float pan = -7;
    int32_t detail = -7;
    _api__get_camera_pan(geometry, &pan);
    for (int i = 0; i < 2; ++i) _api__get_geom_detail(container, &detail);
    remove_geometry(*stage, container);
    for (const int32_t handle : {kNoObject, geometry, 7}) _api__get_geom_detail(handle, &detail);
    EXPECT_THAT(complaint_texts(*stage), ElementsAre("_api__get_camera_pan: handle " + std::to_string(geometry) +
                                                         " is that of a geometry, not of a camera",
                                                     "_api__get_geom_detail: handle " + std::to_string(container) +
                                                         " is that of a container, not of a geometry (2 times)",
                                                     "_api__get_geom_detail: geometry #2 does not exist",
                                                     "_api__get_geom_detail: 7 is not a handle"));
}

TEST_F(Scene, WithoutAStageNothingIsAnswered) {
    stage.reset();
    double period = -7;
    _api__pellor_get_refreshrate(&period);
    EXPECT_EQ(period, -7);
    EXPECT_EQ(_api__get_objectid("a", "", TOVU_OBJECT_CONTAINER), kNoObject);
    EXPECT_EQ(_api__object_valid(1), 0);
}

TEST_F(Scene, OverridesReplaceAnswersAndCanAskTheStage) {
    const int32_t container = add_container(*stage, "steam");
    stage->overrides.object_valid = [](int32_t object) { return _api__object_valid(object) + 5; };
    for (int i = 0; i < 2; ++i) EXPECT_EQ(_api__object_valid(container), 6);
}

}  // namespace
}  // namespace stage
