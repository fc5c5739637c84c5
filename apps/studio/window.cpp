#include "window.h"

#include <backends/imgui_impl_opengl2.h>
#include <backends/imgui_impl_sdl.h>
#include <fmt/format.h>
#include <imgui.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "stage/opengl/window_frame.h"
#include "theme.h"

namespace tovu {

using stage::Done;
using stage::Error;
using stage::Result;

constexpr int kDrawnOfStepped = 10;        // with given frame_seconds, one of this many frames is drawn
constexpr float kKeyRepeatDelay = 0.275f;  // seconds that a key is held before it repeats

struct WindowHandles {
    SDL_Window* window = nullptr;
    SDL_GLContext context = nullptr;
    bool has_imgui = false;
    bool has_backends = false;
    stage::OpenGlDescription opengl;
    float text_pixels = 0;
    double frame_seconds = 0;
    int frames = 0;  // since the window opened
    ImVec2 mouse{-FLT_MAX, -FLT_MAX};
    std::array<bool, 3> mouse_down{};
    std::array<bool, 3> mouse_pressed{};  // since the last frame
    std::vector<std::string> dropped;     // files
    bool keep = false;
    stage::Picture kept;

    WindowHandles() = default;
    WindowHandles(const WindowHandles&) = delete;
    WindowHandles& operator=(const WindowHandles&) = delete;
    ~WindowHandles() {
        if (has_backends) {
            ImGui_ImplOpenGL2_Shutdown();
            ImGui_ImplSDL2_Shutdown();
        }
        if (has_imgui) ImGui::DestroyContext();
        if (context != nullptr) SDL_GL_DeleteContext(context);
        // Does not call SDL_Quit, which unloads the driver: leak checkers could then not attribute the driver's memory.
        if (window != nullptr) SDL_DestroyWindow(window);
    }
};

namespace {

Error sdl_error(const char* what) {
    return Error{fmt::format("{}: {}", what, SDL_GetError())};
}

// The font size in pixels that is legible from one metre: from the scale of the screen if the system reports one, else
// from the window's height. Smaller in a window that is too small for all panels.
float suitable_text_pixels(SDL_Window* window) {
    int width = 0, height = 0, drawn_height = 0;
    SDL_GetWindowSize(window, &width, &height);
    SDL_GL_GetDrawableSize(window, nullptr, &drawn_height);
    const float scale = static_cast<float>(drawn_height) / static_cast<float>(std::max(height, 1));
    const float by_height = drawn_height >= 1800   ? 2.0f
                            : drawn_height >= 1300 ? 1.5f
                            : drawn_height >= 1000 ? 1.15f
                                                   : 1.0f;
    const float room = std::min(static_cast<float>(width) / 960.0f, static_cast<float>(height) / 540.0f);
    return 16.0f * std::max(scale, by_height) * std::clamp(room, 0.75f, 1.0f);
}

std::optional<size_t> button_index(uint8_t button) {
    if (button == SDL_BUTTON_LEFT) return 0;
    if (button == SDL_BUTTON_RIGHT) return 1;
    if (button == SDL_BUTTON_MIDDLE) return 2;
    return {};
}

// Follows the mouse by its events. ImGui's back end queries the system instead, which does not see the events of
// scripts.
void follow_mouse(WindowHandles& handles, const SDL_Event& event) {
    if (event.type == SDL_MOUSEMOTION)
        handles.mouse = {static_cast<float>(event.motion.x), static_cast<float>(event.motion.y)};
    if (event.type == SDL_WINDOWEVENT && event.window.event == SDL_WINDOWEVENT_LEAVE && !handles.mouse_down[0] &&
        !handles.mouse_down[1] && !handles.mouse_down[2])
        handles.mouse = {-FLT_MAX, -FLT_MAX};
    if (event.type != SDL_MOUSEBUTTONDOWN && event.type != SDL_MOUSEBUTTONUP) return;
    const std::optional<size_t> button = button_index(event.button.button);
    if (!button) return;
    handles.mouse = {static_cast<float>(event.button.x), static_cast<float>(event.button.y)};
    handles.mouse_down[*button] = event.type == SDL_MOUSEBUTTONDOWN;
    if (handles.mouse_down[*button]) handles.mouse_pressed[*button] = true;
}

// Converts the mouse position from units of the screen to pixels. ImGui works in pixels, so that text is sharp on every
// screen.
void place_mouse(WindowHandles& handles) {
    int width = 0, height = 0, drawn_width = 0, drawn_height = 0;
    SDL_GetWindowSize(handles.window, &width, &height);
    SDL_GL_GetDrawableSize(handles.window, &drawn_width, &drawn_height);
    ImGuiIO& io = ImGui::GetIO();
    const float x = static_cast<float>(drawn_width) / static_cast<float>(std::max(width, 1));
    const float y = static_cast<float>(drawn_height) / static_cast<float>(std::max(height, 1));
    io.DisplaySize = {static_cast<float>(drawn_width), static_cast<float>(drawn_height)};
    io.DisplayFramebufferScale = {1, 1};
    const bool outside = handles.mouse.x == -FLT_MAX;
    io.MousePos = outside ? handles.mouse : ImVec2{handles.mouse.x * x, handles.mouse.y * y};
    for (size_t i = 0; i < handles.mouse_down.size(); ++i) {
        io.MouseDown[i] = handles.mouse_down[i] || handles.mouse_pressed[i];
        handles.mouse_pressed[i] = false;
    }
}

// Takes the modifiers from the key event. ImGui's back end queries the present ones, which differ if a slow frame
// handles the event late.
void follow_modifiers(const SDL_Event& event) {
    if (event.type != SDL_KEYDOWN && event.type != SDL_KEYUP) return;
    ImGuiIO& io = ImGui::GetIO();
    io.KeyCtrl = (event.key.keysym.mod & KMOD_CTRL) != 0;
    io.KeyShift = (event.key.keysym.mod & KMOD_SHIFT) != 0;
    io.KeyAlt = (event.key.keysym.mod & KMOD_ALT) != 0;
}

void take_dropped(WindowHandles& handles, const SDL_DropEvent& drop) {
    handles.dropped.emplace_back(drop.file);
    SDL_free(drop.file);
}

bool take_events(WindowHandles& handles, double seconds) {
    SDL_Event event;
    bool waits = seconds > 0;
    bool open = true;
    while (waits ? SDL_WaitEventTimeout(&event, std::max(1, static_cast<int>(seconds * 1000)))
                 : SDL_PollEvent(&event)) {
        waits = false;
        ImGui_ImplSDL2_ProcessEvent(&event);
        follow_mouse(handles, event);
        follow_modifiers(event);
        if (event.type == SDL_DROPFILE) take_dropped(handles, event.drop);
        open = open && event.type != SDL_QUIT;
        // ImGui sees one press or release per frame. Repeats of a held key do not count as presses.
        const bool is_press = event.type == SDL_KEYDOWN && event.key.repeat == 0;
        if (is_press || event.type == SDL_MOUSEBUTTONUP || event.type == SDL_KEYUP) break;
    }
    return open;
}

}  // namespace

Result<Window> Window::open(const WindowOptions& options) {
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_VIDEO_HIGHDPI_DISABLED, "0");
    auto handles = std::make_unique<WindowHandles>();
    handles->frame_seconds = options.frame_seconds;
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        return Error{fmt::format("no window can be opened: {}; SDL_VIDEODRIVER=offscreen works without a display",
                                 SDL_GetError())};
    uint32_t flags = SDL_WINDOW_OPENGL | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI;
    if (options.fullscreen) flags |= SDL_WINDOW_FULLSCREEN_DESKTOP;
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    handles->window = SDL_CreateWindow("TovuSmoke studio", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED,
                                       options.width, options.height, flags);
    if (handles->window == nullptr) return sdl_error("no window can be opened");
    SDL_SetWindowMinimumSize(handles->window, 640, 400);  // in a smaller window buttons would be out of reach
    handles->context = SDL_GL_CreateContext(handles->window);
    if (handles->context == nullptr) return sdl_error("the window gets no OpenGL");
    SDL_GL_SetSwapInterval(1);
    SDL_StartTextInput();
    SDL_GL_LoadLibrary(nullptr);  // one more reference, so that closing the window does not unload the driver
    handles->opengl = stage::current_opengl_description();
    ImGui::CreateContext();
    handles->has_imgui = true;
    ImGui::GetIO().IniFilename = nullptr;
    ImGui::GetIO().ConfigWindowsMoveFromTitleBarOnly = true;
    ImGui::GetIO().ConfigDragClickToInputText = true;
    ImGui_ImplSDL2_InitForOpenGL(handles->window, handles->context);
    ImGui_ImplOpenGL2_Init();
    handles->has_backends = true;
    return Window(std::move(handles));
}

