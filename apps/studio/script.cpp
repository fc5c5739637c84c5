#include "script.h"

#include <fmt/format.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>

#include "stage/output/jpeg_file.h"
#include "stage/output/png_file.h"

namespace tovu {

namespace {

using Clock = std::chrono::steady_clock;
using stage::Done;
using stage::Error;
using stage::Result;
using Words = std::vector<std::string>;

constexpr auto kLongestWait = std::chrono::minutes(5);
constexpr int kDragSteps = 10;
constexpr double kFrameSeconds = 1.0 / 60.0;
constexpr int kFramesAfterExport = 20;  // so that two clicks around an export are never a double click
constexpr int kJpegQuality = 88;

// Splits a line at spaces. A word in quotes may contain spaces.
Words words_of(const std::string& line) {
    Words words;
    std::istringstream stream(line);
    for (stream >> std::ws; !stream.eof(); stream >> std::ws) {
        std::string word;
        if (stream.peek() == '"') {
            stream.get();
            std::getline(stream, word, '"');
        } else {
            stream >> word;
        }
        words.push_back(word);
    }
    return words;
}

SDL_Event motion(uint32_t window, float x, float y, uint32_t buttons) {
    SDL_Event event{};
    event.type = SDL_MOUSEMOTION;
    event.motion.windowID = window;
    event.motion.state = buttons;
    event.motion.x = static_cast<int>(x);
    event.motion.y = static_cast<int>(y);
    return event;
}

SDL_Event button(uint32_t window, float x, float y, uint8_t which, bool down) {
    SDL_Event event{};
    event.type = down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
    event.button.windowID = window;
    event.button.button = which;
    event.button.state = down ? SDL_PRESSED : SDL_RELEASED;
    event.button.x = static_cast<int>(x);
    event.button.y = static_cast<int>(y);
    return event;
}

SDL_Event wheel(uint32_t window, int steps) {
    SDL_Event event{};
    event.type = SDL_MOUSEWHEEL;
    event.wheel.windowID = window;
    event.wheel.y = steps;
    return event;
}

SDL_Event key_event(uint32_t window, SDL_Scancode code, bool down, uint16_t modifiers) {
    SDL_Event event{};
    event.type = down ? SDL_KEYDOWN : SDL_KEYUP;
    event.key.windowID = window;
    event.key.state = down ? SDL_PRESSED : SDL_RELEASED;
    event.key.keysym.scancode = code;
    event.key.keysym.sym = SDL_GetKeyFromScancode(code);
    event.key.keysym.mod = modifiers;
    return event;
}

SDL_Event drop_event(uint32_t window, const std::string& file) {
    SDL_Event event{};
    event.type = SDL_DROPFILE;
    event.drop.windowID = window;
    event.drop.file = SDL_strdup(file.c_str());
    return event;
}

SDL_Event text_event(uint32_t window, const std::string& text) {
    SDL_Event event{};
    event.type = SDL_TEXTINPUT;
    event.text.windowID = window;
    SDL_strlcpy(event.text.text, text.c_str(), sizeof event.text.text);
    return event;
}

struct Modifier {
    const char* name;
    SDL_Scancode code;
    uint16_t bit;
};
constexpr Modifier kModifiers[] = {{"Ctrl", SDL_SCANCODE_LCTRL, KMOD_LCTRL},
                                   {"Shift", SDL_SCANCODE_LSHIFT, KMOD_LSHIFT},
                                   {"Alt", SDL_SCANCODE_LALT, KMOD_LALT}};

using Frames = std::deque<std::vector<SDL_Event>>;

// Splits the text into events of limited size, without splitting a UTF-8 character.
void add_text(uint32_t window, const std::string& text, Frames& frames) {
    constexpr size_t kRoom = SDL_TEXTINPUTEVENT_TEXT_SIZE - 1;
    for (size_t at = 0, end = 0; at < text.size(); at = end) {
        end = std::min(at + kRoom, text.size());
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
        frames.push_back({text_event(window, text.substr(at, end - at))});
    }
    frames.push_back({});
}

// Holds the modifiers in `names` ("Ctrl+Shift+", any case) during the events that `inside` adds.
template <class Inside>
void with_modifiers(uint32_t window, const std::string& names, Frames& frames, const Inside& inside) {
    uint16_t held = 0;
    const auto has = [&](const Modifier& modifier) { return SDL_strcasestr(names.c_str(), modifier.name) != nullptr; };
    for (const Modifier& modifier : kModifiers)
        if (has(modifier)) {
            held = static_cast<uint16_t>(held | modifier.bit);
            frames.push_back({key_event(window, modifier.code, true, held)});
        }
    inside(held);
    for (const Modifier& modifier : kModifiers)
        if (has(modifier)) frames.push_back({key_event(window, modifier.code, false, 0)});
}

void add_click(uint32_t window, ImVec2 at, uint8_t which, int times, Frames& frames) {
    frames.push_back({motion(window, at.x, at.y, 0)});
    frames.push_back({});
    for (int i = 0; i < times; ++i) {
        frames.push_back({button(window, at.x, at.y, which, true)});
        frames.push_back({button(window, at.x, at.y, which, false)});
    }
    frames.push_back({});
}

void add_drag(uint32_t window, ImVec2 from, ImVec2 by, Frames& frames) {
    frames.push_back({motion(window, from.x, from.y, 0)});
    frames.push_back({});
    frames.push_back({button(window, from.x, from.y, SDL_BUTTON_LEFT, true)});
    for (int step = 1; step <= kDragSteps; ++step) {
        const float share = static_cast<float>(step) / kDragSteps;
        frames.push_back({motion(window, from.x + by.x * share, from.y + by.y * share, SDL_BUTTON_LMASK)});
    }
    frames.push_back({button(window, from.x + by.x, from.y + by.y, SDL_BUTTON_LEFT, false)});
    frames.push_back({});
}

// Adds random events, without keys that quit the studio.
void add_random(uint32_t window, unsigned seed, int count, Frames& frames) {
    std::printf("random events with seed %u\n", seed);
    std::mt19937 random(seed);
    const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImVec2 at{0, 0};
    for (int i = 0; i < count; ++i) {
        const auto which = static_cast<uint8_t>(1 + below(3));
        switch (below(8)) {
            case 0:
            case 1:
            case 2:
                at = {static_cast<float>(below(static_cast<int>(size.x) + 20) - 10),
                      static_cast<float>(below(static_cast<int>(size.y) + 20) - 10)};
                frames.push_back({motion(window, at.x, at.y, 0)});
                break;
            case 3:
                frames.push_back({button(window, at.x, at.y, which, true)});
                break;
            case 4:
                frames.push_back({button(window, at.x, at.y, which, false)});
                break;
            case 5:
                frames.push_back({wheel(window, below(7) - 3)});
                break;
            case 6:
                frames.push_back({text_event(window, std::string(1, static_cast<char>(' ' + below(95))))});
                break;
            default: {
                const auto code = static_cast<SDL_Scancode>(SDL_SCANCODE_A + below(SDL_SCANCODE_UP - SDL_SCANCODE_A));
                const bool held = below(3) == 0;
                if (held && code == SDL_SCANCODE_Q) break;
                with_modifiers(window, held ? "Ctrl" : "", frames, [&](uint16_t modifiers) {
                    frames.push_back({key_event(window, code, true, modifiers)});
                    frames.push_back({key_event(window, code, false, modifiers)});
                });
            }
        }
    }
    for (uint8_t which = SDL_BUTTON_LEFT; which <= SDL_BUTTON_RIGHT; ++which)
        frames.push_back({button(window, at.x, at.y, which, false)});
}

Error mistake(const Script& script, const Script::Line& line, const std::string& message) {
    return Error{fmt::format("{}:{}: {}", script.file, line.number, message)};
}

bool waits_for_export(const Script::Line& line) {
    return line.words == Words{"wait", "export"};
}

bool picture_is_there(const Studio& studio) {
    const PlayReport& report = studio.report;
    const bool failed = !studio.scene_error.empty() || report.failed_scene == studio.orders.scene_number;
    if (failed) return true;
    return report.facts && report.facts->scene_number == studio.orders.scene_number && report.drawn &&
           !report.seeking && report.done_seek == studio.orders.seek_number &&
           report.drawn_scene == studio.orders.scene_number;
}

Result<Done> write_screenshot(const std::string& file, const stage::Picture& picture) {
    return file.ends_with(".png") ? stage::write_png(file, picture) : stage::write_jpeg(file, picture, kJpegQuality);
}

Result<Done> write_places(const std::string& file, const Targets& targets) {
    std::ofstream out(file);
    for (const auto& [name, place] : targets.places)
        out << fmt::format("{}\t{:.0f}\t{:.0f}\t{:.0f}\t{:.0f}\n", name, place.x, place.y, place.z, place.w);
    return out.flush() ? Result<Done>(Done{}) : Result<Done>(Error{file + ": cannot be written"});
}

void print_report(const Studio& studio, double studio_ms) {
    const PlayReport& report = studio.report;
    if (!studio.scene_error.empty() || !report.error.empty())
        std::printf("%s\n", (!studio.scene_error.empty() ? studio.scene_error : report.error).c_str());
    FrameNumbers mean;
    const auto count = static_cast<double>(std::max<size_t>(studio.numbers.size(), 1));
    for (const FrameNumbers& n : studio.numbers) {
        mean.step_ms += n.step_ms / count;
        mean.plugin_draw_ms += n.plugin_draw_ms / count;
        mean.picture_ms += n.picture_ms / count;
        mean.other_ms += n.other_ms / count;
    }
    int alive = 0;
    if (report.drawn)
        for (const ParticleCounts& counts : report.drawn->particles) alive += counts.alive;
    std::printf(
        "frame %lld, %d alive; ms: studio %.3f + %.3f, window %.3f, step %.3f, plug-ins draw %.3f, renderer %.3f; last "
        "rerun %.1f, "
        "build %.1f; a second: %.1f run, %.1f shown\n",
        static_cast<long long>(report.frame), alive, studio_ms, mean.other_ms, studio.window_ms, mean.step_ms,
        mean.plugin_draw_ms, mean.picture_ms, report.last_seek_ms, report.facts ? report.facts->build_ms : 0.0,
        report.run_per_second, report.shown_per_second);
    std::fflush(stdout);
}

// The place of a target. The name may end with "@X,Y".
std::optional<ImVec2> place_of(const Targets& targets, const std::string& name) {
    const size_t at = name.find('@');
    const auto found = targets.places.find(name.substr(0, at));
    if (found == targets.places.end()) return {};
    float x = 0.5f, y = 0.5f;
    if (at != std::string::npos && std::sscanf(name.c_str() + at, "@%f,%f", &x, &y) != 2) return {};
    const ImVec4& place = found->second;
    return ImVec2{place.x + (place.z - place.x) * x, place.y + (place.w - place.y) * y};
}

// Carries out a line whose target is in the window.
Result<Done> use_target(Script& script, const Script::Line& line, ImVec2 place, uint32_t window) {
    const Words& words = line.words;
    const std::string option = words.size() > 2 ? words.back() : "";
    if (words[0] == "click") {
        const uint8_t which = option == "right" ? SDL_BUTTON_RIGHT : SDL_BUTTON_LEFT;
        with_modifiers(window, option, script.events,
                       [&](uint16_t) { add_click(window, place, which, option == "double" ? 2 : 1, script.events); });
    } else if (words[0] == "drag" && words.size() >= 4) {
        with_modifiers(window, words.size() > 4 ? option : "", script.events, [&](uint16_t) {
            add_drag(window, place, {std::stof(words[2]), std::stof(words[3])}, script.events);
        });
    } else if (words[0] == "wheel" && words.size() == 3) {
        script.events.push_back({motion(window, place.x, place.y, 0)});
        script.events.push_back({wheel(window, std::stoi(words[2]))});
    } else if (words[0] != "wait") {
        return mistake(script, line, "cannot be read; script.h lists what there is");
    }
    return Done{};
}

Result<Done> press_key(Script& script, const Script::Line& line, uint32_t window) {
    const std::string& name = line.words.at(1);
    const size_t last = name.rfind('+', name.size() - 2);
    const std::string key = last == std::string::npos ? name : name.substr(last + 1);
    const SDL_Scancode code = SDL_GetScancodeFromName(key.c_str());
    if (code == SDL_SCANCODE_UNKNOWN) return mistake(script, line, "there is no key " + key);
    with_modifiers(window, last == std::string::npos ? "" : name.substr(0, last), script.events, [&](uint16_t held) {
        script.events.push_back({key_event(window, code, true, held)});
        script.events.push_back({key_event(window, code, false, held)});
    });
    script.events.push_back({});
    return Done{};
}

// Carries out a line. False if the line has to wait.
Result<bool> carry_out_line(Script& script, const Script::Line& line, const ScriptedWindow& scripted) {
    const Words& words = line.words;
    const uint32_t window = scripted.window.id();
    Result<Done> done = Done{};
    if (words[0] == "size" && words.size() == 3) {
        scripted.window.set_size(std::stoi(words[1]), std::stoi(words[2]));
        script.frames_to_wait = 3;
    } else if (words[0] == "wait" && words.at(1) == "picture") {
        if (!picture_is_there(scripted.studio)) return false;
        script.frames_to_wait = 2;
    } else if (waits_for_export(line)) {
        if (!scripted.studio.export_state || !scripted.studio.export_state->ended) return false;
        script.frames_to_wait = kFramesAfterExport;
    } else if (words[0] == "wait" && words.at(1) == "frames") {
        script.frames_to_wait = std::stoi(words.at(2));
    } else if (words[0] == "type") {
        add_text(window, line.rest, script.events);
    } else if (words[0] == "drop") {
        script.events.push_back({drop_event(window, line.rest)});
        script.events.push_back({});
    } else if (words[0] == "key" && words.size() == 2) {
        done = press_key(script, line, window);
    } else if (words[0] == "screenshot" && words.size() == 2) {
        scripted.window.keep_next_frame();
        script.screenshot = words[1];
    } else if (words[0] == "places" && words.size() == 2) {
        done = write_places(words[1], scripted.targets);
    } else if (words[0] == "picture" && words.size() == 2) {
        const auto& drawn = scripted.studio.report.drawn;
        done = drawn ? stage::write_png(words[1], drawn->picture) : Result<Done>(Error{"there is no picture yet"});
    } else if (words[0] == "random" && words.size() == 3) {
        add_random(window, static_cast<unsigned>(std::stoul(words[1])), std::stoi(words[2]), script.events);
    } else if (words[0] == "report") {
        print_report(scripted.studio, scripted.studio.studio_ms);
    } else if (words.size() < 2) {
        return mistake(script, line, "cannot be read; script.h lists what there is");
    } else if (const auto place = place_of(scripted.targets, words[1]); !place) {
        return false;
    } else {
        done = use_target(script, line, *place, window);
    }
    if (!done) return done.error();
    return true;
}

void push(std::vector<SDL_Event>& events) {
    for (SDL_Event& event : events) {
        if (event.type == SDL_KEYDOWN || event.type == SDL_KEYUP)
            SDL_SetModState(static_cast<SDL_Keymod>(event.key.keysym.mod));
        SDL_PushEvent(&event);
    }
}

}  // namespace

Result<Script> read_script(const std::string& file) {
    std::ifstream in(file);
    if (!in) return Error{file + ": there is no such script"};
    Script script;
    script.file = file;
    script.is_running = true;
    script.frame_seconds = kFrameSeconds;
    script.line_start = Clock::now();
    int number = 0;
    for (std::string text; std::getline(in, text);) {
        ++number;
        Words words = words_of(text);
        if (words.empty() || words[0].starts_with('#')) continue;
        const size_t space = text.find(' ');
        script.lines.push_back({number, std::move(words), space == std::string::npos ? "" : text.substr(space + 1)});
    }
    for (; !script.lines.empty(); script.lines.pop_front()) {
        const Words& words = script.lines.front().words;
        if (words == Words{"time", "real"}) {
            script.frame_seconds = 0;
        } else if (words[0] == "size" && words.size() == 3) {
            script.width = std::atoi(words[1].c_str());
            script.height = std::atoi(words[2].c_str());
        } else {
            break;
        }
    }
    return script;
}

double scene_seconds(const Script& script) {
    const bool idle = script.events.empty() && script.frames_to_wait == 0 && script.screenshot.empty();
    const bool waits = idle && !script.lines.empty() && waits_for_export(script.lines.front());
    return waits ? 0 : script.frame_seconds;
}

Result<Done> continue_script(Script& script, const ScriptedWindow& scripted) {
    if (!script.is_running) return Done{};
    if (!script.screenshot.empty()) {
        if (scripted.window.kept_frame().bytes.empty()) return Done{};
        Result<Done> written = write_screenshot(script.screenshot, scripted.window.kept_frame());
        if (!written) return written;
        script.screenshot.clear();
    }
    if (!script.events.empty()) {
        push(script.events.front());
        script.events.pop_front();
        return Done{};
    }
    if (script.frames_to_wait > 0) {
        --script.frames_to_wait;
        return Done{};
    }
    if (script.lines.empty()) {
        script.is_running = false;
        scripted.studio.quit = true;
        return Done{};
    }
    const Script::Line& line = script.lines.front();
    const Result<bool> done = carry_out_line(script, line, scripted);
    if (!done) return done.error();
    if (*done) {
        script.lines.pop_front();
        script.line_start = Clock::now();
    } else if (Clock::now() - script.line_start > kLongestWait) {
        return mistake(script, line, line.words[1] + " did not come");
    }
    return Done{};
}

}  // namespace tovu
