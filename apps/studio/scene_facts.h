// What the player tells about the scene that it plays.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../tovu/parameter_reference.h"
#include "stage/assets/picture.h"

namespace tovu {

struct ContainerFacts {
    std::string name;
    std::shared_ptr<const NotedPlugin> noted;  // null for one without a plug-in
    std::vector<stage::ParameterValue>
        values;  // by index of the parameter: at the start, converted to the scene's rate
    std::map<std::string, std::vector<double>> curves;  // as the plug-in made them, see curve_samples.h
};

/// Of a scene that was built.
struct SceneFacts {
    int64_t scene_number = 0;  // as ordered
    std::vector<ContainerFacts> containers;
    std::vector<std::string> warnings;  // the reader's and lint's, "file:line:column: …"
    double build_ms = 0;
};

constexpr size_t kLifeBins = 32;

/// The particles of a container, where the plug-in's field table says how to find them.
struct ParticleCounts {
    std::string container;
    int32_t alive = 0;
    int32_t limit = 0;                       // alive at most; 0 where the notes name no such parameter
    double births_per_second = 0;            // over the last second
    double lost_per_second = 0;              // births that found no free particle
    std::array<int32_t, kLifeBins> by_life;  // how many are in each part of their life, from birth to death
};

/// A section of work that a plug-in marked, or one of its entry points.
struct SectionTime {
    std::string name;
    double ms = 0;
};

struct FrameNumbers {
    int64_t frame = 0;
    double step_ms = 0;                 // simulation, all plug-ins
    double plugin_draw_ms = 0;          // inside the plug-ins' drawing
    double picture_ms = 0;              // everything else until the picture is in memory: rasterisation, reading back
    double other_ms = 0;                // the player's own work: counting, projecting
    std::vector<SectionTime> sections;  // of the plug-ins, in the order of their first end
};

/// A box around particles as its plug-in sent it: corners in the picture, 0…1 from the left and from the top.
struct ShownBox {
    std::string container;
    std::array<std::array<float, 2>, 8> corners;  // bit 0: greater x, bit 1: greater y, bit 2: greater z
};

/// A frame that was drawn.
struct DrawnFrame {
    stage::Picture picture;
    FrameNumbers numbers;
    std::vector<ParticleCounts> particles;
    std::vector<ShownBox> boxes;
};

}  // namespace tovu
