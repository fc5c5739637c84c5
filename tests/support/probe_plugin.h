// The block and the actions of the probe plug-in.
#pragma once

#include <cstdint>

/// The block: a slot for each kind of parameter, then what the probe records.
struct ProbeInstance {
    int32_t count;        // Int "count"
    float amount;         // Float "amount"
    int32_t on;           // Bool "on"
    int32_t mode;         // Radio "mode"
    uint32_t text;        // String "text"
    uint32_t target;      // Container "target"
    uint32_t picture;     // Image "picture"
    int32_t geometry;     // its own handle, from PLUGIN_INIT_FUNCTION
    int32_t last_change;  // parameter index of the last PLUGIN_CHANGED_CALLBACK
    int32_t changes;      // calls of PLUGIN_CHANGED_CALLBACK so far
    int32_t random[8];    // the random numbers that were drawn last
    int32_t last_request;
};

/// The probe's actions. The first two have buttons.
enum ProbeAction : int32_t {
    kProbeDraw = 1,            // button "draw": fills `random` from rand()
    kProbeAsk = 2,             // button "ask": as above, but sends 'DRAW' to "target" after the fourth number
    kProbeWritePastBlock = 3,  // one byte
    kProbeWritePastText = 4,   // one byte behind the longest text
    kProbeLeaveSectionOpen = 5,
    kProbeEndWithoutStart = 6,
    kProbeRegisterLate = 7,
};

constexpr int32_t kProbeRequestDraw = 0x44524157;  // 'DRAW': fills `random`; the reply, an int32_t, becomes 1
constexpr int32_t kProbeTextLength = 20;
