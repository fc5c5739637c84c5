#include "player.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "stage/scenefile/timeline.h"

namespace tovu {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using stage::Done;
using stage::Result;

constexpr auto kSlice = std::chrono::milliseconds(20);  // of work between two checks of the orders
constexpr int kSteppedSlice = 20;                       // frames in a slice of a stepped clock
constexpr auto kPatience = std::chrono::seconds(1);     // a longer seek is stopped by a newer scene
constexpr double kMostLateSeconds = 0.25;               // a longer delay is dropped: the clock is set back
constexpr auto kIdleWait = std::chrono::milliseconds(50);

// Frames or pictures per second, measured over periods of at least half a second.
struct Rate {
    Clock::time_point start;
    int count = 0;
    double per_second = 0;
};

void add_to(Rate& rate, Clock::time_point now) {
    ++rate.count;
    const double seconds = Seconds(now - rate.start).count();
    if (seconds < 0.5) return;
    rate = {now, 0, rate.count / seconds};
}

}  // namespace

struct PlayerThread {
    std::string smoke_plugin;
    PlayClock clock = PlayClock::kReal;
    std::mutex mutex;
    std::condition_variable changed;
    // Shared by both threads, protected by the mutex.
    PlayOrders ordered;
    std::vector<ThumbnailOrder> thumbnails;
    PlayReport reported;
    bool quit = false;
    PlayOrders orders;               // copy of `ordered` that the thread follows; only the thread writes it
    bool draws_thumbnail = false;    // the thread has no other work
    Clock::time_point ordered_time;  // of a stepped clock: the time that the thread may work to
    Clock::time_point worked_time;   // of a stepped clock: the time that the thread has worked to
    std::condition_variable has_worked;
    // Used only by the thread.
    Clock::time_point stepped_time;  // present time of a stepped clock
    std::optional<PlayRun> play;
    std::optional<stage::SceneCanvas> canvas;
    int64_t played_scene = 0;  // number of the latest scene, also if it failed
    int64_t done_seek = 0;
    int64_t done_cancel = 0;
    int64_t done_press = 0;
    std::optional<int64_t> target;  // frame that a running seek leads to
    Clock::time_point seek_start;
    int64_t seek_from = 0;
    bool must_draw = false;
    ViewOrders drawn_view;
    Clock::time_point pace_start;  // time at which `pace_frame` was due
    int64_t pace_frame = 0;
    bool paced = false;  // playing since pace_start
    double paced_speed = 1.0;
    Rate shown, run;
    std::thread thread;  // last, since it uses the other members
};