bool Window::begin_frame(double seconds, float text_size, bool keys_navigate) {
    const bool open = take_events(*handles_, seconds);
    const float pixels = std::floor(suitable_text_pixels(handles_->window) * text_size);
    if (pixels != handles_->text_pixels) {
        handles_->text_pixels = pixels;
        ImGui_ImplOpenGL2_DestroyFontsTexture();
        if (!apply_theme(pixels)) ImGui::GetIO().Fonts->AddFontDefault();
        ImGui_ImplOpenGL2_CreateFontsTexture();
    }
    ImGui_ImplOpenGL2_NewFrame();
    ImGui_ImplSDL2_NewFrame();
    if (handles_->frame_seconds > 0) ImGui::GetIO().DeltaTime = static_cast<float>(handles_->frame_seconds);
    place_mouse(*handles_);
    // ImGui sees a release only at the next frame. The delay is longer than a frame, so that a late frame does not turn
    // a press into repeats.
    ImGui::GetIO().KeyRepeatDelay = std::max(kKeyRepeatDelay, 1.5f * ImGui::GetIO().DeltaTime);
    ImGui::GetIO().ConfigFlags = keys_navigate ? ImGuiConfigFlags_NavEnableKeyboard : ImGuiConfigFlags_None;
    // Makes Enter press buttons too. ImGui itself uses only Space.
    ImGui::GetIO().NavInputs[ImGuiNavInput_Activate] = ImGui::GetIO().KeysDown[SDL_SCANCODE_RETURN] ? 1.0f : 0.0f;
    ImGui::NewFrame();
    return open;
}

