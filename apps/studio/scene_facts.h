// Facts about the played scene, from the player.
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
    std::shared_ptr<const NotedPlugin> noted;  // null if the container has no plug-in
    std::vector<stage::ParameterValue>
        values;  // by index of the parameter: at the start, converted to the scene's rate
    std::map<std::string, std::vector<double>> curves;  // samples by parameter, see curve_samples.h
};

/// Facts about a built scene.
struct SceneFacts {
    int64_t scene_number = 0;  // see PlayOrders
    std::vector<ContainerFacts> containers;
    std::vector<std::string> warnings;  // the reader's and lint's, "file:line:column: …"
    double build_ms = 0;
};

constexpr size_t kLifeBins = 32;

/// The particles of a container whose plug-in has a field table.
struct ParticleCounts {
    std::string container;
    int32_t alive = 0;
    int32_t limit = 0;                       // size of the pool; 0 if the notes name no parameter for it
    double births_per_second = 0;            // over the last second
    double lost_per_second = 0;              // births that failed because the pool was empty
    std::array<int32_t, kLifeBins> by_life;  // number of particles in each part of their life, from birth to death
};

/// The time of an entry point of a plug-in, or of a section that the plug-in measures.
struct SectionTime {
    std::string name;
    double ms = 0;
};

struct FrameNumbers {
    int64_t frame = 0;
    double step_ms = 0;                 // simulation, all plug-ins
    double plugin_draw_ms = 0;          // inside the plug-ins' drawing
    double picture_ms = 0;              // rest of the time until the picture is in memory: rasterisation, reading back
    double other_ms = 0;                // the player's own work: counting, projecting
    std::vector<SectionTime> sections;  // of the plug-ins, in the order of their first end
};

/// A bounding box that a plug-in reported. The corners are positions in the picture, 0…1 from the left and from the
/// top.
struct ShownBox {
    std::string container;
    std::array<std::array<float, 2>, 8> corners;  // bit 0: greater x, bit 1: greater y, bit 2: greater z
};

/// A drawn frame.
struct DrawnFrame {
    stage::Picture picture;
    FrameNumbers numbers;
    std::vector<ParticleCounts> particles;
    std::vector<ShownBox> boxes;
};

}  // namespace tovu
