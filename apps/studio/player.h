// Plays scenes in a separate thread, so that the window stays responsive while slow frames are drawn.
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

/// A press of a plug-in's button in the run.
struct PressOrder {
    int64_t number = 0;  // increase for each press
    std::string container;
    std::string button;
};

/// Orders to the player. The player follows the newest orders and may skip older ones.
struct PlayOrders {
    int64_t scene_number = 0;                              // increase for each new scene
    std::shared_ptr<const stage::SceneDescription> scene;  // null: none
    bool measures_framing = false;                         // measure the scene's framing, do not play it
    bool playing = false;
    double speed = 1.0;  // factor on the clock; the time step of a frame does not change
    bool loop = true;
    FrameRange range;         // of the loop
    int64_t seek_number = 0;  // increase for each seek
    int64_t seek_frame = 0;
    int64_t cancel_number = 0;  // increase to stop a seek at the frame it has reached
    PressOrder press;           // carried out after a seek has ended
    ViewOrders view;
};

/// An order for a small picture of a scene.
struct ThumbnailOrder {
    std::string name;                                      // returned with the picture
    std::shared_ptr<const stage::SceneDescription> scene;  // its size is the size of the picture
    int64_t frame = 0;
    bool measures_framing = false;  // measure the framing and use it for the picture
};
struct Thumbnail {
    std::string name;
    stage::Result<stage::Picture> picture;
};

/// The state of the player, and the results since the previous report.
struct PlayReport {
    std::shared_ptr<const DrawnFrame> drawn;  // newest picture; null before the first
    std::shared_ptr<const SceneFacts> facts;  // of the shown scene; null before the first
    std::vector<FrameNumbers> numbers;        // of all pictures since the previous report
    int64_t frame = 0;                        // number of the shown frame
    int64_t drawn_scene = 0;                  // number of the shown scene
    int64_t done_seek = 0;                    // number of the latest seek that has begun
    int64_t framed_scene = 0;                 // number of the latest scene whose framing was measured
    Framing framing;                          // of framed_scene; the default framing if the measurement failed
    int64_t failed_scene = 0;                 // number of the latest scene that cannot be played
    std::string error;                        // of failed_scene, a line for each mistake
    bool seeking = false;
    float seek_share = 0.0f;      // progress of the seek, 0 to 1
    double seek_seconds = 0.0;    // duration of the seek until now
    double last_seek_ms = 0.0;    // duration of the latest finished seek, including building
    double shown_per_second = 0;  // pictures, while playing
    double run_per_second = 0;    // frames, while playing
    bool at_end = false;          // the end of the scene was reached without a loop
    std::vector<Thumbnail> thumbnails;
};

/// kStepped: time passes only in Player::advance, so that a run gives the same result on any machine under any load.
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
    /// Replaces the orders for small pictures. They are drawn in order while there is nothing to play or seek.
    void order_thumbnails(std::vector<ThumbnailOrder> orders);
    PlayReport report();
    /// Adds `seconds`, 0 or more, to a stepped clock. Returns after the player has done all work that is due by then.
    void advance(double seconds);

  private:
    std::unique_ptr<PlayerThread> thread_;
};

}  // namespace tovu
