// The editors of curves and gradients in an offscreen window: mouse and key events change the points.
#include <gmock/gmock.h>
#include <imgui.h>

#include <functional>

#include "apps/studio/curve_field.h"
#include "apps/studio/widgets/curve_editor.h"
#include "apps/studio/widgets/gradient_editor.h"

namespace widgets {

bool operator==(const CurvePoint& a, const CurvePoint& b) {
    return a.x == b.x && a.y == b.y;
}
void PrintTo(const CurvePoint& point, std::ostream* stream) {
    *stream << point.x << " " << point.y;
}

namespace {

constexpr float kSide = 500;  // of the drawing, pixels
constexpr float kMargin = 6;  // around the drawing: about half a line of ImGui's default font
constexpr float kWhole = kSide + 2 * kMargin;
constexpr float kRow = 23;      // height of a row of fields in ImGui's default font
constexpr float kCorner = 100;  // position of the window; the drawing is at its top

enum class Act { kPress, kRelease, kRightPress, kRightRelease, kDelete };

// The input of one frame. The mouse position is a share of the drawing from the left and from the top.
struct Step {
    float x, y;
    std::vector<Act> acts = {};
};

class Window {
  public:
    Window() {
        ImGui::CreateContext();
        ImGuiIO& io = ImGui::GetIO();
        io.IniFilename = nullptr;
        io.DisplaySize = {1000, 1000};
        io.KeyMap[ImGuiKey_Delete] = 1;
        unsigned char* pixels;
        int width, height;
        io.Fonts->GetTexDataAsRGBA32(&pixels, &width, &height);
    }
    ~Window() { ImGui::DestroyContext(); }

    void run(const std::vector<Step>& steps, const std::function<void()>& content) {
        frame({0.5f, 0.95f}, content);  // appears
        for (const Step& step : steps) frame(step, content);
    }

