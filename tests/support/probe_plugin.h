// What the probe plug-in keeps in its block, and the orders it takes, for the tests that look at it.
#pragma once

#include <cstdint>

/// The block: a slot for each kind of parameter, then what the probe saw.
struct ProbeInstance {
    int32_t count;     // Int "count"
    float amount;      // Float "amount"
    int32_t on;        // Bool "on"
    int32_t mode;      // Radio "mode"
    uint32_t text;     // String "text"
    uint32_t target;   // Container "target"
    uint32_t picture;  // Image "picture"
    int32_t geometry;  // its own handles, asked for when it was made
    int32_t container;
    int32_t last_change;  // parameter index of the last notice
    int32_t changes;      // notices so far
    int32_t random[8];    // numbers of the last order that drew any
    int32_t last_request;
};

/// Its actions, by number; those of the two buttons first.
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
