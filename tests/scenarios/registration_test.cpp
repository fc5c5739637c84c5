// The registration with the host at load time.
#include <gmock/gmock.h>

#include "render_host.h"

namespace {

using tovu::logged;

/// FNV-1a (Fowler, Noll and Vo), 32 bits.
uint32_t digest(const std::string& text) {
    uint32_t hash = 0x811C9DC5u;
    for (const char c : text) hash = (hash ^ static_cast<uint8_t>(c)) * 0x01000193u;
    return hash;
}

// Hosts and saved scenes know a parameter by its position, so position, name, label, default, range and choices of
// every parameter are fixed. The digest changes with any of them; the message shows them all.
TEST(Registration, ParametersAreThoseOfSavedScenes) {
    tovu::TestHost host;
    const stage::Plugin& plugin = stage::plugin(host.smoke_plugin());
    std::string text;
    for (const stage::Call& call : plugin.registration_calls)
        if (call.name.starts_with("pelRegisterParameter")) text += to_string(call) + '\n';
    for (const stage::ParameterInfo& parameter : plugin.parameters)
        for (const std::string& choice : parameter.choices) text += parameter.name + " = " + choice + '\n';
    EXPECT_EQ(0xC32A486Eu, digest(text)) << text;
}

TEST(Registration, OtherCallsInOrder) {
    tovu::TestHost host;
    std::vector<std::string> calls;
    for (const stage::Call& call : stage::plugin(host.smoke_plugin()).registration_calls)
        if (!call.name.starts_with("pelRegisterParameter")) calls.push_back(to_string(call));
    EXPECT_THAT(calls,
                testing::ElementsAre(logged("pelRegisterPlugin", "TovuSmoke"), logged("pelRegisterPluginType", 1),
                                     logged("pelRegisterInfoText", "info", "Version 1.0. 0"),
                                     logged("pelRegisterPushButton", "reset", "Reset", 1),
                                     logged("pelRegisterPushButton", "build_alpha", "Build Alpha", 2),
                                     logged("pelRegisterTotalSize", 9096), logged("pelRegisterUseLOD", 0),
                                     logged("pelRegisterUseEvents", 1), logged("pelRegisterEvent", "Sort", 0),
                                     logged("pelRegisterEvent", "qsort", 0)));
}

}  // namespace
