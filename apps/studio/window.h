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
    int width = 1600;  // in units of the screen
    int height = 900;
    bool fullscreen = false;
    double frame_seconds = 0;  // duration of each frame for ImGui; 0: real time
};

struct WindowHandles;

/// The only window of the process. The destructor closes it.
class Window {
  public:
    static stage::Result<Window> open(const WindowOptions& options);
    Window(Window&&) noexcept;
    Window& operator=(Window&&) noexcept;
    ~Window();

    /// Handles all pending events, or waits up to `seconds` for one, and begins a frame of ImGui. text_size: factor on
    /// the font size that suits the screen. keys_navigate: arrows, Space and Tab work in ImGui's panels. False after a
    /// request to close the window.
    bool begin_frame(double seconds, float text_size, bool keys_navigate);
    /// Draws and shows the frame. With a given frame_seconds, only every tenth frame and the frames to keep.
    void end_frame();
    /// Makes the next end_frame copy its picture for kept_frame.
    void keep_next_frame();
    /// The picture of the frame after the latest keep_next_frame.
    const stage::Picture& kept_frame() const;

    /// The files that were dropped on the window since the last call.
    std::vector<std::string> take_dropped_files();

    void set_fullscreen(bool fullscreen);
    void set_size(int width, int height);
    void set_title(const std::string& title);
    const stage::OpenGlDescription& opengl() const;
    /// SDL's ID of the window, for the events of scripts.
    uint32_t id() const;
    /// The height of a line of text, in pixels.
    float text_pixels() const;

  private:
    explicit Window(std::unique_ptr<WindowHandles> handles);
    std::unique_ptr<WindowHandles> handles_;
};

}  // namespace tovu