namespace {

Clock::time_point now(const PlayerThread& player) {
    return player.clock == PlayClock::kReal ? Clock::now() : player.stepped_time;
}

// Whether new orders interrupt the present work. Call with the mutex locked.
bool has_new_orders(const PlayerThread& player) {
    const PlayOrders &ordered = player.ordered, &taken = player.orders;
    return player.quit || ordered.scene_number != taken.scene_number || ordered.seek_number != taken.seek_number ||
           ordered.playing != taken.playing || ordered.view != taken.view || ordered.press.number != taken.press.number;
}

void report_failure(PlayerThread& player, const std::string& message) {
    const std::lock_guard lock(player.mutex);
    player.reported.failed_scene = player.played_scene;
    player.reported.error = message;
    player.reported.seeking = false;
}

// Ends the run after it failed.
void fail(PlayerThread& player, const std::string& message) {
    player.play.reset();
    player.target.reset();
    report_failure(player, message);
}

// Builds the ordered scene and begins a seek to `frame`. If that fails, the previous scene stays on screen.
void build(PlayerThread& player, int64_t frame) {
    player.played_scene = player.orders.scene_number;
    player.paced = false;
    Result<PlayRun> made = make_play_run(*player.orders.scene, player.smoke_plugin, player.played_scene);
    if (!made) return report_failure(player, made.error().message);
    Result<Done> fits = Done{};
    if (player.canvas) {
        fits = stage::reuse_canvas(*player.canvas, *player.orders.scene);
    } else {
        Result<stage::SceneCanvas> canvas = stage::make_canvas(*player.orders.scene);
        if (canvas)
            player.canvas.emplace(std::move(*canvas));
        else
            fits = canvas.error();
    }
    if (!fits) return fail(player, fits.error().message);
    player.play.emplace(std::move(*made));
    player.target = frame;
    player.seek_from = current_frame(*player.play);
    const std::lock_guard lock(player.mutex);
    player.reported.facts = player.play->facts;
}

int64_t last_frame(const PlayerThread& player) {
    return stage::frame_count(player.play->run.built.description) - 1;
}

// Begins a seek. A frame before the current one needs a new run.
void seek(PlayerThread& player, int64_t frame) {
    player.seek_start = now(player);
    if (!player.play || frame < current_frame(*player.play)) return build(player, frame);
    player.target = std::min(frame, last_frame(player));
    player.seek_from = current_frame(*player.play);
    player.paced = false;
}

void report_seek(PlayerThread& player) {
    const double seconds = Seconds(now(player) - player.seek_start).count();
    const std::lock_guard lock(player.mutex);
    PlayReport& report = player.reported;
    report.seeking = player.target.has_value();
    report.seek_seconds = seconds;
    if (!player.target) {
        report.last_seek_ms = seconds * 1000.0;
        return;
    }
    const auto whole = static_cast<float>(std::max<int64_t>(1, *player.target - player.seek_from));
    report.seek_share = static_cast<float>(current_frame(*player.play) - player.seek_from) / whole;
}

bool run_frame(PlayerThread& player) {
    const Result<Done> done = run_next_frame(*player.play);
    if (!done) fail(player, done.error().message);
    return static_cast<bool>(done);
}

// Runs toward the target for one slice.
void continue_seek(PlayerThread& player) {
    const int64_t target = std::clamp<int64_t>(*player.target, 0, last_frame(player));
    const Clock::time_point end = now(player) + kSlice;
    int frames_left = player.clock == PlayClock::kStepped ? kSteppedSlice : INT_MAX;
    while (current_frame(*player.play) < target && now(player) < end && frames_left-- > 0)
        if (!run_frame(player)) return;
    if (current_frame(*player.play) >= target) {
        player.target.reset();
        player.must_draw = true;
    }
    report_seek(player);
}

void draw(PlayerThread& player) {
    player.must_draw = false;
    player.drawn_view = player.orders.view;
    Result<DrawnFrame> drawn = draw_run(*player.play, *player.canvas, player.orders.view);
    if (!drawn) return fail(player, drawn.error().message);
    const auto shown = std::make_shared<const DrawnFrame>(std::move(*drawn));
    if (player.paced) add_to(player.shown, now(player));
    const std::lock_guard lock(player.mutex);
    player.reported.drawn = shown;
    player.reported.numbers.push_back(shown->numbers);
    player.reported.frame = shown->numbers.frame;
    player.reported.drawn_scene = player.play->facts->scene_number;
    player.reported.done_seek = player.done_seek;
    player.reported.shown_per_second = player.paced ? player.shown.per_second : 0.0;
    player.reported.run_per_second = player.paced ? player.run.per_second : 0.0;
    if (player.reported.failed_scene != 0 && player.reported.failed_scene < player.played_scene) {
        player.reported.failed_scene = 0;
        player.reported.error.clear();
    }
}

FrameRange played_range(const PlayerThread& player) {
    const int64_t last = last_frame(player);
    if (!player.orders.loop) return {0, last};
    const int64_t end = std::clamp<int64_t>(player.orders.range.last, 0, last);
    return {std::clamp<int64_t>(player.orders.range.first, 0, end), end};
}

void set_at_end(PlayerThread& player, bool at_end) {
    const std::lock_guard lock(player.mutex);
    player.reported.at_end = at_end;
}

// Runs the frames that are due. Returns the time at which the next frame is due.
Clock::time_point play_on(PlayerThread& player) {
    const Clock::time_point start = now(player);
    const FrameRange range = played_range(player);
    const int64_t frame = current_frame(*player.play);
    if (frame >= range.last) {
        if (player.orders.loop && range.last > range.first) {
            seek(player, range.first);
            return start;
        }
        set_at_end(player, true);
        return start + kIdleWait;
    }
    const double rate = player.play->run.built.description.frame_rate * player.orders.speed;
    if (!player.paced || player.paced_speed != player.orders.speed) {
        player.paced = true;
        player.paced_speed = player.orders.speed;
        player.pace_start = start;
        player.pace_frame = frame;
        player.shown = player.run = {start};
    }
    const double seconds = Seconds(start - player.pace_start).count();
    const int64_t due = std::min(player.pace_frame + static_cast<int64_t>(seconds * rate), range.last);
    const Clock::time_point end = start + std::chrono::duration_cast<Clock::duration>(Seconds(kMostLateSeconds));
    while (current_frame(*player.play) < due && now(player) < end) {
        if (!run_frame(player)) return start;
        add_to(player.run, now(player));
        player.must_draw = true;
    }
    const int64_t late = due - current_frame(*player.play);
    if (late > 0) player.paced = false;  // the simulation is too slow: drop the delay
    const double next = static_cast<double>(current_frame(*player.play) + 1 - player.pace_frame) / rate;
    return player.pace_start + std::chrono::duration_cast<Clock::duration>(Seconds(next));
}

Framing framing_of(const stage::SceneDescription& scene, const std::string& smoke_plugin) {
    const Result<Framing> framing = measure_framing(scene, smoke_plugin);
    return framing ? *framing : Framing();
}

// Reports the framing of the ordered scene. The studio then orders the scene again with this framing.
void measure(PlayerThread& player) {
    player.played_scene = player.orders.scene_number;
    const Framing framing = framing_of(*player.orders.scene, player.smoke_plugin);
    const std::lock_guard lock(player.mutex);
    player.reported.framing = framing;
    player.reported.framed_scene = player.played_scene;
}

// Draws a small picture. None if newer orders interrupted the work.
std::optional<Result<stage::Picture>> draw_thumbnail(PlayerThread& player, const ThumbnailOrder& order) {
    stage::SceneDescription scene = *order.scene;
    if (order.measures_framing) {
        const Framing framing = framing_of(scene, player.smoke_plugin);
        scene.camera.position = framing.camera;
        scene.prewarm = framing.prewarm;
    }
    Result<PlayRun> made = make_play_run(scene, player.smoke_plugin, 0);
    if (!made) return made.error();
    while (current_frame(*made) < order.frame) {
        if (const Result<Done> done = run_next_frame(*made); !done) return done.error();
        const std::lock_guard lock(player.mutex);
        if (has_new_orders(player)) return {};
    }
    Result<stage::SceneCanvas> canvas = stage::make_canvas(scene);
    if (!canvas) return canvas.error();
    Result<DrawnFrame> drawn = draw_run(*made, *canvas, {});
    if (!drawn) return drawn.error();
    return std::move(drawn->picture);
}

// Draws the first ordered thumbnail. False if none is ordered.
bool work_on_thumbnail(PlayerThread& player) {
    ThumbnailOrder order;
    {
        const std::lock_guard lock(player.mutex);
        if (player.thumbnails.empty()) return false;
        order = player.thumbnails.front();
        player.draws_thumbnail = true;
    }
    player.has_worked.notify_one();
    auto picture = draw_thumbnail(player, order);
    const std::lock_guard lock(player.mutex);
    player.draws_thumbnail = false;
    if (!picture) return true;
    player.reported.thumbnails.push_back({order.name, std::move(*picture)});
    std::erase_if(player.thumbnails, [&](const ThumbnailOrder& other) { return other.name == order.name; });
    return true;
}

// Presses the ordered button and draws the picture again.
void press(PlayerThread& player) {
    player.done_press = player.orders.press.number;
    const Result<Done> done = press_in_run(*player.play, player.orders.press.container, player.orders.press.button);
    if (!done) return fail(player, done.error().message);
    player.must_draw = true;
    const std::lock_guard lock(player.mutex);
    player.reported.facts = player.play->facts;
}

// A new scene is played from the frame of a new seek if there is one, else from the shown frame, or from 0 if no scene
// was shown.
void follow_orders(PlayerThread& player) {
    const PlayOrders& orders = player.orders;
    const bool new_seek = orders.seek_number != player.done_seek;
    const bool new_scene = orders.scene_number != player.played_scene;
    if (orders.cancel_number != player.done_cancel) {
        player.done_cancel = orders.cancel_number;
        if (player.target && player.play) player.target = std::max<int64_t>(current_frame(*player.play), 0);
    }
    const bool waiting = player.target && player.play && now(player) - player.seek_start < kPatience;
    if (orders.measures_framing) {
        if (new_scene && orders.scene != nullptr) measure(player);
    } else if (new_scene && orders.scene != nullptr && (!waiting || new_seek)) {
        const int64_t shown = player.target ? *player.target : player.play ? current_frame(*player.play) : 0;
        player.seek_start = now(player);
        player.done_seek = orders.seek_number;
        build(player, new_seek ? orders.seek_frame : shown);
    } else if (new_seek && player.play && !new_scene) {
        player.done_seek = orders.seek_number;
        seek(player, orders.seek_frame);
    }
    if (!orders.playing) {
        player.paced = false;
        set_at_end(player, false);
    }
    if (player.play && !player.target && orders.press.number != player.done_press) press(player);
    if (player.play && orders.view != player.drawn_view) player.must_draw = true;
}

// Waits for new orders until `wake`, or with a stepped clock until its next step, and copies the newest orders. False
// if the thread must end.
bool wait_for_orders(PlayerThread& player, Clock::time_point wake) {
    std::unique_lock lock(player.mutex);
    if (player.clock == PlayClock::kReal) {
        player.changed.wait_until(lock, wake, [&] { return has_new_orders(player); });
    } else {
        player.worked_time = player.stepped_time;
        player.has_worked.notify_one();
        player.changed.wait(lock, [&] { return player.quit || player.ordered_time != player.worked_time; });
        player.stepped_time = player.ordered_time;
    }
    player.orders = player.ordered;
    return !player.quit;
}

void work(PlayerThread& player) {
    Clock::time_point wake = now(player);
    while (wait_for_orders(player, wake)) {
        follow_orders(player);
        wake = now(player);
        if (player.play && player.target) {
            continue_seek(player);
        } else if (player.play && player.orders.playing) {
            wake = play_on(player);
        } else if (!work_on_thumbnail(player)) {
            wake += kIdleWait;
        }
        if (player.play && player.must_draw && !player.target) draw(player);
    }
}

}  // namespace

