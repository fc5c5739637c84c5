// Common code of all services: the call log, the current Stage, overrides, complaints.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "stage/plugins/registration.h"
#include "stage/scene/stage.h"
#include "watched.h"

namespace stage {

/// A call of a service.
struct Service {
    Stage& stage;
    const char* name;  // as exported

    void complain(std::string message) const { stage::complain(stage, name, std::move(message)); }

    /// Complains about a handle that does not belong to a live object of the wanted kind. A handle of -1 (none) is not
    /// reported.
    void complain_about(int32_t handle, ObjectKind wanted) const;

    const Container* container(int32_t handle) const;
    Geometry* geometry(int32_t handle) const;
    const Image* image(int32_t handle) const;
    const Camera* camera(int32_t handle) const;

    /// Writes an out value; complains about a null address.
    template <class Value>
    void put(Value* out, Value value) const {
        if (out)
            *out = value;
        else
            complain("an out value has no address");
    }
    void put(float* x, float* y, float* z, Vector3 value) const {
        put(x, value.x);
        put(y, value.y);
        put(z, value.z);
    }
    void put_matrix(float* out, const Matrix& matrix) const;
};

/// A null text reads as the empty one.
inline const char* text_of(const char* text) {
    return text ? text : "";
}

/// Calls the override if one is set, else `own`. Returns `fallback` without a current Stage, and inside PLUGIN_INIT,
/// where there is no scene.
template <int32_t fallback, class Signature, class Own, class... Arguments>
auto answer_service(const char* name, std::function<Signature> Overrides::*override_field, Own own,
                    Arguments... arguments) {
    using Answer = decltype(own(std::declval<const Service&>(), arguments...));
    Stage* stage = current_stage();
    if (Registration* registration = running_registration()) {
        registration->problems.push_back(std::string(name) + " was called inside PLUGIN_INIT, where there is no scene");
        stage = nullptr;
    }
    if (!stage) return static_cast<Answer>(fallback);
    std::function<Signature>& slot = stage->overrides.*override_field;
    if (!slot) return own(Service{*stage, name}, arguments...);
    const std::function<Signature> replaced = std::exchange(slot, nullptr);
    struct Restore {
        std::function<Signature>& slot;
        const std::function<Signature>& replaced;
        ~Restore() { slot = replaced; }
    } restore{slot, replaced};
    return static_cast<Answer>(replaced(arguments...));
}

/// Runs a service of the scene: tells the call watch, records the call and answers it.
template <int32_t fallback = 0, class Signature, class Own, class... Arguments>
auto serve(const char* name, std::function<Signature> Overrides::*override_field, Own own, Arguments... arguments) {
    return watched(
        name, fallback, [&] { return answer_service<fallback>(name, override_field, own, arguments...); },
        arguments...);
}

}  // namespace stage