void Window::end_frame() {
    ImGui::Render();
    // Skips most frames of a scripted window, since drawing in software takes most of a frame's time.
    if (++handles_->frames % kDrawnOfStepped != 0 && handles_->frame_seconds > 0 && !handles_->keep) return;
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    const auto width = static_cast<int32_t>(size.x), height = static_cast<int32_t>(size.y);
    stage::clear_window(width, height, {0.08f, 0.09f, 0.11f});
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
    if (handles_->keep) handles_->kept = stage::read_window(width, height);
    handles_->keep = false;
    SDL_GL_SwapWindow(handles_->window);
}

void Window::keep_next_frame() {
    handles_->keep = true;
}

const stage::Picture& Window::kept_frame() const {
    return handles_->kept;
}

std::vector<std::string> Window::take_dropped_files() {
    return std::exchange(handles_->dropped, {});
}

void Window::set_fullscreen(bool fullscreen) {
    SDL_SetWindowFullscreen(handles_->window, fullscreen ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
}

void Window::set_size(int width, int height) {
    SDL_SetWindowSize(handles_->window, width, height);
}

void Window::set_title(const std::string& title) {
    SDL_SetWindowTitle(handles_->window, title.c_str());
}

const stage::OpenGlDescription& Window::opengl() const {
    return handles_->opengl;
}

uint32_t Window::id() const {
    return SDL_GetWindowID(handles_->window);
}

float Window::text_pixels() const {
    return handles_->text_pixels;
}

Window::Window(std::unique_ptr<WindowHandles> handles) : handles_(std::move(handles)) {}
Window::Window(Window&&) noexcept = default;
Window& Window::operator=(Window&&) noexcept = default;
Window::~Window() = default;

}  // namespace tovu