Player::Player(std::string smoke_plugin, PlayClock clock) : thread_(std::make_unique<PlayerThread>()) {
    thread_->smoke_plugin = std::move(smoke_plugin);
    thread_->clock = clock;
    PlayerThread& player = *thread_;
    thread_->thread = std::thread([&player] {
        work(player);
        player.play.reset();
        player.canvas.reset();  // destroyed here, since its context belongs to this thread
    });
}

Player::~Player() {
    {
        const std::lock_guard lock(thread_->mutex);
        thread_->quit = true;
    }
    thread_->changed.notify_one();
    thread_->thread.join();
}

void Player::order(const PlayOrders& orders) {
    {
        const std::lock_guard lock(thread_->mutex);
        thread_->ordered = orders;
    }
    thread_->changed.notify_one();
}

void Player::order_thumbnails(std::vector<ThumbnailOrder> orders) {
    const std::lock_guard lock(thread_->mutex);
    thread_->thumbnails = std::move(orders);
}

PlayReport Player::report() {
    const std::lock_guard lock(thread_->mutex);
    PlayReport report = thread_->reported;
    thread_->reported.numbers.clear();
    thread_->reported.thumbnails.clear();
    return report;
}

void Player::advance(double seconds) {
    std::unique_lock lock(thread_->mutex);
    thread_->ordered_time += std::chrono::duration_cast<Clock::duration>(Seconds(seconds));
    thread_->changed.notify_one();
    thread_->has_worked.wait(lock, [&] {
        return thread_->worked_time == thread_->ordered_time || (thread_->draws_thumbnail && !has_new_orders(*thread_));
    });
}

}  // namespace tovu
