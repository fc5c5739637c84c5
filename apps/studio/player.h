// Plays scenes in a thread of its own: the window stays responsive however long a frame takes to draw.
#pragma once

#include <memory>
#include <vector>

#include "look_framing.h"
#include "play_run.h"

namespace tovu {

struct FrameRange {
    int64_t first = 0;  // both included
    int64_t last = 0;
};

/// A plug-in's button to be pressed in the run.
struct PressOrder {
    int64_t number = 0;  // greater for another press
    std::string container;
    std::string button;
};

/// What the player should do. It always works toward the newest orders, so that orders in between may be skipped.
struct PlayOrders {
    int64_t scene_number = 0;                              // greater for another scene
    std::shared_ptr<const stage::SceneDescription> scene;  // null: none
    bool measures_framing = false;                         // of the scene, instead of playing it
    bool playing = false;
    double speed = 1.0;  // of the clock; the time step of a frame stays
    bool loop = true;
    FrameRange range;         // that is looped
    int64_t seek_number = 0;  // greater for another seek
    int64_t seek_frame = 0;
    int64_t cancel_number = 0;  // greater: stop a seek where it is
    PressOrder press;           // waits until a seek has ended
    ViewOrders view;
};

/// A small picture of a scene for a gallery.
struct ThumbnailOrder {
    std::string name;                                      // that its picture comes with
    std::shared_ptr<const stage::SceneDescription> scene;  // of the size to draw
    int64_t frame = 0;
    bool measures_framing = false;  // to be drawn with it
};
struct Thumbnail {
    std::string name;
    stage::Result<stage::Picture> picture;
};

/// What has happened since the report before.
struct PlayReport {
    std::shared_ptr<const DrawnFrame> drawn;  // newest; null before the first
    std::shared_ptr<const SceneFacts> facts;  // of the scene that is shown; null before the first
    std::vector<FrameNumbers> numbers;        // of the pictures since the report before
    int64_t frame = 0;                        // that is shown
    int64_t drawn_scene = 0;                  // number of the scene that is shown
    int64_t done_seek = 0;                    // number of the last seek that was begun
    int64_t framed_scene = 0;                 // number of the last scene whose framing was measured
    Framing framing;                          // of it; the default one when nothing could be measured
    int64_t failed_scene = 0;                 // number of the last scene that cannot be played
    std::string error;                        // of it, a line for each mistake
    bool seeking = false;
    float seek_share = 0.0f;      // 0 to 1, of the frames to run
    double seek_seconds = 0.0;    // how long it has taken until now
    double last_seek_ms = 0.0;    // of the last one that ended, building included
    double shown_per_second = 0;  // pictures, while playing
    double run_per_second = 0;    // frames, while playing
    bool at_end = false;          // the end of the scene was reached without a loop
    std::vector<Thumbnail> thumbnails;
};

/// kStepped: time passes only as `Player::advance` says, so that a run is the same on any machine under any load.
enum class PlayClock { kReal, kStepped };

struct PlayerThread;

/// Owns the thread; the destructor ends it.
class Player {
  public:
    /// smoke_plugin: the library for "smoke".
    Player(std::string smoke_plugin, PlayClock clock);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player();

    void order(const PlayOrders& orders);
    /// The first one is drawn when there is nothing to play or to seek.
    void order_thumbnails(std::vector<ThumbnailOrder> orders);
    PlayReport report();
    /// Adds `seconds`, 0 or more, to a stepped clock. Returns once the player has done what the orders want by then.
    void advance(double seconds);

  private:
    std::unique_ptr<PlayerThread> thread_;
};

}  // namespace tovu