  private:
    void frame(const Step& step, const std::function<void()>& content) {
        ImGuiIO& io = ImGui::GetIO();
        io.DeltaTime = 0.02f;
        io.MousePos = {kCorner + kMargin + step.x * kSide, kCorner + kMargin + step.y * kSide};
        io.KeysDown[1] = false;
        for (const Act act : step.acts) {
            if (act == Act::kDelete) io.KeysDown[1] = true;
            if (act == Act::kPress || act == Act::kRelease) io.MouseDown[0] = act == Act::kPress;
            if (act == Act::kRightPress || act == Act::kRightRelease) io.MouseDown[1] = act == Act::kRightPress;
        }
        ImGui::NewFrame();
        ImGui::SetNextWindowPos({kCorner, kCorner});
        ImGui::SetNextWindowSize({800, 800});
        ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {0, 0});
        ImGui::Begin("w", nullptr, ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove);
        ImGui::PopStyleVar();
        content();
        ImGui::End();
        ImGui::Render();
    }
};

struct CurveCase {
    const char* name;
    std::vector<Step> steps;
    bool may_step;  // two points may have the same x
    std::vector<CurvePoint> after;
};
void PrintTo(const CurveCase& row, std::ostream* stream) {
    *stream << row.name;
}

const CurveCase kCurves[] = {
    {"a click moves nothing",
     {{0.505f, 0.01f, {Act::kPress}}, {0.505f, 0.01f, {Act::kRelease}}},
     false,
     {{0, 0}, {0.5, 1}, {1, 0}}},
    {"a dragged point keeps its distance from the mouse",
     {{0.51f, 0.01f, {Act::kPress}}, {0.4f, 0.5f}, {0.26f, 0.26f}, {0.1f, 0.1f, {Act::kRelease}}},
     false,
     {{0, 0}, {0.25, 0.75}, {1, 0}}},
    {"it stays between its neighbours and limits",
     {{0.5f, 0.0f, {Act::kPress}}, {1.5f, -1.0f}, {1, 0, {Act::kRelease}}},
     false,
     {{0, 0}, {0.999, 1}, {1, 0}}},
    {"points that may share a place meet",
     {{0.5f, 0.0f, {Act::kPress}}, {1.5f, 0.5f}, {1, 0, {Act::kRelease}}},
     true,
     {{0, 0}, {1, 0.5}, {1, 0}}},
    {"a double click adds a point and drags it",
     {{0.25f, 0.25f, {Act::kPress}},
      {0.25f, 0.25f, {Act::kRelease}},
      {0.25f, 0.25f, {Act::kPress}},
      {0.3f, 0.1f},
      {0.3f, 0.1f, {Act::kRelease}}},
     false,
     {{0, 0}, {0.3, 0.9}, {0.5, 1}, {1, 0}}},
    {"a right click removes a point",
     {{0.5f, 0.0f, {Act::kRightPress}}, {0.5f, 0.0f, {Act::kRightRelease}}},
     false,
     {{0, 0}, {1, 0}}},
    {"Delete removes the chosen point",
     {{1, 1, {Act::kPress}}, {1, 1, {Act::kRelease}}, {0.3f, 0.3f, {Act::kDelete}}},
     false,
     {{0, 0}, {0.5, 1}}},
    {"two points stay",
     {{0.5f, 0, {Act::kRightPress}}, {0, 1, {Act::kRightRelease}}, {0, 1, {Act::kRightPress}}},
     false,
     {{0, 0}, {1, 0}}},
};

class Curves : public testing::TestWithParam<CurveCase> {};

TEST_P(Curves, FollowTheMouse) {
    Window window;
    std::vector<CurvePoint> points = {{0, 0}, {0.5, 1}, {1, 0}};
    CurveLimits limits;
    limits.steps = GetParam().may_step;
    bool changed = false;
    window.run(GetParam().steps, [&] {
        changed |= curve_editor("curve", points, limits, {}, std::vector<float>{1, 2}, {kWhole, kWhole});
    });
    EXPECT_THAT(points, testing::ElementsAreArray(GetParam().after));
    EXPECT_EQ(GetParam().after != (std::vector<CurvePoint>{{0, 0}, {0.5, 1}, {1, 0}}), changed);
}

INSTANTIATE_TEST_SUITE_P(Widgets, Curves, testing::ValuesIn(kCurves));

struct TextCase {
    const char* name;
    int components;
    std::vector<Step> steps;
    const char* before;
    const char* after;
};
void PrintTo(const TextCase& row, std::ostream* stream) {
    *stream << row.name;
}

constexpr float kMiddle = 46.1f / kSide;  // of the drawing's height, which is eight lines

const std::vector<Step> kDoubleClick = {{0.25f, kMiddle, {Act::kPress}},
                                        {0.25f, kMiddle, {Act::kRelease}},
                                        {0.25f, kMiddle, {Act::kPress}},
                                        {0.5f, kMiddle},
                                        {0.5f, kMiddle, {Act::kRelease}}};

const TextCase kTexts[] = {
    {"a point is added and dragged", 1, kDoubleClick, "0 0.123456 1 0.1", "0 0.123456 0.5 0.5 1 0.1"},
    {"a stop has the colour of the place of the double click", 3, kDoubleClick, "0 0.42 0.123456 0 1 0.42 0.123456 1",
     "0 0.42 0.123456 0 0.5 0.42 0.123456 0.25 1 0.42 0.123456 1"},
    {"a text that is no curve has no points", 1, kDoubleClick, "0 1 1", "0 1 1"},
};

class Texts : public testing::TestWithParam<TextCase> {};

TEST_P(Texts, ChangeWithTheirPicture) {
    Window window;
    std::string text = GetParam().before;
    stage::CurveFormat format;
    format.components = GetParam().components;
    window.run(GetParam().steps, [&] {
        if (auto edited = tovu::curve_field(text, {format, {}, {}}, kWhole)) text = *edited;
    });
    EXPECT_EQ(GetParam().after, text);
}

INSTANTIATE_TEST_SUITE_P(Widgets, Texts, testing::ValuesIn(kTexts));

TEST(Widgets, ADragInThePickerIsOneEdit) {
    Window window;
    std::vector<GradientStop> stops = {{0.0, {1, 0, 0}}, {1.0, {0, 0, 1}}};
    int begins = 0, changes = 0, ends = 0;
    const float row = 1 + (2 * kMargin + kRow) / kSide;  // the second row below the drawing
    const std::vector<Step> steps = {
        {0.9f, row, {Act::kPress}},           {0.9f, row, {Act::kRelease}}, {1.0f, row + 0.1f},
        {1.0f, row + 0.1f, {Act::kPress}},    {1.05f, row + 0.1f},          {1.1f, row + 0.15f},
        {1.1f, row + 0.15f, {Act::kRelease}}, {1.1f, row + 0.15f}};
    window.run(steps, [&] {
        changes += gradient_editor("gradient", stops, {}, {kWhole, kWhole}) ? 1 : 0;
        begins += ImGui::IsItemActivated() ? 1 : 0;
        ends += ImGui::IsItemDeactivated() ? 1 : 0;
    });
    EXPECT_EQ(2, begins) << "the button that opens the picker, and the drag";
    EXPECT_EQ(2, ends);
    EXPECT_LE(2, changes);
}

}  // namespace
}  // namespace widgets
