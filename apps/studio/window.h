// The studio's window: SDL, its OpenGL context and ImGui.
#pragma once

#include <SDL.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "stage/assets/picture.h"
#include "stage/opengl/context.h"
#include "stage/result.h"

namespace tovu {

struct WindowOptions {
    int width = 1600;  // of the screen's units
    int height = 900;
    bool fullscreen = false;
    double frame_seconds = 0;  // that ImGui takes each frame for; 0: the time that it took
};

struct WindowHandles;

/// One window for the process. The destructor closes it.
class Window {
  public:
    static stage::Result<Window> open(const WindowOptions& options);
    Window(Window&&) noexcept;
    Window& operator=(Window&&) noexcept;
    ~Window();

    /// Takes all events that are waiting, or waits up to `seconds` for one, and begins a frame of ImGui with text of
    /// `text_size` times the size that suits the screen. keys_navigate: arrows, Space and Tab work in ImGui's panels.
    /// False once the window was asked to close.
    bool begin_frame(double seconds, float text_size, bool keys_navigate);
    /// Draws what ImGui was told and shows it; with a given time of frames every tenth and those to keep.
    void end_frame();
    void keep_next_frame();
    /// The frame that was drawn after the last keep_next_frame.
    const stage::Picture& kept_frame() const;

    /// The files that were dropped on the window since the last call.
    std::vector<std::string> take_dropped_files();

    void set_fullscreen(bool fullscreen);
    void set_size(int width, int height);
    void set_title(const std::string& title);
    const stage::OpenGlDescription& opengl() const;
    /// For events that a script makes.
    uint32_t id() const;
    /// Pixels of a line of text.
    float text_pixels() const;

  private:
    explicit Window(std::unique_ptr<WindowHandles> handles);
    std::unique_ptr<WindowHandles> handles_;
};

}  // namespace tovu
